// Norms of an image, of the difference of two, and of that difference relative to the second, under a mask.
#include <bit>
#include <limits>

#include "frame/scalar_functions.h"
#include "stats/norm_float.h"
#include "stats/norm_integer.h"
#include "stats/reductions.h"

namespace orv {
namespace {

template <NormKind kind>
double rooted(double sum) {
  return kind == NormKind::l2 ? orvsSqrtOne(sum) : sum;
}

/// The quotient of two norms: one root of the quotient of the sums of squares, not a quotient of roots.
template <NormKind kind>
OrvStatus relative(double numerator, double denominator, double* value) {
  if (denominator != 0.0) {
    store(value, rooted<kind>(numerator / denominator));
    return orvStsOk;
  }
  // Only a NaN reaches the negative infinity.
  constexpr double infinity = std::numeric_limits<double>::infinity();
  const double undefined = std::bit_cast<double>(0xfff8000000000000u);
  store(value, numerator == 0.0 ? undefined : numerator > 0.0 ? infinity : -infinity);
  return orvStsZeroDenominator;
}

template <NormKind kind, class Channel, class Sample>
OrvStatus norm(View<const Sample> src, Mask mask, OrvSize roi, int coi, double* value) {
  if (OrvStatus status = badReduction<Channel>(StepChecks::imageThenMask, roi, coi, mask, src, value))
    return status;
  const auto [sum] = normSums<kind, OfSample>(region(roi, channelOf<Channel>(coi), mask, src));
  store(value, rooted<kind>(sum));
  return orvStsOk;
}

template <class Channel, class Sample>
OrvStatus badComparison(View<const Sample> src1, View<const Sample> src2, Mask mask, OrvSize roi, int coi,
                        double* value) {
  return firstFailure(nullPointer(src1.first, src2.first, mask.bytes.first, value), badSize(roi),
                      badStep<Sample>(src1.step, roi.width, Channel::channels),
                      badStep<Sample>(src2.step, roi.width, Channel::channels), badStep(mask, roi.width),
                      stepNotAligned<Sample>(src1.step, src2.step), badChannelOfInterest(coi));
}

template <NormKind kind, class Channel, class Sample>
OrvStatus normOfDifference(View<const Sample> src1, View<const Sample> src2, Mask mask, OrvSize roi, int coi,
                           double* value) {
  if (OrvStatus status = badComparison<Channel>(src1, src2, mask, roi, coi, value))
    return status;
  const auto [sum] = normSums<kind, OfDifference>(region(roi, channelOf<Channel>(coi), mask, src1, src2));
  store(value, rooted<kind>(sum));
  return orvStsOk;
}

template <NormKind kind, class Channel, class Sample>
OrvStatus relativeNorm(View<const Sample> src1, View<const Sample> src2, Mask mask, OrvSize roi, int coi,
                       double* value) {
  if (OrvStatus status = badComparison<Channel>(src1, src2, mask, roi, coi, value))
    return status;
  constexpr bool wideSingles = kind == NormKind::l1 && std::is_same_v<Channel, OnlyChannel<float>>;
  using Numerator = std::conditional_t<wideSingles, OfDifferenceWideSingles, OfDifference>;
  const auto [numerator, denominator] =
      normSums<kind, Numerator, OfReference>(region(roi, channelOf<Channel>(coi), mask, src1, src2));
  return relative<kind>(numerator, denominator, value);
}

}  // namespace

#define ORV_NORMS(norm_, kind, type, Sample)                                                                     \
  OrvStatus orviNorm_##norm_##_##type##_C1MR(const Sample* src, int srcStep, const uint8_t* mask, int maskStep,  \
                                             OrvSize roi, double* value) {                                       \
    return norm<kind, OnlyChannel<Sample>>(View{src, srcStep}, Mask{{mask, maskStep}}, roi, onlyChannel, value); \
  }                                                                                                              \
  OrvStatus orviNorm_##norm_##_##type##_C3CMR(const Sample* src, int srcStep, const uint8_t* mask, int maskStep, \
                                              OrvSize roi, int coi, double* value) {                             \
    return norm<kind, OneOfThree<Sample>>(View{src, srcStep}, Mask{{mask, maskStep}}, roi, coi, value);          \
  }                                                                                                              \
  ORV_COMPARISONS(orviNormDiff, normOfDifference, norm_, kind, type, Sample)                                     \
  ORV_COMPARISONS(orviNormRel, relativeNorm, norm_, kind, type, Sample)

#define ORV_COMPARISONS(family, function, norm_, kind, type, Sample)                                                   \
  OrvStatus family##_##norm_##_##type##_C1MR(const Sample* src1, int src1Step, const Sample* src2, int src2Step,       \
                                             const uint8_t* mask, int maskStep, OrvSize roi, double* value) {          \
    return function<kind, OnlyChannel<Sample>>(View{src1, src1Step}, View{src2, src2Step}, Mask{{mask, maskStep}},     \
                                               roi, onlyChannel, value);                                               \
  }                                                                                                                    \
  OrvStatus family##_##norm_##_##type##_C3CMR(const Sample* src1, int src1Step, const Sample* src2, int src2Step,      \
                                              const uint8_t* mask, int maskStep, OrvSize roi, int coi,                 \
                                              double* value) {                                                         \
    return function<kind, OneOfThree<Sample>>(View{src1, src1Step}, View{src2, src2Step}, Mask{{mask, maskStep}}, roi, \
                                              coi, value);                                                             \
  }

#define ORV_NORMS_OF(type, Sample)            \
  ORV_NORMS(Inf, NormKind::inf, type, Sample) \
  ORV_NORMS(L1, NormKind::l1, type, Sample)   \
  ORV_NORMS(L2, NormKind::l2, type, Sample)

ORV_NORMS_OF(8u, uint8_t)
ORV_NORMS_OF(16u, uint16_t)
ORV_NORMS_OF(32f, float)

}  // namespace orv
