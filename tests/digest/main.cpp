// Prints the digest of every registered section, sorted by name:
//   dewarp_digest            one line per section: name, value count, hash
//   dewarp_digest --trace    every value as it is added (to find where two builds part ways)
//   dewarp_digest --check    does nothing (tells a script whether the program runs here)
#include "digest.h"

#include <algorithm>
#include <cinttypes>
#include <cstring>

namespace dewarp_digest {

std::vector<Section>& sections() {
  static std::vector<Section> all;
  return all;
}

void Digest::mix(const void* data, std::size_t size) {
  const unsigned char* bytes = static_cast<const unsigned char*>(data);
  for (std::size_t i = 0; i < size; ++i) {
    m_hash ^= bytes[i];
    m_hash *= 1099511628211ULL;
  }
}

void Digest::add(float value) {
  std::uint32_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  mix(&bits, sizeof bits);
  ++m_count;
  if (m_trace) std::fprintf(m_trace, "  f %.9g 0x%08" PRIx32 "\n", static_cast<double>(value), bits);
}

void Digest::add(double value) {
  std::uint64_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  mix(&bits, sizeof bits);
  ++m_count;
  if (m_trace) std::fprintf(m_trace, "  d %.17g 0x%016" PRIx64 "\n", value, bits);
}

void Digest::add(std::int64_t value) {
  mix(&value, sizeof value);
  ++m_count;
  if (m_trace) std::fprintf(m_trace, "  i %" PRId64 "\n", value);
}

void Digest::add(const std::string& text) {
  std::uint64_t size = text.size();
  mix(&size, sizeof size);
  mix(text.data(), text.size());
  ++m_count;
  if (m_trace) std::fprintf(m_trace, "  s \"%s\"\n", text.c_str());
}

void Digest::add_bytes(const void* data, std::size_t size) {
  std::uint64_t length = size;
  mix(&length, sizeof length);
  mix(data, size);
  ++m_count;
  if (m_trace) {
    Digest part(nullptr);
    part.mix(data, size);
    std::fprintf(m_trace, "  b %zu bytes 0x%016" PRIx64 "\n", size, part.m_hash);
  }
}

}  // namespace dewarp_digest

int main(int argc, char** argv) {
  using namespace dewarp_digest;
  if (argc > 1 && std::strcmp(argv[1], "--check") == 0) return 0;
  const bool trace = argc > 1 && std::strcmp(argv[1], "--trace") == 0;
  std::vector<Section> all = sections();
  std::sort(all.begin(), all.end(),
            [](const Section& a, const Section& b) { return std::strcmp(a.name, b.name) < 0; });
  for (const Section& section : all) {
    if (trace) std::printf("[%s]\n", section.name);
    Digest digest(trace ? stdout : nullptr);
    section.function(digest);
    std::printf("%s %zu %016" PRIx64 "\n", section.name, digest.count(), digest.hash());
  }
  return 0;
}
