#include "image_io.h"

#include "failure.h"
#include "output_file.h"

#include <cerrno>
#include <csetjmp>
#include <cstdio>
#include <cstring>

#include <jpeglib.h>
#include <jerror.h>
#include <png.h>

namespace dewarp_tool {

namespace {

bool EndsWith(const std::string& text, const std::string& tail) {
  if (text.size() < tail.size()) {
    return false;
  }
  for (std::size_t i = 0; i < tail.size(); ++i) {
    const char c = text[text.size() - tail.size() + i];
    const char lower = (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
    if (lower != tail[i]) {
      return false;
    }
  }
  return true;
}

// ---- PNG ---------------------------------------------------------------------------------------

struct PngSource {
  const std::vector<std::uint8_t>* bytes;
  std::size_t offset;
};

struct PngErrors {
  std::jmp_buf jump;
  char message[256];
};

void PngReadBytes(png_structp png, png_bytep out, png_size_t count) {
  PngSource* source = static_cast<PngSource*>(png_get_io_ptr(png));
  if (source->bytes->size() - source->offset < count) {
    png_error(png, "the file ends early (truncated)");
  }
  std::memcpy(out, source->bytes->data() + source->offset, count);
  source->offset += count;
}

void PngError(png_structp png, png_const_charp message) {
  PngErrors* errors = static_cast<PngErrors*>(png_get_error_ptr(png));
  std::snprintf(errors->message, sizeof errors->message, "%s", message);
  std::longjmp(errors->jump, 1);
}

void PngWarning(png_structp, png_const_charp) {}

// Decodes into `image`; returns false with the reason in errors.message. No C++ object with a
// destructor is created between setjmp and the decoding calls that may jump back.
bool DecodePng(const std::vector<std::uint8_t>& bytes, RgbImage& image, PngErrors& errors) {
  PngSource source{&bytes, 0};
  png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &errors, PngError, PngWarning);
  png_infop info = png ? png_create_info_struct(png) : nullptr;
  if (!png || !info) {
    std::snprintf(errors.message, sizeof errors.message, "out of memory");
    png_destroy_read_struct(png ? &png : nullptr, nullptr, nullptr);
    return false;
  }
  std::vector<png_bytep> rows;
  if (setjmp(errors.jump)) {
    png_destroy_read_struct(&png, &info, nullptr);
    return false;
  }
  png_set_read_fn(png, &source, PngReadBytes);
  png_set_user_limits(png, 16384, 16384);
  png_read_info(png, info);
  const png_uint_32 width = png_get_image_width(png, info);
  const png_uint_32 height = png_get_image_height(png, info);
  const int colourType = png_get_color_type(png, info);
  // Every PNG becomes 8-bit RGB: palettes and grey expanded, 16-bit samples stripped, alpha dropped.
  png_set_strip_16(png);
  png_set_strip_alpha(png);
  png_set_packing(png);
  if (colourType == PNG_COLOR_TYPE_PALETTE) png_set_palette_to_rgb(png);
  if (colourType == PNG_COLOR_TYPE_GRAY || colourType == PNG_COLOR_TYPE_GRAY_ALPHA) {
    png_set_expand_gray_1_2_4_to_8(png);
    png_set_gray_to_rgb(png);
  }
  png_set_interlace_handling(png);
  png_read_update_info(png, info);
  if (png_get_rowbytes(png, info) != static_cast<png_size_t>(width) * 3) {
    png_error(png, "unsupported pixel layout");
  }
  image = RgbImage(static_cast<int>(width), static_cast<int>(height));
  rows.resize(height);
  for (png_uint_32 y = 0; y < height; ++y) {
    rows[y] = image.At(0, static_cast<int>(y));
  }
  png_read_image(png, rows.data());
  png_read_end(png, nullptr);
  png_destroy_read_struct(&png, &info, nullptr);
  return true;
}

// ---- JPEG --------------------------------------------------------------------------------------

struct JpegErrors {
  jpeg_error_mgr manager;
  std::jmp_buf jump;
  bool truncated;
  char message[JMSG_LENGTH_MAX];
};

void JpegError(j_common_ptr info) {
  JpegErrors* errors = reinterpret_cast<JpegErrors*>(info->err);
  (*info->err->format_message)(info, errors->message);
  std::longjmp(errors->jump, 1);
}

// libjpeg only warns about a file that ends early and fills the rest with grey; the tool treats
// that as the truncated file it is.
void JpegMessage(j_common_ptr info, int level) {
  JpegErrors* errors = reinterpret_cast<JpegErrors*>(info->err);
  if (level < 0 && info->err->msg_code == JWRN_JPEG_EOF) {
    errors->truncated = true;
  }
}

bool DecodeJpeg(const std::vector<std::uint8_t>& bytes, RgbImage& image, JpegErrors& errors) {
  jpeg_decompress_struct info;
  info.err = jpeg_std_error(&errors.manager);
  errors.manager.error_exit = JpegError;
  errors.manager.emit_message = JpegMessage;
  errors.truncated = false;
  if (setjmp(errors.jump)) {
    jpeg_destroy_decompress(&info);
    return false;
  }
  jpeg_create_decompress(&info);
  jpeg_mem_src(&info, bytes.data(), static_cast<unsigned long>(bytes.size()));
  jpeg_read_header(&info, TRUE);
  info.out_color_space = JCS_RGB;
  jpeg_start_decompress(&info);
  if (info.output_components != 3) {
    std::snprintf(errors.message, sizeof errors.message, "unsupported colour space");
    jpeg_destroy_decompress(&info);
    return false;
  }
  image = RgbImage(static_cast<int>(info.output_width), static_cast<int>(info.output_height));
  while (info.output_scanline < info.output_height && !errors.truncated) {
    JSAMPROW row = image.At(0, static_cast<int>(info.output_scanline));
    jpeg_read_scanlines(&info, &row, 1);
  }
  if (errors.truncated) {
    std::snprintf(errors.message, sizeof errors.message, "the file ends early (truncated)");
    jpeg_destroy_decompress(&info);
    return false;
  }
  jpeg_finish_decompress(&info);
  jpeg_destroy_decompress(&info);
  return true;
}

}  // namespace

FileKind SniffKind(const std::uint8_t* bytes, std::size_t size) {
  static const std::uint8_t kPng[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};
  if (size >= 8 && std::memcmp(bytes, kPng, 8) == 0) return FileKind::Png;
  if (size >= 3 && bytes[0] == 0xFF && bytes[1] == 0xD8 && bytes[2] == 0xFF) return FileKind::Jpeg;
  if (size >= 9 && std::memcmp(bytes, "YUV4MPEG2", 9) == 0) return FileKind::Y4m;
  return FileKind::Unknown;
}

FileKind KindFromName(const std::string& name) {
  if (name == "-" || EndsWith(name, ".y4m")) return FileKind::Y4m;
  if (EndsWith(name, ".png")) return FileKind::Png;
  if (EndsWith(name, ".jpg") || EndsWith(name, ".jpeg")) return FileKind::Jpeg;
  return FileKind::Unknown;
}

RgbImage DecodeImage(const std::vector<std::uint8_t>& bytes, const std::string& name) {
  RgbImage image;
  switch (SniffKind(bytes.data(), bytes.size())) {
    case FileKind::Png: {
      PngErrors errors;
      if (!DecodePng(bytes, image, errors)) {
        BadInput(name + ": unreadable PNG file: " + errors.message);
      }
      break;
    }
    case FileKind::Jpeg: {
      JpegErrors errors;
      if (!DecodeJpeg(bytes, image, errors)) {
        BadInput(name + ": unreadable JPEG file: " + errors.message);
      }
      break;
    }
    default:
      BadInput(name + ": not a PNG, JPEG or YUV4MPEG2 file");
  }
  if (image.width <= 0 || image.height <= 0) {
    BadInput(name + ": the picture is empty");
  }
  return image;
}

void WritePng(const RgbImage& image, OutputFile& file) {
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png ? png_create_info_struct(png) : nullptr;
  if (!png || !info) {
    png_destroy_write_struct(png ? &png : nullptr, nullptr);
    BadInput("cannot write " + file.Path() + ": out of memory");
  }
  std::vector<png_bytep> rows(static_cast<std::size_t>(image.height));
  for (int y = 0; y < image.height; ++y) {
    rows[static_cast<std::size_t>(y)] = const_cast<png_bytep>(image.At(0, y));
  }
  bool failed = false;
  if (setjmp(png_jmpbuf(png))) {
    failed = true;
  } else {
    png_init_io(png, file.Stream());
    png_set_IHDR(png, info, static_cast<png_uint_32>(image.width), static_cast<png_uint_32>(image.height),
                 8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    png_write_image(png, rows.data());
    png_write_end(png, nullptr);
  }
  png_destroy_write_struct(&png, &info);
  if (failed) {
    BadInput("cannot write " + file.Path());
  }
}

void WriteJpeg(const RgbImage& image, int quality, OutputFile& file) {
  jpeg_compress_struct info;
  JpegErrors errors;
  info.err = jpeg_std_error(&errors.manager);
  errors.manager.error_exit = JpegError;
  bool failed = false;
  if (setjmp(errors.jump)) {
    failed = true;
  } else {
    jpeg_create_compress(&info);
    jpeg_stdio_dest(&info, file.Stream());
    info.image_width = static_cast<JDIMENSION>(image.width);
    info.image_height = static_cast<JDIMENSION>(image.height);
    info.input_components = 3;
    info.in_color_space = JCS_RGB;
    jpeg_set_defaults(&info);
    jpeg_set_quality(&info, quality, TRUE);
    jpeg_start_compress(&info, TRUE);
    while (info.next_scanline < info.image_height) {
      JSAMPROW row = const_cast<JSAMPROW>(image.At(0, static_cast<int>(info.next_scanline)));
      jpeg_write_scanlines(&info, &row, 1);
    }
    jpeg_finish_compress(&info);
  }
  jpeg_destroy_compress(&info);
  if (failed) {
    BadInput("cannot write " + file.Path() + ": " + errors.message);
  }
}

void ReadRest(std::FILE* stream, const std::string& name, std::vector<std::uint8_t>& bytes) {
  std::uint8_t chunk[65536];
  std::size_t got;
  while ((got = std::fread(chunk, 1, sizeof chunk, stream)) > 0) {
    bytes.insert(bytes.end(), chunk, chunk + got);
  }
  if (std::ferror(stream)) {
    BadInput("cannot read " + name + ": " + std::strerror(errno));
  }
}

}  // namespace dewarp_tool
