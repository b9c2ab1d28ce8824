// The column pipelines against their reference model.
#include <gtest/gtest.h>

#include <functional>

#include "filters/pipeline_model.h"
#include "filters/pipeline_support.h"
#include "support/cases.h"
#include "support/check_order.h"
#include "support/checksums.h"
#include "support/drivers.h"
#include "support/photographs.h"

namespace orvtest {
namespace {

// ------------------------------------------------------------------------------------------------ What the members are

/// The arguments of every member; those without a divisor ignore it.
struct Call {
  const void* const* srcRows;
  void* dst;
  int dstStep;
  OrvSize roi;
  const void* kernel;
  int kernelSize;
  int divisor;
  uint8_t* buffer;
};

template <class Source, class Result, class Tap>
OrvStatus run(OrvStatus (*function)(const Source* const*, Result*, int, OrvSize, const Tap*, int, int, uint8_t*),
              const Call& c) {
  return checkedCall(function, reinterpret_cast<const Source* const*>(c.srcRows), static_cast<Result*>(c.dst),
                     c.dstStep, c.roi, static_cast<const Tap*>(c.kernel), c.kernelSize, c.divisor, c.buffer);
}
OrvStatus run(OrvStatus (*function)(const float* const*, float*, int, OrvSize, const float*, int, uint8_t*),
              const Call& c) {
  return checkedCall(function, reinterpret_cast<const float* const*>(c.srcRows), static_cast<float*>(c.dst), c.dstStep,
                     c.roi, static_cast<const float*>(c.kernel), c.kernelSize, c.buffer);
}

enum class Arithmetic { ordinary, low };

struct Member {
  std::string name;
  std::function<OrvStatus(const Call&)> run;
  SizeQuery* query;
  int channels;
  Arithmetic arithmetic;
};

// ------------------------------------------------------------------------------------------------ What a call is given

struct Geometry {
  OrvSize roi;
  int taps, divisor;
};

Geometry drawGeometry(Random& random) {
  return {{drawSize(random).width, random.between(1, 9)}, drawKernelSize(random), drawDivisor(random, false)};
}

template <class Source, class Result, class Tap>
struct Images {
  const Member& member;
  Geometry g;
  std::vector<Tap> taps;
  TestImage<Source> rows;
  TestImage<Result> dst;
  std::vector<Source*> order;
  GuardedBlock srcRows, kernel, buffer;

  Images(Random& random, const Member& m, const Geometry& geometry, std::vector<Tap> coefficients,
         TestImage<Source> source, const std::vector<int>& rowOrder)
      : member(m),
        g(geometry),
        taps(std::move(coefficients)),
        rows(std::move(source)),
        dst(drawRows<Result>(random, "dst", g.roi, {.channels = m.channels})),
        order(rowsInOrder(rows, rowOrder)),
        srcRows(guardedCopy(random, "srcRows", order)),
        kernel(guardedCopy(random, "kernel", taps)),
        buffer(drawBuffer(random, m.query, g.roi, g.taps)) {
    rows.protectReadOnly();
  }

  static TestImage<Source> drawSource(Random& random, const Member& m, const Geometry& g) {
    return drawRows<Source>(random, "rows", {g.roi.width, g.roi.height + g.taps - 1},
                            {.channels = m.channels, .values = drawFilterValues<Source>(random)});
  }
  /// Any order, in which some rows may come twice.
  static std::vector<int> drawRowOrder(Random& random, const Geometry& g) {
    std::vector<int> order = drawOrder(random, g.roi.height + g.taps - 1);
    if (random.oneIn(4))
      std::fill(order.begin(), order.begin() + g.taps / 2, order[static_cast<size_t>(g.taps / 2)]);
    return order;
  }
  Images(Random& random, const Member& m, const Geometry& geometry, std::vector<Tap> coefficients)
      : Images{random,
               m,
               geometry,
               std::move(coefficients),
               drawSource(random, m, geometry),
               drawRowOrder(random, geometry)} {}
  Images(Random& random, const Member& m, const Geometry& geometry)
      : Images(random, m, geometry, drawTaps<Tap>(random, geometry.taps)) {}

  Call call() const {
    return {srcRows.as<const void*>(), dst.data(), dst.step(), g.roi, kernel.data(), g.taps, g.divisor, buffer.data()};
  }

