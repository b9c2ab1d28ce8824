// The Gaussian filters' working calls against their reference model.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <limits>
#include <numeric>
#include <string>
#include <type_traits>
#include <vector>

#include "filters/gaussian_support.h"
#include "support/cases.h"
#include "support/checksums.h"
#include "support/concurrency.h"
#include "support/drivers.h"
#include "support/image.h"
#include "support/photographs.h"

namespace orvtest {
namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();

// ----------------------------------------------------------------------------------------------------- Drawn calls

Margins marginsOf(int word, int taps) {
  const auto side = [&](int flag) { return word & flag ? taps / 2 : 0; };
  return {side(orvBorderMemTop), side(orvBorderMemBottom), side(orvBorderMemLeft), side(orvBorderMemRight)};
}

/// Kinds 1, 3 and 6 with any sides in memory, or 240; in single precision also all sides with any kind.
int drawWord(Random& random, Gaussian generation) {
  if (random.oneIn(8))
    return orvBorderMemAll + (generation == Gaussian::singlePrecision ? random.below(16) : 0);
  const int kind = random.pick({1, 3, 6});
  return kind + (random.oneIn(3) ? 0 : 16 * random.below(16));
}

int drawTaps(Random& random) {
  return random.oneIn(4) ? 2 * random.between(4, 15) + 1 : random.pick({3, 3, 5, 5, 7, 9});
}

float drawSigma(Random& random) {
  return random.pick({1e-30f, 0.05f, 0.3f, 0.5f, 0.8f, 1.0f, 1.5f, 2.5f, 6.0f, 100.0f, infinity});
}

/// Images, block and scratch of one call, all as small as they may be.
template <class Sample>
struct Scene {
  GaussianSetup setup;
  TestImage<Sample> src, dst;
  Sample borderValue[3];
  GuardedBlock spec, buffer;

  /// `setup.roi` is that of Init and the size queries; `size` lies within.
  Scene(Random& random, const GaussianSetup& chosen, OrvSize size, Values values)
      : setup(chosen),
        src(drawImage<Sample>(
            random, "src", size,
            {.channels = setup.channels, .values = values, .margins = marginsOf(setup.word, setup.taps)})),
        dst(drawImage<Sample>(random, "dst", size, {.channels = setup.channels})),
        spec(gaussianSpec(setup, random.below(64))),
        buffer("buffer", gaussianBufferSize(setup), random) {
    for (Sample& value : borderValue) value = std::bit_cast<Sample>(drawBits<Sample>(random, values));
    buffer.fill(random);
  }

  GaussianCall<Sample> call() const {
    return {src.data(), src.step(),  dst.data(),  dst.step(),   src.size(),
            setup.word, borderValue, spec.data(), buffer.data()};
  }

