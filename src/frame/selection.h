// Which pixels of a region count, and the lanes of a vector of pixels that don't.
#pragma once

#include <array>

#include "frame/declarations.h"
#include "frame/views.h"
#include "simd/sums.h"
#include "simd/vectors.h"

namespace orv {

/// A whole region.
struct EveryPixel {
  EveryPixel row(int) const { return {}; }
};

struct MaskRow {
  const uint8_t* bytes;
};

/// The pixels under nonzero bytes.
struct Mask {
  View<const uint8_t> bytes;

  MaskRow row(int y) const { return {bytes.row(y)}; }
};

/// The number of pixels that a mask selects, 16 mask bytes a turn.
inline uint64_t countSelected(Mask mask, OrvSize roi) {
  SampleSum<uint8_t> zeros;
  uint64_t count = static_cast<uint64_t>(roi.width) * static_cast<uint64_t>(roi.height);
  for (int y = 0; y < roi.height; ++y) {
    const uint8_t* const bytes = mask.bytes.row(y);
    int x = 0;
    for (; x <= roi.width - 16; x += 16) {
      const __m128i isZero = _mm_cmpeq_epi8(loadBytes(bytes + x), _mm_setzero_si128());
      zeros.add({_mm_sub_epi8(_mm_setzero_si128(), isZero)});
    }
    for (; x < roi.width; ++x) count -= bytes[x] == 0;
  }
  return count - zeros.total();
}

// Excluded lanes: all bits set where a pixel takes no part; NoLanes where that can't be.
struct NoLanes {};

inline NoLanes excludedLanes(U8x16, EveryPixel, int) { return {}; }
inline NoLanes excludedLanes(U16x8, EveryPixel, int) { return {}; }
inline NoLanes excludedLanes(F32x8, EveryPixel, int) { return {}; }
inline U8x16 excludedLanes(U8x16, MaskRow mask, int x) {
  return {_mm_cmpeq_epi8(loadBytes(mask.bytes + x), _mm_setzero_si128())};
}
inline U16x8 excludedLanes(U16x8, MaskRow mask, int x) {
  const __m128i bytes = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(mask.bytes + x));
  return {_mm_cvtepi8_epi16(_mm_cmpeq_epi8(bytes, _mm_setzero_si128()))};
}
inline F32x8 excludedLanes(F32x8, MaskRow mask, int x) { return unselectedLanes(mask.bytes + x); }

inline NoLanes joinExcluded(NoLanes, NoLanes) { return {}; }
template <class V>
V joinExcluded(NoLanes, V b) {
  return b;
}
template <class V>
V joinExcluded(V a, NoLanes) {
  return a;
}
inline U8x16 joinExcluded(U8x16 a, U8x16 b) { return {_mm_or_si128(a.v, b.v)}; }
inline U16x8 joinExcluded(U16x8 a, U16x8 b) { return {_mm_or_si128(a.v, b.v)}; }
inline F32x8 joinExcluded(F32x8 a, F32x8 b) { return {_mm256_or_ps(a.v, b.v)}; }

/// Zero in excluded lanes.
template <class V>
V zeroWhere(NoLanes, V a) {
  return a;
}
inline U8x16 zeroWhere(U8x16 excluded, U8x16 a) { return {_mm_andnot_si128(excluded.v, a.v)}; }
inline U16x8 zeroWhere(U16x8 excluded, U16x8 a) { return {_mm_andnot_si128(excluded.v, a.v)}; }

/// All bits set in excluded lanes: the largest integer, a NaN.
template <class V, class Lanes>
V onesWhere(Lanes excluded, V a) {
  return joinExcluded(excluded, a);
}

/// Set, clear and set bytes, one vector each: what is loaded across the first seam excludes a beginning, across the
/// second an end.
inline constexpr std::array<uint8_t, 96> exclusions = [] {
  std::array<uint8_t, 96> bytes{};
  for (size_t i = 0; i < 32; ++i) bytes[i] = bytes[64 + i] = 0xff;
  return bytes;
}();
template <class Sample>
auto excludeUntil(int lane) {
  return VectorsOf<Sample>::Body::load(
      reinterpret_cast<const Sample*>(exclusions.data() + 32 - lane * static_cast<int>(sizeof(Sample))));
}
template <class Sample>
auto excludeFrom(int lane) {
  return VectorsOf<Sample>::Body::load(
      reinterpret_cast<const Sample*>(exclusions.data() + 64 - lane * static_cast<int>(sizeof(Sample))));
}

}  // namespace orv
