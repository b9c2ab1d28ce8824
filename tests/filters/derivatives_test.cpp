// The table of derivatives and the gradient vectors against their reference model.
#include "filters/derivatives.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "filters/derivative_model.h"
#include "filters/filter_support.h"
#include "support/cases.h"
#include "support/check_order.h"
#include "support/checked_call.h"

namespace orvtest {
namespace {

template <class Source>
using ResultOf = std::conditional_t<std::is_same_v<Source, float>, float, int16_t>;

// ---------------------------------------------------------------------------------------------- Table of derivatives

template <class Source>
struct Call {
  const Source* src;
  int srcStep;
  ResultOf<Source>* dst;
  int dstStep;
  OrvSize roi;
  OrvMaskCode mask;
  OrvBorderMode borderMode;
  Source borderValue;
  void* buffer;
};

template <class Source>
using Filter = OrvStatus(const Source*, int, ResultOf<Source>*, int, OrvSize, OrvMaskCode, OrvBorderMode, Source,
                         void*);

template <class Source>
auto* tableFilter() {
  if constexpr (std::is_same_v<Source, float>)
    return orv::owniFilter2_32f_C1R;
  else
    return orv::owniFilter2_8u16s_C1R;
}

template <class Source>
int filterBufferSize(OrvSize roi, OrvMaskCode mask) {
  int size = -1;
  if constexpr (std::is_same_v<Source, float>)
    EXPECT_EQ(orvStsOk, checkedCall(orv::owniFilter2GetBufferSize_32f_C1R, roi, mask, &size));
  else
    EXPECT_EQ(orvStsOk, checkedCall(orv::owniFilter2GetBufferSize_8u16s_C1R, roi, mask, &size));
  return size;
}

/// One call of an entry of the table, of the function that bears its name if there is one, and of the model.
template <class Source>
void expectEntry(Random& random, size_t entry, OrvMaskCode mask, int word, Filter<Source>* named) {
  using Result = ResultOf<Source>;
  const OrvSize size = random.oneIn(4) ? OrvSize{random.between(1, 6), random.between(1, 6)} : drawSize(random);
  const Values values = random.pick({Values::few, Values::ordinary, Values::finite, Values::anything});
  const int radius = mask == orvMask3x3 ? 1 : 2;
  const DrawOptions options{.values = values, .margins = marginsOf(word, radius, radius)};
  const auto src = drawImageOfAnyStep<Source>(random, "src", size, options);
  const auto dst = drawImage<Result>(random, "dst", size);
  const Source borderValue = drawSample<Source>(random, values);
  const TestImage<Result> expected(dst), again(dst);
  expected.forRegion([&](int x, int y, int) {
    const auto value = model::derivativeAt(viewOf(src), entry, mask, x, y, word, borderValue);
    if constexpr (std::is_same_v<Source, float>)
      expected.setPixel(x, y, value);
    else
      expected.setPixel(x, y, model::low16(value));
  });
  src.protectReadOnly();
  const GuardedBlock buffer("buffer", filterBufferSize<Source>(size, mask), random);
  buffer.fill(random);
  EXPECT_EQ(orvStsOk, checkedCall(tableFilter<Source>(), static_cast<orv::Derivative>(entry), src.data(), src.step(),
                                  dst.data(), dst.step(), size, mask, word, borderValue, buffer.data()));
  expectSameButNans(expected, dst);
  if (named == nullptr)
    return;
  EXPECT_EQ(orvStsOk, checkedCall(named, src.data(), src.step(), again.data(), again.step(), size, mask, word,
                                  borderValue, buffer.data()));
  expectSameButNans(expected, again);
}

template <class Source>
void expectTable(const std::string& name, const std::vector<std::pair<orv::Derivative, Filter<Source>*>>& names) {
  for (size_t entry = 0; entry < model::derivativeKernels().size(); ++entry) {
    Filter<Source>* named = nullptr;
    for (const auto& [derivative, function] : names)
      if (static_cast<size_t>(derivative) == entry)
        named = function;
    for (const OrvMaskCode mask : {orvMask3x3, orvMask5x5}) {
      if (!model::hasMask(entry, mask))
        continue;
      for (const int word : filterBorderWords()) {
        SCOPED_TRACE(testing::Message() << model::derivativeKernels()[entry].name << ", mask " << mask << ", word 0x"
                                        << std::hex << word);
        const std::string caseName = name + std::to_string(entry) + " " + std::to_string(mask + 256 * word);
        forCases(caseName, 1, [&](Random& random) { expectEntry<Source>(random, entry, mask, word, named); });
        if (testing::Test::HasFailure())
          return;
      }
    }
  }
}

#define NAMED(operation, entry) {orv::Derivative::entry, orv::orviFilter##operation##_8u16s_C1R},
#define NAMED_32F(operation, entry) {orv::Derivative::entry, orv::orviFilter##operation##_32f_C1R},

TEST(Derivatives, TableOfBytes) { expectTable<uint8_t>("derivatives 8u16s", {ORV_DERIVATIVE_FILTERS(NAMED)}); }
TEST(Derivatives, TableOfFloats) { expectTable<float>("derivatives 32f", {ORV_DERIVATIVE_FILTERS(NAMED_32F)}); }

template <class Source>
void expectTableChecks() {
  using C = Call<Source>;
  using Result = ResultOf<Source>;
  const OrvSize size{9, 3};
  const TestImage<Source> src("src", {.size = size});
  const TestImage<Result> dst("dst", {.size = size});
  src.fillWith(1);
  const GuardedBlock buffer("buffer", filterBufferSize<Source>(size, orvMask5x5));
  for (size_t entry = 0; entry < model::derivativeKernels().size(); ++entry) {
    SCOPED_TRACE(model::derivativeKernels()[entry].name);
    CheckOrder<C> order(
        {src.data(), src.step(), dst.data(), dst.step(), size, orvMask3x3, 1, 0, buffer.data()}, [&](const C& c) {
          return checkedCall(tableFilter<Source>(), static_cast<orv::Derivative>(entry), c.src, c.srcStep, c.dst,
                             c.dstStep, c.roi, c.mask, c.borderMode, c.borderValue, c.buffer);
        });
    order.watch(src, dst, buffer);
    order.faults = {nullFault("src", &C::src),
                    nullFault("dst", &C::dst),
                    nullFault("buffer", &C::buffer),
                    sizeFault("roi", &C::roi),
                    stepFault("srcStep", &C::srcStep, src.step()),
                    stepFault("dstStep", &C::dstStep, dst.step())};
    if (sizeof(Result) == 2)
      order.faults.push_back(alignFault<Result>("dstStep", &C::dstStep));
    order.faults.push_back(
        valueFault("borderMode", &C::borderMode, {256, 0, 2, 5, 0x10, 0xF2, 257, -1}, orvStsBadBorder));
    order.faults.push_back(valueFault("mask", &C::mask, {0, 3, 34, 53, -33}, orvStsBadMaskCode));
    if (!model::hasMask(entry, orvMask5x5))
      order.faults.push_back(valueFault("mask", &C::mask, {orvMask5x5}, orvStsBadMaskCode));
    order.verify();
  }
}

TEST(Derivatives, ChecksOfBytes) { expectTableChecks<uint8_t>(); }
TEST(Derivatives, ChecksOfFloats) { expectTableChecks<float>(); }

TEST(Derivatives, OrderOfTheTable) {
  using enum orv::Derivative;
  const std::vector<orv::Derivative> order = {SobelVert,       SobelHoriz,       ScharrVertMask, ScharrHorizMask,
                                              PrewittVert,     PrewittHoriz,     RobertsDown,    RobertsUp,
                                              SobelVertSecond, SobelHorizSecond, SobelNegVert};
  for (size_t i = 0; i < order.size(); ++i) EXPECT_EQ(i, static_cast<size_t>(order[i]));
}

TEST(Derivatives, SignsOfTheVerticalForms) {
  const OrvSize size{9, 3};
  const TestImage<uint8_t> src("src", {.size = size});
  const TestImage<int16_t> dst("dst", {.size = size});
  src.forRegion([&](int x, int y, int) { src.setPixel(x, y, static_cast<uint8_t>(10 * x)); });  // brighter to the right
  const GuardedBlock buffer("buffer", filterBufferSize<uint8_t>(size, orvMask3x3));
  const auto middle = [&](auto* filter) {
    EXPECT_EQ(orvStsOk, checkedCall(filter, src.data(), src.step(), dst.data(), dst.step(), size, orvMask3x3,
                                    orvBorderReplicate, 0, buffer.data()));
    return int{dst.pixel(4, 1)};
  };
  EXPECT_EQ(-80, middle(orv::orviFilterSobelVertBorder_8u16s_C1R)) << "left minus right";
  EXPECT_EQ(80, middle(orv::orviFilterSobelNegVertBorder_8u16s_C1R));
  EXPECT_EQ(320, middle(orv::orviFilterScharrVertMaskBorder_8u16s_C1R)) << "right minus left";
  EXPECT_EQ(0, middle(orv::orviFilterSobelHorizBorder_8u16s_C1R));
  EXPECT_EQ(0, middle(orv::orviFilterScharrHorizMaskBorder_8u16s_C1R));
}

TEST(Derivatives, BufferSizes) {
  for (const OrvMaskCode mask : {orvMask3x3, orvMask5x5})
    for (const int width : {1, 16, 17, 640}) {
      int bytes = 0, floats = 0, laplacianBytes = 0, laplacianFloats = 0, got = 0;
      EXPECT_EQ(orvStsOk, orviFilterSobelCrossGetBufferSize_8u16s_C1R({width, 3}, mask, &bytes));
      EXPECT_EQ(orvStsOk, orviFilterSobelCrossGetBufferSize_32f_C1R({width, 3}, mask, &floats));
      EXPECT_EQ(bytes, filterBufferSize<uint8_t>({width, 3}, mask));
      EXPECT_EQ(floats, filterBufferSize<float>({width, 3}, mask));
      EXPECT_EQ(orvStsOk, orviFilterLaplacianGetBufferSize_8u16s_C1R({width, 3}, mask, &laplacianBytes));
      EXPECT_EQ(orvStsOk, orviFilterLaplacianGetBufferSize_32f_C1R({width, 3}, mask, &laplacianFloats));
      EXPECT_EQ(orvStsOk, checkedCall(orv::orviGradientVectorGetBufferSize, OrvSize{width, 3}, mask, 1, 1, &got));
      EXPECT_EQ(laplacianBytes, got);
      EXPECT_EQ(orvStsOk, checkedCall(orv::orviGradientVectorGetBufferSize, OrvSize{width, 3}, mask, 13, 1, &got));
      EXPECT_EQ(laplacianFloats, got);
    }
}

TEST(Derivatives, ChecksOfTheSizeQueries) {
  struct C {
    OrvSize roi;
    OrvMaskCode mask;
    OrvDataType dataType;
    int numChannels;
    int* bufferSize;
  };
  const GuardedBlock size("bufferSize", sizeof(int));
  const C valid{{9, 3}, orvMask3x3, orvDataType8u, 1, size.as<int>()};
  const std::vector<Fault<C>> common = {nullFault("bufferSize", &C::bufferSize), sizeFault("roi", &C::roi),
                                        valueFault("mask", &C::mask, {0, 3, 34, 53}, orvStsBadMaskCode)};
  for (auto* query : {orv::owniFilter2GetBufferSize_8u16s_C1R, orv::owniFilter2GetBufferSize_32f_C1R}) {
    CheckOrder<C> order(valid, [&](const C& c) { return checkedCall(query, c.roi, c.mask, c.bufferSize); });
    order.watch(size);
    order.faults = common;
    order.verify();
  }
  CheckOrder<C> order(valid, [](const C& c) {
    return checkedCall(orv::orviGradientVectorGetBufferSize, c.roi, c.mask, c.dataType, c.numChannels, c.bufferSize);
  });
  order.watch(size);
  order.faults = common;
  order.faults.push_back(valueFault("dataType", &C::dataType, {5, 7, 0, -1, 19}, orvStsBadAlgorithm));
  order.faults.push_back(valueFault("numChannels", &C::numChannels, {0, 2, 3, 4, -1}, orvStsBadDataType));
  order.verify();
}

}  // namespace
}  // namespace orvtest
