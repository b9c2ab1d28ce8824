// Conversions of float vectors to integers. Compiled -frounding-math: the rounding mode may be switched.
#include <algorithm>
#include <optional>

#include "frame/elements.h"
#include "frame/powers_of_two.h"
#include "frame/rounding_mode.h"
#include "frame/vector_kernels.h"
#include "simd/bits.h"
#include "simd/functions.h"

namespace orv {
namespace {

/// Times 2^-scaleFactor in two factors, since one may lie outside the range of normal numbers. Beyond the clamp every
/// finite result rounds to zero, or every one but zero saturates.
class Scale {
public:
  explicit Scale(int scaleFactor) {
    const int total = std::clamp(scaleFactor, -252, 252), half = total / 2;
    first_ = F32x8::broadcast(powerOfTwo<float>(-half));
    second_ = F32x8::broadcast(powerOfTwo<float>(half - total));
  }
  F32x8 operator()(F32x8 v) const { return v * first_ * second_; }

private:
  F32x8 first_, second_;
};

// Whatever the rounding mode is, or toward zero.
struct CurrentRounding {
  static __m256i toInts(F32x8 v) { return _mm256_cvtps_epi32(v.v); }
};
struct Truncation {
  static __m256i toInts(F32x8 v) { return _mm256_cvttps_epi32(v.v); }
};

/// 8 elements in 0 .. highest as 16-bit numbers. Clamped as floats: a NaN becomes 0, and nothing exceeds an integer.
template <class Rounding>
__m128i toWords(const float* src, const Scale& scale, F32x8 highest) {
  const F32x8 v = lesser(greater(scale(F32x8::load(src)), F32x8::zero()), highest);
  const __m256i ints = Rounding::toInts(v);
  return _mm_packus_epi32(_mm256_castsi256_si128(ints), _mm256_extractf128_si256(ints, 1));
}

template <class Rounding>
void convert(const float* src, uint8_t* dst, int length, const Scale& scale) {
  forEachBlock<16>(
      length,
      [scale, highest = F32x8::broadcast(255.0f)](uint8_t* d, const float* s) {
        storeBits(d, _mm_packus_epi16(toWords<Rounding>(s, scale, highest), toWords<Rounding>(s + 8, scale, highest)));
      },
      dst, src);
}

template <class Rounding>
void convert(const float* src, uint16_t* dst, int length, const Scale& scale) {
  forEachBlock<8>(
      length,
      [scale, highest = F32x8::broadcast(65535.0f)](uint16_t* d, const float* s) {
        storeBits(d, toWords<Rounding>(s, scale, highest));
      },
      dst, src);
}

template <class Sample>
OrvStatus convertScaled(const float* src, Sample* dst, int length, int rounding, int scaleFactor) {
  if (OrvStatus status = firstFailure(nullPointer(src, dst), badLength(length)))
    return status;
  const Scale scale(scaleFactor);
  if (rounding == 0) {
    convert<Truncation>(src, dst, length, scale);
    return orvStsOk;
  }
  std::optional<RoundingMode> towardZero;
  if (rounding != 1)
    towardZero.emplace(_MM_ROUND_TOWARD_ZERO);
  convert<CurrentRounding>(src, dst, length, scale);
  return orvStsOk;
}

}  // namespace

OrvStatus orvsConvert_32f8u_Sfs(const float* src, uint8_t* dst, int length, int rounding, int scaleFactor) {
  return convertScaled(src, dst, length, rounding, scaleFactor);
}

OrvStatus orvsConvert_32f16u_Sfs(const float* src, uint16_t* dst, int length, int rounding, int scaleFactor) {
  return convertScaled(src, dst, length, rounding, scaleFactor);
}

}  // namespace orv
