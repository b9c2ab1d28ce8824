// The colour gradient's reduction to gray against its reference model.
#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "filters/filter_support.h"
#include "filters/fixed_kernel_model.h"
#include "support/cases.h"
#include "support/check_order.h"
#include "support/checksums.h"
#include "support/concurrency.h"
#include "support/drivers.h"
#include "support/photographs.h"

namespace orvtest {
namespace {

template <class Sample>
struct Call {
  const Sample* src;
  int srcStep;
  Sample* dst;
  int dstStep;
  OrvSize roi;
  OrvNormCode norm;
};

template <class Sample>
using Function = OrvStatus(const Sample*, int, Sample*, int, OrvSize, OrvNormCode);

template <class Sample>
OrvStatus run(Function<Sample>* function, const TestImage<Sample>& src, const TestImage<Sample>& dst,
              OrvNormCode norm) {
  return checkedCall(function, src.data(), src.step(), dst.data(), dst.step(), dst.size(), norm);
}

template <class Sample>
void expectModel(Function<Sample>* function, const std::string& name) {
  for (const OrvNormCode norm : {0, 1, 2})
    forCases(name + std::to_string(norm), 150, [&](Random& random) {
      const OrvSize size = drawSize(random);
      const Values values = random.pick({Values::few, Values::ordinary, Values::finite, Values::anything});
      const auto src = drawImage<Sample>(random, "src", size, {.channels = 3, .values = values});
      const auto dst = drawImage<Sample>(random, "dst", size);
      const TestImage<Sample> expected(dst);
      expected.forRegion([&](int x, int y, int) {
        expected.setPixel(x, y, model::colorToGray(src.pixel(x, y, 0), src.pixel(x, y, 1), src.pixel(x, y, 2), norm));
      });
      src.protectReadOnly();
      EXPECT_EQ(orvStsOk, run(function, src, dst, norm));
      expectSameButNans(expected, dst);
    });
}

template <class Sample>
void expectChecks(Function<Sample>* function) {
  using C = Call<Sample>;
  const OrvSize size{9, 3};
  const TestImage<Sample> src("src", {.size = size, .channels = 3}), dst("dst", {.size = size});
  src.fillWith(1);
  CheckOrder<C> order({src.data(), src.step(), dst.data(), dst.step(), size, 2}, [&](const C& c) {
    return checkedCall(function, c.src, c.srcStep, c.dst, c.dstStep, c.roi, c.norm);
  });
  order.watch(src, dst);
  order.faults = {nullFault("src", &C::src),
                  nullFault("dst", &C::dst),
                  sizeFault("roi", &C::roi),
                  rowTooLongFault("roi", &C::roi),
                  stepFault("srcStep", &C::srcStep, src.step()),
                  stepFault("dstStep", &C::dstStep, dst.step())};
  if (sizeof(Sample) > 1) {
    order.faults.push_back(alignFault<Sample>("srcStep", &C::srcStep));
    order.faults.push_back(alignFault<Sample>("dstStep", &C::dstStep));
  }
  order.faults.push_back(valueFault("norm", &C::norm, {3, 4, -1, INT32_MIN, INT32_MAX}, orvStsBadArg));
  order.verify();
}

template <class Sample>
void expectChecksum(Function<Sample>* function, const std::string& name) {
  const auto photo = photographImage<Sample>("chelsea.png", 3);
  const TestImage<Sample> dst("dst", {.size = photo.size()});
  Checksum checksum;
  for (const OrvNormCode norm : {0, 1, 2}) {
    checksum.add(run(function, photo, dst, norm));
    checksum.add(dst);
    forCases(name + " checksum", 20, [&](Random& random) {
      const OrvSize size = drawSize(random);
      const auto src = drawImage<Sample>(random, "src", size, {.channels = 3, .values = Values::ordinary});
      const TestImage<Sample> gray("gray", {.size = size});
      checksum.add(run(function, src, gray, norm));
      checksum.add(gray);
    });
  }
  expectRecorded(name, checksum);
}

#define COLOR_TO_GRAY(name)                          \
  ORV_MODEL_TEST(name) { expectModel(name, #name); } \
  ORV_CHECK_ORDER_TEST(name) { expectChecks(name); } \
  ORV_CHECKSUM_TEST(name) { expectChecksum(name, #name); }

COLOR_TO_GRAY(orviGradientColorToGray_8u_C3C1R)
COLOR_TO_GRAY(orviGradientColorToGray_16u_C3C1R)
COLOR_TO_GRAY(orviGradientColorToGray_32f_C3C1R)

// ---------------------------------------------------------------------------------------------------------- By hand

/// The result for rows of one pixel repeated, which must be the same at every place of the row.
template <class Sample>
Sample grayOf(Function<Sample>* function, Sample a, Sample b, Sample c, OrvNormCode norm) {
  const OrvSize size{37, 2};
  const TestImage<Sample> src("src", {.size = size, .channels = 3}), dst("dst", {.size = size});
  src.forRegion([&](int x, int y, int channel) {
    src.setPixel(x, y, channel, channel == 0 ? a : channel == 1 ? b : c);
  });
  EXPECT_EQ(orvStsOk, run(function, src, dst, norm));
  dst.forRegion([&](int x, int y, int) { EXPECT_EQ(dst.bits(0, 0), dst.bits(x, y)) << "column " << x; });
  return dst.pixel(0, 0);
}

TEST(ColorGradient, BytesByValue) {
  const auto gray = [](int a, int b, int c, OrvNormCode norm) {
    return int{grayOf(orviGradientColorToGray_8u_C3C1R, static_cast<uint8_t>(a), static_cast<uint8_t>(b),
                      static_cast<uint8_t>(c), norm)};
  };
  EXPECT_EQ(9, gray(3, 9, 4, 0));
  EXPECT_EQ(255, gray(255, 255, 255, 1));
  EXPECT_EQ((16 * 1365 + 2048) >> 12, gray(3, 9, 4, 1));
  EXPECT_EQ(0, gray(0, 1, 0, 1));
  EXPECT_EQ(1, gray(0, 1, 1, 1));
  EXPECT_EQ(255, gray(255, 255, 255, 2));
  EXPECT_EQ(6, gray(3, 9, 4, 2));      // sqrt(106 / 3) is 5.94
  EXPECT_EQ(147, gray(255, 0, 0, 2));  // 147.22
}

TEST(ColorGradient, WordsByValue) {
  const auto gray = [](int a, int b, int c, OrvNormCode norm) {
    return int{grayOf(orviGradientColorToGray_16u_C3C1R, static_cast<uint16_t>(a), static_cast<uint16_t>(b),
                      static_cast<uint16_t>(c), norm)};
  };
  EXPECT_EQ(65535, gray(3, 65535, 40000, 0));
  EXPECT_EQ(65531, gray(65535, 65535, 65535, 1));  // 5461 / 16384 is a little less than a third
  EXPECT_EQ((196604 * 5461 + 8192) >> 14, gray(65535, 65535, 65534, 1));
  EXPECT_EQ(65535, gray(65535, 65535, 65535, 2)) << "the sum of squares takes 34 bits";
  EXPECT_EQ(60000, gray(60000, 60000, 60000, 2));
  EXPECT_EQ(37837, gray(65535, 0, 0, 2));      // 65535 / sqrt(3) is 37836.65
  EXPECT_EQ(53509, gray(65535, 0, 65535, 2));  // 65535 * sqrt(2 / 3) is 53509.10
}

TEST(ColorGradient, FloatsByValue) {
  const auto gray = [](float a, float b, float c, OrvNormCode norm) {
    return grayOf(orviGradientColorToGray_32f_C3C1R, a, b, c, norm);
  };
  EXPECT_EQ(9.0f, gray(3, -9, 4, 0));
  EXPECT_EQ(16.0f, gray(3, -9, 4, 1)) << "not divided by three";
  EXPECT_EQ(3.0f, gray(-3, 3, -3, 2));
  EXPECT_EQ(std::sqrt(1.0f / 3.0f), gray(1, 0, 0, 2));
  EXPECT_EQ(std::sqrt(0x1p24f / 3.0f), gray(4096, 1, 0, 2)) << "the second square is lost";
  // 7 / 3 and 7 times the reciprocal of 3 differ in their last bit, and 25 / 3 likewise: it is a division.
  for (const float square : {1.0f, 4.0f, 9.0f, 25.0f, 49.0f, 121.0f})
    EXPECT_EQ(std::sqrt(square / 3.0f), gray(0, 0, std::sqrt(square), 2));
  const float inf = std::numeric_limits<float>::infinity();
  EXPECT_EQ(inf, gray(-inf, 0, 1, 0));
  EXPECT_EQ(inf, gray(1, -inf, 1, 1));
  EXPECT_EQ(inf, gray(1e30f, 0, 0, 2)) << "the square overflows";
}

/// max(max(|a|, |b|), |c|) with x > y ? x : y.
TEST(ColorGradient, MaximumTakesTheSecondOfAPairWithANan) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const auto maximum = [](float a, float b, float c) { return grayOf(orviGradientColorToGray_32f_C3C1R, a, b, c, 0); };
  EXPECT_EQ(5.0f, maximum(nan, 2, 5));
  EXPECT_EQ(2.0f, maximum(nan, 2, 1));
  EXPECT_EQ(1.0f, maximum(7, nan, 1));
  EXPECT_TRUE(std::isnan(maximum(7, 8, nan)));
}

TEST(ColorGradient, CallsFromSeveralThreads) {
  const auto photo = photographImage<uint16_t>("chelsea.png", 3);
  const TestImage<uint16_t> expected("expected", {.size = photo.size()});
  EXPECT_EQ(orvStsOk, run(orviGradientColorToGray_16u_C3C1R, photo, expected, 2));
  std::vector<TestImage<uint16_t>> results;
  for (int thread = 0; thread < 4; ++thread) results.emplace_back("dst", Shape{.size = photo.size()});
  concurrently(4, 3, [&](int thread) {
    const auto& dst = results[static_cast<size_t>(thread)];
    EXPECT_EQ(orvStsOk,
              orviGradientColorToGray_16u_C3C1R(photo.data(), photo.step(), dst.data(), dst.step(), photo.size(), 2));
  });
  for (const auto& dst : results) expectSamePixels(expected, dst);
}

}  // namespace
}  // namespace orvtest
