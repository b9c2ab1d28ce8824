// Single- and double-precision operations whose NaN results do not depend on what the compiler makes of them: it may
// swap the operands of a sum or a product, and then the other operand's payload survives. The rule here is that of
// the processor: the first operand if it is a NaN, else the second, made quiet; an invalid operation on numbers gives
// the default NaN, whose sign is set. No dependency on the test framework.
//
// Benchmarks define ORV_PLAIN_ARITHMETIC, so that the naive code that they measure is the bare operation.
#pragma once

#include <bit>
#include <cstdint>

#include "support/samples.h"

namespace orvtest {

template <class Real>
constexpr BitsOf<Real> signBit = BitsOf<Real>{1} << (sizeof(Real) * 8 - 1);

/// The highest bit of the fraction: set in quiet NaNs.
template <class Real>
constexpr BitsOf<Real> quietBit = BitsOf<Real>{1} << (sizeof(Real) == 4 ? 22 : 51);

template <class Real>
constexpr BitsOf<Real> infinityBits = sizeof(Real) == 4 ? BitsOf<Real>{0x7f800000u}
                                                        : static_cast<BitsOf<Real>>(uint64_t{0x7ff} << 52);

template <class Real>
[[gnu::always_inline]] inline bool isNan(Real value) {
  return (std::bit_cast<BitsOf<Real>>(value) & ~signBit<Real>) > infinityBits<Real>;
}

template <class Real>
[[gnu::always_inline]] inline Real withNanRule(Real first, Real second, Real result) {
#ifdef ORV_PLAIN_ARITHMETIC
  static_cast<void>(first), static_cast<void>(second);
  return result;
#else
  using Bits = BitsOf<Real>;
  if (isNan(first))
    return std::bit_cast<Real>(static_cast<Bits>(std::bit_cast<Bits>(first) | quietBit<Real>));
  if (isNan(second))
    return std::bit_cast<Real>(static_cast<Bits>(std::bit_cast<Bits>(second) | quietBit<Real>));
  if (isNan(result))
    return std::bit_cast<Real>(static_cast<Bits>(signBit<Real> | infinityBits<Real> | quietBit<Real>));
  return result;
#endif
}

template <class Real>
[[gnu::always_inline]] inline Real add(Real first, Real second) {
  return withNanRule(first, second, first + second);
}
template <class Real>
[[gnu::always_inline]] inline Real subtract(Real first, Real second) {
  return withNanRule(first, second, first - second);
}
template <class Real>
[[gnu::always_inline]] inline Real multiply(Real first, Real second) {
  return withNanRule(first, second, first * second);
}
template <class Real>
[[gnu::always_inline]] inline Real divide(Real first, Real second) {
  return withNanRule(first, second, first / second);
}

/// The sign bit cleared, of NaNs too.
template <class Real>
[[gnu::always_inline]] inline Real magnitude(Real value) {
  using Bits = BitsOf<Real>;
  return std::bit_cast<Real>(static_cast<Bits>(std::bit_cast<Bits>(value) & ~signBit<Real>));
}

}  // namespace orvtest
