// Derivatives, gradient vectors and the box filter as plain loops over the extended image.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

#include "filters/fixed_kernel_model.h"
#include "orvcv.h"

namespace orvtest::model {

/// One-dimensional factors. Positive indices lie to the right and below.
enum class Factor {
  none,
  sum3,                // 1 1 1
  smooth3,             // 1 2 1
  smooth5,             // 1 4 6 4 1
  scharr3,             // 3 10 3
  difference3,         // -1 0 1
  difference5,         // -1 -2 0 2 1
  negatedDifference3,  // 1 0 -1
  negatedDifference5,  // 1 2 0 -2 -1
  second3,             // 1 -2 1
  second5              // 1 0 -2 0 1
};

/// `s` points to the centre of the window.
template <class T>
T applyFactor(Factor factor, const T* s) {
  switch (factor) {
    case Factor::none:
      break;
    case Factor::sum3:
      return (s[-1] + s[0]) + s[1];
    case Factor::smooth3:
      return (s[-1] + s[1]) + 2 * s[0];
    case Factor::smooth5:
      return ((s[-2] + s[2]) + 4 * (s[-1] + s[1])) + 6 * s[0];
    case Factor::scharr3:
      return 3 * (s[-1] + s[1]) + 10 * s[0];
    case Factor::difference3:
      return s[1] - s[-1];
    case Factor::difference5:
      return (s[2] - s[-2]) + 2 * (s[1] - s[-1]);
    case Factor::negatedDifference3:
      return s[-1] - s[1];
    case Factor::negatedDifference5:
      return (s[-2] - s[2]) + 2 * (s[-1] - s[1]);
    case Factor::second3:
      return (s[-1] + s[1]) - 2 * s[0];
    case Factor::second5:
      return (s[-2] + s[2]) - 2 * s[0];
  }
  return T{};
}

/// The factor along the row and the factor down the column; both `none` where there is no such kernel.
struct Factors {
  Factor row = Factor::none, column = Factor::none;
};

struct DerivativeKernel {
  const char* name;
  Factors small, large;
};

/// In the order of the table of derivatives. The Roberts differences are no products of factors.
inline const std::array<DerivativeKernel, 11>& derivativeKernels() {
  using enum Factor;
  static const std::array<DerivativeKernel, 11> kernels = {{
      {"SobelVert", {negatedDifference3, smooth3}, {negatedDifference5, smooth5}},
      {"SobelHoriz", {smooth3, difference3}, {smooth5, difference5}},
      {"ScharrVertMask", {difference3, scharr3}, {}},
      {"ScharrHorizMask", {scharr3, difference3}, {}},
      {"PrewittVert", {negatedDifference3, sum3}, {}},
      {"PrewittHoriz", {sum3, difference3}, {}},
      {"RobertsDown", {}, {}},
      {"RobertsUp", {}, {}},
      {"SobelVertSecond", {second3, smooth3}, {second5, smooth5}},
      {"SobelHorizSecond", {smooth3, second3}, {smooth5, second5}},
      {"SobelNegVert", {difference3, smooth3}, {difference5, smooth5}},
  }};
  return kernels;
}

constexpr size_t sobelVert = 0, sobelHoriz = 1, scharrVert = 2, scharrHoriz = 3, robertsDown = 6, robertsUp = 7;

inline bool hasMask(size_t entry, int mask) {
  return mask == 33 || derivativeKernels()[entry].large.row != Factor::none;
}

/// The derivative at (x, y): a 32-bit sum of integers, or a float.
template <class Sample>
Intermediate<Sample> derivativeAt(const ImageView<Sample>& in, size_t entry, int mask, int x, int y, int word,
                                  Sample borderValue) {
  using T = Intermediate<Sample>;
  const auto s = [&](int dx, int dy) { return static_cast<T>(extendedPixel(in, x + dx, y + dy, word, borderValue)); };
  if (entry == robertsDown)
    return s(0, 0) - s(1, 1);
  if (entry == robertsUp)
    return s(1, 0) - s(0, 1);
  const int radius = mask == 33 ? 1 : 2;
  const DerivativeKernel& kernel = derivativeKernels()[entry];
  const Factors& factors = mask == 33 ? kernel.small : kernel.large;
  T column[5] = {};
  for (int dy = -radius; dy <= radius; ++dy) {
    T row[5] = {};
    for (int dx = -radius; dx <= radius; ++dx) row[2 + dx] = s(dx, dy);
    column[2 + dy] = applyFactor(factors.row, row + 2);
  }
  return applyFactor(factors.column, column + 2);
}

inline int16_t gradientMagnitude(int gx, int gy, int norm) {
  const double gxd = gx, gyd = gy;
  const double magnitude = norm == 2 ? std::fabs(gxd) + std::fabs(gyd) : std::sqrt(gxd * gxd + gyd * gyd);
  return static_cast<int16_t>(std::min(std::nearbyint(magnitude), 32767.0));
}
inline float gradientMagnitude(float gx, float gy, int norm) {
  return norm == 2 ? std::fabs(gx) + std::fabs(gy) : std::sqrt(gx * gx + gy * gy);
}

/// The mean over a window of which `size / 2` columns and rows lie before the pixel.
inline float boxMean(const ImageView<float>& in, OrvSize window, int x, int y, int word, float borderValue) {
  float sum = 0;
  for (int i = 0; i < window.width; ++i) {
    float column = 0;
    for (int j = 0; j < window.height; ++j) {
      const float s = extendedPixel(in, x - window.width / 2 + i, y - window.height / 2 + j, word, borderValue);
      column = j == 0 ? s : column + s;
    }
    sum = i == 0 ? column : sum + column;
  }
  return sum * (1.0f / static_cast<float>(window.width * window.height));
}

}  // namespace orvtest::model
