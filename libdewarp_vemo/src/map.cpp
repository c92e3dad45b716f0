#include <libdewarp_vemo/map.h>

#include "bilinear_group_rows.h"
#include "table_memory.h"

#include <libdewarp_vemo/log.h>

#include <emmintrin.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstring>
#include <limits>
#include <new>

namespace vemo {
namespace libdewarp {

const std::int32_t Map::s_nIntegerOutside = std::numeric_limits<std::int32_t>::min();
const std::uint32_t Map::s_uNearestOutside = 0xFFFFFFFFu;
const float Map::s_fBilinearOutside = FLT_MAX;
const unsigned int Map::s_uBilinearGroupColumns;
const unsigned int Map::s_uBilinearGroupFloats;

namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();

// Truncation toward zero. Values that no 32-bit integer holds (NaN, infinities, huge numbers)
// give the integer-indefinite value -2147483648, as the processor's own conversion does, so the
// result is defined and the same on every architecture.
inline std::int32_t TruncateToInt(double value) {
  if (value >= -2147483648.0 && value < 2147483648.0) {
    return static_cast<std::int32_t>(value);
  }
  return std::numeric_limits<std::int32_t>::min();
}

// Round to nearest in the current rounding mode (ties to even), same out-of-range rule.
inline std::int32_t RoundToInt(double value) {
  return TruncateToInt(std::nearbyint(value));
}

template <class T> T FillValue();
template <> std::int32_t FillValue<std::int32_t>() { return -1; }
template <> float FillValue<float>() { return std::numeric_limits<float>::quiet_NaN(); }
template <> double FillValue<double>() { return kNaN; }

template <class T> T ConvertElement(double value);
template <> std::int32_t ConvertElement<std::int32_t>(double value) { return RoundToInt(value); }
template <> float ConvertElement<float>(double value) { return static_cast<float>(value); }
template <> double ConvertElement<double>(double value) { return value; }


// Truncation toward zero of a float as TruncateToInt does it for the same value.
inline std::int32_t TruncateFloatToInt(float value) {
  if (value >= -2147483648.0f && value < 2147483648.0f) {
    return static_cast<std::int32_t>(value);
  }
  return std::numeric_limits<std::int32_t>::min();
}

}  // namespace

Map::Map()
    : m_type(INTEGER), m_rows(0), m_cols(0), m_ownBuff(true), m_iData(nullptr), m_fData(nullptr),
      m_dData(nullptr), m_iMergerdData(nullptr), m_fMergerdData(nullptr), m_dMergerdData(nullptr),
      m_nAllocated(0), m_eIntMergedKind(MERGED_NONE), m_eFloatMergedKind(MERGED_NONE), m_uIntMergedWidth(0),
      m_uIntMergedHeight(0), m_uFloatMergedWidth(0), m_uFloatMergedHeight(0) {}

Map::Map(MAP_TYPE type, unsigned int cols, unsigned int rows) : Map() {
  Reset(type, cols, rows);
}

Map::Map(const Map& other)
    : m_type(other.m_type), m_rows(other.m_rows), m_cols(other.m_rows), m_ownBuff(other.m_ownBuff),
      m_iData(other.m_iData), m_fData(other.m_fData), m_dData(other.m_dData),
      m_iMergerdData(other.m_iMergerdData), m_fMergerdData(other.m_fMergerdData), m_dMergerdData(nullptr),
      m_nAllocated(other.m_nAllocated), m_pobIData(other.m_pobIData), m_pobFData(other.m_pobFData),
      m_pobDData(other.m_pobDData), m_pobIMerged(other.m_pobIMerged), m_pobFMerged(other.m_pobFMerged),
      m_eIntMergedKind(other.m_eIntMergedKind), m_eFloatMergedKind(other.m_eFloatMergedKind),
      m_uIntMergedWidth(other.m_uIntMergedWidth), m_uIntMergedHeight(other.m_uIntMergedHeight),
      m_uFloatMergedWidth(other.m_uFloatMergedWidth), m_uFloatMergedHeight(other.m_uFloatMergedHeight) {
  // A transfer: the source keeps its pointers but no longer owns the arrays. (Its share of the
  // reference count keeps them valid for as long as it lives.)
  other.m_ownBuff = false;
}

Map& Map::operator=(const Map& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "Map");
    return *this;
  }
  m_type = other.m_type;
  m_rows = other.m_rows;
  m_cols = other.m_cols;
  m_ownBuff = other.m_ownBuff;
  m_iData = other.m_iData;
  m_fData = other.m_fData;
  m_dData = other.m_dData;
  m_iMergerdData = other.m_iMergerdData;
  m_fMergerdData = other.m_fMergerdData;
  m_dMergerdData = other.m_dMergerdData;
  m_nAllocated = other.m_nAllocated;
  m_pobIData = other.m_pobIData;
  m_pobFData = other.m_pobFData;
  m_pobDData = other.m_pobDData;
  m_pobIMerged = other.m_pobIMerged;
  m_pobFMerged = other.m_pobFMerged;
  m_eIntMergedKind = other.m_eIntMergedKind;
  m_eFloatMergedKind = other.m_eFloatMergedKind;
  m_uIntMergedWidth = other.m_uIntMergedWidth;
  m_uIntMergedHeight = other.m_uIntMergedHeight;
  m_uFloatMergedWidth = other.m_uFloatMergedWidth;
  m_uFloatMergedHeight = other.m_uFloatMergedHeight;
  return *this;
}

