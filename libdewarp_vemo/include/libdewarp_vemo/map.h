// One coordinate table of a remap: a plane of rows x cols numbers (source x or source y per
// destination pixel), row-major, element (x, y) at index y * cols + x.
//
// Ownership: a copy-constructed map takes the arrays over (the source stops owning them);
// assignment shares them (both report owning). The arrays themselves are reference-counted
// behind the raw table pointers, so every sharing pattern releases each array exactly once,
// when its last holder goes, and a map that gave its arrays away keeps valid pointers.
//
// Merged tables (the per-pixel tables that the remap walks) are built on first use from a pair
// of maps, cached inside the x map and reused until Reset() drops them.
//
// Every table is allocated with a little padding past rows * cols (filled like a fresh table):
// the merged tables work on pairs of pixels, and the last pair of an odd pixel count, as well as
// the extra column of an odd-width remap, read one element past the end.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace vemo {
namespace libdewarp {

class Map {
public:
  typedef enum _tagMAP_TYPE { INTEGER = 0, FLOAT = 1, DOUBLE = 2 } MAP_TYPE;

  // Marker of the integer merge (Merge(int, ...)): both pixels of a pair outside the source.
  static const std::int32_t s_nIntegerOutside;  // -2147483648
  // Marker of the unsigned nearest-neighbour table: both pixels of a pair outside the source.
  static const std::uint32_t s_uNearestOutside;  // 0xFFFFFFFF
  // Marker of the float bilinear table: both pixels of a pair outside the interpolable area.
  static const float s_fBilinearOutside;  // 3.4028235e38, the largest float

  Map();
  Map(MAP_TYPE type, unsigned int cols, unsigned int rows);
  // Transfer: takes type, rows, pointers and ownership; the source stops owning. The row count
  // is stored as both rows and columns (copies of non-square maps report a square size).
  Map(const Map& other);
  // Shares: copies every member, pointers and ownership flag included.
  Map& operator=(const Map& other);
  ~Map();

  // Drops every table (data and merged caches) and allocates a fresh table of the type, every
  // byte 0xFF: NaN for FLOAT and DOUBLE, -1 for INTEGER.
  void Reset(MAP_TYPE type, unsigned int cols, unsigned int rows);
  // Same type and size again: a fresh, unfilled table and no merged caches.
  void Reset();
  // As Reset(type, cols, rows), but only the padding past rows * cols is filled: for builders
  // that write every element of the table themselves.
  void ResetUnfilled(MAP_TYPE type, unsigned int cols, unsigned int rows);

  MAP_TYPE GetType() const { return m_type; }
  unsigned int GetRows() const { return m_rows; }
  unsigned int GetCols() const { return m_cols; }
  // Whether this map frees its arrays when it goes (false after its arrays were taken over).
  bool GetOwnBuffer() const { return m_ownBuff; }
  // Number of elements actually allocated for the data table (without the padding).
  std::size_t GetAllocatedCount() const { return m_nAllocated; }

  // Data table of element type T (int, float or double): null unless that table exists.
  template <class T> T* GetTypePtr() const;
  template <class T> T** GetTypePtrPtr();
  // Merged cache of element type T (int, unsigned int, float or double).
  template <class T> T* GetMergedTypePtr() const;
  template <class T> T** GetMergedTypePtrPtr();

  // Element (x, y) converted to T; outside the allocated table the fill value of a fresh table.
  template <class T> T at(unsigned int x, unsigned int y) const;

  // A new map of the given type and this size whose elements are converted one by one:
  // ordinary conversion to FLOAT / DOUBLE, round to nearest (ties to even) to INTEGER.
  Map convertTo(MAP_TYPE type) const;

  // Prepares the map for integer use: adds an integer table (rounded to nearest) beside the
  // table of the map's type, unless one exists. The type stays.
  // The added table belongs to the map like its own (logically const: the values do not change).
  void ConfigForInt() const;
  // Likewise a float table beside the table of the map's type, unless one exists.
  void ConfigForFloat() const;

