// Absolute differences of two images, and of an image to a constant.
#include <algorithm>

#include "frame/checks.h"
#include "frame/declarations.h"
#include "frame/views.h"
#include "simd/vectors.h"

namespace orv {
namespace {

template <class Sample, class... Images>
OrvStatus badArguments(OrvSize roi, int channels, Images... images) {
  return firstFailure(nullPointer(images.first...), badSize(roi), badStep<Sample>(images.step, roi.width, channels)...,
                      stepNotAligned<Sample>(images.step...));
}

/// The region in samples; images without gaps between their rows are one long row.
template <class Sample, class... Images>
OrvSize sampleRows(OrvSize roi, int channels, Images... images) {
  const OrvSize rows = {roi.width * channels, roi.height};
  const bool gapless = ((images.step == rowBytes<Sample>(rows.width)) && ...);
  const int64_t samples = int64_t{rows.width} * rows.height;
  return gapless && samples <= INT32_MAX ? OrvSize{static_cast<int>(samples), 1} : rows;
}

template <class Sample>
OrvStatus absDiffImages(View<const Sample> src1, View<const Sample> src2, View<Sample> dst, OrvSize roi,
                        int channels = 1) {
  if (OrvStatus status = badArguments<Sample>(roi, channels, src1, src2, dst))
    return status;
  const OrvSize samples = sampleRows<Sample>(roi, channels, src1, src2, dst);
  for (auto [a, b, d] : rows(samples.height, src1, src2, dst))
    forEachVector<Sample>(samples.width, [a = a, b = b, d = d]<class V>(V, int x) {
      absDiff(V::load(a + x), V::load(b + x)).store(d + x);
    });
  return orvStsOk;
}

template <class Sample>
OrvStatus absDiffConstant(View<const Sample> src, View<Sample> dst, OrvSize roi, Sample value) {
  if (OrvStatus status = badArguments<Sample>(roi, 1, src, dst))
    return status;
  const OrvSize samples = sampleRows<Sample>(roi, 1, src, dst);
  for (auto [s, d] : rows(samples.height, src, dst))
    forEachVector<Sample>(samples.width, [value, s = s, d = d]<class V>(V, int x) {
      absDiff(V::load(s + x), V::broadcast(value)).store(d + x);
    });
  return orvStsOk;
}

}  // namespace

OrvStatus orviAbsDiff_8u_C1R(const uint8_t* src1, int src1Step, const uint8_t* src2, int src2Step, uint8_t* dst,
                             int dstStep, OrvSize roi) {
  return absDiffImages(View{src1, src1Step}, View{src2, src2Step}, View{dst, dstStep}, roi);
}

OrvStatus orviAbsDiff_8u_C3R(const uint8_t* src1, int src1Step, const uint8_t* src2, int src2Step, uint8_t* dst,
                             int dstStep, OrvSize roi) {
  return absDiffImages(View{src1, src1Step}, View{src2, src2Step}, View{dst, dstStep}, roi, 3);
}

OrvStatus orviAbsDiff_16u_C1R(const uint16_t* src1, int src1Step, const uint16_t* src2, int src2Step, uint16_t* dst,
                              int dstStep, OrvSize roi) {
  return absDiffImages(View{src1, src1Step}, View{src2, src2Step}, View{dst, dstStep}, roi);
}

OrvStatus orviAbsDiff_32f_C1R(const float* src1, int src1Step, const float* src2, int src2Step, float* dst, int dstStep,
                              OrvSize roi) {
  return absDiffImages(View{src1, src1Step}, View{src2, src2Step}, View{dst, dstStep}, roi);
}

OrvStatus orviAbsDiffC_8u_C1R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, OrvSize roi, int32_t value) {
  return absDiffConstant(View{src, srcStep}, View{dst, dstStep}, roi,
                         static_cast<uint8_t>(std::clamp<int32_t>(value, 0, 255)));
}

OrvStatus orviAbsDiffC_16u_C1R(const uint16_t* src, int srcStep, uint16_t* dst, int dstStep, OrvSize roi,
                               int32_t value) {
  return absDiffConstant(View{src, srcStep}, View{dst, dstStep}, roi,
                         static_cast<uint16_t>(std::clamp<int32_t>(value, 0, 65535)));
}

OrvStatus orviAbsDiffC_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, OrvSize roi, float value) {
  return absDiffConstant(View{src, srcStep}, View{dst, dstStep}, roi, value);
}

}  // namespace orv