// The arrays are released by their reference counts: each exactly once, by its last holder.
Map::~Map() {}

std::size_t Map::GetMergedPixelCount() const {
  const std::size_t count = static_cast<std::size_t>(m_rows) * m_cols;
  return 2 * (count / 2 + 1);
}

template <class T> T* Map::Allocate(std::size_t count, std::shared_ptr<void>& holder) const {
  if (count > static_cast<std::size_t>(-1) / sizeof(T)) {
    throw std::bad_alloc();
  }
  holder = table_memory::Allocate(count * sizeof(T));
  return static_cast<T*>(holder.get());
}

void Map::ReleaseAll() {
  m_iData = nullptr;
  m_fData = nullptr;
  m_dData = nullptr;
  m_iMergerdData = nullptr;
  m_fMergerdData = nullptr;
  m_dMergerdData = nullptr;
  m_pobIData.reset();
  m_pobFData.reset();
  m_pobDData.reset();
  m_pobIMerged.reset();
  m_pobFMerged.reset();
  m_eIntMergedKind = MERGED_NONE;
  m_eFloatMergedKind = MERGED_NONE;
  m_nAllocated = 0;
}

void Map::Reset(MAP_TYPE type, unsigned int cols, unsigned int rows) {
  ResetTable(type, cols, rows, true);
}

void Map::ResetUnfilled(MAP_TYPE type, unsigned int cols, unsigned int rows) {
  ResetTable(type, cols, rows, false);
}

void Map::ResetTable(MAP_TYPE type, unsigned int cols, unsigned int rows, bool bFillAll) {
  ReleaseAll();
  m_type = type;
  m_cols = cols;
  m_rows = rows;
  m_ownBuff = true;
  m_nAllocated = static_cast<std::size_t>(rows) * cols;
  // Padded to whole pairs plus one pair past the end; the padding is unfilled like the rest.
  const std::size_t padded = GetMergedPixelCount();
  void* bytes = nullptr;
  switch (type) {
    case INTEGER:
      m_iData = Allocate<std::int32_t>(padded, m_pobIData);
      bytes = m_iData;
      break;
    case FLOAT:
      m_fData = Allocate<float>(padded, m_pobFData);
      bytes = m_fData;
      break;
    case DOUBLE:
      m_dData = Allocate<double>(padded, m_pobDData);
      bytes = m_dData;
      break;
    default:
      m_nAllocated = 0;
      return;
  }
  // The fill value 0x7fffffff: only its low byte counts, so every byte becomes 0xFF, which
  // reads as NaN in a float or double table and as -1 in an integer table.
  const std::size_t elementSize = type == INTEGER ? sizeof(std::int32_t) : type == FLOAT ? sizeof(float) : sizeof(double);
  const std::size_t first = bFillAll ? 0 : m_nAllocated;
  std::memset(static_cast<unsigned char*>(bytes) + first * elementSize, 0x7fffffff, (padded - first) * elementSize);
}

