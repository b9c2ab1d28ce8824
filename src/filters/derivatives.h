// First and second derivatives of an image, for the detectors.
//
// `r` is the kernel along the row, `c` the one down the column; the row stage runs first. Sources of 8 bits give 16-bit
// results, in arithmetic that never overflows; float sources are filtered in single precision, in the order of taps.h.
//
//   entry             3x3                           5x5
//   SobelVert         r =  1 0 -1    c = 1 2 1      r = 1 2 0 -2 -1    c = 1 4 6 4 1
//   SobelNegVert      r = -1 0  1    c = 1 2 1      r = -1 -2 0 2 1    c = 1 4 6 4 1
//   SobelHoriz        r =  1 2  1    c = -1 0 1     r = 1 4 6 4 1      c = -1 -2 0 2 1
//   SobelVertSecond   r =  1 -2 1    c = 1 2 1      r = 1 0 -2 0 1     c = 1 4 6 4 1
//   SobelHorizSecond  r =  1 2  1    c = 1 -2 1     r = 1 4 6 4 1      c = 1 0 -2 0 1
//   ScharrVertMask    r = -1 0  1    c = 3 10 3     none
//   ScharrHorizMask   r =  3 10 3    c = -1 0 1     none
//   PrewittVert       r =  1 0 -1    c = 1 1 1      none
//   PrewittHoriz      r =  1 1  1    c = -1 0 1     none
//   RobertsDown       s(x, y) - s(x + 1, y + 1)     none
//   RobertsUp         s(x + 1, y) - s(x, y + 1)     none
//
// The vertical Sobel derivative is left minus right and the vertical Scharr derivative right minus left; the detectors
// count on the difference.
#pragma once

#include <cstdint>

#include "frame/declarations.h"

namespace orv {

enum class Derivative {
  SobelVert,
  SobelHoriz,
  ScharrVertMask,
  ScharrHorizMask,
  PrewittVert,
  PrewittHoriz,
  RobertsDown,
  RobertsUp,
  SobelVertSecond,
  SobelHorizSecond,
  SobelNegVert
};

/// The derivative `entry`, with the arguments, checks and border rules of orviFilterSobelCrossBorder. A mask for which
/// the entry has no kernel gives orvStsBadMaskCode.
OrvStatus owniFilter2_8u16s_C1R(Derivative entry, const uint8_t* src, int srcStep, int16_t* dst, int dstStep,
                                OrvSize roi, OrvMaskCode mask, OrvBorderMode borderMode, uint8_t borderValue,
                                void* buffer);
OrvStatus owniFilter2_32f_C1R(Derivative entry, const float* src, int srcStep, float* dst, int dstStep, OrvSize roi,
                              OrvMaskCode mask, OrvBorderMode borderMode, float borderValue, void* buffer);

/// Scratch of every derivative filter: checks and sizes of orviFilterSobelCrossGetBufferSize.
OrvStatus owniFilter2GetBufferSize_8u16s_C1R(OrvSize roi, OrvMaskCode mask, int* bufferSize);
OrvStatus owniFilter2GetBufferSize_32f_C1R(OrvSize roi, OrvMaskCode mask, int* bufferSize);

// The entries by name: X(operation, entry)
#define ORV_DERIVATIVE_FILTERS(X)         \
  X(SobelVertBorder, SobelVert)           \
  X(SobelNegVertBorder, SobelNegVert)     \
  X(SobelHorizBorder, SobelHoriz)         \
  X(ScharrVertMaskBorder, ScharrVertMask) \
  X(ScharrHorizMaskBorder, ScharrHorizMask)

#define ORV_DECLARE(operation, entry)                                                                                  \
  OrvStatus orviFilter##operation##_8u16s_C1R(const uint8_t* src, int srcStep, int16_t* dst, int dstStep, OrvSize roi, \
                                              OrvMaskCode mask, OrvBorderMode borderMode, uint8_t borderValue,         \
                                              void* buffer);                                                           \
  OrvStatus orviFilter##operation##_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, OrvSize roi,       \
                                            OrvMaskCode mask, OrvBorderMode borderMode, float borderValue,             \
                                            void* buffer);
ORV_DERIVATIVE_FILTERS(ORV_DECLARE)
#undef ORV_DECLARE

/// Gradient vectors in one walk over the image: gx by SobelVert or ScharrVertMask, gy by SobelHoriz or ScharrHorizMask,
/// magnitude |gx| + |gy| (norm 2) or sqrt(gx * gx + gy * gy) (norm 4; of 16-bit values rounded to nearest even and
/// saturated), angle atan2(gy, gx). Outputs that are null are left out. Scharr has the 3x3 mask only.
///
/// Statuses, in order: orvStsBadBorder; orvStsNullPointer (`src`); orvStsBadStep (`srcStep` below 1);
/// orvStsStepNotAligned; orvStsNullPointer (`buffer`); for each output that is not null, orvStsBadStep (below 1) and
/// orvStsStepNotAligned; orvStsBadArg (`norm`, when there is a magnitude); orvStsBadSize; orvStsBadMaskCode.
#define ORV_DECLARE(operation)                                                                                        \
  OrvStatus orviGradientVector##operation##_8u16s_C1R(                                                                \
      const uint8_t* src, int srcStep, int16_t* gx, int gxStep, int16_t* gy, int gyStep, int16_t* mag, int magStep,   \
      float* angle, int angleStep, OrvSize roi, OrvMaskCode mask, OrvNormCode norm, OrvBorderMode borderMode,         \
      uint8_t borderValue, void* buffer);                                                                             \
  OrvStatus orviGradientVector##operation##_32f_C1R(const float* src, int srcStep, float* gx, int gxStep, float* gy,  \
                                                    int gyStep, float* mag, int magStep, float* angle, int angleStep, \
                                                    OrvSize roi, OrvMaskCode mask, OrvNormCode norm,                  \
                                                    OrvBorderMode borderMode, float borderValue, void* buffer);
ORV_DECLARE(Sobel)
ORV_DECLARE(Scharr)
#undef ORV_DECLARE

/// Scratch of the gradient vectors, by the formula of orviFilterLaplacianGetBufferSize: orvDataType8u (16-bit results)
/// or orvDataType32f, one channel. orvStsNullPointer; orvStsBadSize; orvStsBadMaskCode; orvStsBadAlgorithm;
/// orvStsBadDataType (channels).
OrvStatus orviGradientVectorGetBufferSize(OrvSize roi, OrvMaskCode mask, OrvDataType dataType, int numChannels,
                                          int* bufferSize);

}  // namespace orv
