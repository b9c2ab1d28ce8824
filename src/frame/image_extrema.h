// Internal image operations: extreme values of whole regions. The members for three channels give three results.
// Positions are the first in reading order.
#pragma once

#include "frame/declarations.h"

namespace orv {

#define ORV_EXTREMA(type, Sample, layout)                                                                            \
  OrvStatus orviMin_##type##_##layout(const Sample* src, int srcStep, OrvSize roi, Sample* min);                     \
  OrvStatus orviMax_##type##_##layout(const Sample* src, int srcStep, OrvSize roi, Sample* max);                     \
  OrvStatus orviMinMax_##type##_##layout(const Sample* src, int srcStep, OrvSize roi, Sample* min, Sample* max);     \
  OrvStatus orviMinIndx_##type##_##layout(const Sample* src, int srcStep, OrvSize roi, Sample* min, int* x, int* y); \
  OrvStatus orviMaxIndx_##type##_##layout(const Sample* src, int srcStep, OrvSize roi, Sample* max, int* x, int* y);

ORV_EXTREMA(8u, uint8_t, C1R)
ORV_EXTREMA(8u, uint8_t, C3R)
ORV_EXTREMA(16u, uint16_t, C1R)
ORV_EXTREMA(16u, uint16_t, C3R)
ORV_EXTREMA(32f, float, C1R)
ORV_EXTREMA(32f, float, C3R)
#undef ORV_EXTREMA

}  // namespace orv