void Map::Reset() {
  Reset(m_type, m_cols, m_rows);
}

template <> std::int32_t* Map::GetTypePtr<std::int32_t>() const { return m_iData; }
template <> float* Map::GetTypePtr<float>() const { return m_fData; }
template <> double* Map::GetTypePtr<double>() const { return m_dData; }
template <> std::int32_t** Map::GetTypePtrPtr<std::int32_t>() { return &m_iData; }
template <> float** Map::GetTypePtrPtr<float>() { return &m_fData; }
template <> double** Map::GetTypePtrPtr<double>() { return &m_dData; }
template <> std::int32_t* Map::GetMergedTypePtr<std::int32_t>() const { return m_iMergerdData; }
template <> std::uint32_t* Map::GetMergedTypePtr<std::uint32_t>() const {
  return reinterpret_cast<std::uint32_t*>(m_iMergerdData);
}
template <> float* Map::GetMergedTypePtr<float>() const { return m_fMergerdData; }
template <> double* Map::GetMergedTypePtr<double>() const { return m_dMergerdData; }
template <> std::int32_t** Map::GetMergedTypePtrPtr<std::int32_t>() { return &m_iMergerdData; }
template <> float** Map::GetMergedTypePtrPtr<float>() { return &m_fMergerdData; }
template <> double** Map::GetMergedTypePtrPtr<double>() { return &m_dMergerdData; }

double Map::ElementAsDouble(std::size_t index) const {
  if (index >= m_nAllocated) {
    return kNaN;
  }
  switch (m_type) {
    case INTEGER:
      return m_iData ? static_cast<double>(m_iData[index]) : kNaN;
    case FLOAT:
      return m_fData ? static_cast<double>(m_fData[index]) : kNaN;
    case DOUBLE:
      return m_dData ? m_dData[index] : kNaN;
  }
  return kNaN;
}

template <> std::int32_t Map::at<std::int32_t>(unsigned int x, unsigned int y) const {
  const std::size_t index = static_cast<std::size_t>(y) * m_cols + x;
  if (index >= m_nAllocated) {
    return FillValue<std::int32_t>();
  }
  return m_type == INTEGER && m_iData ? m_iData[index] : RoundToInt(ElementAsDouble(index));
}

template <> float Map::at<float>(unsigned int x, unsigned int y) const {
  const std::size_t index = static_cast<std::size_t>(y) * m_cols + x;
  if (index >= m_nAllocated) {
    return FillValue<float>();
  }
  return m_type == FLOAT && m_fData ? m_fData[index] : static_cast<float>(ElementAsDouble(index));
}

template <> double Map::at<double>(unsigned int x, unsigned int y) const {
  const std::size_t index = static_cast<std::size_t>(y) * m_cols + x;
  if (index >= m_nAllocated) {
    return FillValue<double>();
  }
  return ElementAsDouble(index);
}

Map Map::convertTo(MAP_TYPE type) const {
  Map result(type, m_cols, m_rows);
  const std::size_t count = std::min(result.m_nAllocated, m_nAllocated);
  for (std::size_t i = 0; i < count; ++i) {
    const double value = ElementAsDouble(i);
    switch (type) {
      case INTEGER:
        result.m_iData[i] = ConvertElement<std::int32_t>(value);
        break;
      case FLOAT:
        result.m_fData[i] = ConvertElement<float>(value);
        break;
      case DOUBLE:
        result.m_dData[i] = ConvertElement<double>(value);
        break;
    }
  }
  return result;
}

void Map::ConfigForInt() const {
  if (m_iData) {
    return;
  }
  const std::size_t padded = GetMergedPixelCount();
  std::int32_t* table = Allocate<std::int32_t>(padded, m_pobIData);
  std::memset(table, 0xFF, padded * sizeof(std::int32_t));
  for (std::size_t i = 0; i < m_nAllocated && i < padded; ++i) {
    table[i] = RoundToInt(ElementAsDouble(i));
  }
  m_iData = table;
}

