#include "frame/image_kernels.h"

#include <type_traits>

#include "frame/cache.h"
#include "frame/elements.h"
#include "frame/fill.h"
#include "frame/power_of_two_scale.h"
#include "simd/bits.h"
#include "simd/functions.h"
#include "simd/vectors.h"

namespace orv {
namespace {

template <class Sample>
constexpr int samplesPerVector = 16 / static_cast<int>(sizeof(Sample));

template <class Sample>
OrvStatus setImage(Sample value, View<Sample> dst, OrvSize roi) {
  if (OrvStatus status = firstFailure(nullPointer(dst.first), badSize(roi)))
    return status;
  const FillPattern pattern(&value, sizeof value);
  for (auto [d] : rows(roi.height, dst)) pattern.fill(d, static_cast<size_t>(roi.width) * sizeof(Sample));
  return orvStsOk;
}

template <class Sample>
OrvStatus copyImage(View<const Sample> src, View<Sample> dst, OrvSize roi, int channels) {
  if (OrvStatus status = firstFailure(nullPointer(src.first, dst.first), badSize(roi)))
    return status;
  const auto bytes = static_cast<size_t>(rowBytes<Sample>(roi.width, channels));
  for (auto [s, d] : rows(roi.height, src, dst)) std::memmove(d, s, bytes);
  return orvStsOk;
}

/// All ones in the bytes of each pixel's fourth sample.
template <class Sample>
__m128i fourthSamples() {
  if constexpr (sizeof(Sample) == 1)
    return _mm_set1_epi32(static_cast<int>(0xff000000));
  else if constexpr (sizeof(Sample) == 2)
    return _mm_set_epi16(-1, 0, 0, 0, -1, 0, 0, 0);
  else
    return _mm_set_epi32(-1, 0, 0, 0);
}

template <class Sample>
OrvStatus copyThreeOfFour(View<const Sample> src, View<Sample> dst, OrvSize roi) {
  if (OrvStatus status = firstFailure(nullPointer(src.first, dst.first), badSize(roi)))
    return status;
  const __m128i kept = fourthSamples<Sample>();
  forEachBlock<samplesPerVector<Sample>>(
      roi, 4,
      [kept](Sample* d, const Sample* s, const Sample* old) {
        storeBits(d, _mm_blendv_epi8(loadBits(s), loadBits(old), kept));
      },
      dst, src, View<const Sample>{dst.first, dst.step});
  return orvStsOk;
}

void convertRow(float* dst, const uint16_t* src, int width) {
  forEachVector<float>(width, [=]<class V>(V, int x) { V::load(src + x).store(dst + x); });
}

/// Stores that pass the cache by need the alignment of a vector, which whole samples reach after at most 7.
void convertRowPastCache(float* dst, const uint16_t* src, int width) {
  constexpr uintptr_t vectorBytes = sizeof(__m256);
  const uintptr_t untilAligned = -reinterpret_cast<uintptr_t>(dst) % vectorBytes;
  if (untilAligned % sizeof(float) != 0)
    return convertRow(dst, src, width);
  int x = std::min(width, static_cast<int>(untilAligned / sizeof(float)));
  convertRow(dst, src, x);
  for (; x <= width - F32x8::lanes; x += F32x8::lanes) _mm256_stream_ps(dst + x, F32x8::load(src + x).v);
  convertRow(dst + x, src + x, width - x);
}

/// Source and result together are at least as large as the largest cache.
bool exceedsCache(OrvSize roi) {
  const int64_t bytes = int64_t{roi.width} * 6 * roi.height;
  if (bytes <= 0x100000)
    return false;
  int32_t cacheBytes = 0;
  return orvGetMaxCacheSizeB(&cacheBytes) == 0 && bytes >= cacheBytes;
}

template <class Formula>
OrvStatus mapFloats(View<const float> src, View<float> dst, OrvSize roi, Formula formula) {
  if (OrvStatus status = firstFailure(nullPointer(src.first, dst.first), badSize(roi)))
    return status;
  forEachBlock<F32x8::lanes>(
      roi, 1, [formula](float* d, const float* s) { formula(F32x8::load(s)).store(d); }, dst, src);
  return orvStsOk;
}

template <class Sample, class Formula>
OrvStatus mapIntegers(View<const Sample> src, View<Sample> dst, OrvSize roi, Formula formula) {
  if (OrvStatus status = firstFailure(nullPointer(src.first, dst.first), badSize(roi)))
    return status;
  forEachBlock<samplesPerVector<Sample>>(
      roi, 1, [formula](Sample* d, const Sample* s) { storeBits(d, formula(loadBits(s))); }, dst, src);
  return orvStsOk;
}

/// The exact 32-bit products, each scaled, saturated to 16 bits.
template <class Scale>
OrvStatus scaledProducts(View<const int16_t> src, View<int16_t> dst, OrvSize roi, int16_t value, Scale scale) {
  const __m128i factor = _mm_set1_epi16(value);
  return mapIntegers(src, dst, roi, [factor, scale](__m128i s) {
    const __m128i low = _mm_mullo_epi16(s, factor), high = _mm_mulhi_epi16(s, factor);
    return _mm_packs_epi32(scale(_mm_unpacklo_epi16(low, high)), scale(_mm_unpackhi_epi16(low, high)));
  });
}

}  // namespace

OrvStatus orviSet_8u_C1R(uint8_t value, uint8_t* dst, int dstStep, OrvSize roi) {
  return setImage(value, View{dst, dstStep}, roi);
}

OrvStatus orviSet_16s_C1R(int16_t value, int16_t* dst, int dstStep, OrvSize roi) {
  return setImage(value, View{dst, dstStep}, roi);
}

#define ORV_DEFINE(name, Sample, channels) \
  ORV_COPY_PROTOTYPE(name, Sample, OrvSize) { return copyImage(View{src, srcStep}, View{dst, dstStep}, roi, channels); }
ORV_COPY_MEMBERS(ORV_DEFINE)
#undef ORV_DEFINE

#define ORV_DEFINE(name, Sample) \
  ORV_COPY_PROTOTYPE(name, Sample, OrvSize) { return copyThreeOfFour(View{src, srcStep}, View{dst, dstStep}, roi); }
ORV_COPY_THREE_OF_FOUR_MEMBERS(ORV_DEFINE)
#undef ORV_DEFINE

ORV_COPY_PROTOTYPE(8u_C1R_L, uint8_t, OrvSizeL) {
  return orviCopy_8u_C1R(src, srcStep, dst, dstStep, {roi.width, roi.height});
}

OrvStatus orviConvert_16u32f_C1R(const uint16_t* src, int srcStep, float* dst, int dstStep, OrvSize roi) {
  if (OrvStatus status = firstFailure(nullPointer(src, dst), badSize(roi), Check{srcStep < 1, orvStsBadStep},
                                      Check{dstStep < 1, orvStsBadStep}))
    return status;
  const bool pastCache = exceedsCache(roi);
  if (srcStep == rowBytes<uint16_t>(roi.width) && dstStep == rowBytes<float>(roi.width))
    roi = {roi.width * roi.height, 1};
  for (auto [s, d] : rows(roi.height, View{src, srcStep}, View{dst, dstStep}))
    pastCache ? convertRowPastCache(d, s, roi.width) : convertRow(d, s, roi.width);
  if (pastCache)
    _mm_sfence();
  return orvStsOk;
}

OrvStatus orviMulC_16s_C1RSfs(const int16_t* src, int srcStep, int16_t value, int16_t* dst, int dstStep, OrvSize roi,
                              int scaleFactor) {
  const View source{src, srcStep};
  const View result{dst, dstStep};
  if (value == 1 && scaleFactor == 0)
    return copyImage(source, result, roi, 1);
  // No product exceeds 2^30, half of which rounds to the even zero.
  if (value == 0 || scaleFactor > 30)
    return src == nullptr ? orvStsNullPointer : setImage(int16_t{0}, result, roi);
  if (scaleFactor > 0)
    return scaledProducts(source, result, roi, value, RoundingShiftRight<Lanes32>(scaleFactor));
  return scaledProducts(source, result, roi, value, SaturatingShiftLeft<Lanes32, int16_t>(scaleFactor));
}

OrvStatus orviMulC_32f_C1R(const float* src, int srcStep, float value, float* dst, int dstStep, OrvSize roi) {
  return mapFloats(View{src, srcStep}, View{dst, dstStep}, roi,
                   [factor = F32x8::broadcast(value)](F32x8 s) { return factor * s; });
}

OrvStatus orviThreshold_LT_16s_C1R(const int16_t* src, int srcStep, int16_t* dst, int dstStep, OrvSize roi,
                                   int16_t threshold) {
  return mapIntegers(View{src, srcStep}, View{dst, dstStep}, roi,
                     [low = _mm_set1_epi16(threshold)](__m128i s) { return _mm_max_epi16(s, low); });
}

OrvStatus orviThreshold_LT_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, OrvSize roi,
                                   float threshold) {
  return mapFloats(View{src, srcStep}, View{dst, dstStep}, roi,
                   [low = F32x8::broadcast(threshold)](F32x8 s) { return greater(low, s); });
}

OrvStatus orviThreshold_GTVal_8u_C1R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, OrvSize roi,
                                     uint8_t threshold, uint8_t value) {
  const __m128i high = U8x16::broadcast(threshold).v, replacement = U8x16::broadcast(value).v;
  return mapIntegers(View{src, srcStep}, View{dst, dstStep}, roi, [high, replacement](__m128i s) {
    const __m128i kept = _mm_cmpeq_epi8(_mm_max_epu8(s, high), high);
    return _mm_blendv_epi8(replacement, s, kept);
  });
}

OrvStatus orviThreshold_GTVal_16u_C1R(const uint16_t* src, int srcStep, uint16_t* dst, int dstStep, OrvSize roi,
                                      uint16_t threshold, uint16_t value) {
  const __m128i high = U16x8::broadcast(threshold).v, replacement = U16x8::broadcast(value).v;
  return mapIntegers(View{src, srcStep}, View{dst, dstStep}, roi, [high, replacement](__m128i s) {
    const __m128i kept = _mm_cmpeq_epi16(_mm_max_epu16(s, high), high);
    return _mm_blendv_epi8(replacement, s, kept);
  });
}

}  // namespace orv
