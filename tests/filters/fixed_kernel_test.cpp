// Laplacian, lowpass and mixed second derivative against their reference model.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

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

using model::FixedFilter;

template <class Source, class Result>
struct Call {
  const Source* src;
  int srcStep;
  Result* dst;
  int dstStep;
  OrvSize roi;
  OrvMaskCode mask;
  OrvBorderMode borderMode;
  Source borderValue;
  void* buffer;
};

template <class Source, class Result>
using Function = OrvStatus(const Source*, int, Result*, int, OrvSize, OrvMaskCode, OrvBorderMode, Source, void*);
using Query = OrvStatus(OrvSize, OrvMaskCode, int*);

/// A filter with what belongs to it.
template <class Source, class Result>
struct Member {
  Function<Source, Result>* function;
  Query* query;
  FixedFilter filter;
  std::string name;
};

template <class Source, class Result>
OrvStatus run(Function<Source, Result>* function, const Call<Source, Result>& c) {
  return checkedCall(function, c.src, c.srcStep, c.dst, c.dstStep, c.roi, c.mask, c.borderMode, c.borderValue,
                     c.buffer);
}

int bufferSize(Query* query, OrvSize roi, OrvMaskCode mask) {
  int size = -1;
  EXPECT_EQ(orvStsOk, query(roi, mask, &size));
  return size;
}

/// Filters with a buffer of exactly the queried size.
template <class Source, class Result>
OrvStatus filter(const Member<Source, Result>& member, const TestImage<Source>& src, const TestImage<Result>& dst,
                 OrvMaskCode mask, int word, Source borderValue, int residue = 0) {
  const GuardedBlock buffer("buffer", bufferSize(member.query, src.size(), mask), residue);
  buffer.fill(0xa5);
  return run(member.function, Call<Source, Result>{src.data(), src.step(), dst.data(), dst.step(), src.size(), mask,
                                                   word, borderValue, buffer.data()});
}

/// Rows of floats may lie at any address, those of 16-bit results on whole samples.
template <class Sample>
TestImage<Sample> drawFilterImage(Random& random, const char* name, OrvSize size, const DrawOptions& options = {}) {
  if constexpr (sizeof(Sample) == 2)
    return drawImage<Sample>(random, name, size, options);
  else
    return drawImageOfAnyStep<Sample>(random, name, size, options);
}

template <class Source, class Result>
void expectModel(const Member<Source, Result>& member) {
  for (const OrvMaskCode mask : {orvMask3x3, orvMask5x5})
    for (const int word : filterBorderWords()) {
      SCOPED_TRACE(testing::Message() << "mask " << mask << ", border word 0x" << std::hex << word);
      const std::string name = member.name + " " + std::to_string(mask) + " " + std::to_string(word);
      forCases(name, 4, [&](Random& random) {
        const OrvSize size = random.oneIn(4) ? OrvSize{random.between(1, 6), random.between(1, 6)} : drawSize(random);
        const Values values = random.pick({Values::few, Values::ordinary, Values::finite, Values::anything});
        const int radius = mask == orvMask3x3 ? 1 : 2;
        const auto src = drawFilterImage<Source>(random, "src", size,
                                                 {.values = values, .margins = marginsOf(word, radius, radius)});
        const auto dst = drawFilterImage<Result>(random, "dst", size);
        const Source borderValue = drawSample<Source>(random, values);
        const TestImage<Result> expected(dst);
        std::vector<Result> out(static_cast<size_t>(size.width * size.height));
        model::fixedKernelFilter(member.filter, viewOf(src), out.data(), mask, word, borderValue);
        expected.forRegion(
            [&](int x, int y, int) { expected.setPixel(x, y, out[static_cast<size_t>(y * size.width + x)]); });
        src.protectReadOnly();
        EXPECT_EQ(orvStsOk, filter(member, src, dst, mask, word, borderValue, random.below(64)));
        expectSameButNans(expected, dst);
      });
      if (testing::Test::HasFailure())
        return;
    }
}

