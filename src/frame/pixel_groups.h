// The walk over rows of pixels of which only some count: those that a mask selects, in the one channel of interest.
//
// A row is walked a vector at a time. What takes no part, because the mask excludes it or because it lies beyond the
// row, is marked in a vector of excluded lanes, so that the row's end is the same code as its body.
#pragma once

#include <algorithm>
#include <array>
#include <concepts>
#include <cstring>

#include "frame/declarations.h"
#include "frame/views.h"
#include "simd/channels.h"
#include "simd/sums.h"

namespace orv {

struct EveryPixel {
  EveryPixel row(int) const { return {}; }
  uint64_t countInRow(int width) const { return static_cast<uint64_t>(width); }
};

/// 16 mask bytes a turn.
inline uint64_t countNonzero(const uint8_t* bytes, int length) {
  SampleSum<uint8_t> zeros;
  int x = 0;
  for (; x <= length - 16; x += 16) {
    const __m128i unselected = _mm_cmpeq_epi8(loadBytes(bytes + x), _mm_setzero_si128());
    zeros.add({_mm_sub_epi8(_mm_setzero_si128(), unselected)});
  }
  uint64_t count = static_cast<uint64_t>(x) - zeros.total();
  for (; x < length; ++x) count += bytes[x] != 0;
  return count;
}

struct MaskRow {
  const uint8_t* bytes;

  uint64_t countInRow(int width) const { return countNonzero(bytes, width); }
};

struct Mask {
  View<const uint8_t> bytes;

  MaskRow row(int y) const { return {bytes.row(y)}; }
};

/// Number of pixels that count.
template <class Selection>
uint64_t countPixels(const Selection& selection, OrvSize roi) {
  uint64_t count = 0;
  for (int y = 0; y < roi.height; ++y) count += selection.row(y).countInRow(roi.width);
  return count;
}

/// Images of one size, read through one channel and one selection.
template <class ChannelOfInterest, class Selection, class Sample, int images>
struct Region {
  using Channel = ChannelOfInterest;
  using SampleType = Sample;
  using Vector = typename Channel::Vector;

  struct Row {
    std::array<const Sample*, images> samples;
    decltype(Selection{}.row(0)) selection;
  };

  OrvSize roi;
  Channel channel;
  Selection selection;
  std::array<View<const Sample>, images> sources;

  Row row(int y) const {
    Row r{{}, selection.row(y)};
    for (size_t i = 0; i < images; ++i) r.samples[i] = sources[i].row(y);
    return r;
  }
};

template <class Channel, class Selection, class Sample, class... More>
Region<Channel, Selection, Sample, 1 + sizeof...(More)> region(OrvSize roi, Channel channel, Selection selection,
                                                               View<const Sample> src, More... more) {
  return {roi, channel, selection, {src, more...}};
}

// Excluded lanes: all bits set where a pixel takes no part; NoLanes where that can't be.
struct NoLanes {};

inline NoLanes excludedLanes(U8x16, EveryPixel, int) { return {}; }
inline NoLanes excludedLanes(U16x8, EveryPixel, int) { return {}; }
inline NoLanes excludedLanes(F32x8, EveryPixel, int) { return {}; }
inline U8x16 excludedLanes(U8x16, MaskRow mask, int x) {
  return {_mm_cmpeq_epi8(loadBytes(mask.bytes + x), _mm_setzero_si128())};
}
inline __m128i eightUnselected(const uint8_t* mask) {
  return _mm_cmpeq_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(mask)), _mm_setzero_si128());
}
inline U16x8 excludedLanes(U16x8, MaskRow mask, int x) { return {_mm_cvtepi8_epi16(eightUnselected(mask.bytes + x))}; }
inline F32x8 excludedLanes(F32x8, MaskRow mask, int x) {
  const __m128i unselected = eightUnselected(mask.bytes + x);
  return F32x8::fromHalves(_mm_castsi128_ps(_mm_cvtepi8_epi32(unselected)),
                           _mm_castsi128_ps(_mm_cvtepi8_epi32(_mm_srli_si128(unselected, 4))));
}

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

