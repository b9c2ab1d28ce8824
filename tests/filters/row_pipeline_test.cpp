// The row pipelines against their reference model.
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
  const void* src;
  int srcStep;
  void* const* dstRows;
  OrvSize roi;
  const void* kernel;
  int kernelSize, xAnchor, borderMode;
  const void* borderValue;
  int divisor;
  uint8_t* buffer;
};

template <class Border>
Border borderArgument(const Call& c) {
  if constexpr (std::is_pointer_v<Border>)
    return static_cast<Border>(c.borderValue);
  else
    return load(static_cast<const Border*>(c.borderValue));
}

template <class Source, class Result, class Tap, class Border>
OrvStatus run(OrvStatus (*function)(const Source*, int, Result* const*, OrvSize, const Tap*, int, int, OrvBorderMode,
                                    Border, int, uint8_t*),
              const Call& c) {
  return checkedCall(function, static_cast<const Source*>(c.src), c.srcStep,
                     reinterpret_cast<Result* const*>(c.dstRows), c.roi, static_cast<const Tap*>(c.kernel),
                     c.kernelSize, c.xAnchor, c.borderMode, borderArgument<Border>(c), c.divisor, c.buffer);
}
template <class Border>
OrvStatus run(OrvStatus (*function)(const float*, int, float* const*, OrvSize, const float*, int, int, OrvBorderMode,
                                    Border, uint8_t*),
              const Call& c) {
  return checkedCall(function, static_cast<const float*>(c.src), c.srcStep, reinterpret_cast<float* const*>(c.dstRows),
                     c.roi, static_cast<const float*>(c.kernel), c.kernelSize, c.xAnchor, c.borderMode,
                     borderArgument<Border>(c), c.buffer);
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
  int taps, anchor, word, divisor;
};

Geometry drawGeometry(Random& random, bool positiveDivisor) {
  const int taps = drawKernelSize(random);
  return {{drawWidth(random, taps), random.between(1, 4)},
          taps,
          random.oneIn(2) ? taps / 2 : random.below(taps),
          drawBorderWord(random),
          drawDivisor(random, positiveDivisor)};
}

template <class Source, class Result, class Tap>
struct Images {
  const Member& member;
  Geometry g;
  std::vector<Tap> taps;
  TestImage<Source> src;
  TestImage<Result> rows;
  std::vector<int> order;
  GuardedBlock dstRows, kernel, borderValue, buffer;

  Images(Random& random, const Member& m, const Geometry& geometry, std::vector<Tap> coefficients,
         TestImage<Source> source)
      : member(m),
        g(geometry),
        taps(std::move(coefficients)),
        src(std::move(source)),
        rows(drawRows<Result>(random, "rows", g.roi, {.channels = m.channels})),
        order(drawOrder(random, g.roi.height)),
        dstRows(guardedCopy(random, "dstRows", rowsInOrder(rows, order))),
        kernel(guardedCopy(random, "kernel", taps)),
        borderValue(drawBorderValue<Source>(random, m.channels, Values::ordinary)),
        buffer(drawBuffer(random, m.query, g.roi, g.taps)) {
    src.protectReadOnly();
  }

  /// Exactly the pixels in memory that the word vouches for.
  static TestImage<Source> drawSource(Random& random, const Member& m, const Geometry& g) {
    const Reach reach = reachOf(g.roi.width, g.taps, g.anchor, g.word, model::mapColumn);
    return drawRows<Source>(random, "src", g.roi,
                            {.channels = m.channels,
                             .values = drawFilterValues<Source>(random),
                             .margins = {.left = reach.low, .right = reach.high}});
  }
  Images(Random& random, const Member& m, const Geometry& geometry)
      : Images{random, m, geometry, drawTaps<Tap>(random, geometry.taps), drawSource(random, m, geometry)} {}

