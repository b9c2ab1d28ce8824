// What a norm is taken of: the samples of an image, the differences of two, or the samples of the second image.
#pragma once

#include "frame/pixel_groups.h"
#include "simd/double.h"

namespace orv {

enum class NormKind { inf, l1, l2 };

// exact: integers; a sample that the mask excludes is zero before any arithmetic.
// magnitude, product: floats, always multiplied by the weight, so that an infinity without weight gives a NaN. The
// magnitude enters the largest and the sum of magnitudes, the product is squared.
struct OfSample {
  static auto exact(const auto& group) { return zeroWhere(group.excluded(), group.sample()); }
  static auto magnitude(const auto& pixels) { return pixels.weighted(abs(pixels.sample())); }
  static auto product(const auto& pixels) { return pixels.weighted(pixels.sample()); }
};

struct OfDifference {
  static auto exact(const auto& group) {
    return zeroWhere(group.excluded(), absDiff(group.sample(0), group.sample(1)));
  }
  static auto product(const auto& pixels) { return pixels.weighted(pixels.sample(0) - pixels.sample(1)); }
  static auto magnitude(const auto& pixels) { return abs(product(pixels)); }
};

struct OfReference {
  static auto exact(const auto& group) { return zeroWhere(group.excluded(), group.sample(1)); }
  static auto product(const auto& pixels) { return pixels.weighted(pixels.sample(1)); }
  static auto magnitude(const auto& pixels) { return abs(product(pixels)); }
};

/// Groups subtract in single precision, single pixels in double. The difference is required: the last bits of the
/// result depend on where a row's alignment falls.
struct OfDifferenceWideSingles : OfDifference {
  static auto magnitude(const auto& pixels) {
    if constexpr (std::remove_cvref_t<decltype(pixels)>::Vector::lanes == 1)
      return abs(pixels.weighted(widen(pixels.sample(0)) - widen(pixels.sample(1))));
    else
      return OfDifference::magnitude(pixels);
  }
};

}  // namespace orv
