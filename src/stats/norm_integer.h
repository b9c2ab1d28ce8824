// Sums for the norms of 8- and 16-bit images: integers, exact but for the L2 norm of 16-bit samples.
#pragma once

#include "frame/pixel_groups.h"
#include "simd/double.h"
#include "simd/functions.h"
#include "simd/lanes.h"
#include "stats/norm_terms.h"

namespace orv {

template <class Sample>
class LargestSample {
public:
  void add(typename VectorsOf<Sample>::Body a) { largest_ = greater(a, largest_); }
  void flush() {}
  double total() const {
    return foldLanes(largest_, [](auto a, auto b) { return greater(a, b); });
  }

private:
  typename VectorsOf<Sample>::Body largest_ = VectorsOf<Sample>::Body::broadcast(0);
};

/// Squares of 16-bit samples in single precision, rounded, in four lanes. Those of 16 pixels, or of 8 where no more
/// stand together, are added in single precision before they are widened; what is left at the end of a row is widened
/// alone.
class RoundedSquares {
public:
  template <Place place>
  void add(U16x8 a) {
    const __m128 left = squares(widenLow16(a.v));
    const __m128 right = squares(widenHigh16(a.v));
    if constexpr (place == Place::first) {
      pair_ = _mm_add_ps(left, right);
    } else if constexpr (place == Place::second) {
      addWidened(_mm_add_ps(_mm_add_ps(pair_, left), right));
    } else if constexpr (place == Place::alone) {
      addWidened(_mm_add_ps(left, right));
    } else {
      addWidened(left);
      addWidened(right);
    }
  }
  void flush() {}
  double total() const { return joinLanes(F64x8{sum_, _mm256_setzero_pd()}).value(); }

private:
  static __m128 squares(__m128i samples) {
    const __m128 converted = _mm_cvtepi32_ps(samples);
    return _mm_mul_ps(converted, converted);
  }
  void addWidened(__m128 a) { sum_ = _mm256_add_pd(sum_, _mm256_cvtps_pd(a)); }

  __m128 pair_ = _mm_setzero_ps();
  __m256d sum_ = _mm256_setzero_pd();
};

template <NormKind kind, class Sample>
struct IntegerTallyOf;
template <class Sample>
struct IntegerTallyOf<NormKind::inf, Sample> {
  using Type = LargestSample<Sample>;
};
template <class Sample>
struct IntegerTallyOf<NormKind::l1, Sample> {
  using Type = SampleSum<Sample>;
};
template <>
struct IntegerTallyOf<NormKind::l2, uint8_t> {
  using Type = SquareSum<uint8_t>;
};
template <>
struct IntegerTallyOf<NormKind::l2, uint16_t> {
  using Type = RoundedSquares;
};

template <class Tally, class Term>
class IntegerNormSum {
public:
  template <class Group>
  void add(const Group& group) {
    if constexpr (std::is_same_v<Tally, RoundedSquares>)
      tally_.template add<Group::place>(Term::exact(group));
    else
      tally_.add(Term::exact(group));
  }
  void flush() { tally_.flush(); }
  double total() const { return number(tally_.total()); }

private:
  static double number(uint64_t sum) { return toDouble(sum); }
  static double number(double sum) { return sum; }

  Tally tally_;
};

template <class... Sums>
struct IntegerNormSums : Sums... {
  template <class Group>
  void add(const Group& group) {
    (Sums::add(group), ...);
  }
  void flush() { (Sums::flush(), ...); }
};

/// One number per term: the largest magnitude, the sum of magnitudes or the sum of squares.
template <NormKind kind, class... Terms, class Channel, class Selection, std::integral Sample, int images>
std::array<double, sizeof...(Terms)> normSums(const Region<Channel, Selection, Sample, images>& region) {
  using Tally = typename IntegerTallyOf<kind, Sample>::Type;
  const auto sums = walkRows(region, IntegerNormSums<IntegerNormSum<Tally, Terms>...>{});
  return {sums.IntegerNormSum<Tally, Terms>::total()...};
}

}  // namespace orv