template <class Source, class Result>
void expectChecks(const Member<Source, Result>& member) {
  using C = Call<Source, Result>;
  const OrvSize size{9, 3};
  const TestImage<Source> src("src", {.size = size});
  const TestImage<Result> dst("dst", {.size = size, .stepPadding = 64});
  src.fillWith(1);
  const GuardedBlock buffer("buffer", bufferSize(member.query, size, orvMask5x5));
  CheckOrder<C> order({src.data(), src.step(), dst.data(), dst.step(), size, orvMask5x5, 1, 0, buffer.data()},
                      [&](const C& call) { return run(member.function, call); });
  order.watch(src, dst, buffer);
  order.faults = {nullFault("src", &C::src),
                  nullFault("dst", &C::dst),
                  nullFault("buffer", &C::buffer),
                  sizeFault("roi", &C::roi),
                  rowTooLongFault("roi", &C::roi),
                  stepFault("srcStep", &C::srcStep, size.width * static_cast<int>(sizeof(Source))),
                  stepFault("dstStep", &C::dstStep, size.width * static_cast<int>(sizeof(Result)))};
  if (sizeof(Result) == 2)
    order.faults.push_back(alignFault<Result>("dstStep", &C::dstStep));
  order.faults.push_back(valueFault(
      "borderMode", &C::borderMode,
      {256, 0, 2, 4, 5, 7, 15, 0x10, 0x70, 0xE0, 0xF2, 0xF5, 257, 0x1F0, 4096 + 1, -1, -15, INT32_MIN, INT32_MAX},
      orvStsBadBorder));
  order.faults.push_back(
      valueFault("mask", &C::mask, {0, 3, 5, 32, 34, 35, 53, 54, 56, 77, 289, -33, INT32_MAX}, orvStsBadMaskCode));
  order.verify();
}

template <class Source, class Result>
void expectChecksum(const Member<Source, Result>& member) {
  Checksum checksum;
  for (const OrvMaskCode mask : {orvMask3x3, orvMask5x5}) {
    const auto photo = photographImage<Source>("camera.png");
    const TestImage<Result> dst("dst", {.size = photo.size()});
    for (const int word : {1, 3, 6}) {
      checksum.add(filter(member, photo, dst, mask, word, Source{77}));
      checksum.add(dst);
    }
    forCases(member.name + " checksum " + std::to_string(mask), 24, [&](Random& random) {
      const int word = drawFilterWord(random);
      const OrvSize size = drawSize(random);
      const auto src =
          drawImage<Source>(random, "src", size, {.values = Values::ordinary, .margins = marginsOf(word, 2, 2)});
      const TestImage<Result> small("dst", {.size = size});
      checksum.add(filter(member, src, small, mask, word, Source{5}));
      checksum.add(small);
    });
  }
  expectRecorded(member.name, checksum);
}

