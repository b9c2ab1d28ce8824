// The exported column pipelines: argument checks before the column passes.
#include "filters/pipeline_checks.h"
#include "filters/pipelines.h"

namespace orv {
namespace {

/// `stepChannels` is the number of channels that the step is held against.
template <class Source, class Dst, class Coefficient>
OrvStatus columnPipeline(auto pass, const Source* const* srcRows, View<Dst> dst, OrvSize roi, int channels,
                         int stepChannels, ColumnKernel<Coefficient> kernel, const uint8_t* buffer) {
  if (OrvStatus status = firstFailure(
          nullPointer(srcRows, dst.first, kernel.taps), badSize(roi),
          [&] { return nullRow(srcRows, int64_t{kernel.size} + roi.height - 1); }, badKernelSize(kernel.size),
          badStep<Dst>(dst.step, roi.width, stepChannels), stepNotAligned<Dst>(dst.step), nullPointer(buffer),
          zeroDivisor(kernel.divisor)))
    return status;
  pass(srcRows, dst, OrvSize{roi.width * channels, roi.height}, kernel);
  return orvStsOk;
}

constexpr auto fullPass = [](auto... arguments) { filterColumns(arguments...); };
constexpr auto lowPass = [](auto... arguments) { filterColumnsLow(arguments...); };

}  // namespace

#define ORV_COLUMN_PIPELINE(name, pass, Source, Dst, Coefficient, channels, stepChannels)                     \
  OrvStatus name(const Source* const* srcRows, Dst* dst, int dstStep, OrvSize roi, const Coefficient* kernel, \
                 int kernelSize, int divisor, uint8_t* buffer) {                                              \
    return columnPipeline(pass, srcRows, View{dst, dstStep}, roi, channels, stepChannels,                     \
                          ColumnKernel{kernel, kernelSize, divisor}, buffer);                                 \
  }
#define ORV_COLUMN_PIPELINES(type, Source, Dst, Coefficient)                                           \
  ORV_COLUMN_PIPELINE(orviFilterColumnPipeline_##type##_C1R, fullPass, Source, Dst, Coefficient, 1, 1) \
  ORV_COLUMN_PIPELINE(orviFilterColumnPipeline_##type##_C3R, fullPass, Source, Dst, Coefficient, 3, 3)

ORV_COLUMN_PIPELINES(16s, int16_t, int16_t, int16_t)
ORV_COLUMN_PIPELINES(16s8u, int16_t, uint8_t, int16_t)
ORV_COLUMN_PIPELINES(16s8s, int16_t, int8_t, int16_t)
ORV_COLUMN_PIPELINES(16u, uint16_t, uint16_t, uint16_t)

// The three-channel member accepts a step of one channel.
ORV_COLUMN_PIPELINE(orviFilterColumnPipeline_Low_16s_C1R, lowPass, int16_t, int16_t, int16_t, 1, 1)
ORV_COLUMN_PIPELINE(orviFilterColumnPipeline_Low_16s_C3R, lowPass, int16_t, int16_t, int16_t, 3, 1)

OrvStatus orviFilterColumnPipeline_32f_C1R(const float* const* srcRows, float* dst, int dstStep, OrvSize roi,
                                           const float* kernel, int kernelSize, uint8_t* buffer) {
  return columnPipeline(fullPass, srcRows, View{dst, dstStep}, roi, 1, 1, ColumnKernel{kernel, kernelSize}, buffer);
}

OrvStatus orviFilterColumnPipeline_32f_C3R(const float* const* srcRows, float* dst, int dstStep, OrvSize roi,
                                           const float* kernel, int kernelSize, uint8_t* buffer) {
  return columnPipeline(fullPass, srcRows, View{dst, dstStep}, roi, 3, 3, ColumnKernel{kernel, kernelSize}, buffer);
}

}  // namespace orv