  // Integer merge for nearest-neighbour remapping (called on the x map with the y map and the
  // source size; the int argument only selects the variant). Interleaved (x, y) pairs, two
  // pixels at a time, truncated toward zero; a pair with one pixel outside the source is
  // marked s_nIntegerOutside in all four values. Cached: a second call returns the first table
  // (as it does any other table of pairs or wider found in the integer merge slot; only a packed
  // nearest table there is replaced).
  const std::int32_t* Merge(int, const Map& mapY, unsigned int width, unsigned int height) const;
  // Float merge for bilinear remapping: interleaved (x, y) pairs; a pair is kept only if both
  // pixels have 0 <= x < width - 1 and 0 <= y < height - 1, otherwise all four values are
  // s_fBilinearOutside. Cached for this source size.
  const float* Merge(float, const Map& mapY, unsigned int width, unsigned int height) const;

  // Merged tables of the remap: T = float gives the bilinear table (as Merge(float, ...)),
  // T = unsigned int the nearest-neighbour table (pairs truncated toward zero, kept when both
  // pixels are inside the source, otherwise s_uNearestOutside in all four values). Cached for
  // this source size. Null when the two maps differ in type, rows or columns.
  template <class T> const T* GetMergedBuffer(const Map& mapY, unsigned int width, unsigned int height) const;

  // The nearest-neighbour table packed for the block loops of the 4:2:0 remap: one word per
  // pixel, x in the low and y in the high 16 bits, with the same positions and markers as
  // GetMergedBuffer<unsigned int> (a pair with a pixel outside the source holds
  // s_uNearestOutside in both words). Only for sources of at most s_uNearestPackedLimit pixels
  // each way (null otherwise, and when the two maps differ in type, rows or columns). Kept in
  // the integer merge slot and cached for this source size like the unpacked table (the two
  // replace each other there).
  static const unsigned int s_uNearestPackedLimit = 32767;
  const std::uint32_t* GetNearestPackedBuffer(const Map& mapY, unsigned int width, unsigned int height) const;

  // The bilinear table laid out for the block loops of the 4:2:0 remap, for maps of an even
  // number of columns (null otherwise, and when the two maps differ in type, rows or columns).
  // The same positions and markers as GetMergedBuffer<float>, in groups of
  // s_uBilinearGroupColumns columns of a row pair: for row pair r and group g (columns 16g to
  // 16g + 15) the s_uBilinearGroupFloats floats at (r * groups + g) * s_uBilinearGroupFloats,
  // groups = ceil(cols / 16), hold
  //   [0, 8)   x of the even columns 16g, 16g + 2, ... 16g + 14 of row 2r
  //   [8, 16)  y of the same pixels
  //   [16, 24) x of the odd columns 16g + 1, ... 16g + 15 of row 2r
  //   [24, 32) y of the same pixels
  //   [32, 64) the same for row 2r + 1.
  // Columns past the map's width hold the marker; an odd last row has no entries. Kept in the
  // float merge slot and cached for this source size like the interleaved table (the two
  // replace each other there).
  static const unsigned int s_uBilinearGroupColumns = 16;
  static const unsigned int s_uBilinearGroupFloats = 64;
  const float* GetBilinearGroupBuffer(const Map& mapY, unsigned int width, unsigned int height) const;
  // Whether that table is built for this source size.
  bool HasBilinearGroupBuffer(unsigned int width, unsigned int height) const;
  // For a remap that forms the group table itself in the pass that walks its first frame: when
  // this map and mapY are FLOAT maps of the same size with their tables, of whole groups (columns
  // a multiple of s_uBilinearGroupColumns) and at least one row pair, a new table of the group
  // table's size, unwritten, held in the float merge slot (in place of what it held) but not yet
  // the built table; null otherwise. The caller writes every group as GetBilinearGroupBuffer
  // forms it, then hands the table to KeepBilinearGroupBuffer, which makes it the built table
  // for that source size.
  float* NewBilinearGroupBuffer(const Map& mapY) const;
  void KeepBilinearGroupBuffer(const float* table, unsigned int width, unsigned int height) const;

  // Fixed-point bilinear table (three words per pixel: x, y, fraction index), cached in the
  // integer merge slot. Built by Remap::CreateBilinenarFixedPointMap.
  const std::uint32_t* GetFixedPointBuffer(const Map& mapY, unsigned int width, unsigned int height,
                                           unsigned int defaultValue) const;