void Map::ConfigForFloat() const {
  if (m_fData) {
    return;
  }
  const std::size_t padded = GetMergedPixelCount();
  float* table = Allocate<float>(padded, m_pobFData);
  std::memset(table, 0xFF, padded * sizeof(float));
  for (std::size_t i = 0; i < m_nAllocated && i < padded; ++i) {
    table[i] = static_cast<float>(ElementAsDouble(i));
  }
  m_fData = table;
}

Map::FloatPairTables Map::GetFloatPair(const Map& mapY) const {
  FloatPairTables pair = {nullptr, nullptr, 0};
  if (m_type == FLOAT && mapY.m_type == FLOAT && m_fData && mapY.m_fData) {
    pair.x = m_fData;
    pair.y = mapY.m_fData;
    pair.count = std::min(m_nAllocated, mapY.m_nAllocated);
  }
  return pair;
}

bool Map::IsPairCompatible(const Map& mapY) const {
  return m_type == mapY.m_type && m_rows == mapY.m_rows && m_cols == mapY.m_cols;
}

const std::int32_t* Map::Merge(int, const Map& mapY, unsigned int width, unsigned int height) const {
  // A cached table is returned as it is, whatever it was built from, except the packed nearest
  // table: it holds one word per pixel, half of what a caller of this merge reads, so it is
  // replaced rather than handed out as pairs.
  if (m_iMergerdData && m_eIntMergedKind != MERGED_NEAREST_PACKED) {
    return m_iMergerdData;
  }
  const std::size_t pixels = GetMergedPixelCount();
  std::int32_t* table = Allocate<std::int32_t>(2 * pixels, m_pobIMerged);
  for (std::size_t i = 0; i < pixels; i += 2) {
    const std::int32_t x0 = TruncateToInt(ElementAsDouble(i));
    const std::int32_t x1 = TruncateToInt(ElementAsDouble(i + 1));
    const std::int32_t y0 = TruncateToInt(mapY.ElementAsDouble(i));
    const std::int32_t y1 = TruncateToInt(mapY.ElementAsDouble(i + 1));
    std::int32_t* pair = table + 2 * i;
    if (static_cast<std::uint32_t>(x0) < width && static_cast<std::uint32_t>(x1) < width &&
        static_cast<std::uint32_t>(y0) < height && static_cast<std::uint32_t>(y1) < height) {
      pair[0] = x0;
      pair[1] = y0;
      pair[2] = x1;
      pair[3] = y1;
    } else {
      pair[0] = pair[1] = pair[2] = pair[3] = s_nIntegerOutside;
    }
  }
  m_iMergerdData = table;
  m_eIntMergedKind = MERGED_INTEGER;
  m_uIntMergedWidth = width;
  m_uIntMergedHeight = height;
  return table;
}

const float* Map::Merge(float, const Map& mapY, unsigned int width, unsigned int height) const {
  return GetMergedBuffer<float>(mapY, width, height);
}

