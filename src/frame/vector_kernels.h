// Plain operations on vectors that the exported functions are built on.
//
// All check for null pointers (orvStsNullPointer), then for a length below 1 (orvStsBadSize). dst may be a source.
#pragma once

#include "frame/declarations.h"

namespace orv {

// Statuses that no exported function returns.
constexpr OrvStatus orvStsDivideByZero = -10;
constexpr OrvStatus orvStsSqrtOfNegative = 3;  ///< warning: a NaN stands where a negative element stood

// X(type code, sample type)
#define ORV_FILL_MEMBERS(X) X(8u, uint8_t) X(16s, int16_t) X(32s, int32_t) X(32f, float)
#define ORV_COPY_VECTOR_MEMBERS(X) X(8u, uint8_t) X(16s, int16_t) X(32f, float)
#define ORV_EVERY_MEMBERS(X) X(8u, uint8_t) X(16u, uint16_t) X(32f, float) X(64f, double)

#define ORV_DECLARE(type, Sample)                     \
  OrvStatus orvsZero_##type(Sample* dst, int length); \
  OrvStatus orvsSet_##type(Sample value, Sample* dst, int length);
ORV_FILL_MEMBERS(ORV_DECLARE)
#undef ORV_DECLARE

#define ORV_DECLARE(type, Sample) OrvStatus orvsCopy_##type(const Sample* src, Sample* dst, int length);
ORV_COPY_VECTOR_MEMBERS(ORV_DECLARE)
#undef ORV_DECLARE

// Element-wise extremes of two vectors. Where one element is a NaN, and of two zeros, the result is src2's.
#define ORV_DECLARE(type, Sample)                                                                 \
  OrvStatus orvsMaxEvery_##type(const Sample* src1, const Sample* src2, Sample* dst, int length); \
  OrvStatus orvsMinEvery_##type(const Sample* src1, const Sample* src2, Sample* dst, int length);
ORV_EVERY_MEMBERS(ORV_DECLARE)
#undef ORV_DECLARE

/// dst = src * 2^-scaleFactor as integers, saturated; a NaN gives 0. Rounding argument 0 truncates, 1 rounds to
/// nearest; any other value switches the vector unit to truncation for the work and restores it.
OrvStatus orvsConvert_32f8u_Sfs(const float* src, uint8_t* dst, int length, int rounding, int scaleFactor);
OrvStatus orvsConvert_32f16u_Sfs(const float* src, uint16_t* dst, int length, int rounding, int scaleFactor);

/// dst = src * value
OrvStatus orvsMulC_32f(const float* src, float value, float* dst, int length);

/// dst = src * (1 / value), the reciprocal in single precision. A zero value: orvStsDivideByZero, after the length.
OrvStatus orvsDivC_32f(const float* src, float value, float* dst, int length);
OrvStatus orvsDivC_32f_I(float value, float* srcDst, int length);

/// Elements below the threshold become the threshold. A NaN stays.
OrvStatus orvsThreshold_LT_32f(const float* src, float* dst, int length, float threshold);

/// dst = sqrt(x * x + y * y), each operation rounded to single precision.
OrvStatus orvsMagnitude_32f(const float* srcX, const float* srcY, float* dst, int length);

/// dst = sqrt(x * x + y * y) * 2^-scaleFactor: the exact value rounded once to nearest, ties to even, and saturated.
OrvStatus orvsMagnitude_16s_Sfs(const int16_t* srcX, const int16_t* srcY, int16_t* dst, int length, int scaleFactor);

/// Roots, correctly rounded; orvStsSqrtOfNegative when an element is negative, which -0.0 is not.
OrvStatus orvsSqrt_32f(const float* src, float* dst, int length);
OrvStatus orvsSqrt_32f_I(float* srcDst, int length);

/// dst = atan2(y, x) in -pi .. pi, signed zeros and infinities as in C. See the definition for the measured error.
OrvStatus orvsAtan2_32f_A21(const float* srcY, const float* srcX, float* dst, int length);

/// Sorts ascending in place, in O(n log n) whatever the order. There are no NaNs.
OrvStatus orvsSortAscend_64f_I(double* srcDst, int length);

}  // namespace orv
