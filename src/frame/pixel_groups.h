// The walk over rows of pixels of which only some count: those that a mask selects, in the one channel of interest.
//
// A row is walked a vector at a time. What takes no part, because the mask excludes it or because it lies beyond the
// row, is marked in a vector of excluded lanes, so that the row's end is the same code as its body.
#pragma once

#include <algorithm>
#include <array>
#include <concepts>
#include <cstring>

#include "frame/selection.h"
#include "simd/channels.h"

namespace orv {

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