#define FILTER(operation, model, type, Source, Result)                                                   \
  const Member<Source, Result> operation##_##type = {                                                    \
      orviFilter##operation##Border_##type##_C1R, orviFilter##operation##GetBufferSize_##type##_C1R,     \
      FixedFilter::model, "orviFilter" #operation "Border_" #type "_C1R"};                               \
  ORV_MODEL_TEST(orviFilter##operation##Border_##type##_C1R) { expectModel(operation##_##type); }        \
  ORV_CHECK_ORDER_TEST(orviFilter##operation##Border_##type##_C1R) { expectChecks(operation##_##type); } \
  ORV_CHECKSUM_TEST(orviFilter##operation##Border_##type##_C1R) { expectChecksum(operation##_##type); }

FILTER(Laplacian, laplacian, 8u16s, uint8_t, int16_t)
FILTER(Laplacian, laplacian, 32f, float, float)
FILTER(Lowpass, lowpass, 8u, uint8_t, uint8_t)
FILTER(Lowpass, lowpass, 32f, float, float)
FILTER(SobelCross, sobelCross, 8u16s, uint8_t, int16_t)
FILTER(SobelCross, sobelCross, 32f, float, float)

// ---------------------------------------------------------------------------------------------------------- By hand

/// The result of a single 1 in the middle of zeros is the mask, turned by half a turn.
template <class Source, class Result>
std::vector<int> maskOf(const Member<Source, Result>& member, OrvMaskCode mask) {
  const TestImage<Source> src("src", {.size = {21, 9}});
  const TestImage<Result> dst("dst", {.size = {21, 9}});
  src.fillWith(0);
  src.setPixel(10, 4, 1);
  EXPECT_EQ(orvStsOk, filter(member, src, dst, mask, orvBorderReplicate, Source{0}));
  std::vector<int> entries;
  const int radius = mask == orvMask3x3 ? 1 : 2;
  for (int dy = -radius; dy <= radius; ++dy)
    for (int dx = -radius; dx <= radius; ++dx) entries.push_back(static_cast<int>(dst.pixel(10 - dx, 4 - dy)));
  return entries;
}

TEST(FixedKernelFilters, Masks) {
  const std::vector<int> laplacian3 = {2, 0, 2, 0, -8, 0, 2, 0, 2};
  const std::vector<int> laplacian5 = {2, 4, 4, 4, 2, 4, 0, -8, 0, 4, 4, -8, -24, -8, 4, 4, 0, -8, 0, 4, 2, 4, 4, 4, 2};
  const std::vector<int> cross3 = {-1, 0, 1, 0, 0, 0, 1, 0, -1};
  const std::vector<int> cross5 = {-1, -2, 0, 2, 1, -2, -4, 0, 4, 2, 0, 0, 0, 0, 0, 2, 4, 0, -4, -2, 1, 2, 0, -2, -1};
  EXPECT_EQ(laplacian3, maskOf(Laplacian_8u16s, orvMask3x3));
  EXPECT_EQ(laplacian3, maskOf(Laplacian_32f, orvMask3x3));
  EXPECT_EQ(laplacian5, maskOf(Laplacian_8u16s, orvMask5x5));
  EXPECT_EQ(laplacian5, maskOf(Laplacian_32f, orvMask5x5));
  EXPECT_EQ(cross3, maskOf(SobelCross_8u16s, orvMask3x3));
  EXPECT_EQ(cross3, maskOf(SobelCross_32f, orvMask3x3));
  EXPECT_EQ(cross5, maskOf(SobelCross_8u16s, orvMask5x5));
  EXPECT_EQ(cross5, maskOf(SobelCross_32f, orvMask5x5));
}

/// One value everywhere, border included, gives one value everywhere.
template <class Source, class Result>
void expectUniform(const Member<Source, Result>& member, OrvMaskCode mask, Source value, Result result) {
  for (const OrvSize size : {OrvSize{1, 1}, OrvSize{2, 5}, OrvSize{37, 7}})
    for (const int word : {1, 3, 6}) {
      const TestImage<Source> src("src", {.size = size});
      const TestImage<Result> dst("dst", {.size = size});
      const TestImage<Result> expected(dst);
      src.fillWith(value);
      expected.fillWith(result);
      EXPECT_EQ(orvStsOk, filter(member, src, dst, mask, word, value));
      dst.expectSame(expected);
    }
}

TEST(FixedKernelFilters, UniformImages) {
  for (const OrvMaskCode mask : {orvMask3x3, orvMask5x5}) {
    for (const int value : {0, 1, 100, 255}) {
      expectUniform(Laplacian_8u16s, mask, static_cast<uint8_t>(value), int16_t{0});
      expectUniform(SobelCross_8u16s, mask, static_cast<uint8_t>(value), int16_t{0});
      expectUniform(Laplacian_32f, mask, static_cast<float>(value), 0.0f);
      expectUniform(SobelCross_32f, mask, static_cast<float>(value), 0.0f);
    }
  }
  expectUniform(Lowpass_8u, orvMask3x3, uint8_t{255}, uint8_t{255});
  expectUniform(Lowpass_8u, orvMask5x5, uint8_t{255}, uint8_t{254});  // 6375 * 2621 / 65536 is 254.95
  expectUniform(Lowpass_32f, orvMask3x3, 255.0f, 2295.0f * 0.11111111f);
  expectUniform(Lowpass_32f, orvMask5x5, 255.0f, 6375.0f * 0.04f);
}

TEST(FixedKernelFilters, LargestResults) {
  // All positive entries of the mask, then all negative ones, meet 255.
  const TestImage<uint8_t> src("src", {.size = {5, 5}});
  const TestImage<int16_t> dst("dst", {.size = {5, 5}});
  src.fillWith(255);
  for (const auto& [x, y] : {std::pair(2, 2), std::pair(1, 2), std::pair(3, 2), std::pair(2, 1), std::pair(2, 3)})
    src.setPixel(x, y, 0);
  EXPECT_EQ(orvStsOk, filter(Laplacian_8u16s, src, dst, orvMask5x5, orvBorderReplicate, uint8_t{0}));
  EXPECT_EQ(56 * 255, dst.pixel(2, 2));
  src.forRegion([&](int x, int y, int) { src.setPixel(x, y, static_cast<uint8_t>(255 - src.pixel(x, y))); });
  EXPECT_EQ(orvStsOk, filter(Laplacian_8u16s, src, dst, orvMask5x5, orvBorderReplicate, uint8_t{0}));
  EXPECT_EQ(-56 * 255, dst.pixel(2, 2));
}

TEST(FixedKernelFilters, LowpassRoundsInTheSmallMaskAlone) {
  const TestImage<uint8_t> src("src", {.size = {24, 5}}), dst("dst", {.size = {24, 5}});
  src.fillWith(0);
  for (int x = 0; x < 24; ++x) src.setPixel(x, 2, 1);
  src.setPixel(12, 2, 2);
  src.setPixel(12, 1, 1);
  EXPECT_EQ(orvStsOk, filter(Lowpass_8u, src, dst, orvMask3x3, orvBorderReplicate, uint8_t{0}));
  EXPECT_EQ(0, dst.pixel(3, 2)) << "a third";
  EXPECT_EQ(1, dst.pixel(12, 2)) << "five ninths";
  for (int x = 0; x < 24; ++x) src.setPixel(x, 2, 5);
  src.setPixel(12, 2, 4);
  src.setPixel(12, 1, 0);
  EXPECT_EQ(orvStsOk, filter(Lowpass_8u, src, dst, orvMask5x5, orvBorderReplicate, uint8_t{0}));
  EXPECT_EQ(0, dst.pixel(12, 2)) << "24 of 25";
  EXPECT_EQ(0, dst.pixel(3, 2)) << "25 * 2621 is below 65536 even so";
  src.setPixel(3, 2, 6);
  EXPECT_EQ(orvStsOk, filter(Lowpass_8u, src, dst, orvMask5x5, orvBorderReplicate, uint8_t{0}));
  EXPECT_EQ(1, dst.pixel(3, 2));
}

TEST(FixedKernelFilters, OnlyTheTopInMemory) {
  const TestImage<uint8_t> src("src", {.size = {1, 1}, .margins = {.top = 1}});
  const TestImage<int16_t> dst("dst", {.size = {1, 1}});
  src.setPixel(0, -1, 200);
  src.setPixel(0, 0, 10);
  // The corners above lie left and right of the region, where the border value stands.
  EXPECT_EQ(orvStsOk, filter(Laplacian_8u16s, src, dst, orvMask3x3, 0x16, uint8_t{7}));
  EXPECT_EQ(2 * (4 * 7) - 8 * 10, dst.pixel(0, 0));
  const TestImage<uint8_t> mean("mean", {.size = {1, 1}});
  EXPECT_EQ(orvStsOk, filter(Lowpass_8u, src, mean, orvMask3x3, 0x16, uint8_t{7}));
  EXPECT_EQ((200 + 10 + 7 * 7 + 5) * 7280 / 65536, mean.pixel(0, 0));
}

TEST(FixedKernelFilters, FloatStepsOfAnyResidue) {
  const OrvSize size{19, 6};
  for (int excess = 0; excess < 8; ++excess) {
    const TestImage<float> src("src", {.size = size, .stepPadding = excess});
    const TestImage<float> dst("dst", {.size = size, .stepPadding = 7 - excess});
    src.forRegion([&](int x, int y, int) { src.setPixel(x, y, static_cast<float>(x * x + 3 * y)); });
    EXPECT_EQ(orvStsOk, filter(Laplacian_32f, src, dst, orvMask3x3, orvBorderReplicate, 0.0f));
    for (int x = 1; x < size.width - 1; ++x) EXPECT_EQ(8.0f, dst.pixel(x, 2)) << "excess " << excess;
  }
}

/// A band with its neighbours in memory above and below gives the rows of the whole image, whatever the band's height.
template <class Source, class Result>
void expectBandsLikeTheWhole(const Member<Source, Result>& member) {
  const auto photo = photographImage<Source>("camera.png");
  const OrvSize whole{photo.width(), 61};
  for (const OrvMaskCode mask : {orvMask3x3, orvMask5x5}) {
    const GuardedBlock buffer("buffer", bufferSize(member.query, whole, mask));
    const TestImage<Result> expected("expected", {.size = whole}), dst("dst", {.size = whole});
    const auto run = [&](const TestImage<Result>& result, int y, int height, int word) {
      EXPECT_EQ(orvStsOk, member.function(addressOf(photo.data(), photo.step(), 0, y), photo.step(),
                                          addressOf(result.data(), result.step(), 0, y), result.step(),
                                          OrvSize{whole.width, height}, mask, word, Source{9}, buffer.data()));
    };
    run(expected, 0, whole.height, 3);
    for (const int bandHeight : {7, 29, 59}) {  // the last band is as high as the mask reaches
      dst.fillWith(0);
      for (int y = 0; y < whole.height; y += bandHeight) {
        const int height = std::min(bandHeight, whole.height - y);
        run(dst, y, height, 3 | (y > 0 ? 0x10 : 0) | (y + height < whole.height ? 0x20 : 0));
      }
      expectSamePixels(expected, dst);
    }
  }
}

TEST(FixedKernelFilters, BandsLikeTheWholeImage) {
  expectBandsLikeTheWhole(Laplacian_8u16s);
  expectBandsLikeTheWhole(Lowpass_8u);
  expectBandsLikeTheWhole(SobelCross_32f);
}

TEST(FixedKernelFilters, CallsFromSeveralThreads) {
  const auto photo = photographImage<uint8_t>("camera.png");
  const TestImage<int16_t> expected("expected", {.size = photo.size()});
  EXPECT_EQ(orvStsOk, filter(Laplacian_8u16s, photo, expected, orvMask5x5, orvBorderMirror, uint8_t{0}));
  const std::vector<uint8_t> scratch(static_cast<size_t>(bufferSize(Laplacian_8u16s.query, photo.size(), 55)));
  std::array<std::vector<uint8_t>, 4> buffers{scratch, scratch, scratch, scratch};
  std::vector<TestImage<int16_t>> results;
  for (int thread = 0; thread < 4; ++thread) results.emplace_back("dst", Shape{.size = photo.size()});
  concurrently(4, 3, [&](int thread) {
    const TestImage<int16_t>& dst = results[static_cast<size_t>(thread)];
    EXPECT_EQ(orvStsOk, orviFilterLaplacianBorder_8u16s_C1R(photo.data(), photo.step(), dst.data(), dst.step(),
                                                            photo.size(), orvMask5x5, orvBorderMirror, 0,
                                                            buffers[static_cast<size_t>(thread)].data()));
  });
  for (const auto& dst : results) expectSamePixels(expected, dst);
}

}  // namespace
}  // namespace orvtest
