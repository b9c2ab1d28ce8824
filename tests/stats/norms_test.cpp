// The masked norms against their reference model.
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <tuple>

#include "stats/norms_model.h"
#include "stats/reduction_support.h"
#include "support/cases.h"
#include "support/checksums.h"
#include "support/concurrency.h"
#include "support/drivers.h"

namespace orvtest {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

enum class Family { norm, difference, relative };

template <Family family, model::Norm norm, class SampleType, int channelCount>
struct Member {
  using Sample = SampleType;
  using Call = ReductionCall<Sample>;
  static constexpr bool twoImages = family != Family::norm;
  static constexpr int channels = channelCount;

  static OrvStatus run(auto* function, const Call& c) {
    const auto sources = [&] {
      if constexpr (twoImages)
        return std::tuple(c.src1, c.src1Step, c.src2, c.src2Step);
      else
        return std::tuple(c.src1, c.src1Step);
    }();
    const auto rest = [&] {
      if constexpr (channels == 3)
        return std::tuple(c.mask, c.maskStep, c.roi, c.coi, c.value);
      else
        return std::tuple(c.mask, c.maskStep, c.roi, c.value);
    }();
    return std::apply([&](auto... arguments) { return checkedCall(function, arguments...); },
                      std::tuple_cat(sources, rest));
  }

  static model::RelativeNorm expected(const Call& c) {
    const model::MaskedImages<Sample> in = modelInput<Sample>(c, channels, twoImages, true);
    if (family == Family::relative)
      return model::relativeNorm(norm, in);
    return {orvStsOk, model::norm(norm, in)};
  }
};

template <class Member>
void expectModel(auto* function, const std::string& name) {
  forCases(name, 200, [&](Random& random) {
    const Values values = random.pick({Values::few, Values::ordinary, Values::finite, Values::anything});
    const ReductionImages<typename Member::Sample> images(random, drawSize(random), Member::channels, values);
    images.protectInputs();
    const GuardedBlock value("value", 8, random);
    typename Member::Call call = images.call();
    call.value = value.as<double>();
    const model::RelativeNorm expected = Member::expected(call);
    EXPECT_EQ(expected.status, Member::run(function, call));
    expectSameReal(expected.value, load(call.value), "value");
  });
}

template <class Member>
void expectChecks(auto* function, const std::string& name) {
  using Sample = typename Member::Sample;
  using Call = typename Member::Call;
  Random random(name + " checks", 0);
  const OrvSize size{9, 3};
  ReductionImages<Sample> images(random, size, Member::channels, Values::few);
  images.mask.fillWith(1);
  images.src2.fillWith(Sample{1});
  images.protectInputs();
  const GuardedBlock value("value", 8, 3);
  Call valid = images.call();
  valid.value = value.as<double>();
  CheckOrder<Call> order(valid, [&](const Call& call) { return Member::run(function, call); });
  order.watch(value);

  const int row = size.width * Member::channels * static_cast<int>(sizeof(Sample));
  const Fault<Call> shortMask = stepFault("maskStep", &Call::maskStep, size.width);
  auto& faults = order.faults;
  faults = {nullFault("src1", &Call::src1), nullFault("mask", &Call::mask), nullFault("value", &Call::value)};
  if (Member::twoImages)
    faults.push_back(nullFault("src2", &Call::src2));
  faults.push_back(sizeFault("roi", &Call::roi));
  faults.push_back(rowTooLongFault("roi", &Call::roi));
  faults.push_back(stepFault("src1Step", &Call::src1Step, row));
  if (Member::twoImages) {
    // All lengths before all alignments.
    faults.push_back(stepFault("src2Step", &Call::src2Step, row));
    faults.push_back(shortMask);
  }
  if (sizeof(Sample) > 1)
    faults.push_back(alignFault<Sample>("src1Step", &Call::src1Step));
  if (sizeof(Sample) > 1 && Member::twoImages)
    faults.push_back(alignFault<Sample>("src2Step", &Call::src2Step));
  if (!Member::twoImages)
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
                                                     double value = -1;
                                                     typename Member::Call call = images.call();
                                                     call.value = &value;
                                                     checksum.add(Member::run(function, call));
                                                     checksum.add(value);
                                                   });
}

