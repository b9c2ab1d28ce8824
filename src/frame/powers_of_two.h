#pragma once

#include <bit>
#include <cstdint>
#include <limits>
#include <type_traits>

namespace orv {

/// 2 to the power of an exponent for which the result is a normal number.
template <class Float>
constexpr Float powerOfTwo(int exponent) {
  using Bits = std::conditional_t<sizeof(Float) == 4, uint32_t, uint64_t>;
  using Limits = std::numeric_limits<Float>;
  return std::bit_cast<Float>(static_cast<Bits>(exponent + Limits::max_exponent - 1) << (Limits::digits - 1));
}

}  // namespace orv
