// Extreme values with positions against their reference model.
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

template <class SampleType, int channelCount, bool hasMask>
struct Member {
  using Sample = SampleType;
  using Call = ReductionCall<Sample>;
  static constexpr int channels = channelCount;
  static constexpr bool masked = hasMask;

  static OrvStatus run(auto* function, const Call& c) {
    return std::apply(
        [&](auto... arguments) { return checkedCall(function, arguments...); },
        std::tuple_cat(std::tuple(c.src1, c.src1Step), onlyIf<masked>(c.mask, c.maskStep), std::tuple(c.roi),
                       onlyIf<channels == 3>(c.coi), std::tuple(c.minVal, c.maxVal, c.minIndex, c.maxIndex)));
  }
};

/// The four outputs, each on its own between fences, filled with a pattern beforehand.
struct Outputs {
  GuardedBlock minVal, maxVal, minIndex, maxIndex;

  explicit Outputs(Random& random)
      : minVal("minVal", 4, random),
        maxVal("maxVal", 4, random),
        minIndex("minIndex", 8, random),
        maxIndex("maxIndex", 8, random) {
    for (const GuardedBlock* block : {&minVal, &maxVal, &minIndex, &maxIndex}) block->fill(0xA5);
  }

  /// Bit k of `present` gives output k, in the order of the arguments.
  template <class Sample>
  ReductionCall<Sample> addTo(ReductionCall<Sample> call, int present) const {
    call.minVal = present & 1 ? minVal.as<float>() : nullptr;
    call.maxVal = present & 2 ? maxVal.as<float>() : nullptr;
    call.minIndex = present & 4 ? minIndex.as<OrvPoint>() : nullptr;
    call.maxIndex = present & 8 ? maxIndex.as<OrvPoint>() : nullptr;
    return call;
  }
};

void expectValue(const GuardedBlock& block, bool written, float value) {
  EXPECT_EQ(written ? std::bit_cast<uint32_t>(value) : 0xA5A5A5A5u, load(block.as<uint32_t>()))
      << block.memory().name();
}

void expectPosition(const GuardedBlock& block, bool written, int x, int y) {
  const int32_t untouched = static_cast<int32_t>(0xA5A5A5A5u);
  EXPECT_EQ(written ? x : untouched, load(block.as<int32_t>())) << block.memory().name() << ".x";
  EXPECT_EQ(written ? y : untouched, load(block.as<int32_t>() + 1)) << block.memory().name() << ".y";
}

template <class Member>
void expectModel(auto* function, const std::string& name) {
  forCases(name, 300, [&](Random& random) {
    const Values values = random.pick({Values::few, Values::few, Values::ordinary, Values::finite, Values::anything});
    const ReductionImages<typename Member::Sample> images(random, drawSize(random), Member::channels, values);
    images.protectInputs();
    const Outputs outputs(random);
    const int present = random.oneIn(2) ? 15 : random.below(16);
    const auto call = outputs.addTo(images.call(), present);
    const model::Extrema expected =
        model::extrema(modelInput<typename Member::Sample>(call, Member::channels, false, Member::masked));

    EXPECT_EQ(expected.anySelected ? orvStsOk : orvStsMaskEmpty, Member::run(function, call));

    // A position comes with its value alone, but for the minimum's where both values are null.
    const bool minVal = present & 1, maxVal = present & 2, minIndex = present & 4, maxIndex = present & 8;
    expectValue(outputs.minVal, minVal, expected.minimum.value);
    expectValue(outputs.maxVal, maxVal, expected.maximum.value);
    expectPosition(outputs.minIndex, minIndex && (minVal || !maxVal), expected.minimum.x, expected.minimum.y);
    expectPosition(outputs.maxIndex, maxIndex && maxVal, expected.maximum.x, expected.maximum.y);
  });
}

template <class Member>
void expectChecks(auto* function, const std::string& name) {
  using Sample = typename Member::Sample;
  using Call = typename Member::Call;
  Random random(name + " checks", 0);
  const OrvSize size{9, 3};
  const ReductionImages<Sample> images(random, size, Member::channels, Values::few);
  images.mask.fillWith(1);
  images.protectInputs();
  const Outputs outputs(random);
  CheckOrder<Call> order(outputs.addTo(images.call(), 15),
                         [&](const Call& call) { return Member::run(function, call); });
  order.watch(outputs.minVal, outputs.maxVal, outputs.minIndex, outputs.maxIndex);

  const int row = size.width * Member::channels * static_cast<int>(sizeof(Sample));
  auto& faults = order.faults;
  faults = {nullFault("src1", &Call::src1)};
  if (Member::masked)
    faults.push_back(nullFault("mask", &Call::mask));
  faults.push_back(sizeFault("roi", &Call::roi));
  faults.push_back(rowTooLongFault("roi", &Call::roi));
  faults.push_back(stepFault("src1Step", &Call::src1Step, row));
  if (Member::masked)
    faults.push_back(stepFault("maskStep", &Call::maskStep, size.width));
  if (sizeof(Sample) > 1)
    faults.push_back(alignFault<Sample>("src1Step", &Call::src1Step));
  if (Member::channels == 3)
    faults.push_back(channelFault<Call>());
  order.verify();
}