  Call call() const {
    return {src.data(), src.step(), dstRows.as<void*>(), g.roi,     kernel.data(), g.taps,
            g.anchor,   g.word,     borderValue.data(),  g.divisor, buffer.data()};
  }

  void runModel(const TestImage<Result>& expected) const {
    const std::vector<Result*> out = rowsInOrder(expected, order);
    for (int y = 0; y < g.roi.height; ++y) {
      const model::ExtendedRow<Source> in{addressOf(src.data(), src.step(), 0, y), g.roi.width, member.channels, g.word,
                                          borderValue.as<Source>()};
      Result* row = out[static_cast<size_t>(y)];
      if constexpr (std::is_same_v<Source, int16_t>)
        if (member.arithmetic == Arithmetic::low) {
          model::filterRowLow(in, row, taps.data(), g.taps, g.anchor, g.divisor);
          continue;
        }
      model::filterRow(in, row, taps.data(), g.taps, g.anchor, g.divisor);
    }
  }

  void expectModel() const {
    const TestImage<Result> expected(rows);
    runModel(expected);
    EXPECT_EQ(orvStsOk, member.run(call()));
    rows.expectSame(expected);
    if (testing::Test::HasFailure())
      ADD_FAILURE() << src.describe() << ", " << g.taps << " taps, anchor " << g.anchor << ", word " << g.word
                    << ", divisor " << g.divisor << ", kernel " << testing::PrintToString(taps);
  }
};

// ---------------------------------------------------------------------------------------------------- The three tests

template <class Source, class Result, class Tap>
void expectModel(const Member& member) {
  const bool positiveDivisor = std::is_same_v<Source, uint16_t>;
  forCases(member.name, 250, [&](Random& random) {
    if (member.arithmetic == Arithmetic::low && random.oneIn(3)) {
      // Near and in the replicating path of 5 taps.
      const int centre = random.oneIn(2) ? 6 : 1000;
      const std::vector<Tap> taps{1, 4, static_cast<Tap>(centre), 4, static_cast<Tap>(random.oneIn(8) ? 5 : 1)};
      const Geometry g{{random.between(8, 60), random.between(1, 4)},
                       5,
                       random.oneIn(8) ? 1 : 2,
                       random.oneIn(8) ? drawBorderWord(random) : orvBorderReplicate,
                       random.oneIn(8) ? 15 : 16};
      using Drawn = Images<Source, Result, Tap>;
      Drawn(random, member, g, taps, Drawn::drawSource(random, member, g)).expectModel();
      return;
    }
    Images<Source, Result, Tap>(random, member, drawGeometry(random, positiveDivisor)).expectModel();
  });
}

/// The row pointers with one of them null.
std::vector<std::vector<void*>> arraysWithANull(void* const* rows, int count) {
  std::vector<std::vector<void*>> arrays;
  for (int missing = 0; missing < count; ++missing) {
    arrays.emplace_back(rows, rows + count);
    arrays.back()[static_cast<size_t>(missing)] = nullptr;
  }
  return arrays;
}