template <>
const float* Map::GetMergedBuffer<float>(const Map& mapY, unsigned int width, unsigned int height) const {
  if (!IsPairCompatible(mapY)) {
    return nullptr;
  }
  if (m_fMergerdData && m_eFloatMergedKind == MERGED_BILINEAR && m_uFloatMergedWidth == width &&
      m_uFloatMergedHeight == height) {
    return m_fMergerdData;
  }
  // Built again only when the source size differs from the one the cached table was clipped
  // against: the table's positions must stay inside the frame they are read from.
  const float fMaxX = static_cast<float>(width) - 1.0f;
  const float fMaxY = static_cast<float>(height) - 1.0f;
  const std::size_t pixels = GetMergedPixelCount();
  float* table = Allocate<float>(2 * pixels, m_pobFMerged);
  const FloatPairTables direct = GetFloatPair(mapY);
  std::size_t i = 0;
  for (; i + 2 <= direct.count; i += 2) {
    const float x0 = direct.x[i];
    const float x1 = direct.x[i + 1];
    const float y0 = direct.y[i];
    const float y1 = direct.y[i + 1];
    float* pair = table + 2 * i;
    const bool inside = x0 >= 0.0f && x0 < fMaxX && x1 >= 0.0f && x1 < fMaxX && y0 >= 0.0f && y0 < fMaxY &&
                        y1 >= 0.0f && y1 < fMaxY;
    pair[0] = inside ? x0 : s_fBilinearOutside;
    pair[1] = inside ? y0 : s_fBilinearOutside;
    pair[2] = inside ? x1 : s_fBilinearOutside;
    pair[3] = inside ? y1 : s_fBilinearOutside;
  }
  for (; i < pixels; i += 2) {
    const float x0 = static_cast<float>(ElementAsDouble(i));
    const float x1 = static_cast<float>(ElementAsDouble(i + 1));
    const float y0 = static_cast<float>(mapY.ElementAsDouble(i));
    const float y1 = static_cast<float>(mapY.ElementAsDouble(i + 1));
    float* pair = table + 2 * i;
    if (x0 >= 0.0f && x0 < fMaxX && x1 >= 0.0f && x1 < fMaxX && y0 >= 0.0f && y0 < fMaxY && y1 >= 0.0f &&
        y1 < fMaxY) {
      pair[0] = x0;
      pair[1] = y0;
      pair[2] = x1;
      pair[3] = y1;
    } else {
      pair[0] = pair[1] = pair[2] = pair[3] = s_fBilinearOutside;
    }
  }
  m_fMergerdData = table;
  m_eFloatMergedKind = MERGED_BILINEAR;
  m_uFloatMergedWidth = width;
  m_uFloatMergedHeight = height;
  return table;
}

// Pixels i and i + 1 truncated toward zero as (x0, y0, x1, y1), or s_uNearestOutside in all four
// when either lies outside width x height (unsigned comparisons, so negatives fail).
void Map::NearestPair(const Map& mapY, const FloatPairTables& direct, std::size_t i, unsigned int width,
                      unsigned int height, std::uint32_t* pair) const {
  std::uint32_t x0, x1, y0, y1;
  if (i + 2 <= direct.count) {
    x0 = static_cast<std::uint32_t>(TruncateFloatToInt(direct.x[i]));
    x1 = static_cast<std::uint32_t>(TruncateFloatToInt(direct.x[i + 1]));
    y0 = static_cast<std::uint32_t>(TruncateFloatToInt(direct.y[i]));
    y1 = static_cast<std::uint32_t>(TruncateFloatToInt(direct.y[i + 1]));
  } else {
    x0 = static_cast<std::uint32_t>(TruncateToInt(ElementAsDouble(i)));
    x1 = static_cast<std::uint32_t>(TruncateToInt(ElementAsDouble(i + 1)));
    y0 = static_cast<std::uint32_t>(TruncateToInt(mapY.ElementAsDouble(i)));
    y1 = static_cast<std::uint32_t>(TruncateToInt(mapY.ElementAsDouble(i + 1)));
  }
  const bool inside = x0 < width && x1 < width && y0 < height && y1 < height;
  pair[0] = inside ? x0 : s_uNearestOutside;
  pair[1] = inside ? y0 : s_uNearestOutside;
  pair[2] = inside ? x1 : s_uNearestOutside;
  pair[3] = inside ? y1 : s_uNearestOutside;
}

template <>
const std::uint32_t* Map::GetMergedBuffer<std::uint32_t>(const Map& mapY, unsigned int width,
                                                         unsigned int height) const {
  if (!IsPairCompatible(mapY)) {
    return nullptr;
  }
  if (m_iMergerdData && m_eIntMergedKind == MERGED_NEAREST && m_uIntMergedWidth == width &&
      m_uIntMergedHeight == height) {
    return reinterpret_cast<const std::uint32_t*>(m_iMergerdData);
  }
  // The integer slot is rebuilt when it holds another kind of table or one clipped against
  // another source size, so that every position read from it lies inside the frame.
  const std::size_t pixels = GetMergedPixelCount();
  std::uint32_t* table = Allocate<std::uint32_t>(2 * pixels, m_pobIMerged);
  const FloatPairTables direct = GetFloatPair(mapY);
  for (std::size_t i = 0; i < pixels; i += 2) {
    NearestPair(mapY, direct, i, width, height, table + 2 * i);
  }
  m_iMergerdData = reinterpret_cast<std::int32_t*>(table);
  m_eIntMergedKind = MERGED_NEAREST;
  m_uIntMergedWidth = width;
  m_uIntMergedHeight = height;
  return table;
}