  // Number of pixels covered by a merged table of this map: rows * cols rounded up to whole
  // pairs, plus one more pair for the element past the end.
  std::size_t GetMergedPixelCount() const;

private:
  enum MergedKind {
    MERGED_NONE,
    MERGED_INTEGER,
    MERGED_NEAREST,
    MERGED_NEAREST_PACKED,
    MERGED_FIXED_POINT,
    MERGED_BILINEAR,
    MERGED_BILINEAR_GROUPS
  };

  template <class T> T* Allocate(std::size_t count, std::shared_ptr<void>& holder) const;
  void ResetTable(MAP_TYPE type, unsigned int cols, unsigned int rows, bool bFillAll);
  bool IsPairCompatible(const Map& mapY) const;
  // The float tables of this map and mapY when both are FLOAT maps with tables, and the number of
  // pixels that both hold: the merges read those directly and the rest element by element.
  struct FloatPairTables {
    const float* x;
    const float* y;
    std::size_t count;
  };
  FloatPairTables GetFloatPair(const Map& mapY) const;
  void NearestPair(const Map& mapY, const FloatPairTables& direct, std::size_t i, unsigned int width,
                   unsigned int height, std::uint32_t* pair) const;
  void ReleaseAll();
  // Element `index` of the table of the map's type, or NaN past the allocated elements.
  double ElementAsDouble(std::size_t index) const;

  MAP_TYPE m_type;
  unsigned int m_rows;
  unsigned int m_cols;
  mutable bool m_ownBuff;  // a copy construction takes ownership away from its source
  mutable std::int32_t* m_iData;  // mutable: ConfigForInt / ConfigForFloat add converted tables
  mutable float* m_fData;
  double* m_dData;
  mutable std::int32_t* m_iMergerdData;
  mutable float* m_fMergerdData;
  mutable double* m_dMergerdData;

  // Reference-counted ownership of the arrays above, and what the merge slots hold.
  std::size_t m_nAllocated;
  mutable std::shared_ptr<void> m_pobIData;
  mutable std::shared_ptr<void> m_pobFData;
  std::shared_ptr<void> m_pobDData;
  mutable std::shared_ptr<void> m_pobIMerged;
  mutable std::shared_ptr<void> m_pobFMerged;
  mutable MergedKind m_eIntMergedKind;
  mutable MergedKind m_eFloatMergedKind;
  mutable unsigned int m_uIntMergedWidth;
  mutable unsigned int m_uIntMergedHeight;
  mutable unsigned int m_uFloatMergedWidth;
  mutable unsigned int m_uFloatMergedHeight;
};

template <> std::int32_t* Map::GetTypePtr<std::int32_t>() const;
template <> float* Map::GetTypePtr<float>() const;
template <> double* Map::GetTypePtr<double>() const;
template <> std::int32_t** Map::GetTypePtrPtr<std::int32_t>();
template <> float** Map::GetTypePtrPtr<float>();
template <> double** Map::GetTypePtrPtr<double>();
template <> std::int32_t* Map::GetMergedTypePtr<std::int32_t>() const;
template <> std::uint32_t* Map::GetMergedTypePtr<std::uint32_t>() const;
template <> float* Map::GetMergedTypePtr<float>() const;
template <> double* Map::GetMergedTypePtr<double>() const;
template <> std::int32_t** Map::GetMergedTypePtrPtr<std::int32_t>();
template <> float** Map::GetMergedTypePtrPtr<float>();
template <> double** Map::GetMergedTypePtrPtr<double>();
template <> std::int32_t Map::at<std::int32_t>(unsigned int x, unsigned int y) const;
template <> float Map::at<float>(unsigned int x, unsigned int y) const;
template <> double Map::at<double>(unsigned int x, unsigned int y) const;
template <> const float* Map::GetMergedBuffer<float>(const Map& mapY, unsigned int width,
                                                     unsigned int height) const;
template <> const std::uint32_t* Map::GetMergedBuffer<std::uint32_t>(const Map& mapY, unsigned int width,
                                                                     unsigned int height) const;

}  // namespace libdewarp
}  // namespace vemo
