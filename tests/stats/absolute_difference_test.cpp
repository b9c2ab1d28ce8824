// The absolute differences against their reference model.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "stats/absolute_difference_model.h"
#include "support/cases.h"
#include "support/check_order.h"
#include "support/checksums.h"
#include "support/concurrency.h"
#include "support/drivers.h"
#include "support/image.h"
#include "support/photographs.h"

namespace orvtest {
namespace {

// ------------------------------------------------------------------------------------------- What the members are

/// All arguments of a member: the difference of two images, or of an image to a constant, which has no second source.
template <class SampleType, class ValueType>
struct Arguments {
  using Sample = SampleType;
  using Value = ValueType;
  const Sample* src1;
  int src1Step;
  const Sample* src2;
  int src2Step;
  Sample* dst;
  int dstStep;
  OrvSize roi;
  Value value;
};

/// An export as data: how to call it, what it should do, which arguments it has.
template <class Sample, class Value>
struct Member {
  std::string name;
  int channels;
  bool twoSources;
  std::function<OrvStatus(const Arguments<Sample, Value>&)> run;
  std::function<void(const Arguments<Sample, Value>&)> model;
};

template <class Sample>
using DifferenceFunction = OrvStatus(const Sample*, int, const Sample*, int, Sample*, int, OrvSize);

template <class Sample>
Member<Sample, int32_t> member(std::string name, int channels, DifferenceFunction<Sample>* function) {
  using Call = Arguments<Sample, int32_t>;
  return {std::move(name), channels, true,
          [function](const Call& c) {
            return checkedCall(function, c.src1, c.src1Step, c.src2, c.src2Step, c.dst, c.dstStep, c.roi);
          },
          [channels](const Call& c) {
            model::absoluteDifference(c.src1, c.src1Step, c.src2, c.src2Step, c.dst, c.dstStep,
                                      OrvSize{c.roi.width * channels, c.roi.height});
          }};
}

template <class Sample, class Value>
using ConstantFunction = OrvStatus(const Sample*, int, Sample*, int, OrvSize, Value);

template <class Sample, class Value>
Member<Sample, Value> member(std::string name, int channels, ConstantFunction<Sample, Value>* function) {
  using Call = Arguments<Sample, Value>;
  return {
      std::move(name), channels, false,
      [function](const Call& c) { return checkedCall(function, c.src1, c.src1Step, c.dst, c.dstStep, c.roi, c.value); },
      [](const Call& c) {
        Sample value;
        if constexpr (std::is_floating_point_v<Sample>)
          value = c.value;
        else
          value = model::clampToSample<Sample>(c.value);
        model::absoluteDifference(c.src1, c.src1Step, c.dst, c.dstStep, c.roi, value);
      }};
}

template <class Value>
Value drawValue(Random& random) {
  if constexpr (std::is_same_v<Value, float>)
    return random.pick({0.0f, -0.0f, 1.5f, -300.25f, 3e38f, -1e-40f});
  else
    return random.oneIn(2) ? random.between(-10, 70000)
                           : random.pick<int32_t>({INT32_MIN, -1, 0, 1, 254, 255, 256, 65534, 65535, 65536, INT32_MAX});
}

/// The images of one call.
template <class Call>
struct Images {
  using Sample = typename Call::Sample;
  TestImage<Sample> src1, src2, dst;
  typename Call::Value value;

  Images(Random& random, OrvSize size, int channels)
      : src1(drawImage<Sample>(random, "src1", size, {.channels = channels})),
        src2(drawImage<Sample>(random, "src2", size, {.channels = channels})),
        dst(drawImage<Sample>(random, "dst", size, {.channels = channels})),
        value(drawValue<typename Call::Value>(random)) {}

  Call call() const { return call(dst); }
  /// The same call with another destination.
  Call call(const TestImage<Sample>& result) const {
    return {src1.data(), src1.step(), src2.data(), src2.step(), result.data(), result.step(), result.size(), value};
  }

