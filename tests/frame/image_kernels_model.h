// The formulas of the internal image and vector operations, on the bits of single samples: a float that a function
// returned would lose a signalling NaN.
#pragma once

#include <bit>
#include <cstdint>
#include <limits>

#include "support/arithmetic.h"

namespace orvtest::model {

inline uint32_t bitsOf(float value) { return std::bit_cast<uint32_t>(value); }
[[gnu::always_inline]] inline float fromBits(uint32_t bits) { return std::bit_cast<float>(bits); }

template <class Sample>
BitsOf<Sample> saturated(int64_t value) {
  using Limits = std::numeric_limits<Sample>;
  if (value < Limits::min())
    value = Limits::min();
  if (value > Limits::max())
    value = Limits::max();
  return std::bit_cast<BitsOf<Sample>>(static_cast<Sample>(value));
}

/// An exact whole number of at most 32 bits times 2^-scaleFactor: a right shift rounds to nearest, ties to even.
template <class Sample>
BitsOf<Sample> scaled(int64_t t, int scaleFactor) {
  const int s = scaleFactor;
  if (s == 0)
    return saturated<Sample>(t);
  if (s > 34)
    return 0;
  if (s > 0)
    return saturated<Sample>((t + (int64_t{1} << (s - 1)) - 1 + ((t >> s) & 1)) >> s);
  const int shift = s < -17 ? 17 : -s;  // by 17 every number but zero is out of every type's range
  return saturated<Sample>(t * (int64_t{1} << shift));
}

/// The second source minus the first; differences of unsigned types end at zero.
template <class Sample>
BitsOf<Sample> differenceScaled(BitsOf<Sample> first, BitsOf<Sample> second, int scaleFactor) {
  int64_t t = int64_t{std::bit_cast<Sample>(second)} - int64_t{std::bit_cast<Sample>(first)};
  if (std::numeric_limits<Sample>::min() == 0 && t < 0)
    t = 0;
  return scaled<Sample>(t, scaleFactor);
}

inline uint32_t difference(uint32_t first, uint32_t second) {
  return bitsOf(subtract(fromBits(second), fromBits(first)));
}

inline uint16_t productScaled(uint16_t sample, int16_t value, int scaleFactor) {
  return scaled<int16_t>(int64_t{std::bit_cast<int16_t>(sample)} * value, scaleFactor);
}

/// A comparison with a NaN is false, so that it stays.
template <class Sample>
BitsOf<Sample> thresholdBelow(BitsOf<Sample> sample, BitsOf<Sample> threshold) {
  return std::bit_cast<Sample>(sample) < std::bit_cast<Sample>(threshold) ? threshold : sample;
}

template <class Sample>
BitsOf<Sample> thresholdAbove(BitsOf<Sample> sample, BitsOf<Sample> threshold, BitsOf<Sample> value) {
  return sample > threshold ? value : sample;
}

}  // namespace orvtest::model
