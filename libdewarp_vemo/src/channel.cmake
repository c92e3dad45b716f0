set(DEWARP_CHANNEL_SOURCES
  read_write_mutex.cpp
  channel.cpp
  dewarp.cpp
)
