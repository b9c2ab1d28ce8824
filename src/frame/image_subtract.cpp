// Differences of two images, second minus first, with power-of-two scaling for the integer types.
#include "frame/elements.h"
#include "frame/image_kernels.h"
#include "frame/power_of_two_scale.h"
#include "simd/bits.h"
#include "simd/vectors.h"

namespace orv {
namespace {

// The difference b - a of a type: saturated, and exact in lanes of twice the size, scaled and narrowed again. No
// exact difference reaches 2 to the power of the sample's bits.
template <class Sample>
struct Difference;

template <>
struct Difference<uint8_t> {
  using Lanes = Lanes16;
  static __m128i saturated(__m128i a, __m128i b) { return _mm_subs_epu8(b, a); }
  static __m128i scaled(__m128i a, __m128i b, auto scale) {
    const __m128i d = saturated(a, b), zero = _mm_setzero_si128();
    return _mm_packus_epi16(scale(_mm_unpacklo_epi8(d, zero)), scale(_mm_unpackhi_epi8(d, zero)));
  }
};

template <>
struct Difference<uint16_t> {
  using Lanes = Lanes32;
  static __m128i saturated(__m128i a, __m128i b) { return _mm_subs_epu16(b, a); }
  static __m128i scaled(__m128i a, __m128i b, auto scale) {
    const __m128i d = saturated(a, b), zero = _mm_setzero_si128();
    return _mm_packus_epi32(scale(_mm_unpacklo_epi16(d, zero)), scale(_mm_unpackhi_epi16(d, zero)));
  }
};

template <>
struct Difference<int16_t> {
  using Lanes = Lanes32;
  static __m128i saturated(__m128i a, __m128i b) { return _mm_subs_epi16(b, a); }
  static __m128i scaled(__m128i a, __m128i b, auto scale) {
    const __m128i low = _mm_sub_epi32(_mm_cvtepi16_epi32(b), _mm_cvtepi16_epi32(a));
    const __m128i high = _mm_sub_epi32(upperHalf(b), upperHalf(a));
    return _mm_packs_epi32(scale(low), scale(high));
  }
  static __m128i upperHalf(__m128i v) { return _mm_srai_epi32(_mm_unpackhi_epi16(v, v), 16); }
};

template <class Sample>
OrvStatus subtract(View<const Sample> src1, View<const Sample> src2, View<Sample> dst, OrvSize roi, int scaleFactor) {
  using D = Difference<Sample>;
  constexpr int bits = 8 * static_cast<int>(sizeof(Sample));
  if (OrvStatus status = firstFailure(nullPointer(src1.first, src2.first, dst.first), badSize(roi)))
    return status;
  const auto forEach = [&](auto difference) {
    forEachBlock<128 / bits>(
        roi, 1,
        [difference](Sample* d, const Sample* a, const Sample* b) {
          storeBits(d, difference(loadBits(a), loadBits(b)));
        },
        dst, src1, src2);
    return orvStsOk;
  };
  if (scaleFactor == 0)
    return forEach([](__m128i a, __m128i b) { return D::saturated(a, b); });
  if (scaleFactor > bits)
    return forEach([](__m128i, __m128i) { return _mm_setzero_si128(); });
  if (scaleFactor > 0)
    return forEach([scale = RoundingShiftRight<typename D::Lanes>(scaleFactor)](__m128i a, __m128i b) {
      return D::scaled(a, b, scale);
    });
  return forEach([scale = SaturatingShiftLeft<typename D::Lanes, Sample>(scaleFactor)](__m128i a, __m128i b) {
    return D::scaled(a, b, scale);
  });
}

OrvStatus subtractFloats(View<const float> src1, View<const float> src2, View<float> dst, OrvSize roi, int channels) {
  if (OrvStatus status = firstFailure(nullPointer(src1.first, src2.first, dst.first), badSize(roi)))
    return status;
  forEachBlock<F32x8::lanes>(
      roi, channels, [](float* d, const float* a, const float* b) { (F32x8::load(b) - F32x8::load(a)).store(d); }, dst,
      src1, src2);
  return orvStsOk;
}

}  // namespace

#define ORV_DEFINE_ONE(name, Sample, Size)                                                                   \
  ORV_SUB_SCALED_PROTOTYPE(name, Sample, Size) {                                                             \
    return subtract(View{src1, src1Step}, View{src2, src2Step}, View{dst, dstStep}, {roi.width, roi.height}, \
                    scaleFactor);                                                                            \
  }
#define ORV_DEFINE(name, Sample)        \
  ORV_DEFINE_ONE(name, Sample, OrvSize) \
  ORV_DEFINE_ONE(name##_L, Sample, OrvSizeL)
ORV_SUB_SCALED_MEMBERS(ORV_DEFINE)
#undef ORV_DEFINE
#undef ORV_DEFINE_ONE

#define ORV_DEFINE_ONE(name, channels, Size)                                                                       \
  ORV_SUB_FLOAT_PROTOTYPE(name, Size) {                                                                            \
    return subtractFloats(View{src1, src1Step}, View{src2, src2Step}, View{dst, dstStep}, {roi.width, roi.height}, \
                          channels);                                                                               \
  }
#define ORV_DEFINE(name, channels)        \
  ORV_DEFINE_ONE(name, channels, OrvSize) \
  ORV_DEFINE_ONE(name##_L, channels, OrvSizeL)
ORV_SUB_FLOAT_MEMBERS(ORV_DEFINE)
#undef ORV_DEFINE
#undef ORV_DEFINE_ONE

}  // namespace orv
