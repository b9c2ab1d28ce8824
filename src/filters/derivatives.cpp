// Derivative filters by table.
#include "filters/derivatives.h"

#include "filters/derivative_kernels.h"

namespace orv {
namespace {

template <class Source, class Result>
using Run = void (*)(const BorderedImage<Source>& src, View<Result> dst, void* buffer);

/// One entry: the walks for the two masks, null where the entry has no kernel of that size.
template <class Source, class Result>
struct Entry {
  Run<Source, Result> mask3x3, mask5x5;
};

/// In the order of the enumeration.
template <class Source, class Result>
constexpr Entry<Source, Result> entries[] = {
    {runTwoStage<SobelVert3, Source, Result>, runTwoStage<SobelVert5, Source, Result>},
    {runTwoStage<SobelHoriz3, Source, Result>, runTwoStage<SobelHoriz5, Source, Result>},
    {runTwoStage<ScharrVert3, Source, Result>, nullptr},
    {runTwoStage<ScharrHoriz3, Source, Result>, nullptr},
    {runTwoStage<PrewittVert3, Source, Result>, nullptr},
    {runTwoStage<PrewittHoriz3, Source, Result>, nullptr},
    {runTwoStage<RobertsDown3, Source, Result>, nullptr},
    {runTwoStage<RobertsUp3, Source, Result>, nullptr},
    {runTwoStage<SobelVertSecond3, Source, Result>, runTwoStage<SobelVertSecond5, Source, Result>},
    {runTwoStage<SobelHorizSecond3, Source, Result>, runTwoStage<SobelHorizSecond5, Source, Result>},
    {runTwoStage<SobelNegVert3, Source, Result>, runTwoStage<SobelNegVert5, Source, Result>},
};

template <class Source, class Result>
OrvStatus filterDerivative(Derivative entry, const BorderedImage<Source>& src, View<Result> dst, OrvMaskCode mask,
                           void* buffer) {
  if (OrvStatus status = badFilterArguments(src, dst, mask, buffer))
    return status;
  const auto& [mask3x3, mask5x5] = entries<Source, Result>[static_cast<size_t>(entry)];
  const auto run = mask == orvMask3x3 ? mask3x3 : mask5x5;
  if (run == nullptr)
    return orvStsBadMaskCode;
  run(src, dst, buffer);
  return orvStsOk;
}

}  // namespace

#define ORV_FORM(type, Source, Result)                                                                            \
  OrvStatus owniFilter2_##type##_C1R(Derivative entry, const Source* src, int srcStep, Result* dst, int dstStep,  \
                                     OrvSize roi, OrvMaskCode mask, OrvBorderMode borderMode, Source borderValue, \
                                     void* buffer) {                                                              \
    return filterDerivative(entry, BorderedImage<Source>{{src, srcStep}, roi, borderMode, borderValue},           \
                            View<Result>{dst, dstStep}, mask, buffer);                                            \
  }                                                                                                               \
  OrvStatus owniFilter2GetBufferSize_##type##_C1R(OrvSize roi, OrvMaskCode mask, int* bufferSize) {               \
    return twoStageBufferSizeQuery<Source>(1, roi, mask, bufferSize);                                             \
  }
ORV_FORM(8u16s, uint8_t, int16_t)
ORV_FORM(32f, float, float)

#define ORV_NAMED(operation, entry)                                                                                    \
  OrvStatus orviFilter##operation##_8u16s_C1R(const uint8_t* src, int srcStep, int16_t* dst, int dstStep, OrvSize roi, \
                                              OrvMaskCode mask, OrvBorderMode borderMode, uint8_t borderValue,         \
                                              void* buffer) {                                                          \
    return owniFilter2_8u16s_C1R(Derivative::entry, src, srcStep, dst, dstStep, roi, mask, borderMode, borderValue,    \
                                 buffer);                                                                              \
  }                                                                                                                    \
  OrvStatus orviFilter##operation##_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, OrvSize roi,       \
                                            OrvMaskCode mask, OrvBorderMode borderMode, float borderValue,             \
                                            void* buffer) {                                                            \
    return owniFilter2_32f_C1R(Derivative::entry, src, srcStep, dst, dstStep, roi, mask, borderMode, borderValue,      \
                               buffer);                                                                                \
  }
ORV_DERIVATIVE_FILTERS(ORV_NAMED)

}  // namespace orv
