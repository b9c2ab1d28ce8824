// The functions of one value against the system library's in extended precision.
#include "frame/scalar_functions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

#include "support/random.h"

namespace orvtest {
namespace {

constexpr int rounds = 20000;

/// Within `ulps` of the last place of the exact value.
template <class Real>
void expectNear(long double exact, Real got, long double ulps, const char* what, double argument) {
  int exponent = 0;
  std::frexp(exact, &exponent);
  const int digits = std::numeric_limits<Real>::digits, lowest = std::numeric_limits<Real>::min_exponent;
  const long double lastPlace = std::ldexp(1.0L, std::max(exponent, lowest) - digits);
  ASSERT_LE(std::fabs(static_cast<long double>(got) - exact), ulps * lastPlace) << what << " of " << argument;
}

double drawDouble(Random& random) { return std::bit_cast<double>(drawBits<double>(random, Values::finite)); }

TEST(ScalarFunctions, RootsAreCorrectlyRounded) {
  Random random("scalar roots", 0);
  for (int round = 0; round < rounds; ++round) {
    const double value = std::fabs(drawDouble(random));
    expectNear(std::sqrt(static_cast<long double>(value)), orv::orvsSqrtOne(value), 0.5005L, "double root", value);
    const float single = std::fabs(std::bit_cast<float>(drawBits<float>(random, Values::finite)));
    const double exact = std::sqrt(static_cast<double>(single));
    ASSERT_EQ(static_cast<float>(exact), orv::orvsSqrtOneF(single)) << single;
  }
  EXPECT_EQ(3.0, orv::orvsSqrtOne(9.0));
  EXPECT_TRUE(std::signbit(orv::orvsSqrtOne(-0.0)));
  EXPECT_TRUE(std::isnan(orv::orvsSqrtOne(-1.0)));
  EXPECT_TRUE(std::isnan(orv::orvsSqrtOneF(-1.0f)));
  EXPECT_EQ(HUGE_VALF, orv::orvsSqrtOneF(HUGE_VALF));
}

TEST(ScalarFunctions, MagnitudeDropsTheSign) {
  EXPECT_EQ(2.5, orv::orvsFabsOne(-2.5));
  EXPECT_EQ(2.5, orv::orvsFabsOne(2.5));
  EXPECT_FALSE(std::signbit(orv::orvsFabsOne(-0.0)));
  EXPECT_EQ(HUGE_VAL, orv::orvsFabsOne(-HUGE_VAL));
}

TEST(ScalarFunctions, TrigonometryIsGoodToAnUlp) {
  Random random("scalar trigonometry", 0);
  for (int round = 0; round < rounds; ++round) {
    const auto mantissa = static_cast<double>(random.between(-1000000, 1000000));
    const double angle = std::ldexp(mantissa, -random.between(10, 40));
    expectNear(std::sin(static_cast<long double>(angle)), orv::orvsSinOne(angle), 1.0L, "sine", angle);
    expectNear(std::cos(static_cast<long double>(angle)), orv::orvsCosOne(angle), 1.0L, "cosine", angle);
    const double y = drawDouble(random), x = drawDouble(random);
    expectNear(std::atan2(static_cast<long double>(y), static_cast<long double>(x)), orv::orvsAtan2One(y, x), 1.0L,
               "arctangent", y);
  }
  EXPECT_EQ(0.0, orv::orvsSinOne(0.0));
  EXPECT_EQ(1.0, orv::orvsCosOne(0.0));
}

TEST(ScalarFunctions, ExponentialIsGoodToAnUlp) {
  Random random("scalar exponential", 0);
  for (int round = 0; round < rounds; ++round) {
    const float value = static_cast<float>(random.between(-100000, 88000)) / 1000.0f;
    expectNear(std::exp(static_cast<long double>(value)), orv::orvsExpOneF(value), 1.0L, "exponential",
               static_cast<double>(value));
  }
  EXPECT_EQ(1.0f, orv::orvsExpOneF(0.0f));
  EXPECT_EQ(0.0f, orv::orvsExpOneF(-1000.0f));
  EXPECT_EQ(HUGE_VALF, orv::orvsExpOneF(1000.0f));
}

}  // namespace
}  // namespace orvtest
