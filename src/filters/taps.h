// The fixed one-dimensional kernels. Each is a formula on a window s, where s(j) is the sample j positions after the
// centre, along a row or down a column; the samples are vectors or single values of 16-bit integers or floats. For
// floats the order of the operations is part of the contract.
#pragma once

#include <type_traits>

#include "simd/float.h"
#include "simd/integer.h"
#include "simd/pair.h"

namespace orv {

template <int factor>
F32x8 times(F32x8 a) {
  return F32x8::broadcast(static_cast<float>(factor)) * a;
}
template <int factor>
F32x1 times(F32x1 a) {
  return F32x1::broadcast(static_cast<float>(factor)) * a;
}

/// Integers are multiplied by adds and shifts: the factors in use have at most two bits.
template <int factor, class Integer>
Integer times(Integer a) {
  constexpr int lowBit = __builtin_ctz(factor);
  constexpr int highBit = 31 - __builtin_clz(factor);
  if constexpr (lowBit == highBit) {
    return shiftLeft<lowBit>(a);
  } else {
    static_assert(factor == (1 << lowBit) + (1 << highBit));
    return shiftLeft<highBit>(a) + shiftLeft<lowBit>(a);
  }
}

template <int factor, class V>
Pair<V> times(Pair<V> a) {
  return {times<factor>(a.low), times<factor>(a.high)};
}

/// A window along a row of bytes whose vectors are V.
template <class Window, class V>
concept BytesAs = requires(Window s) {
  s.bytes(0);
}
&&std::is_same_v<typename Window::Vector, V>;

// Symmetric pairs of taps, and the tap between them. Of bytes, two taps take one multiplication.

/// factor * (s(-offset) + s(offset))
template <int offset, int factor = 1>
auto sumAround(auto s) {
  if constexpr (factor == 1)
    return s(-offset) + s(offset);
  else
    return times<factor>(s(-offset) + s(offset));
}
template <int offset, int factor = 1>
auto sumAround(BytesAs<Pair<S16x8>> auto s) {
  return sumOfProducts<factor, factor>(s.bytes(-offset), s.bytes(offset));
}

/// factor * (s(offset) - s(-offset))
template <int offset, int factor = 1>
auto differenceAround(auto s) {
  if constexpr (factor == 1)
    return s(offset) - s(-offset);
  else
    return times<factor>(s(offset) - s(-offset));
}
template <int offset, int factor = 1>
auto differenceAround(BytesAs<Pair<S16x8>> auto s) {
  return sumOfProducts<factor, -factor>(s.bytes(offset), s.bytes(-offset));
}

/// factor * s(0)
template <int factor>
auto middle(auto s) {
  return times<factor>(s(0));
}
template <int factor>
auto middle(BytesAs<Pair<S16x8>> auto s) {
  return sumOfProducts<factor, 0>(s.bytes(0), s.bytes(0));
}

/// The window's own sample, and the one after it
struct Centre {
  static auto apply(auto s) { return s(0); }
};
struct After {
  static auto apply(auto s) { return s(1); }
};

/// 1 0 1
struct Neighbours3 {
  static auto apply(auto s) { return sumAround<1>(s); }
};
/// 1 1 1 and 1 1 1 1 1
struct Sum3 {
  static auto apply(auto s) { return (s(-1) + s(0)) + s(1); }
  static auto apply(BytesAs<Pair<S16x8>> auto s) { return sumAround<1>(s) + s(0); }
  static auto apply(BytesAs<AlternateBytes> auto s) {
    using V = AlternateBytes;
    const S16x8 both = V::sumsOfPairs(s.bytes(0));
    return V{both + S16x8{V::evenOf(s.bytes(-1))}, both + S16x8{V::oddOf(s.bytes(1))}};
  }
};
struct Sum5 {
  static auto apply(auto s) { return (((s(-2) + s(-1)) + s(0)) + s(1)) + s(2); }
  static auto apply(BytesAs<AlternateBytes> auto s) {
    using V = AlternateBytes;
    const __m128i before = s.bytes(-2), after = s.bytes(2);
    const S16x8 both = V::sumsOfPairs(s.bytes(0));
    return V{(V::sumsOfPairs(before) + both) + S16x8{V::evenOf(after)},
             (S16x8{V::oddOf(before)} + both) + V::sumsOfPairs(after)};
  }
};

/// 1 2 1 and 1 4 6 4 1
struct Smooth3 {
  static auto apply(auto s) { return sumAround<1>(s) + middle<2>(s); }
};
struct Smooth5 {
  static auto apply(auto s) { return (sumAround<2>(s) + sumAround<1, 4>(s)) + middle<6>(s); }
};
/// 3 10 3
struct SmoothScharr {
  static auto apply(auto s) { return sumAround<1, 3>(s) + middle<10>(s); }
};

/// -1 0 1 and -1 -2 0 2 1
struct Difference3 {
  static auto apply(auto s) { return differenceAround<1>(s); }
};
struct Difference5 {
  static auto apply(auto s) { return differenceAround<2>(s) + differenceAround<1, 2>(s); }
};
/// 1 0 -1 and 1 2 0 -2 -1
struct NegatedDifference3 {
  static auto apply(auto s) { return differenceAround<-1>(s); }
};
struct NegatedDifference5 {
  static auto apply(auto s) { return differenceAround<-2>(s) + differenceAround<-1, 2>(s); }
};

/// 1 -2 1 and 1 0 -2 0 1
struct SecondDifference3 {
  static auto apply(auto s) { return sumAround<1>(s) - middle<2>(s); }
};
struct SecondDifference5 {
  static auto apply(auto s) { return sumAround<2>(s) - middle<2>(s); }
};

}  // namespace orv