  void protectInputs() const {
    src1.protectReadOnly();
    src2.protectReadOnly();
  }
};

// --------------------------------------------------------------------------------------------------- The three tests

template <class Sample, class Value>
void expectModel(const Member<Sample, Value>& member) {
  using Call = Arguments<Sample, Value>;
  forCases(member.name, 300, [&](Random& random) {
    const Images<Call> images(random, drawSize(random), member.channels);
    const TestImage<Sample> expected(images.dst);
    // The destination may be a source.
    const int inPlace = random.below(4);
    const auto placed = [&](const TestImage<Sample>& result) {
      Call call = images.call(result);
      if (inPlace == 1)
        call.src1 = call.dst, call.src1Step = call.dstStep;
      if (inPlace == 2)
        call.src2 = call.dst, call.src2Step = call.dstStep;
      return call;
    };
    member.model(placed(expected));
    images.protectInputs();
    EXPECT_EQ(orvStsOk, member.run(placed(images.dst)));
    images.dst.expectSame(expected);
  });
}

template <class Sample, class Value>
void expectChecks(const Member<Sample, Value>& member) {
  using Call = Arguments<Sample, Value>;
  Random random(member.name + " checks", 0);
  const OrvSize size{9, 3};
  const Images<Call> images(random, size, member.channels);
  const int row = size.width * member.channels * static_cast<int>(sizeof(Sample));

  CheckOrder<Call> order(images.call(), member.run);
  order.watch(images.src1, images.src2, images.dst);
  order.faults = {nullFault("src1", &Call::src1), nullFault("dst", &Call::dst)};
  if (member.twoSources)
    order.faults.push_back(nullFault("src2", &Call::src2));
  order.faults.push_back(sizeFault("roi", &Call::roi));
  order.faults.push_back(rowTooLongFault("roi", &Call::roi));
  order.faults.push_back(stepFault("src1Step", &Call::src1Step, row));
  if (member.twoSources)
    order.faults.push_back(stepFault("src2Step", &Call::src2Step, row));
  order.faults.push_back(stepFault("dstStep", &Call::dstStep, row));
  if (sizeof(Sample) > 1) {
    order.faults.push_back(alignFault<Sample>("src1Step", &Call::src1Step));
    if (member.twoSources)
      order.faults.push_back(alignFault<Sample>("src2Step", &Call::src2Step));
    order.faults.push_back(alignFault<Sample>("dstStep", &Call::dstStep));
  }
  order.verify();
}

template <class Sample, class Value>
void expectChecksum(const Member<Sample, Value>& member) {
  using Call = Arguments<Sample, Value>;
  Checksum checksum;
  const auto add = [&](const Images<Call>& images) {
    checksum.add(member.run(images.call()));
    checksum.add(images.dst);
  };
  forCases(member.name + " checksum", 24,
           [&](Random& random) { add(Images<Call>(random, drawSize(random), member.channels)); });

  // A photograph and itself a little further to the right.
  Random random(member.name, 1);
  const TestImage<Sample> photo = photographImage<Sample>("chelsea.png", member.channels);
  Images<Call> images(random, {photo.width() - 5, photo.height()}, member.channels);
  images.dst.forRegion([&](int x, int y, int channel) {
    images.src1.setPixel(x, y, channel, photo.pixel(x, y, channel));
    images.src2.setPixel(x, y, channel, photo.pixel(x + 5, y, channel));
  });
  images.value = 100;
  add(images);
  expectRecorded(member.name, checksum);
}

#define ABSOLUTE_DIFFERENCE(name, channels)                                   \
  ORV_MODEL_TEST(name) { expectModel(member(#name, channels, name)); }        \
  ORV_CHECK_ORDER_TEST(name) { expectChecks(member(#name, channels, name)); } \
  ORV_CHECKSUM_TEST(name) { expectChecksum(member(#name, channels, name)); }

ABSOLUTE_DIFFERENCE(orviAbsDiff_8u_C1R, 1)
ABSOLUTE_DIFFERENCE(orviAbsDiff_8u_C3R, 3)
ABSOLUTE_DIFFERENCE(orviAbsDiff_16u_C1R, 1)
ABSOLUTE_DIFFERENCE(orviAbsDiff_32f_C1R, 1)
ABSOLUTE_DIFFERENCE(orviAbsDiffC_8u_C1R, 1)
ABSOLUTE_DIFFERENCE(orviAbsDiffC_16u_C1R, 1)
ABSOLUTE_DIFFERENCE(orviAbsDiffC_32f_C1R, 1)

// ----------------------------------------------------------------------------------------------------------- By hand

/// Every path of a row treats a value alike: the same sample 40 times over, at every width and four address residues.
template <class Sample, class Run>
void expectEverywhere(Sample source, Sample expected, Run run) {
  for (const int residue : {0, 2, 16, 1})
    for (int width = 1; width <= 40; ++width) {
      const GuardedBlock src("src", width * static_cast<int>(sizeof(Sample)), residue);
      const GuardedBlock dst("dst", width * static_cast<int>(sizeof(Sample)), residue);
      for (int x = 0; x < width; ++x) store(src.as<Sample>(), 0, x, 0, source);
      const int step = width * static_cast<int>(sizeof(Sample));
      EXPECT_EQ(orvStsOk, run(src.as<const Sample>(), step, dst.as<Sample>(), OrvSize{width, 1}));
      using Bits = BitsOf<Sample>;
      for (int x = 0; x < width; ++x)
        EXPECT_EQ(std::bit_cast<Bits>(expected), load(dst.as<Bits>(), 0, x, 0)) << "width " << width << ", x " << x;
    }
}

TEST(AbsoluteDifference, ConstantIsClampedToTheSample) {
  const auto to8u = [](int32_t value) {
    return [value](const uint8_t* src, int step, uint8_t* dst, OrvSize roi) {
      return checkedCall(orviAbsDiffC_8u_C1R, src, step, dst, step, roi, value);
    };
  };
  expectEverywhere<uint8_t>(77, 77, to8u(-1));
  expectEverywhere<uint8_t>(77, 77, to8u(INT32_MIN));
  expectEverywhere<uint8_t>(77, 178, to8u(1000));
  expectEverywhere<uint8_t>(77, 178, to8u(300));
  expectEverywhere<uint8_t>(77, 178, to8u(255));
  expectEverywhere<uint8_t>(77, 177, to8u(254));
  expectEverywhere<uint8_t>(77, 76, to8u(1));
  const auto to16u = [](int32_t value) {
    return [value](const uint16_t* src, int step, uint16_t* dst, OrvSize roi) {
      return checkedCall(orviAbsDiffC_16u_C1R, src, step, dst, step, roi, value);
    };
  };
  expectEverywhere<uint16_t>(7, 65528, to16u(65535));
  expectEverywhere<uint16_t>(7, 65528, to16u(65536));
  expectEverywhere<uint16_t>(7, 65528, to16u(INT32_MAX));
  expectEverywhere<uint16_t>(7, 65527, to16u(65534));
  expectEverywhere<uint16_t>(7, 7, to16u(-65536));
}

TEST(AbsoluteDifference, FloatClearsTheSignOfZeroAndOfNan) {
  const auto to = [](float value) {
    return [value](const float* src, int step, float* dst, OrvSize roi) {
      return checkedCall(orviAbsDiffC_32f_C1R, src, step, dst, step, roi, value);
    };
  };
  const auto nan = [](uint32_t bits) { return std::bit_cast<float>(bits); };
  expectEverywhere(-0.0f, 0.0f, to(0.0f));
  expectEverywhere(-5.0f, 7.0f, to(2.0f));
  expectEverywhere(1.0f, 1e6f, to(1e6f + 1.0f));
  expectEverywhere(nan(0xffc12345u), nan(0x7fc12345u), to(2.0f));
  expectEverywhere(std::bit_cast<float>(infinityBits<float>), nan(0x7fc00000u), to(std::bit_cast<float>(0x7f800000u)));
}

TEST(AbsoluteDifference, WholeRangeOf16Bits) {
  const std::vector<uint16_t> top(40, 65535);
  expectEverywhere<uint16_t>(0, 65535, [&](const uint16_t* src, int step, uint16_t* dst, OrvSize roi) {
    return checkedCall(orviAbsDiff_16u_C1R, src, step, top.data(), 80, dst, step, roi);
  });
  expectEverywhere<uint16_t>(0, 65535, [&](const uint16_t* src, int step, uint16_t* dst, OrvSize roi) {
    return checkedCall(orviAbsDiff_16u_C1R, top.data(), 80, src, step, dst, step, roi);
  });
}

TEST(AbsoluteDifference, ThreeChannelsNeedThreeTimesTheStep) {
  const std::vector<uint8_t> src(64);
  std::vector<uint8_t> dst(64, 9);
  const OrvSize roi{7, 2};
  EXPECT_EQ(orvStsBadStep, checkedCall(orviAbsDiff_8u_C3R, src.data(), 21, src.data(), 21, dst.data(), 20, roi));
  EXPECT_EQ(std::vector<uint8_t>(64, 9), dst);
  EXPECT_EQ(orvStsOk, checkedCall(orviAbsDiff_8u_C3R, src.data(), 21, src.data(), 21, dst.data(), 21, roi));
}

TEST(AbsoluteDifference, ManyThreadsShareTheirSources) {
  using Call = Arguments<uint16_t, int32_t>;
  Random random("absolute difference threads", 0);
  const Images<Call> images(random, {333, 47}, 1);
  const auto difference = member("difference", 1, orviAbsDiff_16u_C1R);
  const TestImage<uint16_t> expected(images.dst);
  difference.model(images.call(expected));
  images.protectInputs();
  concurrently(4, 8, [&](int) {
    const TestImage<uint16_t> own(images.dst);
    EXPECT_EQ(orvStsOk, difference.run(images.call(own)));
    own.expectSame(expected);
  });
}

}  // namespace
}  // namespace orvtest
