// The accumulators against their reference model.
#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "stats/accumulate_model.h"
#include "support/cases.h"
#include "support/check_order.h"
#include "support/checksums.h"
#include "support/concurrency.h"
#include "support/drivers.h"
#include "support/image.h"
#include "support/photographs.h"

namespace orvtest {
namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();

// ------------------------------------------------------------------------------------------------ What the members are

enum class Family { sum, square, product, average };

/// All arguments that a member may have.
template <class Source>
struct Arguments {
  const Source* src1;
  int src1Step;
  const Source* src2;
  int src2Step;
  const uint8_t* mask;
  int maskStep;
  float* srcDst;
  int srcDstStep;
  OrvSize roi;
  float alpha;
};

template <bool present, class... Values>
auto onlyIf(Values... values) {
  if constexpr (present)
    return std::tuple(values...);
  else
    return std::tuple();
}

/// An export as data: how to call it, what it should do, which arguments it has.
template <class Source>
struct Member {
  std::string name;
  std::function<OrvStatus(const Arguments<Source>&)> run;
  std::function<void(const Arguments<Source>&)> model;
  bool twoSources, hasMask;
};

template <Family family, class Source, bool hasMask>
Member<Source> member(std::string name, auto* function) {
  constexpr bool twoSources = family == Family::product;
  const auto run = [function](const Arguments<Source>& c) {
    return std::apply([&](auto... arguments) { return checkedCall(function, arguments...); },
                      std::tuple_cat(std::tuple(c.src1, c.src1Step), onlyIf<twoSources>(c.src2, c.src2Step),
                                     onlyIf<hasMask>(c.mask, c.maskStep), std::tuple(c.srcDst, c.srcDstStep, c.roi),
                                     onlyIf<family == Family::average>(c.alpha)));
  };
  const auto model = [](const Arguments<Source>& c) {
    const uint8_t* mask = hasMask ? c.mask : nullptr;
    if constexpr (family == Family::sum)
      model::accumulateSum(c.src1, c.src1Step, mask, c.maskStep, c.srcDst, c.srcDstStep, c.roi);
    else if constexpr (family == Family::square)
      model::accumulateSquare(c.src1, c.src1Step, mask, c.maskStep, c.srcDst, c.srcDstStep, c.roi);
    else if constexpr (family == Family::product)
      model::accumulateProduct(c.src1, c.src1Step, c.src2, c.src2Step, mask, c.maskStep, c.srcDst, c.srcDstStep, c.roi);
    else
      model::accumulateAverage(c.src1, c.src1Step, mask, c.maskStep, c.srcDst, c.srcDstStep, c.roi, c.alpha);
  };
  return {std::move(name), run, model, twoSources, hasMask};
}

/// The images of one call.
template <class Source>
struct Images {
  TestImage<Source> src1, src2;
  TestImage<uint8_t> mask;
  TestImage<float> srcDst;
  float alpha;

  Images(Random& random, OrvSize size)
      : src1(drawImage<Source>(random, "src1", size)),
        src2(drawImage<Source>(random, "src2", size)),
        mask(drawMask(random, size)),
        srcDst(drawImage<float>(random, "srcDst", size)),
        alpha(random.pick({0.0f, 0.25f, 0.1f, 1.0f, -0.0f, -3.5f, 7.0f, 1e30f, infinity})) {}

  Arguments<Source> call() const { return call(srcDst); }
  /// The same call on another accumulator.
  Arguments<Source> call(const TestImage<float>& accumulator) const {
    return {src1.data(), src1.step(),        src2.data(),        src2.step(),        mask.data(),
            mask.step(), accumulator.data(), accumulator.step(), accumulator.size(), alpha};
  }

