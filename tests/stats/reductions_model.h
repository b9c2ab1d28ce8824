// Means, deviations and extrema as plain loops.
#pragma once

#include <cmath>
#include <cstdint>
#include <type_traits>

#include "stats/norms_model.h"

namespace orvtest::model {

struct MeanDeviation {
  double mean, stdDev;
};

/// Sums of integers are exact; sums of floats are doubles in reading order.
template <class Sample>
MeanDeviation meanDeviation(const MaskedImages<Sample>& in) {
  using Sum = std::conditional_t<std::is_same_v<Sample, float>, double, int64_t>;
  Sum sum = 0, squares = 0;
  int64_t n = 0;
  for (int y = 0; y < in.height; ++y)
    for (int x = 0; x < in.width; ++x) {
      Sum s = static_cast<Sum>(in.first(x, y));
      if constexpr (std::is_same_v<Sample, float>)
        s = static_cast<double>(in.factor(x, y) * in.first(x, y));
      else if (!in.selected(x, y))
        s = 0;
      sum += s;
      squares += s * s;
      n += in.selected(x, y) ? 1 : 0;
    }
  if (n == 0)
    return {0, 0};
  const double count = static_cast<double>(n);
  const double mean = static_cast<double>(sum) / count;
  const double variance = static_cast<double>(squares) / count - mean * mean;
  double stdDev = std::sqrt(std::fabs(variance));
  if (std::is_same_v<Sample, float> && mean * 0.05 * mean > stdDev * stdDev) {
    double deviations = 0;
    for (int y = 0; y < in.height; ++y)
      for (int x = 0; x < in.width; ++x)
        if (in.selected(x, y)) {
          const double d = static_cast<double>(in.first(x, y)) - mean;
          deviations += d * d;
        }
    stdDev = std::sqrt(deviations / count);
  }
  return {mean, stdDev};
}

/// The mean of |s|, by which the rounding errors of a mean scale.
inline double meanMagnitude(const MaskedImages<float>& in) {
  double sum = 0, largest = 0;
  for (int y = 0; y < in.height; ++y)
    for (int x = 0; x < in.width; ++x) {
      const double s = std::fabs(static_cast<double>(in.factor(x, y) * in.first(x, y)));
      sum += s;
      largest = s > largest ? s : largest;
    }
  return sum / (static_cast<double>(in.width) * in.height) + largest;
}

struct Extremum {
  float value;
  int x, y;
};

struct Extrema {
  Extremum minimum, maximum;
  bool anySelected;
};

/// The first occurrence in reading order; NaNs are never an improvement.
template <class Sample>
Extrema extrema(const MaskedImages<Sample>& in) {
  Extrema result = {{0, 0, 0}, {0, 0, 0}, false};
  bool found = false;
  for (int y = 0; y < in.height; ++y)
    for (int x = 0; x < in.width; ++x) {
      if (!in.selected(x, y))
        continue;
      result.anySelected = true;
      const float s = static_cast<float>(in.first(x, y));
      if (s != s)
        continue;
      if (!found || s < result.minimum.value)
        result.minimum = {s, x, y};
      if (!found || s > result.maximum.value)
        result.maximum = {s, x, y};
      found = true;
    }
  return result;
}

}  // namespace orvtest::model
