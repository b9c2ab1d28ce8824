// The internal image operations against their formulas, sample by sample.
#include "frame/image_kernels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

#include "frame/cache.h"
#include "frame/image_kernels_model.h"
#include "support/cases.h"
#include "support/check_order.h"
#include "support/checked_call.h"
#include "support/image.h"

namespace orvtest {
namespace {

/// The arguments of an operation on one or two sources.
template <class Source, class Result>
struct Arguments {
  const Source* src1;
  int src1Step;
  const Source* src2;
  int src2Step;
  Result* dst;
  int dstStep;
  OrvSize roi;
};

/// Rows of bytes at any address: these operations ask of a step no more than their caller does.
template <class Sample>
TestImage<Sample> drawBytes(Random& random, std::string name, OrvSize size, int channels, Values values) {
  const int sampleBytes = sizeof(Sample);
  const int oddBytes = random.oneIn(2) ? 0 : random.below(2 * sampleBytes);
  TestImage<Sample> image(
      std::move(name),
      {.size = size,
       .channels = channels,
       .stepPadding = drawStepPadding(random, size.width * channels * sampleBytes, sampleBytes) + oddBytes,
       .placement = drawPlacement(random)});
  image.fill(random, values);
  return image;
}

template <class Source, class Result>
struct Images {
  TestImage<Source> src1, src2;
  TestImage<Result> dst;

  Images(Random& random, OrvSize size, int channels, Values values)
      : src1(drawBytes<Source>(random, "src1", size, channels, values)),
        src2(drawBytes<Source>(random, "src2", size, channels, values)),
        dst(drawBytes<Result>(random, "dst", size, channels, values)) {}