template <class Member>
void expectChecksum(auto* function, const std::string& name) {
  using Images = ReductionImages<typename Member::Sample>;
  expectReductionChecksum<typename Member::Sample>(
      name, Member::channels, Values::anything, [&](Checksum& checksum, Random& random, const Images& images) {
        const Outputs outputs(random);
        checksum.add(Member::run(function, outputs.addTo(images.call(), 15)));
        for (const GuardedBlock* block : {&outputs.minVal, &outputs.maxVal, &outputs.minIndex, &outputs.maxIndex})
          checksum.add(*block);
      });
}

#define MEMBER(name, Sample, channels, masked) ORV_MEMBER_TESTS(name, (name, #name), Member<Sample, channels, masked>)
#define MEMBERS(type, Sample)                            \
  MEMBER(orviMinMaxIndx_##type##_C1R, Sample, 1, false)  \
  MEMBER(orviMinMaxIndx_##type##_C3CR, Sample, 3, false) \
  MEMBER(orviMinMaxIndx_##type##_C1MR, Sample, 1, true)  \
  MEMBER(orviMinMaxIndx_##type##_C3CMR, Sample, 3, true)

MEMBERS(8u, uint8_t)
MEMBERS(16u, uint16_t)
MEMBERS(32f, float)

// ------------------------------------------------------------------------------------------------------------- By hand

TEST(Extrema, TheFirstOfEqualsInReadingOrder) {
  const uint8_t s[] = {5, 9, 5, 9};
  float minVal = 0, maxVal = 0;
  OrvPoint minIndex{-1, -1}, maxIndex{-1, -1};
  EXPECT_EQ(orvStsOk, checkedCall(orviMinMaxIndx_8u_C1R, s, 2, OrvSize{2, 2}, &minVal, &maxVal, &minIndex, &maxIndex));
  EXPECT_EQ(5.0f, minVal);
  EXPECT_EQ(9.0f, maxVal);
  EXPECT_EQ(0, minIndex.x);
  EXPECT_EQ(0, minIndex.y);
  EXPECT_EQ(1, maxIndex.x);
  EXPECT_EQ(0, maxIndex.y);
}

TEST(Extrema, MaskOfZerosAndImageOfZeros) {
  const uint8_t s[] = {5, 9}, zeros[] = {0, 0}, second[] = {0, 7};
  float minVal = 3, maxVal = 3;
  OrvPoint minIndex{-1, -1}, maxIndex{-1, -1};
  EXPECT_EQ(orvStsMaskEmpty,
            checkedCall(orviMinMaxIndx_8u_C1MR, s, 2, zeros, 2, OrvSize{2, 1}, &minVal, &maxVal, &minIndex, &maxIndex));
  EXPECT_EQ(0.0f, minVal);
  EXPECT_EQ(0.0f, maxVal);
  EXPECT_EQ(0, minIndex.x);
  EXPECT_EQ(0, maxIndex.x);
  EXPECT_EQ(orvStsOk, checkedCall(orviMinMaxIndx_8u_C1MR, zeros, 2, second, 2, OrvSize{2, 1}, &minVal, &maxVal,
                                  &minIndex, &maxIndex));
  EXPECT_EQ(0.0f, minVal);
  EXPECT_EQ(1, minIndex.x);
  EXPECT_EQ(1, maxIndex.x);
}

TEST(Extrema, APositionComesWithItsValue) {
  const uint8_t s[] = {5, 9}, mask[] = {1, 1};
  float minVal = 0, maxVal = 0;
  OrvPoint minIndex{-1, -1}, maxIndex{-1, -1};
  EXPECT_EQ(orvStsOk, checkedCall(orviMinMaxIndx_8u_C1R, s, 2, OrvSize{2, 1}, &minVal, nullptr, &minIndex, &maxIndex));
  EXPECT_EQ(-1, maxIndex.x);
  EXPECT_EQ(0, minIndex.x);
  minIndex = {-1, -1};
  EXPECT_EQ(orvStsOk,
            checkedCall(orviMinMaxIndx_8u_C1MR, s, 2, mask, 2, OrvSize{2, 1}, nullptr, &maxVal, &minIndex, &maxIndex));
  EXPECT_EQ(-1, minIndex.x);
  EXPECT_EQ(1, maxIndex.x);
  EXPECT_EQ(orvStsOk, checkedCall(orviMinMaxIndx_8u_C1R, s, 2, OrvSize{2, 1}, nullptr, nullptr, nullptr, nullptr));
}

TEST(Extrema, WideSamplesAreExact) {
  const uint16_t s[] = {65535, 65534};
  float minVal = 0, maxVal = 0;
  EXPECT_EQ(orvStsOk, checkedCall(orviMinMaxIndx_16u_C1R, s, 4, OrvSize{2, 1}, &minVal, &maxVal, nullptr, nullptr));
  EXPECT_EQ(65534.0f, minVal);
  EXPECT_EQ(65535.0f, maxVal);
}

TEST(Extrema, CallsFromSeveralThreads) {
  Random random("extrema from several threads", 0);
  const ReductionImages<float> images = photographReduction<float>(random, 1);
  const ReductionCall<float> c = images.call();
  float expected = 0;
  ASSERT_EQ(orvStsOk, orviMinMaxIndx_32f_C1R(c.src1, c.src1Step, c.roi, nullptr, &expected, nullptr, nullptr));
  concurrently(4, 5, [&](int) {
    float got = 0;
    EXPECT_EQ(orvStsOk, orviMinMaxIndx_32f_C1R(c.src1, c.src1Step, c.roi, nullptr, &got, nullptr, nullptr));
    EXPECT_EQ(expected, got);
  });
}

}  // namespace
}  // namespace orvtest
