// Reduction of three channels, the derivatives of a colour image, to one.
#include <cstring>

#include "frame/checks.h"
#include "frame/declarations.h"
#include "frame/views.h"
#include "simd/channels.h"
#include "simd/functions.h"

namespace orv {
namespace {

constexpr OrvNormCode normMaximum = 0, normL1 = 1, normL2 = 2;

F32x8 third(F32x8 a) { return {_mm256_div_ps(a.v, _mm256_set1_ps(3.0f))}; }

struct Maximum {
  template <class V>
  static V apply(V a, V b, V c) {
    return greater(greater(a, b), c);
  }
  static F32x8 apply(F32x8 a, F32x8 b, F32x8 c) { return greater(greater(abs(a), abs(b)), abs(c)); }
};

/// The integer forms divide by three, in fixed point; the float form does not.
struct L1 {
  static U8x16 apply(U8x16 a, U8x16 b, U8x16 c) {
    const __m128i zero = _mm_setzero_si128();
    const auto sum = [](__m128i x, __m128i y, __m128i z) { return _mm_add_epi16(_mm_add_epi16(x, y), z); };
    // (8 * sum * 1365 + 2^14) >> 15 is (sum * 1365 + 2^11) >> 12.
    const auto mean = [](__m128i s) { return _mm_mulhrs_epi16(_mm_slli_epi16(s, 3), _mm_set1_epi16(1365)); };
    const __m128i low = sum(_mm_unpacklo_epi8(a.v, zero), _mm_unpacklo_epi8(b.v, zero), _mm_unpacklo_epi8(c.v, zero));
    const __m128i high = sum(_mm_unpackhi_epi8(a.v, zero), _mm_unpackhi_epi8(b.v, zero), _mm_unpackhi_epi8(c.v, zero));
    return {_mm_packus_epi16(mean(low), mean(high))};
  }
  static U16x8 apply(U16x8 a, U16x8 b, U16x8 c) {
    const __m128i zero = _mm_setzero_si128();
    const auto mean = [](__m128i x, __m128i y, __m128i z) {
      const __m128i product = _mm_mullo_epi32(_mm_add_epi32(_mm_add_epi32(x, y), z), _mm_set1_epi32(5461));
      return _mm_srli_epi32(_mm_add_epi32(product, _mm_set1_epi32(8192)), 14);
    };
    return {_mm_packus_epi32(
        mean(_mm_unpacklo_epi16(a.v, zero), _mm_unpacklo_epi16(b.v, zero), _mm_unpacklo_epi16(c.v, zero)),
        mean(_mm_unpackhi_epi16(a.v, zero), _mm_unpackhi_epi16(b.v, zero), _mm_unpackhi_epi16(c.v, zero)))};
  }
  static F32x8 apply(F32x8 a, F32x8 b, F32x8 c) { return abs(a) + abs(b) + abs(c); }
};

/// Sums of squares of integers are exact before they become floats.
struct L2 {
  static F32x8 apply(F32x8 a, F32x8 b, F32x8 c) { return squareRoot(third(a * a + b * b + c * c)); }

  static U8x16 apply(U8x16 a, U8x16 b, U8x16 c) {
    const __m128i low = rounded(apply(lowFloats(a.v), lowFloats(b.v), lowFloats(c.v)));
    const __m128i high = rounded(apply(highFloats(a.v), highFloats(b.v), highFloats(c.v)));
    return {_mm_packus_epi16(low, high)};
  }