  void runModel(const TestImage<Result>& expected) const {
    const int samples = g.roi.width * member.channels;
    for (int y = 0; y < g.roi.height; ++y) {
      const Source* const* window = order.data() + y;
      Result* out = addressOf(expected.data(), expected.step(), 0, y);
      if constexpr (std::is_same_v<Source, int16_t> && std::is_same_v<Result, int16_t>)
        if (member.arithmetic == Arithmetic::low) {
          model::filterColumnLow(window, out, samples, taps.data(), g.taps, g.divisor, y, g.roi.height);
          continue;
        }
      model::filterColumn(window, out, samples, taps.data(), g.taps, g.divisor);
    }
  }

  void expectModel() const {
    const TestImage<Result> expected(dst);
    runModel(expected);
    EXPECT_EQ(orvStsOk, member.run(call()));
    dst.expectSame(expected);
    if (testing::Test::HasFailure())
      ADD_FAILURE() << rows.describe() << ", " << g.taps << " taps, divisor " << g.divisor << ", kernel "
                    << testing::PrintToString(taps);
  }
};

// ---------------------------------------------------------------------------------------------------- The three tests

template <class Source, class Result, class Tap>
void expectModel(const Member& member) {
  forCases(member.name, 250, [&](Random& random) {
    Geometry g = drawGeometry(random);
    if (member.arithmetic == Arithmetic::low && random.oneIn(2)) {
      // Near and in the kernel of 5 taps that makes rows in pairs.
      g.taps = 5;
      g.divisor = random.oneIn(8) ? 15 : 16;
      const int centre = random.oneIn(2) ? 6 : 1000;
      Images<Source, Result, Tap>(random, member, g,
                                  {1, 4, static_cast<Tap>(centre), 4, static_cast<Tap>(random.oneIn(8) ? 5 : 1)})
          .expectModel();
      return;
    }
    Images<Source, Result, Tap>(random, member, g).expectModel();
  });
}

void verifyChecks(const Member& member, const Call& valid, const GuardedMemory& dst, int sampleBytes, bool hasDivisor) {
  const int rowCount = valid.roi.height + valid.kernelSize - 1;
  std::vector<std::vector<const void*>> arrays;
  Fault<Call> nullRow{"a row null", {"srcRows"}, orvStsNullPointer, {}};
  for (int missing = 0; missing < rowCount; ++missing) {
    arrays.emplace_back(valid.srcRows, valid.srcRows + rowCount);
    arrays.back()[static_cast<size_t>(missing)] = nullptr;
  }
  for (const auto& array : arrays) nullRow.variants.push_back([&array](Call& c) { c.srcRows = array.data(); });
  const bool low = member.arithmetic == Arithmetic::low;
  const int stepBytes = valid.roi.width * (low ? 1 : member.channels) * sampleBytes;

  CheckOrder<Call> order(valid, member.run);
  order.watch(dst);
  auto& faults = order.faults;
  faults = {nullFault("srcRows", &Call::srcRows),
            nullFault("dst", &Call::dst),
            nullFault("kernel", &Call::kernel),
            sizeFault("roi", &Call::roi),
            nullRow,
            valueFault("kernelSize", &Call::kernelSize, {0, -1, INT32_MIN}, orvStsBadSize),
            stepFault("dstStep", &Call::dstStep, stepBytes),
            rowTooLongFault("roi", &Call::roi)};
  if (sampleBytes == 2)
    faults.push_back(alignFault<int16_t>("dstStep", &Call::dstStep));
  if (sampleBytes == 4)
    faults.push_back(alignFault<float>("dstStep", &Call::dstStep));
  faults.push_back(nullFault("buffer", &Call::buffer));
  if (hasDivisor)
    faults.push_back(valueFault("divisor", &Call::divisor, {0}, orvStsBadArg));
  order.verify();
}

template <class Source, class Result, class Tap>
void expectChecks(const Member& member) {
  Random random(member.name + " checks", 0);
  const Images<Source, Result, Tap> images(random, member, {{11, 3}, 5, 4});
  verifyChecks(member, images.call(), images.dst.memory(), sizeof(Result), !std::is_same_v<Source, float>);
}

template <class Source, class Result, class Tap>
void expectChecksum(const Member& member) {
  Checksum checksum;
  const auto add = [&](const Images<Source, Result, Tap>& images) { addRun(checksum, member, images); };
  forCases(member.name + " checksum", 24, [&](Random& random) { add({random, member, drawGeometry(random)}); });
  Random random(member.name, 1);
  TestImage<Source> photo = memberPhotograph<Source>(member.channels);
  const OrvSize size = photo.size();
  std::vector<int> order;
  for (int y = 0; y < size.height; ++y) order.push_back(y);
  add({random, member, {{size.width, size.height - 4}, 5, 16}, {1, 4, 6, 4, 1}, std::move(photo), order});
  expectRecorded(member.name, checksum);
}

#define COLUMN_PIPELINE(type, channels, arithmetic, Source, Result, Tap)                                              \
  static Member member_##type##_C##channels() {                                                                       \
    return {"orviFilterColumnPipeline_" #type "_C" #channels "R",                                                     \
            [](const Call& c) { return run(orviFilterColumnPipeline_##type##_C##channels##R, c); },                   \
            orviFilterColumnPipelineGetBufferSize_##type##_C##channels##R, channels, Arithmetic::arithmetic};         \
  }                                                                                                                   \
  ORV_MEMBER_TESTS(orviFilterColumnPipeline_##type##_C##channels##R, (member_##type##_C##channels()), Source, Result, \
                   Tap)
#define COLUMN_PIPELINES(type, arithmetic, Source, Result, Tap) \
  COLUMN_PIPELINE(type, 1, arithmetic, Source, Result, Tap)     \
  COLUMN_PIPELINE(type, 3, arithmetic, Source, Result, Tap)

COLUMN_PIPELINES(16s, ordinary, int16_t, int16_t, int16_t)
COLUMN_PIPELINES(16s8u, ordinary, int16_t, uint8_t, int16_t)
COLUMN_PIPELINES(16s8s, ordinary, int16_t, int8_t, int16_t)
COLUMN_PIPELINES(16u, ordinary, uint16_t, uint16_t, uint16_t)
COLUMN_PIPELINES(32f, ordinary, float, float, float)
COLUMN_PIPELINES(Low_16s, low, int16_t, int16_t, int16_t)

// ------------------------------------------------------------------------------------------------------------- By hand

/// One row of `count` results from rows that each hold one value.
template <class Result, class Source, class Tap>
std::vector<Result> filterColumn(const Member& member, int count, const std::vector<Source>& values,
                                 const std::vector<Tap>& kernel, int divisor) {
  const OrvSize roi{count, 1};
  const int taps = static_cast<int>(kernel.size());
  Random random("by hand", 0);
  const GuardedBlock buffer = drawBuffer(random, member.query, roi, taps);
  std::vector<std::vector<Source>> rows;
  std::vector<const void*> pointers;
  for (Source value : values) rows.emplace_back(static_cast<size_t>(count), value);
  for (const auto& row : rows) pointers.push_back(row.data());
  std::vector<Result> result(static_cast<size_t>(count));
  EXPECT_EQ(orvStsOk, member.run({pointers.data(), result.data(), count * static_cast<int>(sizeof(Result)), roi,
                                  kernel.data(), taps, divisor, buffer.data()}));
  return result;
}

using Row = std::vector<int16_t>;

TEST(ColumnPipelines, BlocksRoundAndTheTailTruncates) {
  const auto expected = [](auto block, auto tail) {
    std::vector<decltype(block)> row(32, block);
    row.resize(47, tail);
    return row;
  };
  for (const Row& kernel : {Row{1, 3, 1}, Row{2, 3, 0}}) {
    EXPECT_EQ(expected(int16_t{2}, int16_t{1}), filterColumn<int16_t>(member_16s_C1(), 47, Row{1, 1, 1}, kernel, 3));
    EXPECT_EQ(expected(int16_t{-2}, int16_t{-1}), filterColumn<int16_t>(member_16s_C1(), 47, Row{1, 1, 1}, kernel, -3));
    EXPECT_EQ(expected(uint8_t{2}, uint8_t{1}), filterColumn<uint8_t>(member_16s8u_C1(), 47, Row{1, 1, 1}, kernel, 3));
    EXPECT_EQ(expected(int8_t{-2}, int8_t{-1}), filterColumn<int8_t>(member_16s8s_C1(), 47, Row{1, 1, 1}, kernel, -3));
  }
  const std::vector<uint16_t> ones{1, 1, 1}, kernel{1, 3, 1};
  EXPECT_EQ(expected(uint16_t{2}, uint16_t{1}), filterColumn<uint16_t>(member_16u_C1(), 47, ones, kernel, 3));
  // Negative divisors pass here; nothing is below zero.
  EXPECT_EQ(expected(uint16_t{0}, uint16_t{0}), filterColumn<uint16_t>(member_16u_C1(), 47, ones, kernel, -3));
}

TEST(ColumnPipelines, NarrowResultsSaturate) {
  const Row large{20000, 20000, 20000}, small{-20000, -20000, -20000}, kernel{1, 1, 1};
  EXPECT_EQ(Row(47, 32767), filterColumn<int16_t>(member_16s_C1(), 47, large, kernel, 1));
  EXPECT_EQ(Row(47, -32768), filterColumn<int16_t>(member_16s_C1(), 47, small, kernel, 1));
  EXPECT_EQ(std::vector<uint8_t>(47, 255), filterColumn<uint8_t>(member_16s8u_C1(), 47, large, kernel, 1));
  EXPECT_EQ(std::vector<uint8_t>(47, 0), filterColumn<uint8_t>(member_16s8u_C1(), 47, small, kernel, 1));
  EXPECT_EQ(std::vector<int8_t>(47, 127), filterColumn<int8_t>(member_16s8s_C1(), 47, large, kernel, 1));
  EXPECT_EQ(std::vector<int8_t>(47, -128), filterColumn<int8_t>(member_16s8s_C1(), 47, small, kernel, 1));
}

TEST(ColumnPipelines, LowWrapsInItsBlocksOnly) {
  Row expected(32, -2768);  // (60000 - 65536) / 2
  expected.resize(47, 30000);
  EXPECT_EQ(expected, filterColumn<int16_t>(member_Low_16s_C1(), 47, Row{20000, 20000, 20000}, Row{1, 1, 1}, 2));
}

TEST(ColumnPipelines, LowPairsWrapInTheTailAndTheOddRowDoesNot) {
  const Row kernel{1, 1, 1, 1, 1};
  const std::vector<int16_t> row(9, 8000);
  for (const int height : {1, 2, 3, 4, 5}) {
    const OrvSize roi{9, height};
    Random random("pairs", 0);
    const Member member = member_Low_16s_C1();
    const GuardedBlock buffer = drawBuffer(random, member.query, roi, 5);
    const std::vector<const void*> rows(static_cast<size_t>(height + 4), row.data());
    std::vector<int16_t> result(static_cast<size_t>(9 * height));
    ASSERT_EQ(orvStsOk, member.run({rows.data(), result.data(), 18, roi, kernel.data(), 5, 16, buffer.data()}));
    for (int y = 0; y < height; ++y) {
      const bool paired = height >= 3 && y < height / 2 * 2;
      EXPECT_EQ(paired ? -1596 : 2500, result[static_cast<size_t>(9 * y)]) << "row " << y << " of " << height;
    }
  }
}

TEST(ColumnPipelines, LowInMoreSamplesThanTheCacheHolds) {
  // From 262145 samples on, the pairs of 5 taps may be stored past the cache: aligned and not, with an odd last row.
  const Member member = member_Low_16s_C1();
  for (const OrvSize roi : {OrvSize{2051, 129}, OrvSize{2048, 129}}) {
    Random random("large low columns", static_cast<uint32_t>(roi.width));
    Images<int16_t, int16_t, int16_t>(random, member, {roi, 5, 16}, {1, 4, 6, 4, 1}).expectModel();
  }
}

TEST(ColumnPipelines, RowsAreCountedBeforeTheKernelSizeIsJudged) {
  const Member member = member_16s_C1();
  const int16_t row[4] = {}, kernel[1] = {1};
  const void* const rows[] = {row, row, nullptr};
  int16_t dst[4] = {};
  uint8_t buffer[256];
  Call call{rows, dst, 8, {4, 1}, kernel, 0, 1, buffer};
  EXPECT_EQ(orvStsBadSize, member.run(call));  // no row
  call.roi.height = 3;
  EXPECT_EQ(orvStsBadSize, member.run(call));  // two rows
  call.kernelSize = 1;
  EXPECT_EQ(orvStsNullPointer, member.run(call));
  call.kernelSize = -2;
  EXPECT_EQ(orvStsBadSize, member.run(call));
  call.roi.height = 4;
  call.kernelSize = 0;
  EXPECT_EQ(orvStsNullPointer, member.run(call));
}

TEST(ColumnPipelines, LowColourStepIsComparedWithOneChannel) {
  const Member low = member_Low_16s_C3();
  const std::vector<int16_t> row{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
  const int16_t kernel[] = {1};
  const void* const rows[] = {row.data()};
  std::vector<int16_t> dst(12);
  uint8_t buffer[512];
  EXPECT_EQ(orvStsOk, low.run({rows, dst.data(), 8, {4, 1}, kernel, 1, 1, buffer}));
  EXPECT_EQ(row, dst);
  EXPECT_EQ(orvStsBadStep, low.run({rows, dst.data(), 6, {4, 1}, kernel, 1, 1, buffer}));
  EXPECT_EQ(orvStsBadStep, member_16s_C3().run({rows, dst.data(), 22, {4, 1}, kernel, 1, 1, buffer}));
}

}  // namespace
}  // namespace orvtest
