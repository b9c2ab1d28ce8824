// The extreme values of a region and their first positions in reading order.
//
// A scan of all rows keeps vectors of extremes and, a row at a time, the first row that improves strictly; a scan of
// that row finds the leftmost pixel. The inner loop never tracks an index.
#pragma once

#include <bit>
#include <limits>
#include <tuple>

#include "frame/pixel_groups.h"
#include "simd/functions.h"
#include "simd/lanes.h"

namespace orv {

template <class Sample>
struct Extreme {
  Sample value;
  OrvPoint position;
};

// The two orders. Excluded lanes hold what never improves: the far end of an integer's range, a NaN.
struct Lowest {
  template <class V>
  V operator()(V candidate, V best) const {
    return lesser(candidate, best);
  }
  template <class Sample>
  static constexpr Sample worst() {
    return std::numeric_limits<Sample>::has_infinity ? std::numeric_limits<Sample>::infinity()
                                                     : std::numeric_limits<Sample>::max();
  }
  template <class V, class Lanes>
  static V passOver(Lanes excluded, V a) {
    return onesWhere(excluded, a);
  }
};
struct Highest {
  template <class V>
  V operator()(V candidate, V best) const {
    return greater(candidate, best);
  }
  template <class Sample>
  static constexpr Sample worst() {
    return std::numeric_limits<Sample>::has_infinity ? -std::numeric_limits<Sample>::infinity() : Sample{};
  }
  template <class V, class Lanes>
  static V passOver(Lanes excluded, V a) {
    return zeroWhere(excluded, a);
  }
  template <class Lanes>
  static F32x8 passOver(Lanes excluded, F32x8 a) {
    return onesWhere(excluded, a);
  }
};

template <class Order, class Sample>
class RowExtreme {
public:
  template <class Group>
  void add(const Group& group) {
    best_ = Order{}(Order::passOver(group.excluded(), group.sample()), best_);
  }
  /// Few rows improve, so their lanes are folded only if one of them does.
  void endRow(int y) {
    if (anyDiffers(Order{}(best_, bar_), bar_)) {
      bar_ = Vector::broadcast(foldLanes(best_, Order{}));
      row_ = y;
    }
    best_ = Vector::broadcast(Order::template worst<Sample>());
  }
  Sample value() const { return firstLane(bar_); }
  int row() const { return row_; }

private:
  using Vector = typename VectorsOf<Sample>::Body;

  Vector best_ = Vector::broadcast(Order::template worst<Sample>());
  Vector bar_ = best_;  ///< what a row must improve on
  int row_ = 0;
};

template <class Sample, class... Orders>
struct RowExtremes : RowExtreme<Orders, Sample>... {
  template <class Group>
  void add(const Group& group) {
    (RowExtreme<Orders, Sample>::add(group), ...);
  }
  void flush() {}
  void endRow(int y) { (RowExtreme<Orders, Sample>::endRow(y), ...); }
};

template <class Sample>
class LeftmostEqual {
public:
  explicit LeftmostEqual(Sample value) : value_(Vector::broadcast(value)) {}

  template <class Group>
  void add(const Group& group) {
    if (x_ >= 0)
      return;
    if (const unsigned equal = equalLanes(group.excluded(), group.sample()))
      x_ = group.x + std::countr_zero(equal) / bitsPerLane;
  }
  void flush() {}
  int x() const { return x_; }

private:
  using Vector = typename VectorsOf<Sample>::Body;
  static constexpr int bitsPerLane = std::is_same_v<Sample, uint16_t> ? 2 : 1;

  template <class Lanes>
  unsigned equalLanes(Lanes excluded, Vector a) const {
    if constexpr (std::is_same_v<Sample, float>)
      return static_cast<unsigned>(_mm256_movemask_ps(_mm256_cmp_ps(onesWhere(excluded, a).v, value_.v, _CMP_EQ_OQ)));
    else
      return equalBytes(a, value_) & ~bytesOf(excluded);
  }
  static unsigned bytesOf(NoLanes) { return 0; }
  static unsigned bytesOf(Vector excluded) { return static_cast<unsigned>(_mm_movemask_epi8(excluded.v)); }

  Vector value_;
  int x_ = -1;
};

/// The first pixel from `row` on that equals the value; zeros if there is none, as where nothing is selected or nothing
/// but NaN. The value is read back from the pixel: zeros of both signs are equal, and the first one counts.
template <class Region, class Sample>
Extreme<Sample> locate(const Region& region, Sample value, int row) {
  for (int y = row; y < region.roi.height; ++y) {
    LeftmostEqual<Sample> leftmost(value);
    walkRow(region, y, leftmost);
    if (leftmost.x() >= 0) {
      const Sample* pixel = region.sources[0].row(y) + leftmost.x() * Region::Channel::channels;
      return {region.channel.template load<typename Region::Channel::Single>(pixel).value(), {leftmost.x(), y}};
    }
  }
  return {};
}

/// One Extreme per order.
template <class... Orders, class Region>
auto findExtremes(const Region& region) {
  using Sample = typename Region::SampleType;
  RowExtremes<Sample, Orders...> scan;
  for (int y = 0; y < region.roi.height; ++y) {
    walkRow(region, y, scan);
    scan.endRow(y);
  }
  return std::tuple(
      locate(region, scan.RowExtreme<Orders, Sample>::value(), scan.RowExtreme<Orders, Sample>::row())...);
}

}  // namespace orv
