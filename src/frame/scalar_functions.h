// Functions of one value: correctly rounded roots, and the system library's others, to within an ulp or so.
#pragma once

#include <immintrin.h>

#include <cmath>

namespace orv {

inline double orvsSqrtOne(double value) {
  const __m128d v = _mm_set_sd(value);
  return _mm_cvtsd_f64(_mm_sqrt_sd(v, v));
}
inline float orvsSqrtOneF(float value) { return _mm_cvtss_f32(_mm_sqrt_ss(_mm_set_ss(value))); }
inline double orvsFabsOne(double value) { return std::fabs(value); }
inline double orvsSinOne(double angle) { return std::sin(angle); }
inline double orvsCosOne(double angle) { return std::cos(angle); }
inline double orvsAtan2One(double y, double x) { return std::atan2(y, x); }

/// The double-precision exponential, rounded: the nearest float but for the rarest of arguments.
inline float orvsExpOneF(float value) { return static_cast<float>(std::exp(static_cast<double>(value))); }

}  // namespace orv
