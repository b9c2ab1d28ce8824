// The vector arctangent, measured against the system library's in double precision.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <climits>
#include <cmath>
#include <limits>
#include <vector>

#include "frame/vector_kernels.h"
#include "support/cases.h"
#include "support/check_order.h"
#include "support/checked_call.h"
#include "support/image.h"

namespace orvtest {
namespace {

std::vector<float> arctangents(const std::vector<float>& y, const std::vector<float>& x) {
  std::vector<float> angles(y.size());
  EXPECT_EQ(orvStsOk,
            checkedCall(orv::orvsAtan2_32f_A21, y.data(), x.data(), angles.data(), static_cast<int>(y.size())));
  return angles;
}

/// The largest relative error. An angle below the normal numbers has fewer bits: half its last place is allowed.
double largestError(const std::vector<float>& y, const std::vector<float>& x) {
  const std::vector<float> angles = arctangents(y, x);
  double largest = 0;
  for (size_t i = 0; i < y.size(); ++i) {
    const double exact = std::atan2(static_cast<double>(y[i]), static_cast<double>(x[i]));
    const double slack = std::numeric_limits<float>::denorm_min();
    const double error = std::max(std::fabs(static_cast<double>(angles[i]) - exact) - slack, 0.0);
    if (error > 0)
      largest = std::max(largest, error / std::fabs(exact));
    if (error > std::ldexp(std::fabs(exact), -21)) {
      ADD_FAILURE() << "atan2(" << y[i] << ", " << x[i] << ") is " << exact << ", got " << angles[i];
      break;
    }
  }
  return largest;
}

void expect21Bits(const std::vector<float>& y, const std::vector<float>& x) {
  const double largest = largestError(y, x);
  EXPECT_LE(largest, std::ldexp(1.0, -21));
  testing::Test::RecordProperty("bits", largest > 0 ? std::to_string(-std::log2(largest)) : "exact");
}

TEST(Arctangent, AllDirectionsHave21Bits) {
  std::vector<float> y, x;
  Random random("arctangent directions", 0);
  for (int i = 0; i < 200000; ++i) {
    const double angle = 6.283185307179586 * (i + static_cast<double>(random.below(1000)) / 1000) / 200000;
    const double length = std::ldexp(1.0, random.between(-20, 20));
    y.push_back(static_cast<float>(length * std::sin(angle)));
    x.push_back(static_cast<float>(length * std::cos(angle)));
  }
  expect21Bits(y, x);
}

TEST(Arctangent, WholeNumbersHave21Bits) {
  std::vector<float> y, x;
  for (int i = -255; i <= 255; ++i)
    for (int j = -255; j <= 255; ++j) {
      y.push_back(static_cast<float>(i));
      x.push_back(static_cast<float>(j));
    }
  expect21Bits(y, x);
}

TEST(Arctangent, NumbersOfAnyMagnitudeHave21Bits) {
  std::vector<float> y, x;
  Random random("arctangent magnitudes", 0);
  const auto draw = [&] { return std::bit_cast<float>(drawBits<float>(random, Values::finite)); };
  for (int i = 0; i < 100000; ++i) {
    y.push_back(draw());
    x.push_back(draw());
  }
  expect21Bits(y, x);
}

/// Near each multiple of an eighth of a turn, where a reduction changes its branch.
TEST(Arctangent, NeighboursOfTheDiagonalsHave21Bits) {
  std::vector<float> y, x;
  for (const float b : {1.0f, 3.0f, 1000.0f, 1e-20f, 1e20f}) {
    float a = b;
    for (int i = 0; i < 300; ++i) a = std::nextafterf(a, 0.0f);
    for (int i = 0; i < 600; ++i, a = std::nextafterf(a, HUGE_VALF))
      for (const float signA : {a, -a})
        for (const float signB : {b, -b}) {
          y.push_back(signA), x.push_back(signB);
          y.push_back(signB), x.push_back(signA);
        }
  }
  expect21Bits(y, x);
}

TEST(Arctangent, ZerosAndInfinitiesAsInC) {
  const float infinity = HUGE_VALF, largest = std::numeric_limits<float>::max();
  const float smallest = std::numeric_limits<float>::denorm_min();
  for (const float y : {0.0f, -0.0f, 1.0f, -1.0f, smallest, -smallest, largest, -largest, infinity, -infinity})
    for (const float x : {0.0f, -0.0f, 1.0f, -1.0f, smallest, -smallest, largest, -largest, infinity, -infinity}) {
      const std::vector<float> angles = arctangents(std::vector<float>(19, y), std::vector<float>(19, x));
      const double exact = std::atan2(static_cast<double>(y), static_cast<double>(x));
      for (const float angle : angles) {
        EXPECT_NEAR(exact, static_cast<double>(angle),
                    std::ldexp(std::fabs(exact), -21) + static_cast<double>(smallest))
            << y << " " << x;
        EXPECT_EQ(std::signbit(exact), std::signbit(angle)) << y << " " << x;
      }
    }
}

TEST(Arctangent, NansStay) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  for (const float other : {0.0f, 1.0f, -HUGE_VALF, nan}) {
    for (const float angle : arctangents(std::vector<float>(11, nan), std::vector<float>(11, other)))
      EXPECT_TRUE(std::isnan(angle));
    for (const float angle : arctangents(std::vector<float>(11, other), std::vector<float>(11, nan)))
      EXPECT_TRUE(std::isnan(angle));
  }
}

/// An element's result depends on nothing but the element: not on its place, its neighbours, addresses, or on dst being
/// a source.
TEST(Arctangent, EveryPlaceOfAVectorIsTreatedAlike) {
  forCases("arctangent places", 200, [](Random& random) {
    const OrvSize size{drawSize(random).width, 1};
    const auto y = drawImage<float>(random, "y", size, {.values = Values::finite});
    const auto x = drawImage<float>(random, "x", size, {.values = Values::finite});
    const auto dst = drawImage<float>(random, "dst", size);
    const int kind = random.below(3);
    const TestImage<float>& out = kind == 0 ? y : kind == 1 ? x : dst;
    const TestImage<float> expected(out);
    for (int i = 0; i < size.width; ++i)
      expected.setBits(i, 0, 0, std::bit_cast<uint32_t>(arctangents({y.pixel(i, 0)}, {x.pixel(i, 0)})[0]));
    EXPECT_EQ(orvStsOk, checkedCall(orv::orvsAtan2_32f_A21, y.data(), x.data(), out.data(), size.width));
    out.expectSame(expected);
  });
}

struct Call {
  const float *y, *x;
  float* dst;
  int length;
};

TEST(Arctangent, Checks) {
  const GuardedBlock y("y", 44), x("x", 44), dst("dst", 44);
  y.fill(0);
  x.fill(0);
  CheckOrder<Call> order({y.as<float>(), x.as<float>(), dst.as<float>(), 11},
                         [](const Call& c) { return checkedCall(orv::orvsAtan2_32f_A21, c.y, c.x, c.dst, c.length); });
  order.watch(y, x, dst);
  order.faults = {nullFault("y", &Call::y), nullFault("x", &Call::x), nullFault("dst", &Call::dst),
                  valueFault("length", &Call::length, {0, -1, INT_MIN}, orvStsBadSize)};
  order.verify();
}

}  // namespace
}  // namespace orvtest
