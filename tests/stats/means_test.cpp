// Means and standard deviations against their reference model.
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <tuple>

#include "stats/reduction_support.h"
#include "stats/reductions_model.h"
#include "support/cases.h"
#include "support/checksums.h"
#include "support/concurrency.h"
#include "support/drivers.h"

namespace orvtest {
namespace {

template <class SampleType, int channelCount, bool hasMask, bool hasDeviation>
struct Member {
  using Sample = SampleType;
  using Call = ReductionCall<Sample>;
  static constexpr int channels = channelCount;
  static constexpr bool masked = hasMask;
  static constexpr bool deviation = hasDeviation;

  static OrvStatus run(auto* function, const Call& c) {
    return std::apply(
        [&](auto... arguments) { return checkedCall(function, arguments...); },
        std::tuple_cat(std::tuple(c.src1, c.src1Step), onlyIf<masked>(c.mask, c.maskStep), std::tuple(c.roi),
                       onlyIf<channels == 3>(c.coi), std::tuple(c.value), onlyIf<deviation>(c.stdDev)));
  }

  static model::MeanDeviation expected(const Call& c) {
    return model::meanDeviation(modelInput<Sample>(c, channels, false, masked));
  }
};

template <class Member>
void expectModel(auto* function, const std::string& name) {
  forCases(name, 200, [&](Random& random) {
    const Values values = random.pick({Values::few, Values::ordinary, Values::finite, Values::anything});
    const ReductionImages<typename Member::Sample> images(random, drawSize(random), Member::channels, values);
    images.protectInputs();
    const GuardedBlock mean("mean", 8, random), stdDev("stdDev", 8, random);
    typename Member::Call call = images.call();
    call.value = mean.as<double>();
    call.stdDev = stdDev.as<double>();
    const model::MeanDeviation expected = Member::expected(call);
    EXPECT_EQ(orvStsOk, Member::run(function, call));

    // The order of float sums is the library's own; integer sums are exact.
    const auto in = modelInput<typename Member::Sample>(call, Member::channels, false, Member::masked);
    if constexpr (std::is_same_v<typename Member::Sample, float>) {
      const double magnitude = model::meanMagnitude(in);
      expectClose(expected.mean, load(call.value), magnitude, "mean");
      if (Member::deviation)
        expectClose(expected.stdDev * expected.stdDev, load(call.stdDev) * load(call.stdDev), magnitude * magnitude,
                    "variance");
    } else {
      expectSameReal(expected.mean, load(call.value), "mean");
      if (Member::deviation)
        expectSameReal(expected.stdDev, load(call.stdDev), "stdDev");
    }

    // Results that nobody wants are not written.
    if (Member::deviation) {
      const double before = load(call.value);
      typename Member::Call one = call;
      one.value = nullptr;
      EXPECT_EQ(orvStsOk, Member::run(function, one));
      one = call;
      one.stdDev = nullptr;
      EXPECT_EQ(orvStsOk, Member::run(function, one));
      expectSameReal(before, load(call.value), "mean on its own");
    }
  });
}

template <class Member>
void expectChecks(auto* function, const std::string& name) {
  using Sample = typename Member::Sample;
  using Call = typename Member::Call;
  Random random(name + " checks", 0);
  const OrvSize size{9, 3};
  const ReductionImages<Sample> images(random, size, Member::channels, Values::few);
  images.protectInputs();
  const GuardedBlock mean("mean", 8, 3), stdDev("stdDev", 8, 5);
  Call valid = images.call();
  valid.value = mean.as<double>();
  valid.stdDev = stdDev.as<double>();
  CheckOrder<Call> order(valid, [&](const Call& call) { return Member::run(function, call); });
  order.watch(mean, stdDev);

  const int row = size.width * Member::channels * static_cast<int>(sizeof(Sample));
  // Of the members with alignment, those of one channel look at the mask last.
  const bool maskLast = Member::channels == 1;
  const Fault<Call> shortMask = stepFault("maskStep", &Call::maskStep, size.width);
  auto& faults = order.faults;
  faults = {nullFault("src1", &Call::src1)};
  if (Member::masked)
    faults.push_back(nullFault("mask", &Call::mask));
  if (!Member::deviation)
    faults.push_back(nullFault("mean", &Call::value));
  faults.push_back(sizeFault("roi", &Call::roi));
  faults.push_back(rowTooLongFault("roi", &Call::roi));
  faults.push_back(stepFault("src1Step", &Call::src1Step, row));
  if (Member::masked && !maskLast)
    faults.push_back(shortMask);
  if (sizeof(Sample) > 1)
    faults.push_back(alignFault<Sample>("src1Step", &Call::src1Step));
  if (Member::masked && maskLast)
    faults.push_back(shortMask);
  if (Member::channels == 3)
    faults.push_back(channelFault<Call>());
  order.verify();
}

template <class Member>
void expectChecksum(auto* function, const std::string& name) {
  using Images = ReductionImages<typename Member::Sample>;
  expectReductionChecksum<typename Member::Sample>(name, Member::channels, Values::ordinary,
                                                   [&](Checksum& checksum, Random&, const Images& images) {
                                                     double mean = -1, stdDev = -1;
                                                     typename Member::Call call = images.call();
                                                     call.value = &mean;
                                                     call.stdDev = &stdDev;
                                                     checksum.add(Member::run(function, call));
                                                     checksum.add(mean);
                                                     checksum.add(stdDev);
                                                   });
}

#define MEMBER(name, Sample, channels, masked, deviation) \
  ORV_MEMBER_TESTS(name, (name, #name), Member<Sample, channels, masked, deviation>)
#define MEMBERS(type, Sample)                                   \
  MEMBER(orviMean_##type##_C1MR, Sample, 1, true, false)        \
  MEMBER(orviMean_##type##_C3CMR, Sample, 3, true, false)       \
  MEMBER(orviMean_StdDev_##type##_C1R, Sample, 1, false, true)  \
  MEMBER(orviMean_StdDev_##type##_C3CR, Sample, 3, false, true) \
  MEMBER(orviMean_StdDev_##type##_C1MR, Sample, 1, true, true)  \
  MEMBER(orviMean_StdDev_##type##_C3CMR, Sample, 3, true, true)

MEMBERS(8u, uint8_t)
MEMBERS(16u, uint16_t)
MEMBERS(32f, float)

// ------------------------------------------------------------------------------------------------------------- By hand

TEST(Means, ThreeSamplesUnderAMask) {
  const uint8_t s[] = {2, 4, 9}, mask[] = {1, 200, 0};
  double mean = 0, stdDev = 0;
  EXPECT_EQ(orvStsOk, checkedCall(orviMean_StdDev_8u_C1MR, s, 3, mask, 3, OrvSize{3, 1}, &mean, &stdDev));
  EXPECT_EQ(3.0, mean);
  EXPECT_EQ(1.0, stdDev);
  EXPECT_EQ(orvStsOk, checkedCall(orviMean_8u_C1MR, s, 3, mask, 3, OrvSize{3, 1}, &mean));
  EXPECT_EQ(3.0, mean);
}

TEST(Means, MaskOfZeros) {
  const float s[] = {2, std::numeric_limits<float>::infinity()};
  const uint8_t bytes[] = {2, 4}, mask[] = {0, 0};
  double mean = 5, stdDev = 5;
  EXPECT_EQ(orvStsOk, checkedCall(orviMean_StdDev_32f_C1MR, s, 8, mask, 2, OrvSize{2, 1}, &mean, &stdDev));
  EXPECT_EQ(0.0, mean);
  EXPECT_EQ(0.0, stdDev);
  mean = 5;
  EXPECT_EQ(orvStsOk, checkedCall(orviMean_8u_C1MR, bytes, 2, mask, 2, OrvSize{2, 1}, &mean));
  EXPECT_EQ(0.0, mean);
}

TEST(Means, InfinityUnderAZeroMaskByteGivesNan) {
  for (const int width : {2, 9, 40}) {
    std::vector<float> s(static_cast<size_t>(width), 3.0f);
    std::vector<uint8_t> mask(static_cast<size_t>(width), 1);
    s[1] = std::numeric_limits<float>::infinity();
    mask[1] = 0;
    double mean = 0, stdDev = 0;
    EXPECT_EQ(orvStsOk, checkedCall(orviMean_StdDev_32f_C1MR, s.data(), 4 * width, mask.data(), width,
                                    OrvSize{width, 1}, &mean, &stdDev));
    EXPECT_TRUE(std::isnan(mean));
    EXPECT_TRUE(std::isnan(stdDev));
  }
}

TEST(Means, ConstantImageHasNoDeviationAfterTheSecondPass) {
  for (const int width : {1, 7, 8, 33, 100}) {
    const std::vector<float> s(static_cast<size_t>(width * 3), 1000.0f);
    double mean = 0, stdDev = 5;
    EXPECT_EQ(orvStsOk, checkedCall(orviMean_StdDev_32f_C1R, s.data(), 12 * width, OrvSize{width, 1}, &mean, &stdDev));
    EXPECT_EQ(1000.0, mean);
    EXPECT_EQ(0.0, stdDev);
  }
}

TEST(Means, TheSecondPassSeesTinyNoise) {
  // 100000 plus or minus 2^-7: the squares of doubles cancel to nothing, the second pass keeps the deviation exactly.
  std::vector<float> s(256);
  for (size_t x = 0; x < s.size(); ++x) s[x] = 100000.0f + (x % 2 == 0 ? 0.0078125f : -0.0078125f);
  double mean = 0, stdDev = 0;
  EXPECT_EQ(orvStsOk, checkedCall(orviMean_StdDev_32f_C1R, s.data(), 1024, OrvSize{256, 1}, &mean, &stdDev));
  EXPECT_EQ(100000.0, mean);
  EXPECT_EQ(0.0078125, stdDev);
}

TEST(Means, LargeSumsAreExact) {
  const OrvSize size{4096, 2049};
  const std::vector<uint8_t> s(4096 * 2049, 255);
  double mean = 0, stdDev = 5;
  EXPECT_EQ(orvStsOk, checkedCall(orviMean_StdDev_8u_C1R, s.data(), 4096, size, &mean, &stdDev));
  EXPECT_EQ(255.0, mean);
  EXPECT_EQ(0.0, stdDev);
  EXPECT_EQ(orvStsOk, checkedCall(orviMean_8u_C1MR, s.data(), 4096, s.data(), 4096, size, &mean));
  EXPECT_EQ(255.0, mean);
  const std::vector<uint16_t> wide(1024 * 1024, 65535);
  EXPECT_EQ(orvStsOk, checkedCall(orviMean_StdDev_16u_C1R, wide.data(), 2048, OrvSize{1024, 1024}, &mean, &stdDev));
  EXPECT_EQ(65535.0, mean);
  EXPECT_EQ(0.0, stdDev);
}

TEST(Means, CallsFromSeveralThreads) {
  Random random("means from several threads", 0);
  const ReductionImages<float> images = photographReduction<float>(random, 1);
  const ReductionCall<float> c = images.call();
  double expected[2] = {};
  ASSERT_EQ(orvStsOk, orviMean_StdDev_32f_C1R(c.src1, c.src1Step, c.roi, &expected[0], &expected[1]));
  concurrently(4, 5, [&](int) {
    double got[2] = {};
    EXPECT_EQ(orvStsOk, orviMean_StdDev_32f_C1R(c.src1, c.src1Step, c.roi, &got[0], &got[1]));
    EXPECT_EQ(expected[0], got[0]);
    EXPECT_EQ(expected[1], got[1]);
  });
}

}  // namespace
}  // namespace orvtest