  OrvStatus run(const GaussianMember<Sample>& member) const {
    src.protectReadOnly();
    spec.protectReadOnly();
    const OrvStatus status = member.run(call());
    src.protectWritable();
    spec.protectWritable();
    return status;
  }
};

template <class Sample>
Scene<Sample> drawScene(Random& random, const GaussianMember<Sample>& member, Values values) {
  const int taps = drawTaps(random);
  OrvSize size = drawSize(random);
  // The work grows with all three; the largest of each don't meet.
  if (taps > 9)
    size.width = std::min(size.width, 70), size.height = std::min(size.height, 12);
  const float sigma = drawSigma(random);
  const int word = drawWord(random, member.generation);
  OrvSize larger = size;
  if (random.oneIn(4)) {
    larger.width += random.below(40);
    larger.height += random.below(10);
  }
  return Scene<Sample>(random, member.setup(larger, taps, sigma, word), size, values);
}

template <class Sample>
std::vector<Sample> modelResult(const Scene<Sample>& scene) {
  const TestImage<Sample>& src = scene.src;
  const GaussianSetup& setup = scene.setup;
  std::vector<Sample> result(static_cast<size_t>(src.width() * src.height() * setup.channels));
  const model::ImageView<Sample> in{src.data(), src.step(), src.width(), src.height(), setup.channels};
  const auto filter =
      setup.generation == Gaussian::pipelines ? model::gaussianBorder<Sample> : model::gaussianFloat<Sample>;
  filter(in, result.data(), setup.taps, setup.sigma, setup.word, scene.borderValue);
  return result;
}

/// Runs the member and compares all of the destination's memory.
template <class Sample>
void expectModelResult(const GaussianMember<Sample>& member, const Scene<Sample>& scene) {
  const GaussianSetup& setup = scene.setup;
  SCOPED_TRACE(testing::Message() << scene.src.describe() << ", K " << setup.taps << ", sigma " << setup.sigma
                                  << ", word 0x" << std::hex << setup.word);
  const TestImage<Sample> expected(scene.dst);
  const std::vector<Sample> wanted = modelResult(scene);
  EXPECT_EQ(orvStsOk, scene.run(member));
  const Sample* want = wanted.data();
  expected.forRegion([&](int x, int y, int channel) { expected.setPixel(x, y, channel, *want++); });
  scene.dst.expectSame(expected);
}

// ------------------------------------------------------------------------------------------------ Model and checksum

template <class Sample>
void expectModel(const GaussianMember<Sample>& member) {
  forCases(member.name, 160, [&](Random& random) {
    const Values values = random.pick({Values::few, Values::ordinary, Values::finite, Values::anything});
    expectModelResult(member, drawScene(random, member, values));
  });
}

/// At least 524288 pixels, from where on a filter may write past the cache; at any alignment.
template <class Sample>
Scene<Sample> largeScene(Random& random, const GaussianMember<Sample>& member, int taps, int word) {
  const OrvSize size{1031, 512};
  return Scene<Sample>(random, member.setup(size, taps, 1.2f, word), size, Values::ordinary);
}

template <class Sample>
void expectChecksum(const GaussianMember<Sample>& member) {
  Checksum checksum;
  const auto add = [&](const Scene<Sample>& scene) {
    checksum.add(scene.run(member));
    checksum.add(scene.dst);
  };
  forCases(member.name + " checksum", 24, [&](Random& random) { add(drawScene(random, member, Values::ordinary)); });
  Random random(member.name, 1);
  const TestImage<Sample> photo = photographImage<Sample>("chelsea.png", member.channels);
  for (const int taps : {3, 7, 21}) {
    const GaussianSetup setup = member.setup(photo.size(), taps, 0.25f * static_cast<float>(taps), orvBorderMirror);
    const Scene<Sample> scene(random, setup, photo.size(), Values::few);
    photo.forRegion([&](int x, int y, int c) { scene.src.setPixel(x, y, c, photo.pixel(x, y, c)); });
    add(scene);
  }
  add(largeScene(random, member, 5, orvBorderReplicate));
  expectRecorded(member.name, checksum);
}

#define ORV_GAUSSIAN(name)                                           \
  ORV_MODEL_TEST(name) { expectModel(gaussianMember(#name, name)); } \
  ORV_CHECKSUM_TEST(name) { expectChecksum(gaussianMember(#name, name)); }
#include "filters/gaussian_members.inc"
#undef ORV_GAUSSIAN

// --------------------------------------------------------------------------------- Every word, every size about K

/// Every accepted word, in images around and below the kernel's size.
template <class Sample>
void expectEveryWord(const GaussianMember<Sample>& member) {
  std::vector<int> words{orvBorderMemAll};
  for (int sides = 0; sides < 256; sides += 16)
    for (const int kind : {1, 3, 6}) words.push_back(kind + sides);
  if (member.generation == Gaussian::singlePrecision)
    for (int kind = 0; kind < 16; ++kind) words.push_back(orvBorderMemAll + kind);
  uint32_t number = 0;
  for (const int word : words)
    for (const int taps : {3, 5, 7, 11}) {
      Random random(member.name + " every word", number++);
      const OrvSize size{random.between(1, 2 * taps), random.between(1, 2 * taps)};
      expectModelResult(member, Scene<Sample>(random, member.setup(size, taps, 1.7f, word), size, Values::ordinary));
      if (testing::Test::HasFailure())
        return;
    }
}

TEST(Gaussian, EveryWordOnThePipelines) {
  expectEveryWord(gaussianMember("8u", orviFilterGaussianBorder_8u_C3R));
  expectEveryWord(gaussianMember("16s", orviFilterGaussianBorder_16s_C1R));
}

TEST(Gaussian, EveryWordInSinglePrecision) {
  expectEveryWord(gaussianMember("8u_C1R", orviFilterGaussian_8u_C1R_L));
  expectEveryWord(gaussianMember("16u_C3R", orviFilterGaussian_16u_C3R_L));
}

TEST(Gaussian, KernelsFarLargerThanTheImage) {
  const auto pipelines = gaussianMember("8u", orviFilterGaussianBorder_8u_C1R);
  const auto singlePrecision = gaussianMember("32f_C3R", orviFilterGaussian_32f_C3R_L);
  uint32_t number = 0;
  for (const OrvSize size :
       {OrvSize{1, 1}, OrvSize{1, 9}, OrvSize{40, 1}, OrvSize{2, 2}, OrvSize{3, 5}, OrvSize{17, 31}})
    for (const int word : {1, 3, 6, 0x13, 0x23, 0x43, 0x83, 0x11, 0x26}) {
      Random random("Gaussian kernels larger than the image", number++);
      expectModelResult(pipelines,
                        Scene<uint8_t>(random, pipelines.setup(size, 61, 15.0f, word), size, Values::ordinary));
      expectModelResult(singlePrecision,
                        Scene<float>(random, singlePrecision.setup(size, 61, 15.0f, word), size, Values::ordinary));
    }
}

TEST(Gaussian, LargeImages) {
  Random random("large Gaussian images", 0);
  const auto bytes = gaussianMember("8u_C1R", orviFilterGaussian_8u_C1R_L);
  expectModelResult(bytes, largeScene(random, bytes, 3, 1));
  const auto floats = gaussianMember("32f_C1R", orviFilterGaussian_32f_C1R_L);
  expectModelResult(floats, largeScene(random, floats, 5, 0x53));
  const auto fixedPoint = gaussianMember("16s", orviFilterGaussianBorder_16s_C1R);
  expectModelResult(fixedPoint, largeScene(random, fixedPoint, 3, 3));
}

// ------------------------------------------------------------------------------------------------------------- By hand

/// An image without gaps, filtered under a word without sides in memory.
template <class Sample>
std::vector<Sample> filtered(const GaussianMember<Sample>& member, std::vector<Sample> pixels, OrvSize size, int taps,
                             float sigma, int word, Sample borderValue = 0) {
  const GaussianSetup setup = member.setup(size, taps, sigma, word);
  const GuardedBlock spec = gaussianSpec(setup, 11), buffer("buffer", gaussianBufferSize(setup), 29);
  std::vector<Sample> result(pixels.size());
  const int step = size.width * member.channels * static_cast<int>(sizeof(Sample));
  const Sample values[3] = {borderValue, borderValue, borderValue};
  EXPECT_EQ(orvStsOk,
            member.run({pixels.data(), step, result.data(), step, size, word, values, spec.data(), buffer.data()}));
  return result;
}

using Bytes = std::vector<uint8_t>;
using Shorts = std::vector<int16_t>;

TEST(Gaussian, OnePixelUnderAConstantBorder) {
  // Coefficients 1123, 1851, 1123 of 4096. Row: (2 * 1123 * 10 + 1851 * 200) / 4096 = 95.9, cut to 95; column:
  // (2 * 1123 * 10 + 1851 * 95) / 4096 = 48.4.
  EXPECT_EQ(Bytes{48},
            filtered(gaussianMember("8u", orviFilterGaussianBorder_8u_C1R), {200}, {1, 1}, 3, 1.0f, 6, uint8_t{10}));
  // 0.27407, 0.45186, 0.27407: the row gives 95.854, the column 48.794.
  EXPECT_EQ(Bytes{49},
            filtered(gaussianMember("8u_C1R", orviFilterGaussian_8u_C1R_L), {200}, {1, 1}, 3, 1.0f, 6, uint8_t{10}));
}

TEST(Gaussian, AMirrorFoldsSeveralTimesInALowImage) {
  // Nine equal taps over three rows: row 0 sees rows 0, 1, 2 three, four and two times; row 1 two, five and two times.
  const auto member = gaussianMember("8u_C1R", orviFilterGaussian_8u_C1R_L);
  EXPECT_EQ((Bytes{17, 18, 19}), filtered(member, {9, 18, 27}, {1, 3}, 9, infinity, 3));
  EXPECT_EQ((Bytes{17, 18, 19}), filtered(member, {9, 18, 27}, {3, 1}, 9, infinity, 3));
}

TEST(Gaussian, AFixedPointSumOf4097Saturates) {
  const std::vector<int16_t> taps = model::gaussianTaps<uint8_t>(3, 1.0f);
  ASSERT_EQ(4097, std::accumulate(taps.begin(), taps.end(), 0));
  const auto member = gaussianMember("8u", orviFilterGaussianBorder_8u_C1R);
  for (const int word : {1, 3}) {
    const Bytes white(40 * 5, 255);
    EXPECT_EQ(white, filtered(member, white, {40, 5}, 3, 1.0f, word));
  }
}

TEST(Gaussian, ATinySigmaCopies) {
  Bytes bytes(21 * 6);
  std::iota(bytes.begin(), bytes.end(), uint8_t{100});
  for (const float sigma : {0.05f, 1e-30f})
    for (const int taps : {3, 5, 9}) {
      EXPECT_EQ(bytes, filtered(gaussianMember("8u", orviFilterGaussianBorder_8u_C1R), bytes, {21, 6}, taps, sigma, 6));
      EXPECT_EQ(bytes, filtered(gaussianMember("8u_C3R", orviFilterGaussian_8u_C3R_L), bytes, {7, 6}, taps, sigma, 6));
    }
}

TEST(Gaussian, TheSignedCentreTapOfATinySigmaIsMinus32768) {
  // Each pass negates, and saturates the lowest sample.
  const auto member = gaussianMember("16s", orviFilterGaussianBorder_16s_C1R);
  EXPECT_EQ((Shorts{5, -7, 32767, -32767}), filtered(member, {5, -7, 32767, -32768}, {2, 2}, 3, 0.05f, 1));
  const auto singlePrecision = gaussianMember("16s_C1R", orviFilterGaussian_16s_C1R_L);
  EXPECT_EQ((Shorts{5, -7, 32767, -32768}), filtered(singlePrecision, {5, -7, 32767, -32768}, {2, 2}, 3, 0.05f, 1));
}

/// The first in the order of the sums: the left or upper one of the outermost pair, whatever the kernel size, and wherever
/// in the image.
TEST(Gaussian, TheFirstOfSeveralNansSurvives) {
  const auto member = gaussianMember("32f_C1R", orviFilterGaussian_32f_C1R_L);
  const OrvSize size{61, 9};
  for (const int taps : {3, 5, 7, 9}) {
    Random random("several NaNs", 0);
    const Scene<float> scene(random, member.setup(size, taps, infinity, orvBorderReplicate), size, Values::few);
    scene.src.forRegion([&](int x, int y, int channel) {
      scene.src.setBits(x, y, channel, static_cast<uint32_t>(0x7fc00100 + 64 * y + x));
    });
    EXPECT_EQ(orvStsOk, scene.run(member));
    scene.dst.forRegion([&](int x, int y, int channel) {
      const int left = std::max(x - taps / 2, 0), upper = std::max(y - taps / 2, 0);
      EXPECT_EQ(static_cast<uint32_t>(0x7fc00100 + 64 * upper + left), scene.dst.bits(x, y, channel))
          << taps << " taps, x " << x << ", y " << y;
    });
  }
}

TEST(Gaussian, AnyWordWithAllSidesReadsMemory) {
  const auto member = gaussianMember("8u_C1R", orviFilterGaussian_8u_C1R_L);
  const OrvSize size{4, 3};
  for (int word = 0xF0; word <= 0xFF; ++word) {
    Random random("all sides in memory", 0);
    const Scene<uint8_t> scene(random, member.setup(size, 3, infinity, word), size, Values::few);
    scene.src.fillWith(0);
    scene.src.setPixel(-1, -1, 90);
    scene.src.setPixel(4, 3, 180);
    EXPECT_EQ(orvStsOk, scene.run(member));
    scene.dst.forRegion([&](int x, int y, int) {
      const int expected = x == 0 && y == 0 ? 10 : x == 3 && y == 2 ? 20 : 0;
      EXPECT_EQ(expected, scene.dst.pixel(x, y)) << "word " << word << ", x " << x << ", y " << y;
    });
  }
}

/// The word of Init doesn't count, that of the call does.
TEST(Gaussian, TheWordOfTheCallCountsInSinglePrecision) {
  const auto member = gaussianMember("8u_C1R", orviFilterGaussian_8u_C1R_L);
  const GaussianSetup setup = member.setup({2, 1}, 3, infinity, orvBorderReplicate);
  const GuardedBlock spec = gaussianSpec(setup, 0), buffer("buffer", gaussianBufferSize(setup), 1);
  const uint8_t src[] = {30, 60}, borderValue = 3;
  uint8_t dst[2];
  EXPECT_EQ(orvStsOk,
            member.run({src, 2, dst, 2, {2, 1}, orvBorderConstant, &borderValue, spec.data(), buffer.data()}));
  EXPECT_EQ(12, dst[0]);  // (3 + (3 + 30 + 60) / 3 + 3) / 3 = 12.3
  EXPECT_EQ(12, dst[1]);
}

TEST(Gaussian, CallsFromSeveralThreadsShareASpec) {
  Random random("Gaussian from several threads", 0);
  const auto expectShared = [&](const auto& member, const auto& scene) {
    scene.src.protectReadOnly();
    scene.spec.protectReadOnly();
    const auto wanted = modelResult(scene);
    using Sample = typename std::remove_cvref_t<decltype(wanted)>::value_type;
    std::vector<GuardedBlock> buffers;
    for (int thread = 0; thread < 4; ++thread) buffers.emplace_back("buffer", gaussianBufferSize(scene.setup), thread);
    concurrently(4, 3, [&](int thread) {
      const int step = scene.src.width() * static_cast<int>(sizeof(Sample)) * member.channels;
      std::vector<Sample> result(wanted.size());
      GaussianCall<Sample> call = scene.call();
      call.dst = result.data(), call.dstStep = step, call.buffer = buffers[static_cast<size_t>(thread)].data();
      EXPECT_EQ(orvStsOk, member.run(call));
      EXPECT_EQ(wanted, result);
    });
  };
  const OrvSize size{150, 60};
  const auto pipelines = gaussianMember("16u", orviFilterGaussianBorder_16u_C1R);
  expectShared(pipelines, Scene<uint16_t>(random, pipelines.setup(size, 7, 1.5f, 1), size, Values::ordinary));
  const auto singlePrecision = gaussianMember("8u_C1R", orviFilterGaussian_8u_C1R_L);
  expectShared(singlePrecision,
               Scene<uint8_t>(random, singlePrecision.setup(size, 9, 1.5f, 3), size, Values::ordinary));
}

}  // namespace
}  // namespace orvtest
