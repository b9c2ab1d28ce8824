// Scaling of integers by 2 to the power of -scaleFactor: right shifts round to nearest, ties to the even result, and
// left shifts saturate. The values stand in lanes of twice their size.
#pragma once

#include <immintrin.h>

#include <algorithm>
#include <cstdint>
#include <limits>

namespace orv {

struct Lanes16 {
  static constexpr int32_t highest = 0x7fff;
  static __m128i broadcast(int value) { return _mm_set1_epi16(static_cast<int16_t>(value)); }
  static __m128i add(__m128i a, __m128i b) { return _mm_add_epi16(a, b); }
  static __m128i clamp(__m128i v, __m128i low, __m128i high) { return _mm_min_epi16(_mm_max_epi16(v, low), high); }
  static __m128i shiftLeft(__m128i v, __m128i count) { return _mm_sll_epi16(v, count); }
  static __m128i shiftRight(__m128i v, __m128i count) { return _mm_sra_epi16(v, count); }
};

struct Lanes32 {
  static constexpr int32_t highest = 0x7fffffff;
  static __m128i broadcast(int value) { return _mm_set1_epi32(value); }
  static __m128i add(__m128i a, __m128i b) { return _mm_add_epi32(a, b); }
  static __m128i clamp(__m128i v, __m128i low, __m128i high) { return _mm_min_epi32(_mm_max_epi32(v, low), high); }
  static __m128i shiftLeft(__m128i v, __m128i count) { return _mm_sll_epi32(v, count); }
  static __m128i shiftRight(__m128i v, __m128i count) { return _mm_sra_epi32(v, count); }
};

/// (t + 2^(s - 1) - 1 + ((t >> s) & 1)) >> s, for a positive scale factor s.
template <class Lanes>
class RoundingShiftRight {
public:
  explicit RoundingShiftRight(int scaleFactor)
      : count_(_mm_cvtsi32_si128(scaleFactor)), belowHalf_(Lanes::broadcast((1 << (scaleFactor - 1)) - 1)) {}

  __m128i operator()(__m128i t) const {
    const __m128i odd = _mm_and_si128(Lanes::shiftRight(t, count_), Lanes::broadcast(1));
    return Lanes::shiftRight(Lanes::add(Lanes::add(t, belowHalf_), odd), count_);
  }

private:
  __m128i count_, belowHalf_;
};

/// t << -s, for a scale factor s of zero or below. Clamped first, to the range of Sample and to what the lane can hold
/// shifted, so that the shift never wraps; the caller's saturating narrowing does the rest. Shifts by more than the
/// sample's bits do what a shift by these does.
template <class Lanes, class Sample>
class SaturatingShiftLeft {
public:
  explicit SaturatingShiftLeft(int scaleFactor) {
    using Limits = std::numeric_limits<Sample>;
    const int shift = -std::max(scaleFactor, -8 * static_cast<int>(sizeof(Sample)));
    count_ = _mm_cvtsi32_si128(shift);
    low_ = Lanes::broadcast(Limits::min());
    high_ = Lanes::broadcast(std::min<int32_t>(Limits::max(), Lanes::highest >> shift));
  }

  __m128i operator()(__m128i t) const { return Lanes::shiftLeft(Lanes::clamp(t, low_, high_), count_); }

private:
  __m128i count_, low_, high_;
};

}  // namespace orv