  /// Squares of 16 bits need doubles to stay exact.
  static U16x8 apply(U16x8 a, U16x8 b, U16x8 c) {
    const __m128i zero = _mm_setzero_si128();
    const auto sumOfSquares = [](__m128i x, __m128i y, __m128i z) {
      const auto square = [](__m128i s) {
        const __m256d number = _mm256_cvtepi32_pd(s);
        return _mm256_mul_pd(number, number);
      };
      return _mm256_cvtpd_ps(_mm256_add_pd(_mm256_add_pd(square(x), square(y)), square(z)));
    };
    const F32x8 sums = F32x8::fromHalves(
        sumOfSquares(_mm_unpacklo_epi16(a.v, zero), _mm_unpacklo_epi16(b.v, zero), _mm_unpacklo_epi16(c.v, zero)),
        sumOfSquares(_mm_unpackhi_epi16(a.v, zero), _mm_unpackhi_epi16(b.v, zero), _mm_unpackhi_epi16(c.v, zero)));
    return {rounded(squareRoot(third(sums)))};
  }

private:
  static F32x8 lowFloats(__m128i bytes) {
    return F32x8::fromInts(_mm_cvtepu8_epi32(bytes), _mm_cvtepu8_epi32(_mm_srli_si128(bytes, 4)));
  }
  static F32x8 highFloats(__m128i bytes) { return lowFloats(_mm_srli_si128(bytes, 8)); }

  /// To the nearest of the 16-bit numbers, ties to even.
  static __m128i rounded(F32x8 a) {
    const __m256i ints = _mm256_cvtps_epi32(a.v);
    return _mm_packus_epi32(_mm256_castsi256_si128(ints), _mm256_extractf128_si256(ints, 1));
  }
};

/// A vector's worth of pixels a turn; what remains of a row goes through a copy that is filled up with zeros.
template <class Norm, class Sample>
void reduceRow(const Sample* src, Sample* dst, int width) {
  using Channel = OneOfThree<Sample>;
  constexpr int lanes = Channel::Vector::lanes;
  const Channel first{1}, second{2}, third{3};
  const auto reduce = [&](const Sample* pixels, Sample* result) {
    Norm::apply(first.load(pixels), second.load(pixels), third.load(pixels)).store(result);
  };
  int x = 0;
  for (; x <= width - lanes; x += lanes) reduce(src + 3 * x, dst + x);
  if (x < width) {
    const auto rest = static_cast<size_t>(width - x) * sizeof(Sample);
    Sample pixels[3 * lanes] = {};
    Sample result[lanes];
    std::memcpy(pixels, src + 3 * x, 3 * rest);
    reduce(pixels, result);
    std::memcpy(dst + x, result, rest);
  }
}

template <class Sample>
OrvStatus gradientColorToGray(View<const Sample> src, View<Sample> dst, OrvSize roi, OrvNormCode norm) {
  if (OrvStatus status =
          firstFailure(nullPointer(src.first, dst.first), badSize(roi), badStep<Sample>(src.step, roi.width, 3),
                       badStep<Sample>(dst.step, roi.width), stepNotAligned<Sample>(src.step, dst.step),
                       notAmong(norm, {normMaximum, normL1, normL2}, orvStsBadArg)))
    return status;
  const auto row = norm == normMaximum ? reduceRow<Maximum, Sample>
                   : norm == normL1    ? reduceRow<L1, Sample>
                                       : reduceRow<L2, Sample>;
  for (auto [s, d] : rows(roi.height, src, dst)) row(s, d, roi.width);
  return orvStsOk;
}

}  // namespace

OrvStatus orviGradientColorToGray_8u_C3C1R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, OrvSize roi,
                                           OrvNormCode norm) {
  return gradientColorToGray(View{src, srcStep}, View{dst, dstStep}, roi, norm);
}

OrvStatus orviGradientColorToGray_16u_C3C1R(const uint16_t* src, int srcStep, uint16_t* dst, int dstStep, OrvSize roi,
                                            OrvNormCode norm) {
  return gradientColorToGray(View{src, srcStep}, View{dst, dstStep}, roi, norm);
}

OrvStatus orviGradientColorToGray_32f_C3C1R(const float* src, int srcStep, float* dst, int dstStep, OrvSize roi,
                                            OrvNormCode norm) {
  return gradientColorToGray(View{src, srcStep}, View{dst, dstStep}, roi, norm);
}

}  // namespace orv
