// The walk over rows of floats in a fixed order of additions, with masks that multiply.
//
// Groups of 8 pixels go to 8 sums, single pixels to a ninth, all kept across rows. One-channel rows begin with single
// pixels up to a 32-byte boundary; rows of three channels are gathered and begin with groups.
#pragma once

#include "frame/pixel_groups.h"
#include "simd/double.h"

namespace orv {

/// One pixel or a group of 8 from x on.
template <class Pixels, class Row, class Channel>
class WeightedPixels {
public:
  using Vector = Pixels;

  WeightedPixels(const Row& row, const Channel& channel, int x) : row_(row), channel_(channel), x_(x) {}

  Vector sample(size_t image = 0) const {
    return channel_.template load<Vector>(row_.samples[image] + x_ * Channel::channels);
  }
  /// A value of the pixels, widened or not, times f: 1.0 where the pixel counts, +0.0 where it doesn't.
  template <class Value>
  Value weighted(Value value) const {
    if constexpr (std::is_same_v<decltype(Row::selection), EveryPixel>)
      return value;
    else if constexpr (std::is_same_v<Value, Vector>)
      return weight() * value;
    else
      return widen(weight()) * value;
  }

private:
  Vector weight() const { return selectedWeight(row_.selection.bytes + x_, Vector::broadcast(1.0f)); }

  const Row& row_;
  const Channel& channel_;
  int x_;
};

/// Single pixels at the beginning of a row; all of it where its address is odd or the first group doesn't fit.
inline int leadingSingles(const float* row, int width, OnlyChannel<float>) {
  const auto address = reinterpret_cast<uintptr_t>(row);
  if (address % 4 != 0)
    return width;
  const int toBoundary = static_cast<int>((0 - address) % 32 / 4);
  return toBoundary + F32x8::lanes > width ? width : toBoundary;
}
inline int leadingSingles(const float*, int, const OneOfThree<float>&) { return 0; }

/// Calls tally.add(pixels) from left to right, row by row, and tells where the groups and the row end. The tally comes
/// and goes by value, so that it lives in registers.
template <class Channel, class Selection, int images, class Tally>
Tally walkWeighted(const Region<Channel, Selection, float, images>& region, Tally tally) {
  using Row = typename Region<Channel, Selection, float, images>::Row;
  const Channel channel = region.channel;
  const int width = region.roi.width;
  for (int y = 0; y < region.roi.height; ++y) {
    const Row row = region.row(y);
    const int head = leadingSingles(row.samples[0], width, channel);
    int x = 0;
    for (; x < head; ++x) tally.add(WeightedPixels<F32x1, Row, Channel>(row, channel, x));
    for (; x <= width - F32x8::lanes; x += F32x8::lanes)
      tally.add(WeightedPixels<F32x8, Row, Channel>(row, channel, x));
    tally.endGroups();
    for (; x < width; ++x) tally.add(WeightedPixels<F32x1, Row, Channel>(row, channel, x));
    tally.endRow();
  }
  return tally;
}

/// Terms widened to double one by one and added there.
class WideSum {
public:
  void add(F64x1 term) { single_ = single_ + term; }
  void add(F64x8 terms) { lanes_ = lanes_ + terms; }
  void add(F32x1 term) { add(widen(term)); }
  void add(F32x8 terms) { add(widen(terms)); }
  void endGroups() {}
  void endRow() {}
  double total() const { return (joinLanes(lanes_) + single_).value(); }

private:
  F64x8 lanes_ = F64x8::zero();
  F64x1 single_ = F64x1::zero();
};

/// A row's terms added in single precision, which is less accurate; only the totals of the rows are widened.
class RowTotals {
public:
  void add(F32x8 terms) { lanes_ = lanes_ + terms; }
  void endGroups() {
    row_ = joinLanes(lanes_);
    lanes_ = F32x8::zero();
  }
  void add(F32x1 term) { row_ = row_ + term; }
  void endRow() { sum_ = sum_ + widen(row_); }
  double total() const { return sum_.value(); }

private:
  F32x8 lanes_ = F32x8::zero();
  F32x1 row_ = F32x1::zero();
  F64x1 sum_ = F64x1::zero();
};

}  // namespace orv
