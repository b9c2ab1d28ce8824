// The gradient vectors, with every subset of their outputs, against their reference model.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "filters/derivative_model.h"
#include "filters/derivatives.h"
#include "filters/filter_support.h"
#include "support/cases.h"
#include "support/check_order.h"
#include "support/checked_call.h"

namespace orvtest {
namespace {

template <class Source>
using ResultOf = std::conditional_t<std::is_same_v<Source, float>, float, int16_t>;

template <class Source>
struct Call {
  using Result = ResultOf<Source>;
  const Source* src;
  int srcStep;
  Result* gx;
  int gxStep;
  Result* gy;
  int gyStep;
  Result* mag;
  int magStep;
  float* angle;
  int angleStep;
  OrvSize roi;
  OrvMaskCode mask;
  OrvNormCode norm;
  OrvBorderMode borderMode;
  Source borderValue;
  void* buffer;
};

template <class Source, class Result = ResultOf<Source>>
using Function = OrvStatus(const Source*, int, Result*, int, Result*, int, Result*, int, float*, int, OrvSize,
                           OrvMaskCode, OrvNormCode, OrvBorderMode, Source, void*);

template <class Source>
OrvStatus run(Function<Source>* function, const Call<Source>& c) {
  return checkedCall(function, c.src, c.srcStep, c.gx, c.gxStep, c.gy, c.gyStep, c.mag, c.magStep, c.angle, c.angleStep,
                     c.roi, c.mask, c.norm, c.borderMode, c.borderValue, c.buffer);
}

template <class Source>
struct Member {
  Function<Source>* function;
  size_t vertical, horizontal;  ///< entries of the table
  std::string name;
};

template <class Source>
GuardedBlock gradientBuffer(OrvSize roi, OrvMaskCode mask, int residue) {
  int size = -1;
  const OrvDataType type = std::is_same_v<Source, float> ? orvDataType32f : orvDataType8u;
  EXPECT_EQ(orvStsOk, orv::orviGradientVectorGetBufferSize(roi, mask, type, 1, &size));
  GuardedBlock buffer("buffer", size, residue);
  buffer.fill(0xa5);
  return buffer;
}

/// The angle has 21 bits; one below the normal numbers has what its last place allows.
void expectAngle(double exact, float got) {
  if (std::isnan(exact)) {
    EXPECT_TRUE(isNan(got));
    return;
  }
  const double slack =
      std::ldexp(std::fabs(exact), -21) + static_cast<double>(std::numeric_limits<float>::denorm_min());
  EXPECT_NEAR(exact, static_cast<double>(got), slack);
  EXPECT_EQ(std::signbit(exact), std::signbit(got));
}

enum Output { hasGx = 1, hasGy = 2, hasMagnitude = 4, hasAngle = 8 };

template <class Source>
void expectSubset(Random& random, const Member<Source>& member, OrvMaskCode mask, int subset) {
  using Result = ResultOf<Source>;
  const int word = drawFilterWord(random);
  const OrvNormCode norm = random.oneIn(2) ? 2 : 4;
  const OrvSize size = random.oneIn(4) ? OrvSize{random.between(1, 9), random.between(1, 9)} : drawSize(random);
  const Values values = random.pick({Values::few, Values::ordinary, Values::finite, Values::anything});
  const int radius = mask == orvMask3x3 ? 1 : 2;
  const DrawOptions options{.values = values, .margins = marginsOf(word, radius, radius)};
  const auto src = drawImage<Source>(random, "src", size, options);
  const auto gx = drawImage<Result>(random, "gx", size);
  const auto gy = drawImage<Result>(random, "gy", size);
  const auto mag = drawImage<Result>(random, "mag", size);
  const auto angle = drawImage<float>(random, "angle", size);
  const Source borderValue = drawSample<Source>(random, values);
  const TestImage<Result> expectedGx(gx), expectedGy(gy), expectedMag(mag);
  const TestImage<float> angleBefore(angle);
  std::vector<double> angles;
  for (int y = 0; y < size.height; ++y)
    for (int x = 0; x < size.width; ++x) {
      const auto dx = model::derivativeAt(viewOf(src), member.vertical, mask, x, y, word, borderValue);
      const auto dy = model::derivativeAt(viewOf(src), member.horizontal, mask, x, y, word, borderValue);
      if (subset & hasGx)
        expectedGx.setPixel(x, y, static_cast<Result>(dx));
      if (subset & hasGy)
        expectedGy.setPixel(x, y, static_cast<Result>(dy));
      if (subset & hasMagnitude)
        expectedMag.setPixel(x, y, model::gradientMagnitude(dx, dy, norm));
      angles.push_back(std::atan2(static_cast<double>(dy), static_cast<double>(dx)));
    }
  src.protectReadOnly();
  const GuardedBlock buffer = gradientBuffer<Source>(size, mask, random.below(64));
  const Call<Source> call{src.data(),
                          src.step(),
                          subset & hasGx ? gx.data() : nullptr,
                          gx.step(),
                          subset & hasGy ? gy.data() : nullptr,
                          gy.step(),
                          subset & hasMagnitude ? mag.data() : nullptr,
                          mag.step(),
                          subset & hasAngle ? angle.data() : nullptr,
                          angle.step(),
                          size,
                          mask,
                          norm,
                          word,
                          borderValue,
                          buffer.data()};
  EXPECT_EQ(orvStsOk, run(member.function, call));
  expectSameButNans(expectedGx, gx);
  expectSameButNans(expectedGy, gy);
  expectSameButNans(expectedMag, mag);
  if (subset & hasAngle) {
    for (int y = 0; y < size.height && !testing::Test::HasFailure(); ++y)
      for (int x = 0; x < size.width && !testing::Test::HasFailure(); ++x) {
        SCOPED_TRACE(testing::Message() << "angle at " << x << ", " << y);
        expectAngle(angles[static_cast<size_t>(y * size.width + x)], angle.pixel(x, y));
        angle.setBits(x, y, 0, angleBefore.bits(x, y));  // what remains are the bytes around the angles
      }
  }
  angle.expectSame(angleBefore);
}

template <class Source>
void expectModel(const Member<Source>& member, std::initializer_list<OrvMaskCode> masks) {
  for (const OrvMaskCode mask : masks)
    for (int subset = 0; subset < 16; ++subset) {
      SCOPED_TRACE(testing::Message() << "mask " << mask << ", outputs " << subset);
      forCases(member.name + std::to_string(mask + 256 * subset), 24,
               [&](Random& random) { expectSubset(random, member, mask, subset); });
    }
}

template <class Source>
void expectChecks(const Member<Source>& member) {
  using C = Call<Source>;
  using Result = ResultOf<Source>;
  const OrvSize size{9, 3};
  const TestImage<Source> src("src", {.size = size});
  const TestImage<Result> gx("gx", {.size = size}), gy("gy", {.size = size}), mag("mag", {.size = size});
  const TestImage<float> angle("angle", {.size = size});
  src.fillWith(1);
  const GuardedBlock buffer = gradientBuffer<Source>(size, orvMask5x5, 0);
  const C valid{src.data(),   src.step(),   gx.data(), gx.step(),  gy.data(), gy.step(), mag.data(), mag.step(),
                angle.data(), angle.step(), size,      orvMask3x3, 2,         1,         0,          buffer.data()};
  CheckOrder<C> order(valid, [&](const C& c) { return run(member.function, c); });
  order.watch(src, gx, gy, mag, angle, buffer);
  const auto belowOne = [](const char* key, int C::*step) {
    return valueFault(key, step, {0, -1, -4, INT32_MIN}, orvStsBadStep);
  };
  order.faults = {valueFault("borderMode", &C::borderMode, {256, 0, 2, 5, 0x10, 0xF2, 257, -1}, orvStsBadBorder),
                  nullFault("src", &C::src),
                  belowOne("srcStep", &C::srcStep),
                  nullFault("buffer", &C::buffer),
                  belowOne("gxStep", &C::gxStep),
                  alignFault<Result>("gxStep", &C::gxStep),
                  belowOne("gyStep", &C::gyStep),
                  alignFault<Result>("gyStep", &C::gyStep),
                  belowOne("magStep", &C::magStep),
                  alignFault<Result>("magStep", &C::magStep),
                  belowOne("angleStep", &C::angleStep),
                  alignFault<float>("angleStep", &C::angleStep),
                  valueFault("norm", &C::norm, {0, 1, 3, 5, -2}, orvStsBadArg),
                  sizeFault("roi", &C::roi),
                  valueFault("mask", &C::mask, {0, 3, 34, 53, -33}, orvStsBadMaskCode)};
  if (sizeof(Source) > 1)
    order.faults.insert(order.faults.begin() + 3, alignFault<Source>("srcStep", &C::srcStep));
  order.verify();

  // The step of an output that is left out, and the norm without a magnitude, don't matter.
  C some = valid;
  some.gx = nullptr, some.gxStep = -1;
  some.gy = nullptr, some.gyStep = 3;
  some.mag = nullptr, some.magStep = 0, some.norm = 77;
  EXPECT_EQ(orvStsOk, run(member.function, some));
  some.angle = nullptr, some.angleStep = 0;
  EXPECT_EQ(orvStsOk, run(member.function, some));
}

const Member<uint8_t> sobelBytes = {orv::orviGradientVectorSobel_8u16s_C1R, model::sobelVert, model::sobelHoriz,
                                    "orviGradientVectorSobel_8u16s_C1R"};
const Member<float> sobelFloats = {orv::orviGradientVectorSobel_32f_C1R, model::sobelVert, model::sobelHoriz,
                                   "orviGradientVectorSobel_32f_C1R"};
const Member<uint8_t> scharrBytes = {orv::orviGradientVectorScharr_8u16s_C1R, model::scharrVert, model::scharrHoriz,
                                     "orviGradientVectorScharr_8u16s_C1R"};
const Member<float> scharrFloats = {orv::orviGradientVectorScharr_32f_C1R, model::scharrVert, model::scharrHoriz,
                                    "orviGradientVectorScharr_32f_C1R"};

TEST(GradientVectors, SobelOfBytes) { expectModel(sobelBytes, {orvMask3x3, orvMask5x5}); }
TEST(GradientVectors, SobelOfFloats) { expectModel(sobelFloats, {orvMask3x3, orvMask5x5}); }
TEST(GradientVectors, ScharrOfBytes) { expectModel(scharrBytes, {orvMask3x3}); }
TEST(GradientVectors, ScharrOfFloats) { expectModel(scharrFloats, {orvMask3x3}); }

TEST(GradientVectors, Checks) {
  expectChecks(sobelBytes);
  expectChecks(sobelFloats);
  expectChecks(scharrBytes);
  expectChecks(scharrFloats);
}

TEST(GradientVectors, ScharrHasTheSmallMaskOnly) {
  const OrvSize size{9, 9};
  const TestImage<uint8_t> src("src", {.size = size});
  const TestImage<int16_t> gx("gx", {.size = size});
  src.fillWith(1);
  const GuardedBlock buffer = gradientBuffer<uint8_t>(size, orvMask5x5, 0);
  EXPECT_EQ(orvStsBadMaskCode,
            run(scharrBytes.function, {src.data(), src.step(), gx.data(), gx.step(), nullptr, 0, nullptr, 0, nullptr, 0,
                                       size, orvMask5x5, 2, 1, 0, buffer.data()}));
}

TEST(GradientVectors, MagnitudeRounds) {
  // An edge and a ramp: gx is 4 * 1, gy is 4 * 3 and so on, whose roots lie between whole numbers.
  const OrvSize size{19, 4};
  const TestImage<uint8_t> src("src", {.size = size});
  const TestImage<int16_t> mag("mag", {.size = size});
  src.forRegion([&](int x, int y, int) { src.setPixel(x, y, static_cast<uint8_t>(x + 3 * y)); });
  const GuardedBlock buffer = gradientBuffer<uint8_t>(size, orvMask3x3, 0);
  Call<uint8_t> call{src.data(), src.step(), nullptr, 0,          nullptr, 0, mag.data(), mag.step(),
                     nullptr,    0,          size,    orvMask3x3, 4,       1, 0,          buffer.data()};
  EXPECT_EQ(orvStsOk, run(sobelBytes.function, call));
  for (int x = 1; x < 18; ++x) EXPECT_EQ(25, mag.pixel(x, 1)) << "sqrt(8 * 8 + 24 * 24) is 25.3";
  call.norm = 2;
  EXPECT_EQ(orvStsOk, run(sobelBytes.function, call));
  for (int x = 1; x < 18; ++x) EXPECT_EQ(32, mag.pixel(x, 1));
}

}  // namespace
}  // namespace orvtest