void verifyChecks(const Member& member, const Call& valid, const GuardedMemory& rows, int sampleBytes, bool hasDivisor,
                  bool positiveDivisor) {
  const auto arrays = arraysWithANull(valid.dstRows, valid.roi.height);
  Fault<Call> nullRow{"a row null", {"dstRows"}, orvStsNullPointer, {}};
  for (const auto& array : arrays) nullRow.variants.push_back([&array](Call& c) { c.dstRows = array.data(); });
  const Fault<Call> badDivisor = positiveDivisor
                                     ? valueFault("divisor", &Call::divisor, {0, -1, INT32_MIN}, orvStsBadArg)
                                     : valueFault("divisor", &Call::divisor, {0}, orvStsBadArg);
  const bool divisorLast = sampleBytes == 1 && member.channels == 1;
  const int rowBytes = valid.roi.width * member.channels * sampleBytes;

  CheckOrder<Call> order(valid, member.run);
  order.watch(rows);
  auto& faults = order.faults;
  faults = {nullFault("src", &Call::src),       nullFault("dstRows", &Call::dstRows),
            nullFault("kernel", &Call::kernel), nullFault("buffer", &Call::buffer),
            sizeFault("roi", &Call::roi),       nullRow};
  if (member.channels == 3)
    faults.push_back(nullFault("borderValue", &Call::borderValue));
  faults.push_back(valueFault("kernelSize", &Call::kernelSize, {0, -1, INT32_MIN}, orvStsBadSize));
  faults.push_back(valueFault("xAnchor", &Call::xAnchor,
                              {-1, valid.kernelSize, valid.kernelSize + 1, INT32_MIN, INT32_MAX}, orvStsBadAnchor));
  faults.push_back(stepFault("srcStep", &Call::srcStep, rowBytes));
  faults.push_back(rowTooLongFault("roi", &Call::roi));
  if (sampleBytes == 2)
    faults.push_back(alignFault<int16_t>("srcStep", &Call::srcStep));
  if (sampleBytes == 4)
    faults.push_back(alignFault<float>("srcStep", &Call::srcStep));
  if (hasDivisor && !divisorLast)
    faults.push_back(badDivisor);
  faults.push_back(valueFault("borderMode", &Call::borderMode,
                              {0,    2,    4,     5,     7,     15,   0x10, 0x40,      0xc0,          0xe0,
                               0xf2, 0xf5, 0x100, 0x101, 0x1f0, 4096, -1,   INT32_MIN, INT32_MIN + 1, INT32_MAX},
                              orvStsBadBorder));
  if (hasDivisor && divisorLast)
    faults.push_back(badDivisor);
  order.verify();
}

template <class Source, class Result, class Tap>
void expectChecks(const Member& member) {
  Random random(member.name + " checks", 0);
  const Images<Source, Result, Tap> images(random, member, {{11, 3}, 5, 3, orvBorderMirror, 4});
  verifyChecks(member, images.call(), images.rows.memory(), sizeof(Source), !std::is_same_v<Source, float>,
               std::is_same_v<Source, uint16_t>);
}

template <class Source, class Result, class Tap>
void expectChecksum(const Member& member) {
  Checksum checksum;
  const auto add = [&](const Images<Source, Result, Tap>& images) {
    checksum.add(member.run(images.call()));
    for (Result* row : rowsInOrder(images.rows, images.order))
      checksum.addBytes(row, sizeof(Result) * static_cast<size_t>(images.g.roi.width * member.channels));
  };
  forCases(member.name + " checksum", 24, [&](Random& random) {
    add({random, member, drawGeometry(random, std::is_same_v<Source, uint16_t>)});
  });
  Random random(member.name, 1);
  TestImage<Source> photo = memberPhotograph<Source>(member.channels);
  const OrvSize size = photo.size();
  add({random, member, {size, 5, 2, orvBorderMirror, 17}, {1, 4, 7, 4, 1}, std::move(photo)});
  expectRecorded(member.name, checksum);
}

