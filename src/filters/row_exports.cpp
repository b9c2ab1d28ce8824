// The exported row pipelines: argument checks before the row passes.
#include "filters/pipeline_checks.h"
#include "filters/pipelines.h"
#include "frame/border.h"

namespace orv {
namespace {

enum class DivisorRule { none, notZero, notZeroAfterBorder, positive };

constexpr Check badDivisor(DivisorRule rule, int divisor) {
  const bool refused = (rule == DivisorRule::notZero && divisor == 0) || (rule == DivisorRule::positive && divisor < 1);
  return {refused, orvStsBadArg};
}

/// A border value that came by value is never null, so that one list serves one and three channels.
template <class Source, class Result, class Coefficient>
OrvStatus rowPipeline(auto pass, DivisorRule divisorRule, View<const Source> src, Result* const* dstRows, OrvSize roi,
                      int channels, RowKernel<Coefficient> kernel, RowBorder<Source> border, uint8_t* buffer) {
  if (OrvStatus status = firstFailure(
          nullPointer(src.first, dstRows, kernel.taps, buffer), badSize(roi),
          [&] { return nullRow(dstRows, roi.height); }, nullPointer(border.value), badKernelSize(kernel.size),
          badAnchor(kernel.anchor, kernel.size), badStep<Source>(src.step, roi.width, channels),
          stepNotAligned<Source>(src.step), badDivisor(divisorRule, kernel.divisor),
          badBorder(border.mode, filterBorders),
          checkedIf(divisorRule == DivisorRule::notZeroAfterBorder, zeroDivisor(kernel.divisor))))
    return status;
  pass(src, dstRows, roi, channels, kernel, border, buffer);
  return orvStsOk;
}

constexpr auto fullPass = [](auto... arguments) { filterRows(arguments...); };
constexpr auto lowPass = [](auto... arguments) { filterRowsLow(arguments...); };

}  // namespace

#define ORV_ROW_PIPELINE(form, pass, Source, Result, Coefficient, ruleOfC1, ruleOfC3)                                 \
  OrvStatus orviFilterRowBorderPipeline##form##_C1R(                                                                  \
      const Source* src, int srcStep, Result* const* dstRows, OrvSize roi, const Coefficient* kernel, int kernelSize, \
      int xAnchor, OrvBorderMode borderMode, Source borderValue, int divisor, uint8_t* buffer) {                      \
    return rowPipeline(pass, DivisorRule::ruleOfC1, View{src, srcStep}, dstRows, roi, 1,                              \
                       RowKernel{kernel, kernelSize, xAnchor, divisor}, RowBorder{borderMode, &borderValue}, buffer); \
  }                                                                                                                   \
  OrvStatus orviFilterRowBorderPipeline##form##_C3R(                                                                  \
      const Source* src, int srcStep, Result* const* dstRows, OrvSize roi, const Coefficient* kernel, int kernelSize, \
      int xAnchor, OrvBorderMode borderMode, const Source* borderValue, int divisor, uint8_t* buffer) {               \
    return rowPipeline(pass, DivisorRule::ruleOfC3, View{src, srcStep}, dstRows, roi, 3,                              \
                       RowKernel{kernel, kernelSize, xAnchor, divisor}, RowBorder{borderMode, borderValue}, buffer);  \
  }

// One member tests its divisor after the border word, the others before it.
ORV_ROW_PIPELINE(_8u16s, fullPass, uint8_t, int16_t, int16_t, notZeroAfterBorder, notZero)
ORV_ROW_PIPELINE(_16s, fullPass, int16_t, int16_t, int16_t, notZero, notZero)
ORV_ROW_PIPELINE(_16u, fullPass, uint16_t, uint16_t, uint16_t, positive, positive)
ORV_ROW_PIPELINE(_Low_16s, lowPass, int16_t, int16_t, int16_t, notZero, notZero)

OrvStatus orviFilterRowBorderPipeline_32f_C1R(const float* src, int srcStep, float* const* dstRows, OrvSize roi,
                                              const float* kernel, int kernelSize, int xAnchor,
                                              OrvBorderMode borderMode, float borderValue, uint8_t* buffer) {
  return rowPipeline(fullPass, DivisorRule::none, View{src, srcStep}, dstRows, roi, 1,
                     RowKernel{kernel, kernelSize, xAnchor}, RowBorder{borderMode, &borderValue}, buffer);
}

OrvStatus orviFilterRowBorderPipeline_32f_C3R(const float* src, int srcStep, float* const* dstRows, OrvSize roi,
                                              const float* kernel, int kernelSize, int xAnchor,
                                              OrvBorderMode borderMode, const float* borderValue, uint8_t* buffer) {
  return rowPipeline(fullPass, DivisorRule::none, View{src, srcStep}, dstRows, roi, 3,
                     RowKernel{kernel, kernelSize, xAnchor}, RowBorder{borderMode, borderValue}, buffer);
}

}  // namespace orv
