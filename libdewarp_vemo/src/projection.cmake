set(DEWARP_PROJECTION_SOURCES
  projection.cpp
  projection_formulas.cpp
  projection_extents.cpp
  map_functor.cpp
  projection_functor.cpp
  scale_functor.cpp
  shift_scale_functor.cpp)