const std::uint32_t* Map::GetNearestPackedBuffer(const Map& mapY, unsigned int width, unsigned int height) const {
  if (!IsPairCompatible(mapY) || width > s_uNearestPackedLimit || height > s_uNearestPackedLimit) {
    return nullptr;
  }
  if (m_iMergerdData && m_eIntMergedKind == MERGED_NEAREST_PACKED && m_uIntMergedWidth == width &&
      m_uIntMergedHeight == height) {
    return reinterpret_cast<const std::uint32_t*>(m_iMergerdData);
  }
  const std::size_t pixels = GetMergedPixelCount();
  std::uint32_t* table = Allocate<std::uint32_t>(pixels, m_pobIMerged);
  const FloatPairTables direct = GetFloatPair(mapY);
  for (std::size_t i = 0; i < pixels; i += 2) {
    std::uint32_t pair[4];
    NearestPair(mapY, direct, i, width, height, pair);
    // Positions inside the source are below 32768 each way, so a packed position is never the
    // marker word.
    const bool inside = pair[0] != s_uNearestOutside;
    table[i] = inside ? pair[0] | (pair[1] << 16) : s_uNearestOutside;
    table[i + 1] = inside ? pair[2] | (pair[3] << 16) : s_uNearestOutside;
  }
  m_iMergerdData = reinterpret_cast<std::int32_t*>(table);
  m_eIntMergedKind = MERGED_NEAREST_PACKED;
  m_uIntMergedWidth = width;
  m_uIntMergedHeight = height;
  return table;
}

const float* Map::GetBilinearGroupBuffer(const Map& mapY, unsigned int width, unsigned int height) const {
  if (!IsPairCompatible(mapY) || (m_cols & 1u) != 0) {
    return nullptr;
  }
  if (HasBilinearGroupBuffer(width, height)) {
    return m_fMergerdData;
  }
  const BilinearBounds bounds = {static_cast<float>(width) - 1.0f, static_cast<float>(height) - 1.0f};
  const std::size_t cols = m_cols;
  const std::size_t groups = (cols + s_uBilinearGroupColumns - 1) / s_uBilinearGroupColumns;
  const std::size_t rowPairs = m_rows / 2;
  const std::size_t count = rowPairs * groups * s_uBilinearGroupFloats;
  // At least one element, so that an empty table is still a table.
  float* table = Allocate<float>(count > 0 ? count : 1, m_pobFMerged);
  const FloatPairTables direct = GetFloatPair(mapY);
  for (std::size_t r = 0; r < rowPairs; ++r) {
    for (std::size_t g = 0; g < groups; ++g) {
      float* group = table + (r * groups + g) * s_uBilinearGroupFloats;
      for (std::size_t half = 0; half < 2; ++half) {
        float* out = group + 32 * half;
        const std::size_t first = (2 * r + half) * cols + g * s_uBilinearGroupColumns;
        if ((g + 1) * s_uBilinearGroupColumns <= cols && first + s_uBilinearGroupColumns <= direct.count) {
          FillGroupRow(out, direct.x + first, direct.y + first, bounds);
          continue;
        }
        // The last group of a row (columns past the width hold the marker) and maps read
        // element by element.
        for (std::size_t k = 0; k < 8; ++k) {
          const std::size_t column = g * s_uBilinearGroupColumns + 2 * k;
          float values[4] = {s_fBilinearOutside, s_fBilinearOutside, s_fBilinearOutside, s_fBilinearOutside};
          if (column < cols) {
            const std::size_t i = first + 2 * k;
            const float x0 = static_cast<float>(ElementAsDouble(i));
            const float x1 = static_cast<float>(ElementAsDouble(i + 1));
            const float y0 = static_cast<float>(mapY.ElementAsDouble(i));
            const float y1 = static_cast<float>(mapY.ElementAsDouble(i + 1));
            if (bounds.Inside(x0, y0) && bounds.Inside(x1, y1)) {
              values[0] = x0;
              values[1] = y0;
              values[2] = x1;
              values[3] = y1;
            }
          }
          for (std::size_t j = 0; j < 4; ++j) {
            out[8 * j + k] = values[j];
          }
        }
      }
    }
  }
  m_fMergerdData = table;
  m_eFloatMergedKind = MERGED_BILINEAR_GROUPS;
  m_uFloatMergedWidth = width;
  m_uFloatMergedHeight = height;
  return table;
}

