// Plain operations on images that the exported functions are built on.
//
// All check for null pointers (orvStsNullPointer), then for sizes below 1 (orvStsBadSize). Steps are the caller's
// business, except in the conversion. dst may be a source. Members whose names end in `_L` differ in the name only.
#pragma once

#include "frame/declarations.h"

namespace orv {

/// Fills the region.
OrvStatus orviSet_8u_C1R(uint8_t value, uint8_t* dst, int dstStep, OrvSize roi);
OrvStatus orviSet_16s_C1R(int16_t value, int16_t* dst, int dstStep, OrvSize roi);

// X(name, sample type, channels)
#define ORV_COPY_MEMBERS(X) \
  X(8u_C1R, uint8_t, 1)     \
  X(8u_C3R, uint8_t, 3)     \
  X(8u_C4R, uint8_t, 4)     \
  X(16s_C1R, int16_t, 1)    \
  X(16s_C3R, int16_t, 3)    \
  X(16s_C4R, int16_t, 4)    \
  X(32f_C1R, float, 1)      \
  X(32f_C3R, float, 3)      \
  X(32f_C4R, float, 4)      \
  X(16u_C1R, uint16_t, 1)
// The fourth channel of dst keeps its value; it is read and written back.
#define ORV_COPY_THREE_OF_FOUR_MEMBERS(X) \
  X(8u_AC4R, uint8_t)                     \
  X(16s_AC4R, int16_t)                    \
  X(32f_AC4R, float)

#define ORV_COPY_PROTOTYPE(name, Sample, Size) \
  OrvStatus orviCopy_##name(const Sample* src, int srcStep, Sample* dst, int dstStep, Size roi)
#define ORV_DECLARE(name, Sample, ...) ORV_COPY_PROTOTYPE(name, Sample, OrvSize);
ORV_COPY_MEMBERS(ORV_DECLARE)
ORV_COPY_THREE_OF_FOUR_MEMBERS(ORV_DECLARE)
#undef ORV_DECLARE
ORV_COPY_PROTOTYPE(8u_C1R_L, uint8_t, OrvSizeL);

/// Exact conversion. Large images pass the cache by. Checks also steps below 1, orvStsBadStep, after the size.
OrvStatus orviConvert_16u32f_C1R(const uint16_t* src, int srcStep, float* dst, int dstStep, OrvSize roi);

// dst = src2 - src1: the second source minus the first. In the Sfs forms the exact difference, of unsigned types
// clamped below at zero, is scaled by 2 to the power of -scaleFactor, rounded to nearest even and saturated.
#define ORV_SUB_SCALED_MEMBERS(X) X(8u_C1RSfs, uint8_t) X(16s_C1RSfs, int16_t) X(16u_C1RSfs, uint16_t)
#define ORV_SUB_FLOAT_MEMBERS(X) X(32f_C1R, 1) X(32f_C3R, 3) X(32f_C4R, 4)

#define ORV_SUB_SCALED_PROTOTYPE(name, Sample, Size)                                                        \
  OrvStatus orviSub_##name(const Sample* src1, int src1Step, const Sample* src2, int src2Step, Sample* dst, \
                           int dstStep, Size roi, int scaleFactor)
#define ORV_SUB_FLOAT_PROTOTYPE(name, Size)                                                                           \
  OrvStatus orviSub_##name(const float* src1, int src1Step, const float* src2, int src2Step, float* dst, int dstStep, \
                           Size roi)
#define ORV_DECLARE(name, Sample)                  \
  ORV_SUB_SCALED_PROTOTYPE(name, Sample, OrvSize); \
  ORV_SUB_SCALED_PROTOTYPE(name##_L, Sample, OrvSizeL);
ORV_SUB_SCALED_MEMBERS(ORV_DECLARE)
#undef ORV_DECLARE
#define ORV_DECLARE(name, channels)       \
  ORV_SUB_FLOAT_PROTOTYPE(name, OrvSize); \
  ORV_SUB_FLOAT_PROTOTYPE(name##_L, OrvSizeL);
ORV_SUB_FLOAT_MEMBERS(ORV_DECLARE)
#undef ORV_DECLARE

/// dst = value * src; the 16s form scales the exact product as orviSub scales the difference.
OrvStatus orviMulC_16s_C1RSfs(const int16_t* src, int srcStep, int16_t value, int16_t* dst, int dstStep, OrvSize roi,
                              int scaleFactor);
OrvStatus orviMulC_32f_C1R(const float* src, int srcStep, float value, float* dst, int dstStep, OrvSize roi);

/// Samples below the threshold become the threshold. A NaN stays.
OrvStatus orviThreshold_LT_16s_C1R(const int16_t* src, int srcStep, int16_t* dst, int dstStep, OrvSize roi,
                                   int16_t threshold);
OrvStatus orviThreshold_LT_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, OrvSize roi,
                                   float threshold);

/// Samples above the threshold become `value`.
OrvStatus orviThreshold_GTVal_8u_C1R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, OrvSize roi,
                                     uint8_t threshold, uint8_t value);
OrvStatus orviThreshold_GTVal_16u_C1R(const uint16_t* src, int srcStep, uint16_t* dst, int dstStep, OrvSize roi,
                                      uint16_t threshold, uint16_t value);

}  // namespace orv
