// Extreme values and their positions, of a whole region or under a mask.
#include "frame/extrema_search.h"
#include "stats/reductions.h"

namespace orv {
namespace {

struct Outputs {
  float *minVal, *maxVal;
  OrvPoint *minIndex, *maxIndex;
};

template <class Sample>
void deliver(Extreme<Sample> extreme, float* value, OrvPoint* index) {
  if (value != nullptr)
    store(value, static_cast<float>(extreme.value));
  if (index != nullptr)
    store(index, extreme.position);
}

bool selectsNothing(EveryPixel, OrvSize) { return false; }
bool selectsNothing(Mask mask, OrvSize roi) { return countSelected(mask, roi) == 0; }

/// An extreme is only looked for, and its position only delivered, together with its value; without any value the
/// minimum is.
template <class Channel, class Selection, class Sample>
OrvStatus extrema(View<const Sample> src, OrvSize roi, int coi, Selection selection, Outputs out) {
  if (OrvStatus status = badReduction<Channel>(StepChecks::shortFirst, roi, coi, selection, src))
    return status;
  const auto pixels = region(roi, channelOf<Channel>(coi), selection, src);
  Extreme<Sample> lowest{}, highest{};
  if (out.maxVal == nullptr) {
    std::tie(lowest) = findExtremes<Lowest>(pixels);
    deliver(lowest, out.minVal, out.minIndex);
  } else if (out.minVal == nullptr) {
    std::tie(highest) = findExtremes<Highest>(pixels);
    deliver(highest, out.maxVal, out.maxIndex);
  } else {
    std::tie(lowest, highest) = findExtremes<Lowest, Highest>(pixels);
    deliver(lowest, out.minVal, out.minIndex);
    deliver(highest, out.maxVal, out.maxIndex);
  }
  const bool maybeNothing = lowest.value == 0 && highest.value == 0;
  return maybeNothing && selectsNothing(selection, roi) ? orvStsMaskEmpty : orvStsOk;
}

}  // namespace

#define ORV_EXTREMA(type, Sample)                                                                                  \
  OrvStatus orviMinMaxIndx_##type##_C1R(const Sample* src, int srcStep, OrvSize roi, float* minVal, float* maxVal, \
                                        OrvPoint* minIndex, OrvPoint* maxIndex) {                                  \
    return extrema<OnlyChannel<Sample>>(View{src, srcStep}, roi, onlyChannel, EveryPixel{},                        \
                                        {minVal, maxVal, minIndex, maxIndex});                                     \
  }                                                                                                                \
  OrvStatus orviMinMaxIndx_##type##_C3CR(const Sample* src, int srcStep, OrvSize roi, int coi, float* minVal,      \
                                         float* maxVal, OrvPoint* minIndex, OrvPoint* maxIndex) {                  \
    return extrema<OneOfThree<Sample>>(View{src, srcStep}, roi, coi, EveryPixel{},                                 \
                                       {minVal, maxVal, minIndex, maxIndex});                                      \
  }                                                                                                                \
  OrvStatus orviMinMaxIndx_##type##_C1MR(const Sample* src, int srcStep, const uint8_t* mask, int maskStep,        \
                                         OrvSize roi, float* minVal, float* maxVal, OrvPoint* minIndex,            \
                                         OrvPoint* maxIndex) {                                                     \
    return extrema<OnlyChannel<Sample>>(View{src, srcStep}, roi, onlyChannel, Mask{{mask, maskStep}},              \
                                        {minVal, maxVal, minIndex, maxIndex});                                     \
  }                                                                                                                \
  OrvStatus orviMinMaxIndx_##type##_C3CMR(const Sample* src, int srcStep, const uint8_t* mask, int maskStep,       \
                                          OrvSize roi, int coi, float* minVal, float* maxVal, OrvPoint* minIndex,  \
                                          OrvPoint* maxIndex) {                                                    \
    return extrema<OneOfThree<Sample>>(View{src, srcStep}, roi, coi, Mask{{mask, maskStep}},                       \
                                       {minVal, maxVal, minIndex, maxIndex});                                      \
  }

ORV_EXTREMA(8u, uint8_t)
ORV_EXTREMA(16u, uint16_t)
ORV_EXTREMA(32f, float)

}  // namespace orv
