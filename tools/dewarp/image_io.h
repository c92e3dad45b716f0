// Reading and writing picture files: PNG and JPEG (through libpng and libjpeg), recognised by
// their leading bytes, not by the name.
#ifndef DEWARP_TOOL_IMAGE_IO_H
#define DEWARP_TOOL_IMAGE_IO_H

#include "yuv.h"

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace dewarp_tool {

class OutputFile;

enum class FileKind { Png, Jpeg, Y4m, Unknown };

// The kind of a file from its first bytes.
FileKind SniffKind(const std::uint8_t* bytes, std::size_t size);
// The kind of an output file from its name: ".png", ".jpg"/".jpeg", ".y4m" or "-" (YUV4MPEG2).
FileKind KindFromName(const std::string& name);

// Decodes a whole PNG or JPEG file held in memory; fails with a message naming the file and what
// is wrong with it (not a picture, truncated, corrupt, unsupported).
RgbImage DecodeImage(const std::vector<std::uint8_t>& bytes, const std::string& name);

void WritePng(const RgbImage& image, OutputFile& file);
void WriteJpeg(const RgbImage& image, int quality, OutputFile& file);

// Reads what is left of an open stream into memory, appended to `bytes`; "name" is for messages.
void ReadRest(std::FILE* stream, const std::string& name, std::vector<std::uint8_t>& bytes);

}  // namespace dewarp_tool

#endif
