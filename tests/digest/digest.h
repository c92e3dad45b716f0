// Cross-architecture digest of deterministic engine results.
//
// Each section feeds values into a Digest; the program prints, per section, how many values were
// added and a 64-bit FNV-1a hash of their bytes. Floating-point values are hashed by their bit
// patterns, so the i386 (SSE2) and x86-64 builds must agree bit for bit.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace dewarp_digest {

class Digest {
public:
  explicit Digest(std::FILE* trace) : m_trace(trace) {}

  void add(float value);
  void add(double value);
  void add(long double value) { add(static_cast<double>(value)); }
  void add(std::int64_t value);
  void add(int value) { add(static_cast<std::int64_t>(value)); }
  void add(unsigned value) { add(static_cast<std::int64_t>(value)); }
  void add(bool value) { add(static_cast<std::int64_t>(value ? 1 : 0)); }
  void add(const std::string& text);
  void add(const char* text) { add(std::string(text ? text : "<null>")); }
  void add_bytes(const void* data, std::size_t size);

  std::uint64_t hash() const { return m_hash; }
  std::size_t count() const { return m_count; }

private:
  void mix(const void* data, std::size_t size);

  std::FILE* m_trace;
  std::uint64_t m_hash = 1469598103934665603ULL;
  std::size_t m_count = 0;
};

typedef void (*SectionFunction)(Digest&);

struct Section {
  const char* name;
  SectionFunction function;
};

std::vector<Section>& sections();

struct SectionRegistrar {
  SectionRegistrar(const char* name, SectionFunction function) { sections().push_back({name, function}); }
};

}  // namespace dewarp_digest

#define DEWARP_DIGEST_SECTION(name)                                                          \
  static void dewarp_digest_section_##name(::dewarp_digest::Digest& d);                     \
  static ::dewarp_digest::SectionRegistrar dewarp_digest_registrar_##name(                   \
      #name, &dewarp_digest_section_##name);                                                 \
  static void dewarp_digest_section_##name(::dewarp_digest::Digest& d)