  void protectInputs() const {
    src1.protectReadOnly();
    src2.protectReadOnly();
    mask.protectReadOnly();
  }
};

// ---------------------------------------------------------------------------------------------------- The three tests

template <class Source>
void expectModel(const Member<Source>& member) {
  forCases(member.name, 300, [&](Random& random) {
    const Images<Source> images(random, drawSize(random));
    const TestImage<float> expected(images.srcDst);
    member.model(images.call(expected));
    images.protectInputs();
    EXPECT_EQ(orvStsOk, member.run(images.call()));
    images.srcDst.expectSame(expected);
  });
}

template <class Source>
void expectChecks(const Member<Source>& member) {
  using Call = Arguments<Source>;
  constexpr int sampleBytes = sizeof(Source);
  Random random(member.name + " checks", 0);
  const OrvSize size{9, 3};
  const Images<Source> images(random, size);
  images.protectInputs();

  CheckOrder<Call> order(images.call(), member.run);
  order.watch(images.srcDst);
  const auto next = [&](bool present, Fault<Call> fault) {
    if (present)
      order.faults.push_back(std::move(fault));
  };
  const auto unalignedSources = [&] {
    next(sampleBytes > 1, alignFault<Source>("src1Step", &Call::src1Step));
    next(sampleBytes > 1 && member.twoSources, alignFault<Source>("src2Step", &Call::src2Step));
  };
  next(true, nullFault("src1", &Call::src1));
  next(member.twoSources, nullFault("src2", &Call::src2));
  next(member.hasMask, nullFault("mask", &Call::mask));
  next(true, nullFault("srcDst", &Call::srcDst));
  next(true, sizeFault("roi", &Call::roi));
  next(true, rowTooLongFault("roi", &Call::roi));
  next(true, stepFault("src1Step", &Call::src1Step, size.width * sampleBytes));
  next(member.twoSources, stepFault("src2Step", &Call::src2Step, size.width * sampleBytes));
  // Sources of 16 bits are done with before the others are looked at; else all lengths come before all alignments.
  if (sampleBytes == 2)
    unalignedSources();
  next(member.hasMask, stepFault("maskStep", &Call::maskStep, size.width));
  next(true, stepFault("srcDstStep", &Call::srcDstStep, size.width * 4));
  if (sampleBytes != 2)
    unalignedSources();
  next(true, alignFault<float>("srcDstStep", &Call::srcDstStep));
  order.verify();
}

template <class Source>
void expectChecksum(const Member<Source>& member) {
  Checksum checksum;
  const auto add = [&](const Images<Source>& images) {
    checksum.add(member.run(images.call()));
    checksum.add(images.srcDst);
  };
  forCases(member.name + " checksum", 24, [&](Random& random) { add(Images<Source>(random, drawSize(random))); });

  // A photograph onto its own mirror image, under its own bright parts.
  Random random(member.name, 1);
  const TestImage<Source> photo = photographImage<Source>("camera.png");
  Images<Source> images(random, photo.size());
  const Photograph& camera = photograph("camera.png");
  photo.forRegion([&](int x, int y, int) {
    images.src1.setPixel(x, y, photo.pixel(x, y));
    images.src2.setPixel(x, y, photo.pixel(photo.width() - 1 - x, y));
    const uint8_t grey = camera.grey[static_cast<size_t>(y * photo.width() + x)];
    images.mask.setPixel(x, y, grey > 128 ? grey : uint8_t{0});
    images.srcDst.setPixel(x, y, static_cast<float>(grey) * 0.75f);
  });
  images.alpha = 0.05f;
  add(images);
  expectRecorded(member.name, checksum);
}

#define ACCUMULATOR(name, family, Source, hasMask)                                                   \
  ORV_MODEL_TEST(name) { expectModel(member<Family::family, Source, hasMask>(#name, name)); }        \
  ORV_CHECK_ORDER_TEST(name) { expectChecks(member<Family::family, Source, hasMask>(#name, name)); } \
  ORV_CHECKSUM_TEST(name) { expectChecksum(member<Family::family, Source, hasMask>(#name, name)); }

ACCUMULATOR(orviAdd_8u32f_C1IR, sum, uint8_t, false)
ACCUMULATOR(orviAdd_16u32f_C1IR, sum, uint16_t, false)
ACCUMULATOR(orviAdd_8u32f_C1IMR, sum, uint8_t, true)
ACCUMULATOR(orviAdd_16u32f_C1IMR, sum, uint16_t, true)
ACCUMULATOR(orviAdd_32f_C1IMR, sum, float, true)
ACCUMULATOR(orviAddSquare_8u32f_C1IR, square, uint8_t, false)
ACCUMULATOR(orviAddSquare_16u32f_C1IR, square, uint16_t, false)
ACCUMULATOR(orviAddSquare_32f_C1IR, square, float, false)
ACCUMULATOR(orviAddSquare_8u32f_C1IMR, square, uint8_t, true)
ACCUMULATOR(orviAddSquare_16u32f_C1IMR, square, uint16_t, true)
ACCUMULATOR(orviAddSquare_32f_C1IMR, square, float, true)
ACCUMULATOR(orviAddProduct_8u32f_C1IR, product, uint8_t, false)
ACCUMULATOR(orviAddProduct_16u32f_C1IR, product, uint16_t, false)
ACCUMULATOR(orviAddProduct_32f_C1IR, product, float, false)
ACCUMULATOR(orviAddProduct_8u32f_C1IMR, product, uint8_t, true)
ACCUMULATOR(orviAddProduct_16u32f_C1IMR, product, uint16_t, true)
ACCUMULATOR(orviAddProduct_32f_C1IMR, product, float, true)
ACCUMULATOR(orviAddWeighted_8u32f_C1IR, average, uint8_t, false)
ACCUMULATOR(orviAddWeighted_16u32f_C1IR, average, uint16_t, false)
ACCUMULATOR(orviAddWeighted_32f_C1IR, average, float, false)
ACCUMULATOR(orviAddWeighted_8u32f_C1IMR, average, uint8_t, true)
ACCUMULATOR(orviAddWeighted_16u32f_C1IMR, average, uint16_t, true)
ACCUMULATOR(orviAddWeighted_32f_C1IMR, average, float, true)

// -------------------------------------------------------------------------------------------------------- The blend

OrvStatus runBlend(const Arguments<float>& c) {
  return checkedCall(orviAddWeighted_32f_C1R, c.src1, c.src1Step, c.src2, c.src2Step, c.srcDst, c.srcDstStep, c.roi,
                     c.alpha);
}

void modelBlend(const Arguments<float>& c) {
  model::blend(c.src1, c.src1Step, c.src2, c.src2Step, c.srcDst, c.srcDstStep, c.roi, c.alpha);
}

ORV_MODEL_TEST(orviAddWeighted_32f_C1R) {
  forCases("orviAddWeighted_32f_C1R", 300, [](Random& random) {
    const Images<float> images(random, drawSize(random));
    const TestImage<float> expected(images.srcDst);
    modelBlend(images.call(expected));
    images.protectInputs();
    EXPECT_EQ(orvStsOk, runBlend(images.call()));
    images.srcDst.expectSame(expected);
  });
}

TEST(Accumulate, BlendIntoEitherSource) {
  forCases("blend in place", 100, [](Random& random) {
    const Images<float> images(random, drawSize(random));
    const bool ontoFirst = random.oneIn(2);
    const TestImage<float> expected(images.srcDst);
    Arguments<float> call = images.call(expected);
    (ontoFirst ? call.src1 : call.src2) = expected.data();
    (ontoFirst ? call.src1Step : call.src2Step) = expected.step();
    modelBlend(call);
    call = images.call();
    (ontoFirst ? call.src1 : call.src2) = images.srcDst.data();
    (ontoFirst ? call.src1Step : call.src2Step) = images.srcDst.step();
    EXPECT_EQ(orvStsOk, runBlend(call));
    images.srcDst.expectSame(expected);
  });
}

ORV_CHECK_ORDER_TEST(orviAddWeighted_32f_C1R) {
  using Call = Arguments<float>;
  Random random("orviAddWeighted_32f_C1R checks", 0);
  const Images<float> images(random, {9, 3});
  CheckOrder<Call> order(images.call(), runBlend);
  order.watch(images.src1, images.src2, images.srcDst);
  order.faults = {nullFault("src1", &Call::src1),
                  nullFault("src2", &Call::src2),
                  nullFault("dst", &Call::srcDst),
                  sizeFault("roi", &Call::roi),
                  rowTooLongFault("roi", &Call::roi),
                  stepFault("src1Step", &Call::src1Step, 36),
                  stepFault("src2Step", &Call::src2Step, 36),
                  stepFault("dstStep", &Call::srcDstStep, 36),
                  alignFault<float>("src1Step", &Call::src1Step),
                  alignFault<float>("src2Step", &Call::src2Step),
                  alignFault<float>("dstStep", &Call::srcDstStep)};
  order.verify();
}

ORV_CHECKSUM_TEST(orviAddWeighted_32f_C1R) {
  Checksum checksum;
  const auto add = [&](const Images<float>& images) {
    checksum.add(runBlend(images.call()));
    checksum.add(images.srcDst);
  };
  forCases("orviAddWeighted_32f_C1R checksum", 24,
           [&](Random& random) { add(Images<float>(random, drawSize(random))); });
  Random random("orviAddWeighted_32f_C1R photograph", 0);
  const TestImage<float> photo = photographImage<float>("rocket.jpg");
  Images<float> images(random, photo.size());
  photo.forRegion([&](int x, int y, int) {
    images.src1.setPixel(x, y, photo.pixel(x, y));
    images.src2.setPixel(x, y, photo.pixel(x, photo.height() - 1 - y));
  });
  images.alpha = 0.3f;
  add(images);
  expectRecorded("orviAddWeighted_32f_C1R", checksum);
}

// ------------------------------------------------------------------------------------------------------- By hand

TEST(Accumulate, RunningAverageOfOnePixel) {
  float a = 10;
  const uint8_t s = 20;
  EXPECT_EQ(orvStsOk, checkedCall(orviAddWeighted_8u32f_C1IR, &s, 1, &a, 4, OrvSize{1, 1}, 0.25f));
  EXPECT_EQ(12.5f, a);
}

TEST(Accumulate, LargestProductRoundsBeforeItReachesTheAccumulator) {
  float a = 0;
  const uint16_t s = 65535;
  EXPECT_EQ(orvStsOk, checkedCall(orviAddSquare_16u32f_C1IR, &s, 2, &a, 4, OrvSize{1, 1}));
  EXPECT_EQ(4294836224.0f, a);
  // The exact square, 4294836225, would leave 1.
  a = -4294836224.0f;
  EXPECT_EQ(orvStsOk, checkedCall(orviAddProduct_16u32f_C1IR, &s, 2, &s, 2, &a, 4, OrvSize{1, 1}));
  EXPECT_EQ(0.0f, a);
}

/// Every path of a row treats a value alike: the same pixel 40 times over, in rows at three offsets from a 32-byte
/// boundary and at an odd address.
template <class Run>
void expectEverywhere(uint32_t accumulatorBits, uint32_t expectedBits, Run run) {
  for (const int residue : {0, 4, 28, 1})
    for (const int width : {1, 15, 16, 17, 31, 32, 33, 40}) {
      const GuardedBlock accumulator("srcDst", width * 4, residue);
      for (int x = 0; x < width; ++x) store(accumulator.as<uint32_t>(), 0, x, 0, accumulatorBits);
      EXPECT_EQ(orvStsOk, run(accumulator.as<float>(), OrvSize{width, 1}));
      for (int x = 0; x < width; ++x)
        EXPECT_EQ(expectedBits, load(accumulator.as<uint32_t>(), 0, x, 0)) << "width " << width << ", x " << x;
    }
}

constexpr uint32_t defaultNan = 0xffc00000, negativeZero = 0x80000000;

TEST(Accumulate, InfinityUnderAZeroMaskByteGivesNan) {
  const std::vector<float> src(40, infinity);
  const std::vector<uint8_t> mask(40, 0);
  expectEverywhere(std::bit_cast<uint32_t>(5.0f), defaultNan, [&](float* a, OrvSize roi) {
    return checkedCall(orviAdd_32f_C1IMR, src.data(), 160, mask.data(), 40, a, 160, roi);
  });
  expectEverywhere(std::bit_cast<uint32_t>(5.0f), defaultNan, [&](float* a, OrvSize roi) {
    return checkedCall(orviAddWeighted_32f_C1IMR, src.data(), 160, mask.data(), 40, a, 160, roi, 0.5f);
  });
}

TEST(Accumulate, OverflowingSquareUnderAZeroMaskByteGivesNan) {
  const std::vector<float> src(40, 1e30f);
  const std::vector<uint8_t> mask(40, 0);
  expectEverywhere(std::bit_cast<uint32_t>(5.0f), defaultNan, [&](float* a, OrvSize roi) {
    return checkedCall(orviAddSquare_32f_C1IMR, src.data(), 160, mask.data(), 40, a, 160, roi);
  });
  expectEverywhere(std::bit_cast<uint32_t>(5.0f), defaultNan, [&](float* a, OrvSize roi) {
    return checkedCall(orviAddProduct_32f_C1IMR, src.data(), 160, src.data(), 160, mask.data(), 40, a, 160, roi);
  });
}

TEST(Accumulate, InfiniteAccumulatorUnderAZeroMaskByteGivesNanInTheAverageOnly) {
  const std::vector<uint8_t> src(40, 7), mask(40, 0);
  const uint32_t infinityAsBits = std::bit_cast<uint32_t>(infinity);
  expectEverywhere(infinityAsBits, defaultNan, [&](float* a, OrvSize roi) {
    return checkedCall(orviAddWeighted_8u32f_C1IMR, src.data(), 40, mask.data(), 40, a, 160, roi, 0.5f);
  });
  expectEverywhere(infinityAsBits, infinityAsBits, [&](float* a, OrvSize roi) {
    return checkedCall(orviAdd_8u32f_C1IMR, src.data(), 40, mask.data(), 40, a, 160, roi);
  });
}

TEST(Accumulate, NegativeZeroUnderAZeroMaskByteBecomesPositive) {
  const std::vector<uint8_t> src(40, 7), mask(40, 0);
  expectEverywhere(negativeZero, 0, [&](float* a, OrvSize roi) {
    return checkedCall(orviAdd_8u32f_C1IMR, src.data(), 40, mask.data(), 40, a, 160, roi);
  });
}

TEST(Accumulate, NegativeSourceUnderAZeroMaskByteLeavesNegativeZero) {
  const std::vector<float> src(40, -7.0f);
  const std::vector<uint8_t> mask(40, 0);
  expectEverywhere(negativeZero, negativeZero, [&](float* a, OrvSize roi) {
    return checkedCall(orviAdd_32f_C1IMR, src.data(), 160, mask.data(), 40, a, 160, roi);
  });
}

TEST(Accumulate, PayloadOfTheAccumulatorStaysWhenBothAreNan) {
  const std::vector<float> src(40, std::bit_cast<float>(0x7fc22222u));
  const std::vector<uint8_t> mask(40, 255);
  expectEverywhere(0xffc11111u, 0xffc11111u, [&](float* a, OrvSize roi) {
    return checkedCall(orviAdd_32f_C1IMR, src.data(), 160, mask.data(), 40, a, 160, roi);
  });
  // Signalling: made quiet.
  expectEverywhere(0x7f811111u, 0x7fc11111u, [&](float* a, OrvSize roi) {
    return checkedCall(orviAddSquare_32f_C1IR, src.data(), 160, a, 160, roi);
  });
}

TEST(Accumulate, AnyNonzeroMaskByteSelects) {
  for (const int byte : {1, 2, 127, 128, 254, 255}) {
    const std::vector<uint8_t> src(40, 7), mask(40, static_cast<uint8_t>(byte));
    expectEverywhere(std::bit_cast<uint32_t>(1.0f), std::bit_cast<uint32_t>(8.0f), [&](float* a, OrvSize roi) {
      return checkedCall(orviAdd_8u32f_C1IMR, src.data(), 40, mask.data(), 40, a, 160, roi);
    });
  }
}

TEST(Accumulate, WeightsZeroAndBeyondOne) {
  const std::vector<uint8_t> src(40, 20);
  const uint32_t ten = std::bit_cast<uint32_t>(10.0f);
  const auto weighted = [&](float alpha) {
    return [&src, alpha](float* a, OrvSize roi) {
      return checkedCall(orviAddWeighted_8u32f_C1IR, src.data(), 40, a, 160, roi, alpha);
    };
  };
  expectEverywhere(ten, ten, weighted(0.0f));
  expectEverywhere(ten, std::bit_cast<uint32_t>(35.0f), weighted(2.5f));
  expectEverywhere(ten, std::bit_cast<uint32_t>(0.0f), weighted(-1.0f));
}

TEST(Accumulate, ManyThreadsShareTheirSources) {
  constexpr int threads = 4;
  Random random("accumulate threads", 0);
  const Images<uint8_t> images(random, {333, 47});
  const auto masked = member<Family::average, uint8_t, true>("masked average", orviAddWeighted_8u32f_C1IMR);
  const TestImage<float> expected(images.srcDst);
  masked.model(images.call(expected));
  images.protectInputs();
  concurrently(threads, 8, [&](int) {
    const TestImage<float> own(images.srcDst);
    EXPECT_EQ(orvStsOk, masked.run(images.call(own)));
    own.expectSame(expected);
  });
}

}  // namespace
}  // namespace orvtest
