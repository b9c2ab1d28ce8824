// Sums for the norms of float images.
#pragma once

#include "simd/functions.h"
#include "simd/lanes.h"
#include "stats/norm_terms.h"
#include "stats/weighted_rows.h"

namespace orv {

/// The running maximum m > v ? m : v, pixel after pixel: a NaN wipes out what came before it and is wiped out by the
/// next pixel. Lanes run on their own as long as no NaN comes.
class LargestMagnitude {
public:
  void add(F32x1 v) { largest_ = follow(largest_, v.value()); }
  void add(F32x8 v) {
    if (_mm256_movemask_ps(_mm256_cmp_ps(v.v, v.v, _CMP_UNORD_Q)) == 0)
      largest_ = greater(largest_, v);
    else
      largest_ = followSingly(largest_, v);
  }
  void endGroups() {}
  void endRow() {}
  double total() const {
    return static_cast<double>(foldLanes(largest_, [](auto a, auto b) { return greater(a, b); }));
  }

private:
  /// In all lanes, so that a NaN replaces them all.
  static F32x8 follow(F32x8 largest, float v) { return greater(largest, F32x8::broadcast(v)); }
  [[gnu::noinline]] static F32x8 followSingly(F32x8 largest, F32x8 v) {
    std::array<float, F32x8::lanes> lanes;
    v.store(lanes.data());
    for (float lane : lanes) largest = follow(largest, lane);
    return largest;
  }

  F32x8 largest_ = F32x8::zero();
};

template <NormKind kind, class Channel>
struct FloatTallyOf {
  using Type = WideSum;
};
template <class Channel>
struct FloatTallyOf<NormKind::inf, Channel> {
  using Type = LargestMagnitude;
};
template <>
struct FloatTallyOf<NormKind::l2, OneOfThree<float>> {
  using Type = RowTotals;
};

template <NormKind kind, class Tally, class Term>
class FloatNormSum {
public:
  void add(const auto& pixels) {
    if constexpr (kind == NormKind::l2) {
      const auto product = Term::product(pixels);
      tally_.add(product * product);
    } else {
      tally_.add(Term::magnitude(pixels));
    }
  }
  void endGroups() { tally_.endGroups(); }
  void endRow() { tally_.endRow(); }
  double total() const { return tally_.total(); }

private:
  Tally tally_;
};

template <class... Sums>
struct FloatNormSums : Sums... {
  void add(const auto& pixels) { (Sums::add(pixels), ...); }
  void endGroups() { (Sums::endGroups(), ...); }
  void endRow() { (Sums::endRow(), ...); }
};

/// One number per term: the largest magnitude, the sum of magnitudes or the sum of squares.
template <NormKind kind, class... Terms, class Channel, class Selection, int images>
std::array<double, sizeof...(Terms)> normSums(const Region<Channel, Selection, float, images>& region) {
  using Tally = typename FloatTallyOf<kind, Channel>::Type;
  const auto sums = walkWeighted(region, FloatNormSums<FloatNormSum<kind, Tally, Terms>...>{});
  return {sums.FloatNormSum<kind, Tally, Terms>::total()...};
}

}  // namespace orv
