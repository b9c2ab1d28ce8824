// The arctangent of two float vectors.
#include <concepts>

#include "frame/elements.h"
#include "frame/vector_kernels.h"
#include "simd/functions.h"

namespace orv {
namespace {

/// The polynomial in x with the given coefficients, the highest power first.
inline F32x8 polynomial(F32x8 x, float highest, std::same_as<float> auto... lower) {
  F32x8 sum = F32x8::broadcast(highest);
  ((sum = sum * x + F32x8::broadcast(lower)), ...);
  return sum;
}

/// atan(q) for q in 0 .. 1: q plus q^3 times a polynomial in q^2, the minimax one of its degree in relative error,
/// 2^-25.8 before rounding.
inline F32x8 arctangentOfQuotient(F32x8 q) {
  const F32x8 square = q * q;
  return q + polynomial(square, 0.00292068792f, -0.01636791f, 0.0432118301f, -0.0755221152f, 0.106660032f,
                        -0.142110549f, 0.199937728f, -0.333331527f) *
                 square * q;
}

/// The angle within the first octant, from the quotient of the smaller and the larger coordinate, mirrored at the
/// diagonal, then at the y axis by the sign of x, then at the x axis by the sign of y.
[[gnu::always_inline]] inline F32x8 arctangent(F32x8 y, F32x8 x) {
  const F32x8 zero = F32x8::zero(), one = F32x8::broadcast(1.0f);
  const F32x8 absX = abs(x), absY = abs(y);
  const F32x8 small = lesser(absX, absY), large = greater(absX, absY);

  // Two zeros make 0, two infinities 1, without a division of either.
  const __m256 equal = _mm256_cmp_ps(small.v, large.v, _CMP_EQ_OQ);
  const __m256 positive = _mm256_cmp_ps(large.v, zero.v, _CMP_GT_OQ);
  const F32x8 numerator = select(equal, select(positive, one, zero), small);
  const F32x8 denominator = select(equal, one, large);
  const F32x8 octant = arctangentOfQuotient({_mm256_div_ps(numerator.v, denominator.v)});

  const __m256 steep = _mm256_cmp_ps(absY.v, absX.v, _CMP_GT_OQ);
  const F32x8 quadrant = select(steep, F32x8::broadcast(1.57079632679f) - octant, octant);
  const F32x8 half = select(x.v, F32x8::broadcast(3.14159265359f) - quadrant, quadrant);
  const F32x8 angle{_mm256_or_ps(half.v, _mm256_and_ps(y.v, _mm256_set1_ps(-0.0f)))};
  return select(_mm256_cmp_ps(x.v, y.v, _CMP_UNORD_Q), x + y, angle);
}

}  // namespace

/// Against double precision, over 65 million pairs of integers and of floats from 2^-27 to 2^22: at most 2.3 ulp, and a
/// relative error of at most 2^-22.5.
OrvStatus orvsAtan2_32f_A21(const float* srcY, const float* srcX, float* dst, int length) {
  if (OrvStatus status = firstFailure(nullPointer(srcY, srcX, dst), badLength(length)))
    return status;
  forEachBlock<F32x8::lanes>(
      length, [](float* d, const float* y, const float* x) { arctangent(F32x8::load(y), F32x8::load(x)).store(d); },
      dst, srcY, srcX);
  return orvStsOk;
}

}  // namespace orv
