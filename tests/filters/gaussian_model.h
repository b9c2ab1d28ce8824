// Both Gaussian filters as plain loops: taps from sigma, a whole intermediate image, no bands and no rings.
#pragma once

#include <cmath>
#include <cstdint>
#include <type_traits>
#include <vector>

#include "filters/pipeline_model.h"

namespace orvtest::model {

/// An image and whatever lies around it in memory.
template <class Sample>
struct ImageView {
  const Sample* first;
  int step;
  int width, height, channels;

  const Sample* row(int y) const {
    return reinterpret_cast<const Sample*>(reinterpret_cast<const char*>(first) + static_cast<intptr_t>(y) * step);
  }
};

/// 1 in the centre, also where the square of a tiny sigma is zero.
inline float gaussianTap(float distance, float sigma) {
  if (distance == 0)
    return 1.0f;
  const float exponent = -(distance * distance) / ((sigma + sigma) * sigma);
  return static_cast<float>(std::exp(static_cast<double>(exponent)));
}

// ------------------------------------------------------------------------------------------ fixed-point generation

inline std::vector<float> gaussianKernel(int taps, float sigma) {
  std::vector<float> g;
  float sum = 0;
  for (int j = 0; j < taps; ++j) {
    g.push_back(gaussianTap(static_cast<float>(j - taps / 2), sigma));
    sum = sum + g.back();
  }
  for (float& tap : g) tap = tap / sum;
  return g;
}

template <class Sample>
struct GaussianForms;  ///< intermediate sample, coefficient, divisor
template <>
struct GaussianForms<uint8_t> {
  using Row = int16_t;
  using Tap = int16_t;
  static constexpr int divisor = 1 << 12;
};
template <>
struct GaussianForms<uint16_t> {
  using Row = uint16_t;
  using Tap = uint16_t;
  static constexpr int divisor = 1 << 15;
};
template <>
struct GaussianForms<int16_t> {
  using Row = int16_t;
  using Tap = int16_t;
  static constexpr int divisor = 1 << 15;
};
template <>
struct GaussianForms<float> {
  using Row = float;
  using Tap = float;
  static constexpr int divisor = 1;
};

template <class Sample>
std::vector<typename GaussianForms<Sample>::Tap> gaussianTaps(int taps, float sigma) {
  using Forms = GaussianForms<Sample>;
  std::vector<typename Forms::Tap> result;
  for (float tap : gaussianKernel(taps, sigma)) {
    if constexpr (std::is_same_v<Sample, float>) {
      result.push_back(tap);
    } else {
      const double scaled = static_cast<double>(tap * static_cast<float>(Forms::divisor));
      const int coefficient = static_cast<int>(std::floor(scaled + 0.5));
      result.push_back(static_cast<typename Forms::Tap>(static_cast<uint16_t>(coefficient)));
    }
  }
  return result;
}

/// `out` holds width * height * channels samples without gaps.
template <class Sample>
void gaussianBorder(const ImageView<Sample>& in, Sample* out, int taps, float sigma, int word,
                    const Sample* borderValue) {
  using Forms = GaussianForms<Sample>;
  using Row = typename Forms::Row;
  const int samples = in.width * in.channels;
  const int radius = taps / 2;
  const auto kernel = gaussianTaps<Sample>(taps, sigma);

  std::vector<std::vector<Row>> intermediate;
  for (int y = -radius; y < in.height + radius; ++y) {
    std::vector<Row> row(static_cast<size_t>(samples));
    const AxisIndex source = mapRow(y, in.height, word);
    if (source.constant) {
      for (int x = 0; x < samples; ++x) row[static_cast<size_t>(x)] = static_cast<Row>(borderValue[x % in.channels]);
    } else {
      const ExtendedRow<Sample> extended = {in.row(source.index), in.width, in.channels, word, borderValue};
      filterRow(extended, row.data(), kernel.data(), taps, radius, Forms::divisor);
    }
    intermediate.push_back(row);
  }
  for (int y = 0; y < in.height; ++y) {
    std::vector<const Row*> rows;
    for (int j = 0; j < taps; ++j) rows.push_back(intermediate[static_cast<size_t>(y + j)].data());
    filterColumn(rows.data(), out + y * samples, samples, kernel.data(), taps, Forms::divisor);
  }
}

// ------------------------------------------------------------------------------------------------ float generation

/// Index 0 is the farthest tap, the last the centre.
inline std::vector<float> halfKernel(int taps, float sigma) {
  std::vector<float> half;
  float sum = 0;
  for (int distance = taps / 2; distance >= 1; --distance) {
    const float tap = gaussianTap(static_cast<float>(distance), sigma);
    half.push_back(tap);
    sum = sum + tap;
    sum = sum + tap;
  }
  half.push_back(1.0f);
  sum = sum + 1.0f;
  for (float& tap : half) tap = tap / sum;
  return half;
}

/// Pairs of samples at equal distance, the farthest first, the centre last.
template <class At>
float halfKernelSum(const std::vector<float>& half, At at) {
  const int radius = static_cast<int>(half.size()) - 1;
  const auto pair = [&](int i) { return multiply(half[static_cast<size_t>(i)], add(at(i - radius), at(radius - i))); };
  float sum = pair(0);
  for (int i = 1; i < radius; ++i) sum = add(sum, pair(i));
  return add(sum, multiply(half[static_cast<size_t>(radius)], at(0)));
}

template <class Sample>
Sample nearestSample(float value) {
  if constexpr (std::is_same_v<Sample, float>)
    return value;
  else
    return static_cast<Sample>(rounded(value, static_cast<float>(std::numeric_limits<Sample>::lowest()),
                                       static_cast<float>(std::numeric_limits<Sample>::max())));
}

template <class Sample>
void gaussianFloat(const ImageView<Sample>& in, Sample* out, int taps, float sigma, int word,
                   const Sample* borderValue) {
  const int samples = in.width * in.channels;
  const int radius = taps / 2;
  const int effective = (word & 240) == 240 ? 240 : word;
  const std::vector<float> half = halfKernel(taps, sigma);

  std::vector<std::vector<float>> intermediate;
  for (int y = -radius; y < in.height + radius; ++y) {
    std::vector<float> row(static_cast<size_t>(samples));
    const AxisIndex source = mapRow(y, in.height, effective);
    for (int x = 0; x < samples; ++x) {
      const int channel = x % in.channels;
      if (source.constant) {
        row[static_cast<size_t>(x)] = static_cast<float>(borderValue[channel]);
        continue;
      }
      const ExtendedRow<Sample> extended = {in.row(source.index), in.width, in.channels, effective, borderValue};
      row[static_cast<size_t>(x)] =
          halfKernelSum(half, [&](int d) { return static_cast<float>(extended.sample(x / in.channels + d, channel)); });
    }
    intermediate.push_back(row);
  }
  for (int y = 0; y < in.height; ++y)
    for (int x = 0; x < samples; ++x)
      out[y * samples + x] = nearestSample<Sample>(halfKernelSum(
          half, [&](int d) { return intermediate[static_cast<size_t>(y + radius + d)][static_cast<size_t>(x)]; }));
}

}  // namespace orvtest::model