  Arguments<Source, Result> call() const {
    return {src1.data(), src1.step(), src2.data(), src2.step(), dst.data(), dst.step(), dst.size()};
  }
};

// ------------------------------------------------------------------------------------------- The two tests of a member

/// run(arguments, scalars) against formula(first source's bits, second source's, scalars, channel, bits of dst); the
/// scalars are drawn anew in each case. dst may be either source.
template <class Source, class Result, class Draw, class Run, class Formula>
void expectModel(const std::string& name, int channels, Values values, Draw draw, Run run, Formula formula) {
  forCases(name, 150, [&](Random& random) {
    const Images<Source, Result> images(random, drawSize(random), channels, values);
    const auto scalars = draw(random);
    Arguments<Source, Result> call = images.call();
    const TestImage<Source>* first = &images.src1;
    const TestImage<Source>* second = &images.src2;
    if constexpr (std::is_same_v<Source, Result>) {
      const int kind = random.below(6);
      if (kind == 0)
        first = &images.dst, call.src1 = call.dst, call.src1Step = call.dstStep;
      if (kind == 1)
        second = &images.dst, call.src2 = call.dst, call.src2Step = call.dstStep;
    }
    const TestImage<Result> expected(images.dst);
    images.dst.forRegion([&](int x, int y, int channel) {
      expected.setBits(x, y, channel,
                       formula(first->bits(x, y, channel), second->bits(x, y, channel), scalars, channel,
                               images.dst.bits(x, y, channel)));
    });
    images.src1.protectReadOnly();
    images.src2.protectReadOnly();
    EXPECT_EQ(orvStsOk, run(call, scalars));
    images.dst.expectSame(expected);
  });
}

enum class Takes { nothing, oneSource, twoSources };

/// Null pointers, then sizes, then steps below 1 where the operation tests them.
template <class Source, class Result, class Run>
void expectChecks(int channels, Takes takes, Run run, bool testsSteps = false) {
  using Call = Arguments<Source, Result>;
  Random random("image kernel checks", 0);
  const Images<Source, Result> images(random, {9, 3}, channels, Values::ordinary);
  images.src1.protectReadOnly();
  images.src2.protectReadOnly();
  CheckOrder<Call> order(images.call(), run);
  order.watch(images.dst);
  if (takes != Takes::nothing)
    order.faults.push_back(nullFault("src1", &Call::src1));
  if (takes == Takes::twoSources)
    order.faults.push_back(nullFault("src2", &Call::src2));
  order.faults.push_back(nullFault("dst", &Call::dst));
  order.faults.push_back(sizeFault("roi", &Call::roi));
  if (testsSteps) {
    order.faults.push_back(valueFault("src1Step", &Call::src1Step, {0, -1, INT_MIN}, orvStsBadStep));
    order.faults.push_back(valueFault("dstStep", &Call::dstStep, {0, -1, INT_MIN}, orvStsBadStep));
  }
  order.verify();
}

constexpr auto noScalars = [](Random&) { return 0; };

/// One of every class that a scale factor falls into, for 8 and 16 bits and for products.
int drawScaleFactor(Random& random) {
  if (random.oneIn(2))
    return random.between(-18, 18);
  return random.pick({0, 0, 1, -1, 30, 31, 32, 33, 34, 63, 64, 65, 100, -31, -32, -33, -63, -64, INT_MAX, INT_MIN});
}

// ------------------------------------------------------------------------------------------------------ Fill and copy

#define SET_MEMBER(name, Sample)                                                                                      \
  TEST(ImageKernels, name) {                                                                                          \
    const auto draw = [](Random& random) { return std::bit_cast<Sample>(drawBits<Sample>(random, Values::finite)); }; \
    const auto run = [](const Arguments<Sample, Sample>& c, Sample value) {                                           \
      return checkedCall(orv::name, value, c.dst, c.dstStep, c.roi);                                                  \
    };                                                                                                                \
    const auto formula = [](auto, auto, Sample value, int, auto) { return std::bit_cast<BitsOf<Sample>>(value); };    \
    expectModel<Sample, Sample>(#name, 1, Values::ordinary, draw, run, formula);                                      \
    expectChecks<Sample, Sample>(1, Takes::nothing, [&](const auto& c) { return run(c, Sample{5}); });                \
  }

SET_MEMBER(orviSet_8u_C1R, uint8_t)
SET_MEMBER(orviSet_16s_C1R, int16_t)

/// Channels from `copied` on keep what they have.
template <class Sample, class Size>
void testCopy(OrvStatus (*function)(const Sample*, int, Sample*, int, Size), const std::string& name, int channels,
              int copied) {
  const auto run = [&](const Arguments<Sample, Sample>& c, int = 0) {
    return checkedCall(function, c.src1, c.src1Step, c.dst, c.dstStep, Size{c.roi.width, c.roi.height});
  };
  const auto formula = [&](auto source, auto, int, int channel, auto old) { return channel < copied ? source : old; };
  expectModel<Sample, Sample>(name, channels, Values::anything, noScalars, run, formula);
  expectChecks<Sample, Sample>(channels, Takes::oneSource, run);
}

#define COPY_MEMBER(name, channels, copied) \
  TEST(ImageKernels, name) { testCopy(orv::name, #name, channels, copied); }
#define COPY_MEMBERS(type)                 \
  COPY_MEMBER(orviCopy_##type##_C1R, 1, 1) \
  COPY_MEMBER(orviCopy_##type##_C3R, 3, 3) \
  COPY_MEMBER(orviCopy_##type##_C4R, 4, 4) \
  COPY_MEMBER(orviCopy_##type##_AC4R, 4, 3)

COPY_MEMBERS(8u)
COPY_MEMBERS(16s)
COPY_MEMBERS(32f)
COPY_MEMBER(orviCopy_16u_C1R, 1, 1)
COPY_MEMBER(orviCopy_8u_C1R_L, 1, 1)

// --------------------------------------------------------------------------------------------------------- Conversion

OrvStatus runConvert(const Arguments<uint16_t, float>& c, int = 0) {
  return checkedCall(orv::orviConvert_16u32f_C1R, c.src1, c.src1Step, c.dst, c.dstStep, c.roi);
}

TEST(ImageKernels, orviConvert_16u32f_C1R) {
  expectModel<uint16_t, float>(
      "orviConvert_16u32f_C1R", 1, Values::finite, noScalars, runConvert,
      [](uint16_t source, auto, int, int, auto) { return model::bitsOf(static_cast<float>(source)); });
  expectChecks<uint16_t, float>(
      1, Takes::oneSource, [](const auto& c) { return runConvert(c); }, true);
}

TEST(ImageKernels, ConversionOfEveryValue) {
  std::vector<uint16_t> src(65536);
  std::vector<float> dst(65536);
  for (size_t i = 0; i < src.size(); ++i) src[i] = static_cast<uint16_t>(i);
  // Rows without a gap are one long row, whatever the shape.
  for (const OrvSize roi : {OrvSize{65536, 1}, OrvSize{1, 65536}, OrvSize{2048, 32}}) {
    std::fill(dst.begin(), dst.end(), -1.0f);
    EXPECT_EQ(orvStsOk, runConvert({src.data(), roi.width * 2, nullptr, 0, dst.data(), roi.width * 4, roi}));
    for (size_t i = 0; i < src.size(); ++i) ASSERT_EQ(static_cast<float>(i), dst[i]);
  }
}

// An image larger than any cache in little memory: rows overlap. Each row of the result begins one pixel after the last,
// each row of the source three, so that a pixel tells which row wrote it last: the last row all of its own.
TEST(ImageKernels, ConversionPastTheCache) {
  constexpr int width = 65531;
  const int height = std::max(orv::owncvGetCacheSize(), 0x100000) / (6 * width) + 2;
  const int lastRow = height - 1;
  Random random("conversion past the cache", 0);
  const GuardedMemory src("src", static_cast<size_t>(3 * lastRow + width) * 2);
  for (size_t i = 0; i < src.size(); ++i) src.data()[i] = static_cast<uint8_t>(random.bits());
  src.protectReadOnly();
  const auto* source = reinterpret_cast<const uint16_t*>(src.data());
  // Rows go through all residues of a vector's alignment; the last address is one that no whole samples align.
  for (const int distance : {0, 4, 28, 1}) {
    const GuardedMemory dst("dst", static_cast<size_t>(lastRow + width) * 4, {Placement::Fence::before, distance});
    auto* const result = reinterpret_cast<float*>(dst.data());
    EXPECT_EQ(orvStsOk, runConvert({source, 6, nullptr, 0, result, 4, OrvSize{width, height}}));
    for (int i = 0; i < lastRow + width; ++i) {
      const int row = std::min(i, lastRow);
      ASSERT_EQ(static_cast<float>(load(source, 6, i - row, row)), load(result, 0, i, 0)) << "pixel " << i;
    }
    dst.expectCanariesIntact();
  }
}

// --------------------------------------------------------------------------------------------------------- Difference

template <class Sample, class Size>
void testSubScaled(OrvStatus (*function)(const Sample*, int, const Sample*, int, Sample*, int, Size, int),
                   const std::string& name) {
  const auto run = [&](const Arguments<Sample, Sample>& c, int scaleFactor) {
    return checkedCall(function, c.src1, c.src1Step, c.src2, c.src2Step, c.dst, c.dstStep,
                       Size{c.roi.width, c.roi.height}, scaleFactor);
  };
  const auto formula = [](auto first, auto second, int scaleFactor, int, auto) {
    return model::differenceScaled<Sample>(first, second, scaleFactor);
  };
  for (const Values values : {Values::finite, Values::few})
    expectModel<Sample, Sample>(name, 1, values, drawScaleFactor, run, formula);
  for (const int scaleFactor : {0, 3, 40, -3, -40})
    expectChecks<Sample, Sample>(1, Takes::twoSources, [&](const auto& c) { return run(c, scaleFactor); });
}

template <class Size>
void testSubFloat(OrvStatus (*function)(const float*, int, const float*, int, float*, int, Size),
                  const std::string& name, int channels) {
  const auto run = [&](const Arguments<float, float>& c, int = 0) {
    return checkedCall(function, c.src1, c.src1Step, c.src2, c.src2Step, c.dst, c.dstStep,
                       Size{c.roi.width, c.roi.height});
  };
  expectModel<float, float>(
      name, channels, Values::anything, noScalars, run,
      [](uint32_t first, uint32_t second, int, int, auto) { return model::difference(first, second); });
  expectChecks<float, float>(channels, Takes::twoSources, run);
}

#define SUB_SCALED(type)                                                                                     \
  TEST(ImageKernels, orviSub_##type##_C1RSfs) { testSubScaled(orv::orviSub_##type##_C1RSfs, "sub " #type); } \
  TEST(ImageKernels, orviSub_##type##_C1RSfs_L) { testSubScaled(orv::orviSub_##type##_C1RSfs_L, "sub L " #type); }
#define SUB_FLOAT(channels)                                                         \
  TEST(ImageKernels, orviSub_32f_C##channels##R) {                                  \
    testSubFloat(orv::orviSub_32f_C##channels##R, "sub C" #channels, channels);     \
  }                                                                                 \
  TEST(ImageKernels, orviSub_32f_C##channels##R_L) {                                \
    testSubFloat(orv::orviSub_32f_C##channels##R_L, "sub L C" #channels, channels); \
  }

SUB_SCALED(8u)
SUB_SCALED(16s)
SUB_SCALED(16u)
SUB_FLOAT(1)
SUB_FLOAT(3)
SUB_FLOAT(4)

/// Every pair of bytes.
struct Pairs {
  std::vector<uint8_t> first = std::vector<uint8_t>(65536), second = first, result = first;
  Pairs() {
    for (size_t i = 0; i < 65536; ++i) first[i] = static_cast<uint8_t>(i / 256), second[i] = static_cast<uint8_t>(i);
  }
  void subtract(int scaleFactor) {
    EXPECT_EQ(orvStsOk, checkedCall(orv::orviSub_8u_C1RSfs, first.data(), 256, second.data(), 256, result.data(), 256,
                                    OrvSize{256, 256}, scaleFactor));
  }
};

TEST(ImageKernels, DifferencesOfBytesByScaleFactor) {
  Pairs pairs;
  for (int s = -12; s <= 12; ++s) {
    pairs.subtract(s);
    for (size_t i = 0; i < 65536; ++i) {
      const int t = std::max(pairs.second[i] - pairs.first[i], 0);
      int expected = t;
      if (s > 8)
        expected = 0;
      else if (s > 0)
        expected = (t + (1 << (s - 1)) - 1 + ((t >> s) & 1)) >> s;
      else if (s < -7)
        expected = t != 0 ? 255 : 0;
      else if (s < 0)
        expected = std::min(t << -s, 255);
      ASSERT_EQ(expected, pairs.result[i]) << "scale factor " << s << ", difference " << t;
    }
  }
}

TEST(ImageKernels, ScalingRoundsToNearestEvenInTheModelToo) {
  Random random("scaling", 0);
  for (int round = 0; round < 20000; ++round) {
    const int t = static_cast<int>(random.bits()) >> random.below(31);
    const int s = random.between(-20, 40);
    const double rounded = std::nearbyint(std::ldexp(t, -s));
    const double clamped = std::min(std::max(rounded, -32768.0), 32767.0);
    ASSERT_EQ(static_cast<int>(clamped), std::bit_cast<int16_t>(model::scaled<int16_t>(t, s))) << t << " " << s;
  }
}

// ------------------------------------------------------------------------------------- Multiplication and thresholds

struct Factor {
  int16_t value;
  int scaleFactor;
};

TEST(ImageKernels, orviMulC_16s_C1RSfs) {
  const auto draw = [](Random& random) {
    const auto any = static_cast<int16_t>(random.bits());
    return Factor{random.pick<int16_t>({0, 1, 1, -1, 2, 3, -32768, 32767, any, any, any}),
                  random.oneIn(4) ? 0 : drawScaleFactor(random)};
  };
  const auto run = [](const Arguments<int16_t, int16_t>& c, Factor factor) {
    return checkedCall(orv::orviMulC_16s_C1RSfs, c.src1, c.src1Step, factor.value, c.dst, c.dstStep, c.roi,
                       factor.scaleFactor);
  };
  for (const Values values : {Values::finite, Values::few})
    expectModel<int16_t, int16_t>("orviMulC_16s_C1RSfs", 1, values, draw, run,
                                  [](uint16_t source, auto, Factor factor, int, auto) {
                                    return model::productScaled(source, factor.value, factor.scaleFactor);
                                  });
  for (const Factor factor : {Factor{1, 0}, Factor{0, 0}, Factor{5, 3}, Factor{5, -3}, Factor{5, 40}})
    expectChecks<int16_t, int16_t>(1, Takes::oneSource, [&](const auto& c) { return run(c, factor); });
}

TEST(ImageKernels, orviMulC_32f_C1R) {
  const auto run = [](const Arguments<float, float>& c, float value) {
    return checkedCall(orv::orviMulC_32f_C1R, c.src1, c.src1Step, value, c.dst, c.dstStep, c.roi);
  };
  const auto draw = [](Random& random) { return model::fromBits(drawBits<float>(random, Values::finite)); };
  expectModel<float, float>("orviMulC_32f_C1R", 1, Values::finite, draw, run,
                            [](uint32_t source, auto, float value, int, auto) {
                              return model::bitsOf(multiply(model::fromBits(source), value));
                            });
  expectChecks<float, float>(1, Takes::oneSource, [&](const auto& c) { return run(c, 2.0f); });
}

TEST(ImageKernels, ZeroTimesInfinityIsNaN) {
  std::vector<float> samples(21, HUGE_VALF);
  samples[20] = 1;
  EXPECT_EQ(orvStsOk, checkedCall(orv::orviMulC_32f_C1R, samples.data(), 84, 0.0f, samples.data(), 84, OrvSize{21, 1}));
  for (size_t i = 0; i < 20; ++i) EXPECT_TRUE(isNan(samples[i])) << i;
  EXPECT_EQ(0.0f, samples[20]);
}

template <class Sample>
void testThresholdBelow(OrvStatus (*function)(const Sample*, int, Sample*, int, OrvSize, Sample),
                        const std::string& name) {
  using Bits = BitsOf<Sample>;
  const auto run = [&](const Arguments<Sample, Sample>& c, Bits threshold) {
    return checkedCall(function, c.src1, c.src1Step, c.dst, c.dstStep, c.roi, std::bit_cast<Sample>(threshold));
  };
  const auto draw = [](Random& random) { return drawBits<Sample>(random, Values::anything); };
  for (const Values values : {Values::few, Values::anything})
    expectModel<Sample, Sample>(name, 1, values, draw, run, [](Bits source, Bits, Bits threshold, int, Bits) {
      return model::thresholdBelow<Sample>(source, threshold);
    });
  expectChecks<Sample, Sample>(1, Takes::oneSource, [&](const auto& c) { return run(c, 2); });
}

TEST(ImageKernels, orviThreshold_LT_16s_C1R) { testThresholdBelow(orv::orviThreshold_LT_16s_C1R, "below 16s"); }
TEST(ImageKernels, orviThreshold_LT_32f_C1R) { testThresholdBelow(orv::orviThreshold_LT_32f_C1R, "below 32f"); }

template <class Sample>
void testThresholdAbove(OrvStatus (*function)(const Sample*, int, Sample*, int, OrvSize, Sample, Sample),
                        const std::string& name) {
  struct Scalars {
    Sample threshold, value;
  };
  const auto run = [&](const Arguments<Sample, Sample>& c, Scalars scalars) {
    return checkedCall(function, c.src1, c.src1Step, c.dst, c.dstStep, c.roi, scalars.threshold, scalars.value);
  };
  const auto draw = [](Random& random) {
    return Scalars{drawBits<Sample>(random, Values::finite), drawBits<Sample>(random, Values::finite)};
  };
  expectModel<Sample, Sample>(name, 1, Values::finite, draw, run, [](Sample source, auto, Scalars c, int, auto) {
    return model::thresholdAbove<Sample>(source, c.threshold, c.value);
  });
  expectChecks<Sample, Sample>(1, Takes::oneSource, [&](const auto& c) { return run(c, {2, 9}); });
  // Every value at every kind of threshold.
  std::vector<Sample> src(std::numeric_limits<Sample>::max() + 1u), dst(src.size());
  for (size_t i = 0; i < src.size(); ++i) src[i] = static_cast<Sample>(i);
  const int step = static_cast<int>(src.size() * sizeof(Sample));
  const OrvSize roi{static_cast<int>(src.size()), 1};
  for (const int threshold : {0, 1, 127, 128, 254, 255, 32767, 32768, 65534, 65535}) {
    const Scalars scalars{static_cast<Sample>(threshold), 77};
    EXPECT_EQ(orvStsOk, run({src.data(), step, nullptr, 0, dst.data(), step, roi}, scalars));
    for (size_t i = 0; i < src.size(); ++i) ASSERT_EQ(i > scalars.threshold ? 77u : i, dst[i]) << threshold;
  }
}

TEST(ImageKernels, orviThreshold_GTVal_8u_C1R) { testThresholdAbove(orv::orviThreshold_GTVal_8u_C1R, "above 8u"); }
TEST(ImageKernels, orviThreshold_GTVal_16u_C1R) { testThresholdAbove(orv::orviThreshold_GTVal_16u_C1R, "above 16u"); }

// A NaN is below no threshold, and nothing is below a NaN; -0.0 is not below 0.0.
TEST(ImageKernels, ThresholdOfSpecialFloats) {
  const std::vector<float> src(19, -0.0f);
  std::vector<uint32_t> dst(19);
  const auto below = [&](float threshold) {
    EXPECT_EQ(orvStsOk, checkedCall(orv::orviThreshold_LT_32f_C1R, src.data(), 76, reinterpret_cast<float*>(dst.data()),
                                    76, OrvSize{19, 1}, threshold));
    return dst;
  };
  EXPECT_EQ(std::vector<uint32_t>(19, 0x80000000u), below(0.0f));
  EXPECT_EQ(std::vector<uint32_t>(19, 0x80000000u), below(std::bit_cast<float>(0x7fc00000u)));
  EXPECT_EQ(std::vector<uint32_t>(19, 0x3f800000u), below(1.0f));
}

}  // namespace
}  // namespace orvtest