bool Map::HasBilinearGroupBuffer(unsigned int width, unsigned int height) const {
  return m_fMergerdData && m_eFloatMergedKind == MERGED_BILINEAR_GROUPS && m_uFloatMergedWidth == width &&
         m_uFloatMergedHeight == height;
}

float* Map::NewBilinearGroupBuffer(const Map& mapY) const {
  const FloatPairTables direct = GetFloatPair(mapY);
  const std::size_t pixels = static_cast<std::size_t>(m_rows) * m_cols;
  if (!IsPairCompatible(mapY) || !direct.x || direct.count < pixels || m_cols == 0 ||
      m_cols % s_uBilinearGroupColumns != 0 || m_rows < 2) {
    return nullptr;
  }
  // The slot's old table goes with its holder.
  m_fMergerdData = nullptr;
  m_eFloatMergedKind = MERGED_NONE;
  const std::size_t count = (m_rows / 2) * (m_cols / s_uBilinearGroupColumns) * s_uBilinearGroupFloats;
  return Allocate<float>(count, m_pobFMerged);
}

void Map::KeepBilinearGroupBuffer(const float* table, unsigned int width, unsigned int height) const {
  if (!table || table != m_pobFMerged.get()) {
    return;
  }
  m_fMergerdData = const_cast<float*>(table);
  m_eFloatMergedKind = MERGED_BILINEAR_GROUPS;
  m_uFloatMergedWidth = width;
  m_uFloatMergedHeight = height;
}

const std::uint32_t* Map::GetFixedPointBuffer(const Map& mapY, unsigned int width, unsigned int height,
                                              unsigned int defaultValue) const {
  // A cached table of this kind is returned as it is. A table of another kind in the integer
  // slot (two words per pixel) is replaced: its readers expect three words per pixel.
  if (m_iMergerdData && m_eIntMergedKind == MERGED_FIXED_POINT) {
    return reinterpret_cast<const std::uint32_t*>(m_iMergerdData);
  }
  const std::size_t pixels = GetMergedPixelCount();
  std::uint32_t* table = Allocate<std::uint32_t>(3 * pixels, m_pobIMerged);
  const std::uint32_t limitX = 32u * width;
  const std::uint32_t limitY = 32u * height;
  for (std::size_t i = 0; i < pixels; i += 2) {
    std::uint32_t X[2];
    std::uint32_t Y[2];
    for (int k = 0; k < 2; ++k) {
      X[k] = static_cast<std::uint32_t>(RoundToInt(32.0 * ElementAsDouble(i + k)));
      Y[k] = static_cast<std::uint32_t>(RoundToInt(32.0 * mapY.ElementAsDouble(i + k)));
    }
    const bool inside = X[0] < limitX && X[1] < limitX && Y[0] < limitY && Y[1] < limitY;
    for (int k = 0; k < 2; ++k) {
      std::uint32_t* entry = table + 3 * (i + k);
      entry[0] = inside ? X[k] >> 5 : defaultValue;
      entry[1] = inside ? Y[k] >> 5 : defaultValue;
      entry[2] = (Y[k] & 31u) * 32u + (X[k] & 31u);
    }
  }
  m_iMergerdData = reinterpret_cast<std::int32_t*>(table);
  m_eIntMergedKind = MERGED_FIXED_POINT;
  m_uIntMergedWidth = width;
  m_uIntMergedHeight = height;
  // The table belongs to this map and is released with it.
  m_ownBuff = true;
  return table;
}

}  // namespace libdewarp
}  // namespace vemo
