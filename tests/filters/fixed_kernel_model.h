// The filters with fixed kernels and the colour gradient as plain loops over the extended image.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <type_traits>
#include <vector>

#include "filters/gaussian_model.h"

namespace orvtest::model {

/// Pixel (x, y) of an extended one-channel image: the border value as soon as either axis says so.
template <class Sample>
Sample extendedPixel(const ImageView<Sample>& in, int x, int y, int word, Sample borderValue) {
  const AxisIndex row = mapRow(y, in.height, word);
  const AxisIndex column = mapColumn(x, in.width, word);
  return row.constant || column.constant ? borderValue : load(in.row(row.index) + column.index);
}

/// Sums in 32 bits for integer images, in single precision for float images.
template <class Sample>
using Intermediate = std::conditional_t<std::is_same_v<Sample, float>, float, int>;

enum class FixedFilter { laplacian, lowpass, sobelCross };

/// The unscaled result at (x, y); s(dx, dy) reads the neighbourhood.
template <class T, class At>
T fixedSum(FixedFilter filter, int mask, At s) {
  const auto smooth5 = [](auto v) { return ((v(-2) + v(2)) + 4 * (v(-1) + v(1))) + 6 * v(0); };
  const auto second5 = [](auto v) { return (v(-2) + v(2)) - 2 * v(0); };
  const auto box = [&](auto v) {
    T sum = v(mask == 33 ? -1 : -2);
    for (int d = mask == 33 ? 0 : -1; d <= (mask == 33 ? 1 : 2); ++d) sum = sum + v(d);
    return sum;
  };
  const auto right = [&](auto v) -> T {  // positive towards lower indices
    return mask == 33 ? v(-1) - v(1) : (v(-2) - v(2)) + 2 * (v(-1) - v(1));
  };
  const auto rows = [&](auto factor) {
    return [=](int dy) -> T { return factor([=](int dx) -> T { return s(dx, dy); }); };
  };

  switch (filter) {
    case FixedFilter::lowpass:
      return box(rows(box));
    case FixedFilter::sobelCross: {
      const auto p = rows(right);
      return mask == 33 ? p(1) - p(-1) : (p(2) - p(-2)) + 2 * (p(1) - p(-1));
    }
    case FixedFilter::laplacian:
      break;
  }
  if (mask == 33) {
    const auto p = [&](int dy) -> T { return s(-1, dy) + s(1, dy); };
    return 2 * (p(-1) + p(1)) - 8 * s(0, 0);
  }
  return smooth5(rows(second5)) + second5(rows(smooth5));
}

inline int16_t scaledFixed(FixedFilter, int, int sum, int16_t) { return low16(sum); }
inline uint8_t scaledFixed(FixedFilter, int mask, int sum, uint8_t) {
  const int value = mask == 33 ? (sum + 5) * 7280 / 65536 : sum * 2621 / 65536;
  return static_cast<uint8_t>(std::clamp(value, 0, 255));
}
inline float scaledFixed(FixedFilter filter, int mask, float sum, float) {
  if (filter != FixedFilter::lowpass)
    return sum;
  return sum * (mask == 33 ? 0.11111111f : 0.04f);
}

template <class Sample, class Result>
void fixedKernelFilter(FixedFilter filter, const ImageView<Sample>& in, Result* out, int mask, int word,
                       Sample borderValue) {
  using T = Intermediate<Sample>;
  for (int y = 0; y < in.height; ++y)
    for (int x = 0; x < in.width; ++x) {
      const T sum = fixedSum<T>(filter, mask, [&](int dx, int dy) {
        return static_cast<T>(extendedPixel(in, x + dx, y + dy, word, borderValue));
      });
      out[y * in.width + x] = scaledFixed(filter, mask, sum, Result{});
    }
}

/// Coefficients of (x + 1)^(size - 1 - dx) * (x - 1)^dx, factor by factor.
inline std::vector<double> sobelPolynomial(int size, int dx, int sign) {
  std::vector<double> coefficients = {sign < 0 ? -1.0 : 1.0};
  for (int factor = 0; factor < size - 1; ++factor) {
    const double constant = factor < dx ? -1 : 1;
    std::vector<double> product(coefficients.size() + 1, 0.0);
    for (size_t i = 0; i < coefficients.size(); ++i) {
      product[i] += constant * coefficients[i];
      product[i + 1] += coefficients[i];
    }
    coefficients = product;
  }
  return coefficients;
}

/// The same list pass by pass, in the arithmetic of the entries.
template <class Entry>
std::vector<Entry> sobelPasses(int size, int dx, int sign) {
  std::vector<Entry> k(static_cast<size_t>(size));
  k.back() = 1;
  const auto at = [&](int t) -> Entry& { return k[static_cast<size_t>(t)]; };
  const auto kept = [](auto value) {
    if constexpr (std::is_same_v<Entry, float>)
      return value;
    else
      return low16(value);
  };
  for (int p = 0; p < size - 1 - dx; ++p)
    for (int t = size - 2 - p; t <= size - 2; ++t) at(t) = kept(at(t) + at(t + 1));
  for (int q = dx; q >= 1; --q)
    for (int t = q - 1; t <= size - 2; ++t) at(t) = kept(at(t) - at(t + 1));
  for (Entry& entry : k) entry = sign < 0 ? kept(-entry) : entry;
  return k;
}

inline uint8_t colorToGray(uint8_t a, uint8_t b, uint8_t c, int norm) {
  if (norm == 0)
    return std::max({a, b, c});
  if (norm == 1)
    return static_cast<uint8_t>(((a + b + c) * 1365 + 2048) >> 12);
  const int squares = a * a + b * b + c * c;
  return static_cast<uint8_t>(std::min(std::nearbyint(std::sqrt(static_cast<float>(squares) / 3.0f)), 255.0f));
}
inline uint16_t colorToGray(uint16_t a, uint16_t b, uint16_t c, int norm) {
  if (norm == 0)
    return std::max({a, b, c});
  if (norm == 1)
    return static_cast<uint16_t>(((int64_t{a} + b + c) * 5461 + 8192) >> 14);
  const int64_t squares = int64_t{a} * a + int64_t{b} * b + int64_t{c} * c;
  return static_cast<uint16_t>(std::min(std::nearbyint(std::sqrt(static_cast<float>(squares) / 3.0f)), 65535.0f));
}
inline float colorToGray(float a, float b, float c, int norm) {
  const auto larger = [](float x, float y) { return x > y ? x : y; };
  if (norm == 0)
    return larger(larger(std::fabs(a), std::fabs(b)), std::fabs(c));
  if (norm == 1)
    return (std::fabs(a) + std::fabs(b)) + std::fabs(c);
  return std::sqrt(((a * a + b * b) + c * c) / 3.0f);
}

}  // namespace orvtest::model
