#include "frame/image_extrema.h"

#include "frame/checks.h"
#include "frame/extrema_search.h"

namespace orv {
namespace {

/// Calls deliver(channel, extreme...) with one extreme per order, for each channel.
template <class... Orders, class Sample, class Deliver>
void extremaOfChannels(View<const Sample> src, OrvSize roi, int channels, Deliver deliver) {
  const auto search = [&](int channel, auto loader) {
    std::apply([&](auto... extremes) { deliver(channel, extremes...); },
               findExtremes<Orders...>(region(roi, loader, EveryPixel{}, src)));
  };
  if (channels == 1)
    search(0, OnlyChannel<Sample>{});
  else
    for (int channel = 0; channel < 3; ++channel) search(channel, OneOfThree<Sample>(channel + 1));
}

template <class Sample, class... Results>
OrvStatus badArguments(View<const Sample> src, OrvSize roi, int channels, Results... results) {
  return firstFailure(nullPointer(src.first, results...), badSize(roi), badStep<Sample>(src.step, roi.width, channels),
                      stepNotAligned<Sample>(src.step));
}

template <class Order, class Sample>
OrvStatus extremeValue(View<const Sample> src, OrvSize roi, int channels, Sample* value) {
  if (OrvStatus status = badArguments(src, roi, channels, value))
    return status;
  extremaOfChannels<Order>(src, roi, channels, [=](int channel, auto extreme) { value[channel] = extreme.value; });
  return orvStsOk;
}

template <class Sample>
OrvStatus bothExtremes(View<const Sample> src, OrvSize roi, int channels, Sample* min, Sample* max) {
  if (OrvStatus status = badArguments(src, roi, channels, min, max))
    return status;
  extremaOfChannels<Lowest, Highest>(src, roi, channels, [=](int channel, auto lowest, auto highest) {
    min[channel] = lowest.value;
    max[channel] = highest.value;
  });
  return orvStsOk;
}

template <class Order, class Sample>
OrvStatus extremeWithPosition(View<const Sample> src, OrvSize roi, int channels, Sample* value, int* x, int* y) {
  if (OrvStatus status = badArguments(src, roi, channels, value, x, y))
    return status;
  extremaOfChannels<Order>(src, roi, channels, [=](int channel, auto extreme) {
    value[channel] = extreme.value;
    x[channel] = extreme.position.x;
    y[channel] = extreme.position.y;
  });
  return orvStsOk;
}

}  // namespace

#define ORV_EXTREMA(type, Sample, layout, channels)                                                                   \
  OrvStatus orviMin_##type##_##layout(const Sample* src, int srcStep, OrvSize roi, Sample* min) {                     \
    return extremeValue<Lowest>(View{src, srcStep}, roi, channels, min);                                              \
  }                                                                                                                   \
  OrvStatus orviMax_##type##_##layout(const Sample* src, int srcStep, OrvSize roi, Sample* max) {                     \
    return extremeValue<Highest>(View{src, srcStep}, roi, channels, max);                                             \
  }                                                                                                                   \
  OrvStatus orviMinMax_##type##_##layout(const Sample* src, int srcStep, OrvSize roi, Sample* min, Sample* max) {     \
    return bothExtremes(View{src, srcStep}, roi, channels, min, max);                                                 \
  }                                                                                                                   \
  OrvStatus orviMinIndx_##type##_##layout(const Sample* src, int srcStep, OrvSize roi, Sample* min, int* x, int* y) { \
    return extremeWithPosition<Lowest>(View{src, srcStep}, roi, channels, min, x, y);                                 \
  }                                                                                                                   \
  OrvStatus orviMaxIndx_##type##_##layout(const Sample* src, int srcStep, OrvSize roi, Sample* max, int* x, int* y) { \
    return extremeWithPosition<Highest>(View{src, srcStep}, roi, channels, max, x, y);                                \
  }

ORV_EXTREMA(8u, uint8_t, C1R, 1)
ORV_EXTREMA(8u, uint8_t, C3R, 3)
ORV_EXTREMA(16u, uint16_t, C1R, 1)
ORV_EXTREMA(16u, uint16_t, C3R, 3)
ORV_EXTREMA(32f, float, C1R, 1)
ORV_EXTREMA(32f, float, C3R, 3)

}  // namespace orv
