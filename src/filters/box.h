// Means over a rectangular window.
#pragma once

#include "frame/declarations.h"

namespace orv {

/// dst(x, y) is the mean over the window of `maskSize` pixels that starts at (x - maskSize.width / 2,
/// y - maskSize.height / 2): a window of even size has its extra column on the left and its extra row on top. In single
/// precision: columns summed from top to bottom, the column sums from left to right, the sum times
/// 1.0f / (maskSize.width * maskSize.height). Cost per pixel grows with width + height of the window.
///
/// Statuses, in order: orvStsNullPointer (`src`, `dst`, `buffer`); orvStsBadSize (`roi` or `maskSize` below 1);
/// orvStsBadStep; orvStsStepNotAligned; orvStsBadBorder.
OrvStatus orviFilterBoxBorder_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, OrvSize roi,
                                      OrvSize maskSize, OrvBorderMode borderMode, float borderValue, void* buffer);

/// Scratch of the filter: roi.width + maskSize.width - 1 column sums, as many constants, maskSize.height row pointers,
/// and 96 bytes for their alignment. `dataType` is orvDataType32f and `numChannels` 1. Statuses: orvStsNullPointer; orvStsBadSize; orvStsBadAlgorithm;
/// orvStsBadDataType (channels); orvStsTooLarge (more than 0x7fffffff bytes).
OrvStatus orviFilterBoxBorderGetBufferSize(OrvSize roi, OrvSize maskSize, OrvDataType dataType, int numChannels,
                                           int* bufferSize);

}  // namespace orv
