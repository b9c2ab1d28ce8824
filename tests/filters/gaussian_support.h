// Both Gaussian filters as data: how to call a member, its block and scratch of exactly the queried size.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>
#include <utility>

#include "filters/gaussian_model.h"
#include "support/checked_call.h"
#include "support/data_types.h"
#include "support/guarded.h"

namespace orvtest {

/// The fixed-point filter on the pipelines, or the one in single precision.
enum class Gaussian { pipelines, singlePrecision };

/// What Init and the size queries are told.
struct GaussianSetup {
  Gaussian generation;
  OrvSize roi;
  int taps;
  float sigma;
  int word;
  int dataType, channels;
};

inline int gaussianBufferSize(const GaussianSetup& s) {
  int specSize = 0, bufferSize = 0;
  if (s.generation == Gaussian::pipelines)
    EXPECT_EQ(orvStsOk, orviFilterGaussianGetBufferSize(s.roi, s.taps, s.dataType, s.channels, &specSize, &bufferSize));
  else
    EXPECT_EQ(orvStsOk, orviFilterGaussianGetBufferSize_L({s.roi.width, s.roi.height}, s.taps, s.dataType, s.word,
                                                          s.channels, &bufferSize));
  return bufferSize;
}

/// An initialised block of exactly the queried size.
inline GuardedBlock gaussianSpec(const GaussianSetup& s, int residueMod64) {
  int specSize = 0, other = 0;
  const bool pipelines = s.generation == Gaussian::pipelines;
  EXPECT_EQ(orvStsOk, pipelines
                          ? orviFilterGaussianGetBufferSize(s.roi, s.taps, s.dataType, s.channels, &specSize, &other)
                          : orviFilterGaussianGetSpecSize_L(s.taps, s.dataType, s.channels, &specSize, &other));
  GuardedBlock spec("spec", specSize, residueMod64);
  const GuardedBlock scratch("scratch of Init", other, 63 - residueMod64);
  spec.fill(0xa5);
  EXPECT_EQ(orvStsOk, pipelines ? orviFilterGaussianInit(s.roi, s.taps, s.sigma, s.word, s.dataType, s.channels,
                                                         spec.data(), scratch.data())
                                : orviFilterGaussianInit_L({s.roi.width, s.roi.height}, s.taps, s.sigma, s.word,
                                                           s.dataType, s.channels, spec.data(), scratch.data()));
  return spec;
}

/// All arguments of a working call. `word` is not an argument of the pipelines' members, who find it in `spec`.
template <class Sample>
struct GaussianCall {
  const Sample* src;
  int srcStep;
  Sample* dst;
  int dstStep;
  OrvSize roi;
  int word;
  const Sample* borderValue;
  const void* spec;
  void* buffer;
};

template <class Sample>
struct GaussianMember {
  std::string name;
  Gaussian generation;
  int channels;
  std::function<OrvStatus(const GaussianCall<Sample>&)> run;

  GaussianSetup setup(OrvSize roi, int taps, float sigma, int word) const {
    return {generation, roi, taps, sigma, word, dataType<Sample>, channels};
  }
};

template <class Sample>
GaussianMember<Sample> gaussianMember(std::string name, OrvStatus (*function)(const Sample*, int, Sample*, int, OrvSize,
                                                                              Sample, const void*, void*)) {
  return {std::move(name), Gaussian::pipelines, 1, [function](const GaussianCall<Sample>& c) {
            return checkedCall(function, c.src, c.srcStep, c.dst, c.dstStep, c.roi, load(c.borderValue), c.spec,
                               c.buffer);
          }};
}

template <class Sample>
GaussianMember<Sample> gaussianMember(std::string name, OrvStatus (*function)(const Sample*, int, Sample*, int, OrvSize,
                                                                              const Sample*, const void*, void*)) {
  return {std::move(name), Gaussian::pipelines, 3, [function](const GaussianCall<Sample>& c) {
            return checkedCall(function, c.src, c.srcStep, c.dst, c.dstStep, c.roi, c.borderValue, c.spec, c.buffer);
          }};
}

template <class Sample>
GaussianMember<Sample> gaussianMember(std::string name,
                                      OrvStatus (*function)(const Sample*, OrvLength, Sample*, OrvLength, OrvSizeL,
                                                            OrvBorderMode, const Sample*, const void*, void*)) {
  const int channels = name.find("_C3R") == std::string::npos ? 1 : 3;
  return {std::move(name), Gaussian::singlePrecision, channels, [function](const GaussianCall<Sample>& c) {
            return checkedCall(function, c.src, c.srcStep, c.dst, c.dstStep, OrvSizeL{c.roi.width, c.roi.height},
                               c.word, c.borderValue, c.spec, c.buffer);
          }};
}

}  // namespace orvtest