#define ROW_PIPELINE(type, channels, arithmetic, Source, Result, Tap)                                            \
  static Member member_##type##_C##channels() {                                                                  \
    return {"orviFilterRowBorderPipeline_" #type "_C" #channels "R",                                             \
            [](const Call& c) { return run(orviFilterRowBorderPipeline_##type##_C##channels##R, c); },           \
            orviFilterRowBorderPipelineGetBufferSize_##type##_C##channels##R, channels, Arithmetic::arithmetic}; \
  }                                                                                                              \
  ORV_MEMBER_TESTS(orviFilterRowBorderPipeline_##type##_C##channels##R, (member_##type##_C##channels()), Source, \
                   Result, Tap)
#define ROW_PIPELINES(...) ROW_PIPELINES_(__VA_ARGS__)
#define ROW_PIPELINES_(type, arithmetic, Source, Result, Tap) \
  ROW_PIPELINE(type, 1, arithmetic, Source, Result, Tap)      \
  ROW_PIPELINE(type, 3, arithmetic, Source, Result, Tap)

ROW_PIPELINES(8u16s, ordinary, uint8_t, int16_t, int16_t)
ROW_PIPELINES(16s, ordinary, int16_t, int16_t, int16_t)
ROW_PIPELINES(16u, ordinary, uint16_t, uint16_t, uint16_t)
ROW_PIPELINES(32f, ordinary, float, float, float)
ROW_PIPELINES(Low_16s, low, int16_t, int16_t, int16_t)

// ------------------------------------------------------------------------------------------------------------- By hand

/// One row through a member of one channel. Coefficients and results are of one type.
template <class Source, class Result = std::conditional_t<std::is_same_v<Source, float>, float, int16_t>>
std::vector<Result> filterRow(const Member& member, const std::vector<Source>& row, const std::vector<Result>& kernel,
                              int anchor, int word, int divisor) {
  const OrvSize roi{static_cast<int>(row.size()), 1};
  const int taps = static_cast<int>(kernel.size());
  Random random("by hand", 0);
  const GuardedBlock buffer = drawBuffer(random, member.query, roi, taps);
  std::vector<Result> result(row.size());
  void* const rows[] = {result.data()};
  const Source zero = 0;
  EXPECT_EQ(orvStsOk, member.run({row.data(), roi.width * static_cast<int>(sizeof(Source)), rows, roi, kernel.data(),
                                  taps, anchor, word, &zero, divisor, buffer.data()}));
  return result;
}

using Row8 = std::vector<uint8_t>;
using Row16 = std::vector<int16_t>;

TEST(RowPipelines, EdgesTruncateAndTheCentreRounds) {
  const Member member = member_8u16s_C1();
  EXPECT_EQ((Row16{1, 2, 2, 2, 2, 1}), filterRow(member, Row8(6, 1), {1, 3, 1}, 1, orvBorderReplicate, 3));
  EXPECT_EQ((Row16{-1, -2, -2, -2, -2, -1}), filterRow(member, Row8(6, 1), {1, 3, 1}, 1, orvBorderReplicate, -3));
  EXPECT_EQ((Row16{1, 3, 4, 5}), filterRow(member, Row8{1, 2, 3, 4}, {1, 2, 1}, 1, orvBorderReplicate, 3));
  // A tie goes to the even neighbour.
  EXPECT_EQ((Row16{2, 2, 2, 2, 2, 2}), filterRow(member, Row8(6, 1), {1, 3, 1}, 1, orvBorderReplicate, 2));
  EXPECT_EQ((Row16{3, 4, 4, 4, 4, 3}), filterRow(member, Row8(6, 1), {1, 5, 1}, 1, orvBorderReplicate, 2));
  // The last anchor leaves no right zone, the first no left one.
  EXPECT_EQ((Row16{1, 1, 2, 2}), filterRow(member, Row8(4, 1), {1, 3, 1}, 2, orvBorderReplicate, 3));
  EXPECT_EQ((Row16{2, 2, 1, 1}), filterRow(member, Row8(4, 1), {1, 3, 1}, 0, orvBorderReplicate, 3));
}

TEST(RowPipelines, UndividedSumsSaturate) {
  const Member member = member_8u16s_C1();
  for (const int width : {1, 2, 3, 9, 40}) {
    const size_t count = static_cast<size_t>(width);
    EXPECT_EQ(Row16(count, 32767), filterRow(member, Row8(count, 255), {129, 1, 0}, 1, orvBorderReplicate, 1));
    EXPECT_EQ(Row16(count, -32768), filterRow(member, Row8(count, 255), {0, -129, 0}, 1, orvBorderReplicate, 1));
  }
}

TEST(RowPipelines, MirrorInARowOfOnePixelReplicates) {
  for (int anchor = 0; anchor < 5; ++anchor) {
    const Row16 kernel{1, 2, 3, 4, 5};
    EXPECT_EQ((Row16{150}), filterRow(member_8u16s_C1(), Row8{10}, kernel, anchor, orvBorderMirror, 1));
    EXPECT_EQ((Row16{150}), filterRow(member_16s_C1(), Row16{10}, kernel, anchor, orvBorderMirror, 1));
    EXPECT_EQ((Row16{150}), filterRow(member_Low_16s_C1(), Row16{10}, kernel, anchor, orvBorderMirror, 1));
  }
}

TEST(RowPipelines, RowNarrowerThanItsKernelReflectsBackAndForth) {
  // 2, 3, 2, 1, 2, 3, 2 are the row 1, 2, 3 and what lies around it; the weights are decimal places.
  EXPECT_EQ((Row16{21232, 32123, 23212}),
            filterRow(member_16s_C1(), Row16{1, 2, 3}, {1, 10, 100, 1000, 10000}, 3, orvBorderMirror, 1));
}

TEST(RowPipelines, LargeKernelsAreScaledBeforeTheySum) {
  const Row16 constant(40, 30000);
  const Row16 result = filterRow(member_16s_C1(), constant, {32767, 32767, 32767}, 1, orvBorderReplicate, 98301);
  for (size_t x = 1; x + 1 < result.size(); ++x) EXPECT_EQ(30000, result[x]);
}

TEST(RowPipelines, LowestCoefficientInTheGeneralKernel) {
  const Row16 lowest(40, -32768), one(40, 1);
  const Row16 kernel{-32768, 0, 0, 0};
  EXPECT_EQ(Row16(40, 32767), filterRow(member_16s_C1(), lowest, kernel, 1, orvBorderReplicate, 32768));
  EXPECT_EQ(Row16(40, -1), filterRow(member_16s_C1(), one, kernel, 1, orvBorderReplicate, 32768));
}

/// Whatever the kernel size, and wherever in the row.
TEST(RowPipelines, TheFirstOfSeveralNansSurvives) {
  const auto nan = [](uint32_t payload) { return std::bit_cast<float>(0x7fc00000u + payload); };
  std::vector<float> row;
  for (uint32_t x = 0; x < 61; ++x) row.push_back(nan(x));
  for (const size_t taps : {1u, 2u, 3u, 4u, 5u, 6u, 7u, 9u}) {
    const std::vector<float> result =
        filterRow(member_32f_C1(), row, std::vector<float>(taps, 1.0f), 0, orvBorderReplicate, 1);
    for (uint32_t x = 0; x < row.size(); ++x)
      EXPECT_EQ(0x7fc00000u + x, std::bit_cast<uint32_t>(result[x])) << taps << " taps";
  }
}

TEST(RowPipelines, LowWrapsInTheCentreOnly) {
  const Row16 result = filterRow(member_Low_16s_C1(), Row16(40, 20000), {1, 1, 1}, 1, orvBorderReplicate, 2);
  Row16 expected(40, -2768);  // (60000 - 65536) / 2
  expected.front() = expected.back() = 30000;
  EXPECT_EQ(expected, result);
  // Undivided, edges wrap like the centre.
  EXPECT_EQ(Row16(40, -5536), filterRow(member_Low_16s_C1(), Row16(40, 20000), {1, 1, 1}, 1, orvBorderReplicate, 1));
}

TEST(RowPipelines, LowInMoreSamplesThanTheCacheHolds) {
  // From 524289 samples on, the replicating kernel of 5 taps may store past the cache.
  Random random("large low rows", 0);
  const Member member = member_Low_16s_C1();
  const Geometry g{{2051, 256}, 5, 2, orvBorderReplicate, 16};
  TestImage<int16_t> src = drawImage<int16_t>(random, "src", g.roi);
  Images<int16_t, int16_t, int16_t>(random, member, g, {1, 4, 6, 4, 1}, std::move(src)).expectModel();
}

}  // namespace
}  // namespace orvtest
