// The box filter against its reference model.
#include "filters/box.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "filters/derivative_model.h"
#include "filters/filter_support.h"
#include "support/cases.h"
#include "support/check_order.h"
#include "support/checked_call.h"

namespace orvtest {
namespace {

struct Call {
  const float* src;
  int srcStep;
  float* dst;
  int dstStep;
  OrvSize roi;
  OrvSize maskSize;
  OrvBorderMode borderMode;
  float borderValue;
  void* buffer;
};

OrvStatus run(const Call& c) {
  return checkedCall(orv::orviFilterBoxBorder_32f_C1R, c.src, c.srcStep, c.dst, c.dstStep, c.roi, c.maskSize,
                     c.borderMode, c.borderValue, c.buffer);
}

int bufferSize(OrvSize roi, OrvSize maskSize) {
  int size = -1;
  EXPECT_EQ(orvStsOk, checkedCall(orv::orviFilterBoxBorderGetBufferSize, roi, maskSize, orvDataType32f, 1, &size));
  return size;
}

TEST(BoxFilter, Model) {
  for (const int word : filterBorderWords()) {
    SCOPED_TRACE(testing::Message() << "border word 0x" << std::hex << word);
    forCases("box filter " + std::to_string(word), 12, [&](Random& random) {
      const OrvSize size = random.oneIn(4) ? OrvSize{random.between(1, 6), random.between(1, 6)}
                                           : OrvSize{random.between(1, 40), random.between(1, 8)};
      const OrvSize window{random.between(1, 9), random.between(1, 9)};
      const Values values = random.pick({Values::few, Values::ordinary, Values::finite, Values::anything});
      const DrawOptions options{.values = values, .margins = marginsOf(word, window.width / 2, window.height / 2)};
      const auto src = drawImage<float>(random, "src", size, options);
      const auto dst = drawImage<float>(random, "dst", size);
      const float borderValue = drawSample<float>(random, values);
      const TestImage<float> expected(dst);
      expected.forRegion([&](int x, int y, int) {
        expected.setPixel(x, y, model::boxMean(viewOf(src), window, x, y, word, borderValue));
      });
      src.protectReadOnly();
      const GuardedBlock buffer("buffer", bufferSize(size, window), random);
      buffer.fill(random);
      EXPECT_EQ(orvStsOk,
                run({src.data(), src.step(), dst.data(), dst.step(), size, window, word, borderValue, buffer.data()}));
      expectSameButNans(expected, dst);
    });
  }
}

TEST(BoxFilter, Checks) {
  const OrvSize size{9, 3};
  const TestImage<float> src("src", {.size = size}), dst("dst", {.size = size});
  src.fillWith(1);
  const GuardedBlock buffer("buffer", bufferSize(size, {3, 4}));
  CheckOrder<Call> order({src.data(), src.step(), dst.data(), dst.step(), size, {3, 4}, 1, 0, buffer.data()}, run);
  order.watch(src, dst, buffer);
  order.faults = {nullFault("src", &Call::src),
                  nullFault("dst", &Call::dst),
                  nullFault("buffer", &Call::buffer),
                  sizeFault("roi", &Call::roi),
                  sizeFault("maskSize", &Call::maskSize),
                  stepFault("srcStep", &Call::srcStep, src.step()),
                  stepFault("dstStep", &Call::dstStep, dst.step()),
                  alignFault<float>("srcStep", &Call::srcStep),
                  alignFault<float>("dstStep", &Call::dstStep),
                  valueFault("borderMode", &Call::borderMode, {256, 0, 2, 5, 0x10, 0xF2, 257, -1}, orvStsBadBorder)};
  order.verify();
}

TEST(BoxFilter, ChecksOfTheSizeQuery) {
  struct C {
    OrvSize roi, maskSize;
    OrvDataType dataType;
    int numChannels;
    int* bufferSize;
  };
  const GuardedBlock size("bufferSize", sizeof(int));
  CheckOrder<C> order({{9, 3}, {3, 3}, orvDataType32f, 1, size.as<int>()}, [](const C& c) {
    return checkedCall(orv::orviFilterBoxBorderGetBufferSize, c.roi, c.maskSize, c.dataType, c.numChannels,
                       c.bufferSize);
  });
  order.watch(size);
  order.faults = {nullFault("bufferSize", &C::bufferSize),
                  sizeFault("roi", &C::roi),
                  sizeFault("maskSize", &C::maskSize),
                  valueFault("dataType", &C::dataType, {0, 1, 5, 7, 19, -1}, orvStsBadAlgorithm),
                  valueFault("numChannels", &C::numChannels, {0, 2, 3, 4, -1}, orvStsBadDataType),
                  {"too large",
                   {"roi", "maskSize"},
                   orvStsTooLarge,
                   {[](C& c) { c.roi.width = INT32_MAX; }, [](C& c) { c.roi.width = 0x10000000; },
                    [](C& c) { c.maskSize.height = INT32_MAX; }}}};
  order.verify();
}

TEST(BoxFilter, BufferSizesByValue) {
  EXPECT_EQ(2 * 4 * 1 + 4 * 1 + 96, bufferSize({1, 1}, {1, 1}));
  EXPECT_EQ(2 * 4 * (640 + 6) + 4 * 5 + 96, bufferSize({640, 480}, {7, 5}));
}

TEST(BoxFilter, EvenWindowsReachFurtherLeftAndUp) {
  const OrvSize size{21, 5};
  const TestImage<float> src("src", {.size = size}), dst("dst", {.size = size});
  src.fillWith(0);
  src.setPixel(10, 2, 8.0f);
  const GuardedBlock buffer("buffer", bufferSize(size, {4, 2}));
  EXPECT_EQ(
      orvStsOk,
      run({src.data(), src.step(), dst.data(), dst.step(), size, {4, 2}, orvBorderReplicate, 0.0f, buffer.data()}));
  dst.forRegion([&](int x, int y, int) {
    const bool reached = x >= 9 && x <= 12 && (y == 2 || y == 3);
    EXPECT_EQ(reached ? 1.0f : 0.0f, dst.pixel(x, y)) << x << ", " << y;
  });
}

}  // namespace
}  // namespace orvtest
