// Deterministic test data: everything drawn is a pure function of a name and a case number, the same with every
// compiler, optimisation level and machine.
#pragma once

#include <bit>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <string_view>
#include <type_traits>

#include "orvcv.h"
#include "support/arithmetic.h"
#include "support/samples.h"

namespace orvtest {

/// The splitmix64 sequence (Steele, Lea, Flood 2014), seeded by the FNV-1a hash of the name and the case number.
class Random {
public:
  Random(std::string_view name, uint32_t caseNumber);

  uint64_t bits() {
    state_ += 0x9e3779b97f4a7c15u;
    uint64_t mixed = state_;
    mixed = (mixed ^ (mixed >> 30)) * 0xbf58476d1ce4e5b9u;
    mixed = (mixed ^ (mixed >> 27)) * 0x94d049bb133111ebu;
    return mixed ^ (mixed >> 31);
  }

  /// 0 to limit - 1.
  int below(int limit) { return static_cast<int>((bits() >> 32) * static_cast<uint64_t>(limit) >> 32); }
  /// low to high, both included.
  int between(int low, int high) { return low + below(high - low + 1); }
  bool oneIn(int count) { return below(count) == 0; }

  template <class Value>
  Value pick(std::initializer_list<Value> values) {
    return values.begin()[below(static_cast<int>(values.size()))];
  }

private:
  uint64_t state_;
};

/// Sizes that reach every way through a row loop: mostly 1 to 70 pixels with widths around multiples of 8 preferred,
/// one in 32 up to 300 pixels wide. Never below the minimum.
OrvSize drawSize(Random& random, OrvSize minimum = {1, 1});

/// Bytes between the rows: none, one sample, an odd number of samples, up to a multiple of 32 or 64, many.
int drawStepPadding(Random& random, int rowBytes, int sampleBytes);

enum class Values {
  few,       ///< 0 to 3: plateaus and ties
  ordinary,  ///< the whole range of an integer type; floats of magnitude 2^-12 to 2^12 and small whole numbers
  finite,    ///< ordinary with extremes in between: zeros of both signs, denormals, the largest numbers
  anything   ///< finite with infinities and NaNs of any payload and sign in between
};

template <class Real>
BitsOf<Real> drawSpecialBits(Random& random, Values values) {
  using Bits = BitsOf<Real>;
  const Bits sign = random.oneIn(2) ? signBit<Real> : Bits{0};
  const Bits fraction = static_cast<Bits>(random.bits()) & (quietBit<Real> - 1);
  const Bits anyFraction = fraction | (random.oneIn(2) ? quietBit<Real> : Bits{0});
  const Bits lowestNormal = quietBit<Real> << 1;
  switch (random.below(values == Values::anything ? 9 : 6)) {
    case 0:
    case 1:
      return sign;
    case 2:
      return sign | anyFraction;  // denormal
    case 3:
      return sign | 1;  // smallest
    case 4:
      return sign | (infinityBits<Real> - lowestNormal) | anyFraction;  // products overflow
    case 5:
      return sign | (infinityBits<Real> - 1);  // largest
    case 6:
      return sign | infinityBits<Real>;
    case 7:
      return sign | infinityBits<Real> | quietBit<Real> | fraction;
    default:
      return sign | infinityBits<Real> | fraction | 1;  // signalling
  }
}

/// The bits of one sample.
template <class Sample>
BitsOf<Sample> drawBits(Random& random, Values values) {
  using Bits = BitsOf<Sample>;
  const bool special = (values == Values::finite || values == Values::anything) && random.oneIn(8);
  if (values == Values::few)
    return std::bit_cast<Bits>(static_cast<Sample>(random.below(4)));
  if constexpr (std::is_floating_point_v<Sample>) {
    if (special)
      return drawSpecialBits<Sample>(random, values);
    if (random.oneIn(4))
      return std::bit_cast<Bits>(static_cast<Sample>(random.between(-256, 256)));
    const Bits one = std::bit_cast<Bits>(Sample{1});
    const Bits lowestNormal = quietBit<Sample> << 1;
    const Bits exponent = one + lowestNormal * static_cast<Bits>(random.below(24)) - lowestNormal * 12;
    return exponent | (static_cast<Bits>(random.bits()) & (signBit<Sample> | (lowestNormal - 1)));
  } else {
    using Limits = std::numeric_limits<Sample>;
    if (special)
      return static_cast<Bits>(
          random.pick<Sample>({Limits::min(), Limits::min() + 1, 0, 1, Limits::max() - 1, Limits::max()}));
    return static_cast<Bits>(random.bits());
  }
}

enum class MaskKind { none, all, any, sparse, dense, runs };
MaskKind drawMaskKind(Random& random);

/// Draws the bytes of a mask one after the other: all 0; all 255; any byte; few or most bytes nonzero with any
/// nonzero value; runs of both.
class MaskBytes {
public:
  MaskBytes(Random& random, MaskKind kind) : random_(random), kind_(kind) {}
  uint8_t next();

private:
  Random& random_;
  MaskKind kind_;
  int runLeft_ = 0;
  bool runSelects_ = false;
};

}  // namespace orvtest
