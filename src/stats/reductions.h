// What the masked norms, means, deviations and extrema share: their check lists, and results stored at any address.
#pragma once

#include <cstring>
#include <type_traits>

#include "frame/checks.h"
#include "frame/pixel_groups.h"
#include "simd/double.h"

namespace orv {

template <class Result>
void store(Result* result, const std::type_identity_t<Result>& value) {
  std::memcpy(result, &value, sizeof value);
}

inline Check badStep(EveryPixel, int) { return {}; }
inline Check badStep(Mask mask, int width) { return badStep<uint8_t>(mask.bytes.step, width); }

inline Check nullMask(EveryPixel) { return {}; }
inline Check nullMask(Mask mask) { return nullPointer(mask.bytes.first); }

/// The two orders in which the steps of images and mask are judged; members of one family may differ.
enum class StepChecks {
  imageThenMask,  ///< image short, image not aligned, mask short
  shortFirst      ///< image or mask short, image not aligned
};

template <class Sample>
OrvStatus badSteps(StepChecks order, int width, int channels, auto selection, View<const Sample> src) {
  if (order == StepChecks::imageThenMask)
    return firstFailure(badStep<Sample>(src.step, width, channels), stepNotAligned<Sample>(src.step),
                        badStep(selection, width));
  return firstFailure(badStep<Sample>(src.step, width, channels), badStep(selection, width),
                      stepNotAligned<Sample>(src.step));
}

/// The first failing check of a reduction: `coi` is 1 for one-channel images.
template <class Channel, class Sample, class... Required>
OrvStatus badReduction(StepChecks order, OrvSize roi, int coi, auto selection, View<const Sample> src,
                       Required... required) {
  return firstFailure(nullPointer(src.first, required...), nullMask(selection), badSize(roi),
                      badSteps(order, roi.width, Channel::channels, selection, src), badChannelOfInterest(coi));
}

template <class Channel>
Channel channelOf(int coi) {
  if constexpr (Channel::channels == 1)
    return {};
  else
    return Channel(coi);
}

/// Stands for the argument that one-channel members don't have.
constexpr int onlyChannel = 1;

}  // namespace orv
