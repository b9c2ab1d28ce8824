#include "frame/vector_kernels.h"

#include <algorithm>

#include "frame/elements.h"
#include "frame/fill.h"
#include "frame/powers_of_two.h"
#include "simd/bits.h"
#include "simd/functions.h"

namespace orv {
namespace {

template <class Sample>
OrvStatus setVector(Sample value, Sample* dst, int length) {
  if (OrvStatus status = firstFailure(nullPointer(dst), badLength(length)))
    return status;
  FillPattern(&value, sizeof value).fill(dst, static_cast<size_t>(length) * sizeof(Sample));
  return orvStsOk;
}

template <class Sample>
OrvStatus zeroVector(Sample* dst, int length) {
  if (OrvStatus status = firstFailure(nullPointer(dst), badLength(length)))
    return status;
  std::memset(dst, 0, static_cast<size_t>(length) * sizeof(Sample));
  return orvStsOk;
}

template <class Sample>
OrvStatus copyVector(const Sample* src, Sample* dst, int length) {
  if (OrvStatus status = firstFailure(nullPointer(src, dst), badLength(length)))
    return status;
  std::memmove(dst, src, static_cast<size_t>(length) * sizeof(Sample));
  return orvStsOk;
}

/// dst = formula(sources...), vector by vector.
template <class Sample, class... Sources>
OrvStatus mapVector(int length, auto formula, Sample* dst, const Sources*... sources) {
  using V = typename VectorsOf<Sample>::Body;
  if (OrvStatus status = firstFailure(nullPointer(dst, sources...), badLength(length)))
    return status;
  forEachBlock<V::lanes>(
      length, [formula](Sample* d, const Sources*... s) { formula(V::load(s)...).store(d); }, dst, sources...);
  return orvStsOk;
}

/// Four magnitudes of interleaved x and y. The sum of squares reaches 2^31, one more than a signed lane holds, and is
/// exact as a double.
__m128i scaledMagnitudes(__m128i xy, __m256d scale) {
  const __m128i sumLess2To31 = _mm_xor_si128(_mm_madd_epi16(xy, xy), _mm_set1_epi32(INT32_MIN));
  const __m256d sum = _mm256_add_pd(_mm256_cvtepi32_pd(sumLess2To31), _mm256_set1_pd(2147483648.0));
  const __m256d magnitude = _mm256_mul_pd(_mm256_sqrt_pd(sum), scale);
  return _mm256_cvtpd_epi32(_mm256_min_pd(magnitude, _mm256_set1_pd(INT16_MAX)));
}

/// An element at any address.
struct [[gnu::packed]] SortKey {
  double value;
};

}  // namespace

#define ORV_DEFINE(type, Sample)                                                         \
  OrvStatus orvsZero_##type(Sample* dst, int length) { return zeroVector(dst, length); } \
  OrvStatus orvsSet_##type(Sample value, Sample* dst, int length) { return setVector(value, dst, length); }
ORV_FILL_MEMBERS(ORV_DEFINE)
#undef ORV_DEFINE

#define ORV_DEFINE(type, Sample) \
  OrvStatus orvsCopy_##type(const Sample* src, Sample* dst, int length) { return copyVector(src, dst, length); }
ORV_COPY_VECTOR_MEMBERS(ORV_DEFINE)
#undef ORV_DEFINE

#define ORV_DEFINE(type, Sample)                                                                   \
  OrvStatus orvsMaxEvery_##type(const Sample* src1, const Sample* src2, Sample* dst, int length) { \
    return mapVector(                                                                              \
        length, [](auto a, auto b) { return greater(a, b); }, dst, src1, src2);                    \
  }                                                                                                \
  OrvStatus orvsMinEvery_##type(const Sample* src1, const Sample* src2, Sample* dst, int length) { \
    return mapVector(                                                                              \
        length, [](auto a, auto b) { return lesser(a, b); }, dst, src1, src2);                     \
  }
ORV_EVERY_MEMBERS(ORV_DEFINE)
#undef ORV_DEFINE

OrvStatus orvsMulC_32f(const float* src, float value, float* dst, int length) {
  return mapVector(
      length, [factor = F32x8::broadcast(value)](F32x8 s) { return s * factor; }, dst, src);
}

OrvStatus orvsDivC_32f(const float* src, float value, float* dst, int length) {
  if (OrvStatus status =
          firstFailure(nullPointer(src, dst), badLength(length), Check{value == 0.0f, orvStsDivideByZero}))
    return status;
  return orvsMulC_32f(src, 1.0f / value, dst, length);
}

OrvStatus orvsDivC_32f_I(float value, float* srcDst, int length) { return orvsDivC_32f(srcDst, value, srcDst, length); }

OrvStatus orvsThreshold_LT_32f(const float* src, float* dst, int length, float threshold) {
  return mapVector(
      length, [low = F32x8::broadcast(threshold)](F32x8 s) { return greater(low, s); }, dst, src);
}

OrvStatus orvsMagnitude_32f(const float* srcX, const float* srcY, float* dst, int length) {
  return mapVector(
      length, [](F32x8 x, F32x8 y) { return squareRoot(x * x + y * y); }, dst, srcX, srcY);
}

OrvStatus orvsMagnitude_16s_Sfs(const int16_t* srcX, const int16_t* srcY, int16_t* dst, int length, int scaleFactor) {
  if (OrvStatus status = firstFailure(nullPointer(srcX, srcY, dst), badLength(length)))
    return status;
  // Magnitudes are 0 or 1 to 2^15.5: beyond these factors all are zero, or all but 0 saturated.
  const __m256d scale = _mm256_set1_pd(powerOfTwo<double>(-std::clamp(scaleFactor, -32, 32)));
  forEachBlock<8>(
      length,
      [scale](int16_t* d, const int16_t* sx, const int16_t* sy) {
        const __m128i x = loadBits(sx), y = loadBits(sy);
        storeBits(d, _mm_packs_epi32(scaledMagnitudes(_mm_unpacklo_epi16(x, y), scale),
                                     scaledMagnitudes(_mm_unpackhi_epi16(x, y), scale)));
      },
      dst, srcX, srcY);
  return orvStsOk;
}

OrvStatus orvsSqrt_32f(const float* src, float* dst, int length) {
  __m256 negative = _mm256_setzero_ps();
  const OrvStatus status = mapVector(
      length,
      [&negative](F32x8 s) {
        negative = _mm256_or_ps(negative, _mm256_cmp_ps(s.v, _mm256_setzero_ps(), _CMP_LT_OQ));
        return squareRoot(s);
      },
      dst, src);
  return status == orvStsOk && _mm256_movemask_ps(negative) != 0 ? orvStsSqrtOfNegative : status;
}

OrvStatus orvsSqrt_32f_I(float* srcDst, int length) { return orvsSqrt_32f(srcDst, srcDst, length); }

OrvStatus orvsSortAscend_64f_I(double* srcDst, int length) {
  if (OrvStatus status = firstFailure(nullPointer(srcDst), badLength(length)))
    return status;
  auto* const first = reinterpret_cast<SortKey*>(srcDst);
  std::sort(first, first + length, [](SortKey a, SortKey b) { return a.value < b.value; });
  return orvStsOk;
}

}  // namespace orv
