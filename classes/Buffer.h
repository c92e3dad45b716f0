// The host's frame-description record, kept by some adapters beside their own buffers.
#ifndef DEWARPWRAPPER_BUFFER_H
#define DEWARPWRAPPER_BUFFER_H

struct BUFFER {
  int ch;           // bytes per pixel
  int colorFormat;  // the host's colour-format code
  unsigned char* data;
  int width;
  int height;
};

#endif
