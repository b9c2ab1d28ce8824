// The separable filter as plain loops: every row filtered to float, then every column.
#pragma once

#include <cstdint>
#include <limits>
#include <type_traits>
#include <vector>

#include "filters/gaussian_model.h"
#include "filters/pipeline_model.h"

namespace orvtest::model {

/// The kernels and the divisor of one filter; kernelX holds `channels` interleaved kernels. Float kernels take no
/// divisor.
template <class Tap>
struct SeparableKernels {
  std::vector<Tap> x, y;
  int width, height, channels;
  int divisor = 1;

  float scale() const { return std::is_same_v<Tap, float> ? 1.0f : reciprocal(divisor); }
  std::vector<Tap> rowTaps(int channel) const {
    std::vector<Tap> taps;
    for (int j = 0; j < width; ++j) taps.push_back(x[static_cast<size_t>(j * channels + channel)]);
    return taps;
  }
};

/// The row stage of one sample, left as a float. The sum of integers is exact and rounds once, whatever the kernel.
template <class Sample, class Tap>
float separableRowSum(const std::vector<Sample>& s, const std::vector<Tap>& taps, int divisor) {
  if constexpr (std::is_same_v<Tap, float>) {
    return floatSum(s, taps.data());
  } else {
    return static_cast<float>(integerSum(s, taps.data())) * reciprocal(divisor);
  }
}

template <class Result>
Result truncatedSample(float value) {
  if constexpr (std::is_same_v<Result, float>)
    return value;
  else
    return static_cast<Result>(truncated(value, static_cast<float>(std::numeric_limits<Result>::lowest()),
                                         static_cast<float>(std::numeric_limits<Result>::max())));
}

template <class Sample, class Result, class Tap>
void separable(const ImageView<Sample>& in, Result* out, const SeparableKernels<Tap>& kernels, int word,
               const Sample* borderValue) {
  const int above = (kernels.height - 1) / 2;
  const int left = (kernels.width - 1) / 2;
  const int samples = in.width * in.channels;
  std::vector<std::vector<float>> intermediate;
  for (int y = -above; y < in.height + kernels.height - 1 - above; ++y) {
    std::vector<float> row(static_cast<size_t>(samples));
    const AxisIndex source = mapRow(y, in.height, word);
    for (int x = 0; x < samples; ++x) {
      const int channel = x % in.channels;
      const std::vector<Tap> taps = kernels.rowTaps(channel);
      float& value = row[static_cast<size_t>(x)];
      if (source.constant) {
        float sum = 0;
        for (Tap tap : taps) sum = add(sum, static_cast<float>(tap));
        value = multiply(multiply(static_cast<float>(borderValue[channel]), sum), kernels.scale());
        continue;
      }
      const ExtendedRow<Sample> extended = {in.row(source.index), in.width, in.channels, word, borderValue};
      std::vector<Sample> window;
      for (int j = 0; j < kernels.width; ++j) window.push_back(extended.sample(x / in.channels - left + j, channel));
      value = separableRowSum(window, taps, kernels.divisor);
    }
    intermediate.push_back(row);
  }
  for (int y = 0; y < in.height; ++y)
    for (int x = 0; x < samples; ++x) {
      std::vector<float> column;
      for (int j = 0; j < kernels.height; ++j)
        column.push_back(intermediate[static_cast<size_t>(y + j)][static_cast<size_t>(x)]);
      out[y * samples + x] = truncatedSample<Result>(multiply(floatSum(column, kernels.y.data()), kernels.scale()));
    }
}

}  // namespace orvtest::model
