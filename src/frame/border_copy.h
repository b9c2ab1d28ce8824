// Copies of an image with a border around it, and borders written around an image in place.
//
// The source, a region of srcRoi, lands in the result, a region of dstRoi, at row topBorderHeight and column
// leftBorderWidth; what remains right of it and below it is border too. In the in-place forms srcDst addresses the
// first pixel of the source inside the larger region. Pixels are moved as bits, whatever their type.
//
// Checks, in this order, which is not the one of the other image functions: null image pointers, orvStsNullPointer; a
// step below 1, orvStsBadStep; sizes below 1, negative borders, or a result too small for the source and its top and
// left border, orvStsBadSize; a null `value` pointer, orvStsNullPointer. Steps are not compared with the row length.
// With src equal to dst a replicate or mirror function passes its dst arguments on to the in-place form first of all.
#pragma once

#include <type_traits>

#include "frame/declarations.h"

namespace orv {

/// The constant: one sample by value, or a pointer to one sample per channel.
template <class Sample, int channels>
using BorderValue = std::conditional_t<channels == 1, Sample, const Sample*>;

// The members of a type: X(name, sample type, channels)
#define ORV_BORDER_CHANNELS(X, type, Sample) X(type##_C1, Sample, 1) X(type##_C3, Sample, 3) X(type##_C4, Sample, 4)

#define ORV_BORDER_CONST_MEMBERS(X)    \
  ORV_BORDER_CHANNELS(X, 8u, uint8_t)  \
  ORV_BORDER_CHANNELS(X, 16s, int16_t) \
  ORV_BORDER_CHANNELS(X, 32s, int32_t) \
  ORV_BORDER_CHANNELS(X, 32f, float)
#define ORV_BORDER_REPLICATE_MEMBERS(X) ORV_BORDER_CONST_MEMBERS(X)
#define ORV_BORDER_REPLICATE_IN_PLACE_MEMBERS(X) \
  ORV_BORDER_CHANNELS(X, 8u, uint8_t)            \
  ORV_BORDER_CHANNELS(X, 16s, int16_t)           \
  ORV_BORDER_CHANNELS(X, 32s, int32_t)
#define ORV_BORDER_MIRROR_MEMBERS(X)    \
  ORV_BORDER_CHANNELS(X, 8u, uint8_t)   \
  ORV_BORDER_CHANNELS(X, 16u, uint16_t) \
  ORV_BORDER_CHANNELS(X, 16s, int16_t)  \
  ORV_BORDER_CHANNELS(X, 32s, int32_t)  \
  ORV_BORDER_CHANNELS(X, 32f, float)
#define ORV_BORDER_MIRROR_IN_PLACE_MEMBERS(X) \
  ORV_BORDER_CHANNELS(X, 8u, uint8_t)         \
  ORV_BORDER_CHANNELS(X, 16u, uint16_t)       \
  ORV_BORDER_CHANNELS(X, 32s, int32_t)

#define ORV_COPY_CONST_BORDER(name, Sample, channels, Size)                                                   \
  OrvStatus orviCopyConstBorder_##name(const Sample* src, int srcStep, Size srcRoi, Sample* dst, int dstStep, \
                                       Size dstRoi, int topBorderHeight, int leftBorderWidth,                 \
                                       BorderValue<Sample, channels> value)
#define ORV_COPY_BORDER(function, Sample, Size)                                                          \
  OrvStatus function(const Sample* src, int srcStep, Size srcRoi, Sample* dst, int dstStep, Size dstRoi, \
                     int topBorderHeight, int leftBorderWidth)
#define ORV_COPY_BORDER_IN_PLACE(function, Sample, Size) \
  OrvStatus function(Sample* srcDst, int srcDstStep, Size srcRoi, Size dstRoi, int topBorderHeight, int leftBorderWidth)

#define ORV_DECLARE(name, Sample, channels)                  \
  ORV_COPY_CONST_BORDER(name##R, Sample, channels, OrvSize); \
  ORV_COPY_CONST_BORDER(name##R_L, Sample, channels, OrvSizeL);
ORV_BORDER_CONST_MEMBERS(ORV_DECLARE)
#undef ORV_DECLARE
ORV_COPY_CONST_BORDER(16u_C1R, uint16_t, 1, OrvSize);

#define ORV_DECLARE(name, Sample, channels)                            \
  ORV_COPY_BORDER(orviCopyReplicateBorder_##name##R, Sample, OrvSize); \
  ORV_COPY_BORDER(orviCopyReplicateBorder_##name##R_L, Sample, OrvSizeL);
ORV_BORDER_REPLICATE_MEMBERS(ORV_DECLARE)
#undef ORV_DECLARE

#define ORV_DECLARE(name, Sample, channels)                                      \
  ORV_COPY_BORDER_IN_PLACE(orviCopyReplicateBorder_##name##IR, Sample, OrvSize); \
  ORV_COPY_BORDER_IN_PLACE(orviCopyReplicateBorder_##name##IR_L, Sample, OrvSizeL);
ORV_BORDER_REPLICATE_IN_PLACE_MEMBERS(ORV_DECLARE)
#undef ORV_DECLARE

#define ORV_DECLARE(name, Sample, channels)                         \
  ORV_COPY_BORDER(orviCopyMirrorBorder_##name##R, Sample, OrvSize); \
  ORV_COPY_BORDER(orviCopyMirrorBorder_##name##R_L, Sample, OrvSizeL);
ORV_BORDER_MIRROR_MEMBERS(ORV_DECLARE)
#undef ORV_DECLARE

#define ORV_DECLARE(name, Sample, channels)                                   \
  ORV_COPY_BORDER_IN_PLACE(orviCopyMirrorBorder_##name##IR, Sample, OrvSize); \
  ORV_COPY_BORDER_IN_PLACE(orviCopyMirrorBorder_##name##IR_L, Sample, OrvSizeL);
ORV_BORDER_MIRROR_IN_PLACE_MEMBERS(ORV_DECLARE)
#undef ORV_DECLARE

}  // namespace orv
