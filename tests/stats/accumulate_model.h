// Reference model of the accumulators, in the plainest loops. Free of the test framework: the benchmarks measure
// against it too. A null mask stands for the members without one.
#pragma once

#include "orvcv.h"
#include "support/arithmetic.h"
#include "support/samples.h"

namespace orvtest::model {

/// The factor of a masked pixel; without a mask there is no multiplication.
inline float masked(float product, const uint8_t* mask, int maskStep, int x, int y) {
  return mask ? multiply(product, load(mask, maskStep, x, y) ? 1.0f : 0.0f) : product;
}

template <class Source>
void accumulateSum(const Source* src, int srcStep, const uint8_t* mask, int maskStep, float* srcDst, int srcDstStep,
                   OrvSize roi) {
  for (int y = 0; y < roi.height; ++y)
    for (int x = 0; x < roi.width; ++x) {
      const float s = static_cast<float>(load(src, srcStep, x, y));
      const float a = load(srcDst, srcDstStep, x, y);
      store(srcDst, srcDstStep, x, y, add(a, masked(s, mask, maskStep, x, y)));
    }
}

template <class Source>
void accumulateProduct(const Source* src1, int src1Step, const Source* src2, int src2Step, const uint8_t* mask,
                       int maskStep, float* srcDst, int srcDstStep, OrvSize roi) {
  for (int y = 0; y < roi.height; ++y)
    for (int x = 0; x < roi.width; ++x) {
      const float s1 = static_cast<float>(load(src1, src1Step, x, y));
      const float s2 = static_cast<float>(load(src2, src2Step, x, y));
      const float a = load(srcDst, srcDstStep, x, y);
      store(srcDst, srcDstStep, x, y, add(a, masked(multiply(s1, s2), mask, maskStep, x, y)));
    }
}

template <class Source>
void accumulateSquare(const Source* src, int srcStep, const uint8_t* mask, int maskStep, float* srcDst, int srcDstStep,
                      OrvSize roi) {
  accumulateProduct(src, srcStep, src, srcStep, mask, maskStep, srcDst, srcDstStep, roi);
}

template <class Source>
void accumulateAverage(const Source* src, int srcStep, const uint8_t* mask, int maskStep, float* srcDst, int srcDstStep,
                       OrvSize roi, float alpha) {
  for (int y = 0; y < roi.height; ++y)
    for (int x = 0; x < roi.width; ++x) {
      const float s = static_cast<float>(load(src, srcStep, x, y));
      const float a = load(srcDst, srcDstStep, x, y);
      const float weight = !mask || load(mask, maskStep, x, y) ? alpha : 0.0f;
      store(srcDst, srcDstStep, x, y, add(a, multiply(weight, subtract(s, a))));
    }
}

/// The blend of two images; dst may be either.
inline void blend(const float* src1, int src1Step, const float* src2, int src2Step, float* dst, int dstStep,
                  OrvSize roi, float alpha) {
  for (int y = 0; y < roi.height; ++y)
    for (int x = 0; x < roi.width; ++x) {
      const float s1 = load(src1, src1Step, x, y);
      const float s2 = load(src2, src2Step, x, y);
      store(dst, dstStep, x, y, add(s2, multiply(alpha, subtract(s1, s2))));
    }
}

}  // namespace orvtest::model