/// Where a group stands in its row: one of two neighbours, whole but without a neighbour, or what is left at the end.
enum class Place { first, second, alone, rest };

/// A vector's worth of pixels from x on. `outside` are the lanes that aren't the row's, or were in an earlier group.
template <Place placeInRow, class Row, class Channel, class Outside>
struct Group {
  static constexpr Place place = placeInRow;
  using Vector = typename Channel::Vector;

  const Row& row;
  const Channel& channel;
  int x;
  Outside outside;

  Vector sample(size_t image = 0) const { return channel.load(row.samples[image] + x * Channel::channels); }
  auto excluded() const { return joinExcluded(excludedLanes(Vector{}, row.selection, x), outside); }
};

template <Place place, class Row, class Channel, class Outside = NoLanes>
Group<place, Row, Channel, Outside> group(const Row& row, const Channel& channel, int x, Outside outside = {}) {
  return {row, channel, x, outside};
}

/// A row that is narrower than a vector, copied to where a vector can be loaded.
template <class Sample, int channels, size_t images>
class PaddedRow {
public:
  template <class Row>
  PaddedRow(const Row& row, int width) {
    for (size_t i = 0; i < images; ++i)
      std::memcpy(samples_[i].data(), row.samples[i], static_cast<size_t>(width * channels) * sizeof(Sample));
    copySelection(row.selection, width);
  }

  template <class Row>
  Row row() const {
    Row padded{{}, selection(decltype(Row::selection){})};
    for (size_t i = 0; i < images; ++i) padded.samples[i] = samples_[i].data();
    return padded;
  }

private:
  static constexpr size_t lanes = VectorsOf<Sample>::Body::lanes;

  void copySelection(EveryPixel, int) {}
  void copySelection(MaskRow mask, int width) { std::memcpy(mask_.data(), mask.bytes, static_cast<size_t>(width)); }
  EveryPixel selection(EveryPixel) const { return {}; }
  MaskRow selection(MaskRow) const { return {mask_.data()}; }

  std::array<std::array<Sample, lanes * channels>, images> samples_{};
  std::array<uint8_t, lanes> mask_{};
};

/// Calls tally.add(group) for the groups of a row from left to right, and tally.flush() at least every longestRun
/// pixels. The last group of a row steps back inside it, with the lanes excluded that have been seen.
/// Inlined, so that a tally that is local to the caller lives in registers.
template <class Channel, class Selection, class Sample, int images, class Tally>
[[gnu::always_inline]] inline void walkRow(const Region<Channel, Selection, Sample, images>& region, int y,
                                           Tally& tally) {
  using Row = typename Region<Channel, Selection, Sample, images>::Row;
  constexpr int lanes = Region<Channel, Selection, Sample, images>::Vector::lanes;
  const Row row = region.row(y);
  const Channel channel = region.channel;
  const int width = region.roi.width;
  int x = 0;
  while (x <= width - 2 * lanes) {
    const int end = x + std::min(width - x, longestRun) - 2 * lanes;
    for (; x <= end; x += 2 * lanes) {
      tally.add(group<Place::first>(row, channel, x));
      tally.add(group<Place::second>(row, channel, x + lanes));
    }
    tally.flush();
  }
  if (x <= width - lanes) {
    tally.add(group<Place::alone>(row, channel, x));
    x += lanes;
  }
  if (x < width && width >= lanes) {
    tally.add(group<Place::rest>(row, channel, width - lanes, excludeUntil<Sample>(x - (width - lanes))));
  } else if (x < width) {
    const PaddedRow<Sample, Channel::channels, images> padded(row, width);
    const Row paddedRow = padded.template row<Row>();
    tally.add(group<Place::rest>(paddedRow, channel, 0, excludeFrom<Sample>(width)));
  }
  tally.flush();
}

template <class Region, class Tally>
Tally walkRows(const Region& region, Tally tally) {
  for (int y = 0; y < region.roi.height; ++y) walkRow(region, y, tally);
  return tally;
}

}  // namespace orv
