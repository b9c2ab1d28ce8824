// Buffer sizes of the row and column pipelines.
#include "filters/pipeline_checks.h"

namespace orv {
namespace {

OrvStatus pipelineSize(OrvSize roi, int kernelSize, int32_t* bufferSize, auto formula) {
  if (OrvStatus status = firstFailure(nullPointer(bufferSize), badSize(roi), badKernelSize(kernelSize)))
    return status;
  // Sizes past the range of the result wrap.
  *bufferSize = static_cast<int32_t>(formula(uint32_t(kernelSize), uint32_t(roi.width)));
  return orvStsOk;
}

constexpr uint32_t roundedUp(uint32_t value, uint32_t multiple) { return (value + multiple - 1) / multiple * multiple; }

}  // namespace

#define ORV_PIPELINE_SIZE(name, formula)                                                                   \
  OrvStatus name(OrvSize roi, int kernelSize, int32_t* bufferSize) {                                       \
    return pipelineSize(roi, kernelSize, bufferSize,                                                       \
                        []([[maybe_unused]] uint32_t K, [[maybe_unused]] uint32_t W) { return formula; }); \
  }
#define ORV_ROW_SIZE(form, formula) ORV_PIPELINE_SIZE(orviFilterRowBorderPipelineGetBufferSize##form, formula)
#define ORV_COLUMN_SIZE(form, formula) ORV_PIPELINE_SIZE(orviFilterColumnPipelineGetBufferSize##form, formula)

ORV_ROW_SIZE(_32f_C1R, 48 * K + 96)
ORV_ROW_SIZE(_32f_C3R, 144 * K + 96)
ORV_ROW_SIZE(_16s_C1R, 48 * K + 112)
ORV_ROW_SIZE(_16s_C3R, 40 * K + 96)
ORV_ROW_SIZE(_8u16s_C1R, 36 * K + 144)
ORV_ROW_SIZE(_8u16s_C3R, 60 * K + 144)
ORV_ROW_SIZE(_16u_C1R, 64 * K + 96)
ORV_ROW_SIZE(_16u_C3R, 128 * K + 96)
ORV_ROW_SIZE(_Low_16s_C1R, 24 * K + 96)
ORV_ROW_SIZE(_Low_16s_C3R, 208 * K + 96)

ORV_COLUMN_SIZE(_32f_C1R, 32 * K + 32)
ORV_COLUMN_SIZE(_32f_C3R, 32 * K + 32)
ORV_COLUMN_SIZE(_16u_C1R, 32 * K + 64 + 32 * ((W + 3) / 4))
ORV_COLUMN_SIZE(_16u_C3R, 32 * K + 64 + 32 * ((3 * W + 3) / 4))
ORV_COLUMN_SIZE(_16s_C1R, 12 * roundedUp(W, 4) + 64)
ORV_COLUMN_SIZE(_16s_C3R, 36 * roundedUp(W, 4) + 64)
ORV_COLUMN_SIZE(_16s8u_C1R, 12 * roundedUp(W, 4) + 64)
ORV_COLUMN_SIZE(_16s8u_C3R, 36 * roundedUp(W, 4) + 64)
ORV_COLUMN_SIZE(_16s8s_C1R, 12 * roundedUp(W, 4) + 64)
ORV_COLUMN_SIZE(_16s8s_C3R, 36 * roundedUp(W, 4) + 64)
ORV_COLUMN_SIZE(_Low_16s_C1R, 12 * roundedUp(W, 8) + 64)
ORV_COLUMN_SIZE(_Low_16s_C3R, 36 * roundedUp(W, 8) + 64)

}  // namespace orv