#define NORM(name, family, norm, Sample, channels) \
  ORV_MEMBER_TESTS(name, (name, #name), Member<Family::family, model::Norm::norm, Sample, channels>)
#define NORMS_OF_TYPE(function, family, norm, type, Sample) \
  NORM(function##_##type##_C1MR, family, norm, Sample, 1)   \
  NORM(function##_##type##_C3CMR, family, norm, Sample, 3)
#define NORMS(function, family, norm)                  \
  NORMS_OF_TYPE(function, family, norm, 8u, uint8_t)   \
  NORMS_OF_TYPE(function, family, norm, 16u, uint16_t) \
  NORMS_OF_TYPE(function, family, norm, 32f, float)

NORMS(orviNorm_Inf, norm, inf)
NORMS(orviNorm_L1, norm, l1)
NORMS(orviNorm_L2, norm, l2)
NORMS(orviNormDiff_Inf, difference, inf)
NORMS(orviNormDiff_L1, difference, l1)
NORMS(orviNormDiff_L2, difference, l2)
NORMS(orviNormRel_Inf, relative, inf)
NORMS(orviNormRel_L1, relative, l1)
NORMS(orviNormRel_L2, relative, l2)

// ------------------------------------------------------------------------------------------------------------- By hand

TEST(Norms, ThreeSamplesUnderAMask) {
  const uint8_t s[] = {3, 9, 4}, reference[] = {3, 9, 2}, mask[] = {1, 0, 255};
  double value = 0;
  EXPECT_EQ(orvStsOk, checkedCall(orviNorm_Inf_8u_C1MR, s, 3, mask, 3, OrvSize{3, 1}, &value));
  EXPECT_EQ(4.0, value);
  EXPECT_EQ(orvStsOk, checkedCall(orviNorm_L1_8u_C1MR, s, 3, mask, 3, OrvSize{3, 1}, &value));
  EXPECT_EQ(7.0, value);
  EXPECT_EQ(orvStsOk, checkedCall(orviNorm_L2_8u_C1MR, s, 3, mask, 3, OrvSize{3, 1}, &value));
  EXPECT_EQ(5.0, value);
  EXPECT_EQ(orvStsOk, checkedCall(orviNormDiff_L1_8u_C1MR, s, 3, reference, 3, mask, 3, OrvSize{3, 1}, &value));
  EXPECT_EQ(2.0, value);
  EXPECT_EQ(orvStsOk, checkedCall(orviNormRel_L1_8u_C1MR, s, 3, reference, 3, mask, 3, OrvSize{3, 1}, &value));
  EXPECT_EQ(0.4, value);
}

TEST(Norms, MaskOfZeros) {
  const uint8_t s[] = {3, 9, 4}, mask[] = {0, 0, 0};
  double value = -1;
  EXPECT_EQ(orvStsOk, checkedCall(orviNorm_L2_8u_C1MR, s, 3, mask, 3, OrvSize{3, 1}, &value));
  EXPECT_EQ(0.0, value);
  EXPECT_EQ(orvStsZeroDenominator, checkedCall(orviNormRel_L2_8u_C1MR, s, 3, s, 3, mask, 3, OrvSize{3, 1}, &value));
  EXPECT_EQ(0xFFF8000000000000u, std::bit_cast<uint64_t>(value));
}

TEST(Norms, ZeroDenominators) {
  const uint8_t zero[] = {0, 0}, s[] = {0, 5}, mask[] = {1, 1};
  double value = 0;
  EXPECT_EQ(orvStsZeroDenominator, checkedCall(orviNormRel_Inf_8u_C1MR, s, 2, zero, 2, mask, 2, OrvSize{2, 1}, &value));
  EXPECT_EQ(infinity, value);
  EXPECT_EQ(orvStsZeroDenominator,
            checkedCall(orviNormRel_Inf_8u_C1MR, zero, 2, zero, 2, mask, 2, OrvSize{2, 1}, &value));
  EXPECT_EQ(0xFFF8000000000000u, std::bit_cast<uint64_t>(value));
  // Only a NaN numerator reaches the negative infinity.
  const float zeros[] = {0, 0}, nan[] = {0, std::numeric_limits<float>::quiet_NaN()};
  EXPECT_EQ(orvStsZeroDenominator,
            checkedCall(orviNormRel_Inf_32f_C1MR, nan, 8, zeros, 8, mask, 2, OrvSize{2, 1}, &value));
  EXPECT_EQ(-infinity, value);
  EXPECT_EQ(orvStsZeroDenominator,
            checkedCall(orviNormRel_L1_32f_C1MR, nan, 8, zeros, 8, mask, 2, OrvSize{2, 1}, &value));
  EXPECT_EQ(-infinity, value);
}

TEST(Norms, EqualImages) {
  const uint16_t s[] = {0, 5, 65535}, mask[] = {0x0101, 0x0101};
  const auto* bytes = reinterpret_cast<const uint8_t*>(mask);
  double value = -1;
  EXPECT_EQ(orvStsOk, checkedCall(orviNormDiff_L2_16u_C1MR, s, 6, s, 6, bytes, 3, OrvSize{3, 1}, &value));
  EXPECT_EQ(0.0, value);
  EXPECT_EQ(orvStsOk, checkedCall(orviNormRel_L2_16u_C1MR, s, 6, s, 6, bytes, 3, OrvSize{3, 1}, &value));
  EXPECT_EQ(0.0, value);
}

TEST(Norms, SumOfALargeImageIsExact) {
  const OrvSize size{2048, 2048};  // 0x400000 pixels
  const std::vector<uint8_t> s(0x400000, 255);
  double value = 0;
  EXPECT_EQ(orvStsOk, checkedCall(orviNorm_L1_8u_C1MR, s.data(), 2048, s.data(), 2048, size, &value));
  EXPECT_EQ(1069547520.0, value);
  EXPECT_EQ(orvStsOk, checkedCall(orviNorm_L2_8u_C1MR, s.data(), 2048, s.data(), 2048, size, &value));
  EXPECT_EQ(522240.0, value);  // 255 * 2048
  EXPECT_EQ(orvStsOk, checkedCall(orviNorm_L1_8u_C3CMR, s.data(), 2048, s.data(), 2048, OrvSize{682, 2048}, 3, &value));
  EXPECT_EQ(682.0 * 2048 * 255, value);
}

TEST(Norms, SumOfManyWideSamplesIsExact) {
  const OrvSize size{4096, 64};
  const std::vector<uint16_t> s(4096 * 64, 65535), zero(4096 * 64, 0);
  const std::vector<uint8_t> mask(4096 * 64, 1);
  double value = 0;
  EXPECT_EQ(orvStsOk, checkedCall(orviNorm_L1_16u_C1MR, s.data(), 8192, mask.data(), 4096, size, &value));
  EXPECT_EQ(65535.0 * 4096 * 64, value);
  EXPECT_EQ(orvStsOk,
            checkedCall(orviNormDiff_L1_16u_C1MR, zero.data(), 8192, s.data(), 8192, mask.data(), 4096, size, &value));
  EXPECT_EQ(65535.0 * 4096 * 64, value);
  // 65535 squared rounds to 4294836224 in single precision; the sums of these are exact.
  EXPECT_EQ(orvStsOk, checkedCall(orviNorm_L2_16u_C1MR, s.data(), 8192, mask.data(), 4096, size, &value));
  EXPECT_EQ(std::sqrt(4294836224.0 * 4096 * 64), value);
}

TEST(Norms, ANanIsOverwrittenByTheNextElement) {
  const float inf = std::numeric_limits<float>::infinity();
  double value = 0;
  for (const int width : {2, 9, 24, 41}) {
    std::vector<float> s(static_cast<size_t>(width), 0.5f);
    std::vector<uint8_t> mask(static_cast<size_t>(width), 1);
    for (int x = 0; x < width; ++x) {
      s.assign(s.size(), 0.5f);
      mask.assign(mask.size(), 1);
      s[0] = 7;
      s[static_cast<size_t>(x)] = inf;
      mask[static_cast<size_t>(x)] = 0;  // infinity times zero
      EXPECT_EQ(orvStsOk,
                checkedCall(orviNorm_Inf_32f_C1MR, s.data(), width * 4, mask.data(), width, OrvSize{width, 1}, &value));
      if (x == width - 1)
        EXPECT_TRUE(std::isnan(value)) << "width " << width;
      else
        EXPECT_EQ(0.5, value) << "width " << width << ", x " << x;
    }
  }
}

TEST(Norms, AStepOneByteShort) {
  const uint8_t s[12] = {};
  double value = 0;
  EXPECT_EQ(orvStsBadStep, checkedCall(orviNorm_Inf_8u_C3CMR, s, 11, s, 4, OrvSize{4, 1}, 1, &value));
  EXPECT_EQ(orvStsBadChannelOfInterest, checkedCall(orviNorm_Inf_8u_C3CMR, s, 12, s, 4, OrvSize{4, 1}, 0, &value));
  EXPECT_EQ(orvStsBadChannelOfInterest, checkedCall(orviNorm_Inf_8u_C3CMR, s, 12, s, 4, OrvSize{4, 1}, 4, &value));
}

TEST(Norms, RowTotalsOfTheChannelMembersAreSinglePrecision) {
  // 2^12 squared is 2^24, to which 1 doesn't add in single precision.
  std::vector<float> s(3 * 16, 0.0f);
  s[0] = 4096;
  s[3 * 8] = 1;  // the same lane, next group
  const std::vector<uint8_t> mask(16, 1);
  double value = 0;
  EXPECT_EQ(orvStsOk, checkedCall(orviNorm_L2_32f_C3CMR, s.data(), 192, mask.data(), 16, OrvSize{16, 1}, 1, &value));
  EXPECT_EQ(4096.0, value);
  std::vector<float> oneChannel(16, 0.0f);
  oneChannel[0] = 4096;
  oneChannel[8] = 1;
  EXPECT_EQ(orvStsOk,
            checkedCall(orviNorm_L2_32f_C1MR, oneChannel.data(), 64, mask.data(), 16, OrvSize{16, 1}, &value));
  EXPECT_EQ(std::sqrt(16777217.0), value);
}

TEST(Norms, CallsFromSeveralThreads) {
  Random random("norms from several threads", 0);
  const ReductionImages<float> images = photographReduction<float>(random, 1);
  const ReductionCall<float> c = images.call();
  double expected = 0;
  ASSERT_EQ(orvStsOk,
            orviNormRel_L2_32f_C1MR(c.src1, c.src1Step, c.src2, c.src2Step, c.mask, c.maskStep, c.roi, &expected));
  concurrently(4, 5, [&](int) {
    double value = 0;
    EXPECT_EQ(orvStsOk,
              orviNormRel_L2_32f_C1MR(c.src1, c.src1Step, c.src2, c.src2Step, c.mask, c.maskStep, c.roi, &value));
    EXPECT_EQ(expected, value);
  });
}

}  // namespace
}  // namespace orvtest
