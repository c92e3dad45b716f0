# Warning flags for the project's own targets (not for GoogleTest's sources).
add_library(dewarp_warnings INTERFACE)
target_compile_options(dewarp_warnings INTERFACE -Wall -Wextra)
if(DEWARP_WERROR)
  target_compile_options(dewarp_warnings INTERFACE -Werror)
endif()
