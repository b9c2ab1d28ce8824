// Laplacian, lowpass and mixed second derivative with fixed 3x3 and 5x5 masks.
#include "filters/two_stage.h"
#include "frame/declarations.h"

namespace orv {
namespace {

struct Laplacian3 {
  static constexpr int radius = 1;
  using RowStages = Stages<Neighbours3>;
  static auto column(auto centre, auto p) { return results(times<2>(p(-1) + p(1)) - times<8>(centre)); }
};

/// The second derivatives along both axes, each smoothed across.
struct Laplacian5 {
  static constexpr int radius = 2;
  using RowStages = Stages<Smooth5, SecondDifference5>;
  static auto column(auto, auto p, auto q) { return results(Smooth5::apply(q) + SecondDifference5::apply(p)); }
};

/// 7280 / 65536 is a ninth, a little low, and 5 / 9 are added: the contract's quotient of nine samples is the nearest
/// integer, which one rounding product gives as well.
constexpr int16_t ninth = 3641;
constexpr bool ninthIsExact() {
  for (int sum = 0; sum <= 9 * 255; ++sum)
    if ((sum + 5) * 7280 / 65536 != (sum * ninth + 0x4000) >> 15)
      return false;
  return true;
}
static_assert(ninthIsExact());

/// The mean of 8-bit samples. By contract the smaller mask rounds and the larger, with 65536 / 25, truncates.
template <int samples>
auto meanOf(auto sum) {
  if constexpr (samples == 9)
    return roundedProduct(sum, ninth);
  else
    return upperProduct(sum, 2621);
}
template <int samples>
F32x8 meanOf(F32x8 sum) {
  return sum * F32x8::broadcast(1.0f / samples);
}
template <int samples>
F32x1 meanOf(F32x1 sum) {
  return sum * F32x1::broadcast(1.0f / samples);
}
template <int samples>
Pair<F32x8> meanOf(Pair<F32x8> sum) {
  return {meanOf<samples>(sum.low), meanOf<samples>(sum.high)};
}
template <int samples>
AlternateBytes meanOf(AlternateBytes sum) {
  return {meanOf<samples>(sum.even), meanOf<samples>(sum.odd)};
}

template <int kernelRadius, class Sum>
struct Lowpass {
  static constexpr int radius = kernelRadius;
  static constexpr int samples = (2 * radius + 1) * (2 * radius + 1);
  using RowStages = Stages<Sum>;
  using ByteVector = AlternateBytes;
  static auto column(auto, auto p) { return results(meanOf<samples>(Sum::apply(p))); }
};
using Lowpass3 = Lowpass<1, Sum3>;
using Lowpass5 = Lowpass<2, Sum5>;

using SobelCross3 = Separable<1, NegatedDifference3, Difference3>;
using SobelCross5 = Separable<2, NegatedDifference5, Difference5>;

template <class Filter3, class Filter5, class Source, class Result>
OrvStatus filterWithMask(const BorderedImage<Source>& src, View<Result> dst, OrvMaskCode mask, void* buffer) {
  if (OrvStatus status = badFilterArguments(src, dst, mask, buffer))
    return status;
  if (mask == orvMask3x3)
    runTwoStage<Filter3>(src, dst, buffer);
  else
    runTwoStage<Filter5>(src, dst, buffer);
  return orvStsOk;
}

}  // namespace

#define ORV_FIXED_FILTER(operation, planes, type, Source, Result)                                                \
  OrvStatus orviFilter##operation##GetBufferSize_##type##_C1R(OrvSize roi, OrvMaskCode mask, int* bufferSize) {  \
    return twoStageBufferSizeQuery<Source>(planes, roi, mask, bufferSize);                                       \
  }                                                                                                              \
  OrvStatus orviFilter##operation##Border_##type##_C1R(const Source* src, int srcStep, Result* dst, int dstStep, \
                                                       OrvSize roi, OrvMaskCode mask, OrvBorderMode borderMode,  \
                                                       Source borderValue, void* buffer) {                       \
    return filterWithMask<operation##3, operation##5>(                                                           \
        BorderedImage<Source>{{src, srcStep}, roi, borderMode, borderValue}, View{dst, dstStep}, mask, buffer);  \
  }

ORV_FIXED_FILTER(Laplacian, 2, 8u16s, uint8_t, int16_t)
ORV_FIXED_FILTER(Laplacian, 2, 32f, float, float)
ORV_FIXED_FILTER(Lowpass, 1, 8u, uint8_t, uint8_t)
ORV_FIXED_FILTER(Lowpass, 1, 32f, float, float)
ORV_FIXED_FILTER(SobelCross, 1, 8u16s, uint8_t, int16_t)
ORV_FIXED_FILTER(SobelCross, 1, 32f, float, float)

}  // namespace orv
