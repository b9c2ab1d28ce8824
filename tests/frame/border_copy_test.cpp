// Copies with a border and borders written in place, against their reference model.
#include "frame/border_copy.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <functional>
#include <string>
#include <type_traits>
#include <vector>

#include "frame/border_copy_model.h"
#include "support/cases.h"
#include "support/check_order.h"
#include "support/checked_call.h"
#include "support/image.h"

namespace orvtest {
namespace {

// ------------------------------------------------------------------------------------------------ What the members are

/// All arguments that a member may have.
template <class Sample>
struct Arguments {
  const Sample* src;
  int srcStep;
  OrvSize srcRoi;
  Sample* dst;
  int dstStep;
  OrvSize dstRoi;
  int top, left;
  const Sample* value;
};

/// A member takes OrvSize or OrvSizeL.
template <class Size>
Size sizeFor(OrvSize size) {
  return {size.width, size.height};
}

template <class Sample, class Value, class Size>
OrvStatus run(OrvStatus (*function)(const Sample*, int, Size, Sample*, int, Size, int, int, Value),
              const Arguments<Sample>& c) {
  Value value;
  if constexpr (std::is_pointer_v<Value>)
    value = c.value;
  else
    std::memcpy(static_cast<void*>(&value), c.value, sizeof value);
  return checkedCall(function, c.src, c.srcStep, sizeFor<Size>(c.srcRoi), c.dst, c.dstStep, sizeFor<Size>(c.dstRoi),
                     c.top, c.left, value);
}

template <class Sample, class Size>
OrvStatus run(OrvStatus (*function)(const Sample*, int, Size, Sample*, int, Size, int, int),
              const Arguments<Sample>& c) {
  return checkedCall(function, c.src, c.srcStep, sizeFor<Size>(c.srcRoi), c.dst, c.dstStep, sizeFor<Size>(c.dstRoi),
                     c.top, c.left);
}

/// In place: src and srcStep are not looked at.
template <class Sample, class Size>
OrvStatus run(OrvStatus (*function)(Sample*, int, Size, Size, int, int), const Arguments<Sample>& c) {
  return checkedCall(function, c.dst, c.dstStep, sizeFor<Size>(c.srcRoi), sizeFor<Size>(c.dstRoi), c.top, c.left);
}

/// A member, whatever its signature.
template <class Sample>
using Run = std::function<OrvStatus(const Arguments<Sample>&)>;

// ----------------------------------------------------------------------------------------------------------- Geometry

/// Borders of all widths: none, around the sizes at which fills change, wider than the reflection's period.
int drawBorder(Random& random, int length) {
  switch (random.below(4)) {
    case 0:
      return 0;
    case 1:
      return random.between(1, 8);
    case 2:
      return random.pick({6, 7, 15, 16, 17, 31, 32, 33, 40});
    default:
      return random.between(0, std::min(5 * length, 60));
  }
}

/// Rows of bytes at any address; a step need be no whole number of samples.
template <class Sample>
TestImage<Sample> drawUnalignedImage(Random& random, std::string name, OrvSize size, int channels) {
  const int sampleBytes = sizeof(Sample);
  const int oddBytes = random.oneIn(2) ? 0 : random.below(2 * sampleBytes);
  TestImage<Sample> image(
      std::move(name),
      {.size = size,
       .channels = channels,
       .stepPadding = drawStepPadding(random, size.width * channels * sampleBytes, sampleBytes) + oddBytes,
       .placement = drawPlacement(random)});
  image.fill(random, Values::anything);
  return image;
}

template <class Sample>
struct Images {
  int channels;
  TestImage<Sample> src;
  int top, left;
  TestImage<Sample> dst;
  GuardedBlock value;

  Images(Random& random, OrvSize srcSize, int channelCount)
      : channels(channelCount),
        src(drawUnalignedImage<Sample>(random, "src", srcSize, channels)),
        top(drawBorder(random, srcSize.height)),
        left(drawBorder(random, srcSize.width)),
        dst(drawUnalignedImage<Sample>(random, "dst",
                                       {left + srcSize.width + drawBorder(random, srcSize.width),
                                        top + srcSize.height + drawBorder(random, srcSize.height)},
                                       channels)),
        value("value", channels * static_cast<int>(sizeof(Sample)), random) {
    for (int channel = 0; channel < channels; ++channel)
      store(value.as<BitsOf<Sample>>() + channel, drawBits<Sample>(random, Values::anything));
    value.protectReadOnly();
  }

  Arguments<Sample> call() const {
    return {src.data(), src.step(), src.size(), dst.data(), dst.step(), dst.size(), top, left, value.as<Sample>()};
  }

  model::BorderCopy geometry(int kind) const {
    return {kind, channels * static_cast<int>(sizeof(Sample)), src.size(), dst.size(), top, left};
  }

  /// Where the source lies in the result.
  Sample* sourceIn(const TestImage<Sample>& result) const {
    return addressOf(result.data(), result.step(), left * channels, top);
  }
};

uint8_t* bytesOf(auto* samples) { return reinterpret_cast<uint8_t*>(samples); }

// ---------------------------------------------------------------------------------------------------------- The tests

template <class Sample>
void expectModel(const Run<Sample>& run, int channels, int kind, const std::string& name) {
  forCases(name, 80, [&](Random& random) {
    const Images<Sample> images(random, drawSize(random), channels);
    const TestImage<Sample> expected(images.dst);
    model::copyWithBorder(images.geometry(kind), bytesOf(images.src.data()), images.src.step(),
                          bytesOf(expected.data()), expected.step(), images.value.data());
    images.src.protectReadOnly();
    EXPECT_EQ(orvStsOk, run(images.call()));
    images.dst.expectSame(expected);
  });
}

/// `misleadingSource`: the member is no in-place one, but is called with src equal to dst, when the source's step is
/// not looked at.
template <class Sample>
void expectModelInPlace(const Run<Sample>& run, int channels, int kind, const std::string& name,
                        bool misleadingSource = false) {
  forCases(name, 80, [&](Random& random) {
    const Images<Sample> images(random, drawSize(random), channels);
    const TestImage<Sample> expected(images.dst);
    model::borderInPlace(images.geometry(kind), bytesOf(images.sourceIn(expected)), expected.step());
    Arguments<Sample> call = images.call();
    call.dst = images.sourceIn(images.dst);
    if (misleadingSource) {
      call.src = call.dst;
      call.srcStep = random.pick({call.dstStep, call.dstStep + 8, 1, 0, -1, INT32_MIN, INT32_MAX});
    }
    EXPECT_EQ(orvStsOk, run(call));
    images.dst.expectSame(expected);
  });
}

template <class Sample>
std::vector<Fault<Arguments<Sample>>> geometryFaults() {
  using Call = Arguments<Sample>;
  std::vector<Fault<Call>> faults{sizeFault("srcRoi", &Call::srcRoi), sizeFault("dstRoi", &Call::dstRoi),
                                  valueFault("top", &Call::top, {-1, INT32_MIN}, orvStsBadSize),
                                  valueFault("left", &Call::left, {-1, INT32_MIN}, orvStsBadSize)};
  // One too many, and sums that pass the range of integers.
  const auto tooSmall = [&](const std::string& key, auto change) {
    Fault<Call> fault{"result too small, " + key, {key}, orvStsBadSize, {}};
    for (const int excess : {1, 1000, INT32_MAX}) fault.variants.push_back([=](Call& call) { change(call, excess); });
    faults.push_back(fault);
  };
  const auto plus = [](int value, int excess) { return excess == INT32_MAX ? excess : value + excess; };
  tooSmall("srcRoi", [=](Call& c, int n) { c.srcRoi.width = plus(c.dstRoi.width - c.left, n); });
  tooSmall("srcRoi", [=](Call& c, int n) { c.srcRoi.height = plus(c.dstRoi.height - c.top, n); });
  tooSmall("left", [=](Call& c, int n) { c.left = plus(c.dstRoi.width - c.srcRoi.width, n); });
  tooSmall("top", [=](Call& c, int n) { c.top = plus(c.dstRoi.height - c.srcRoi.height, n); });
  return faults;
}

template <class Sample>
void expectChecks(const Run<Sample>& run, int channels, const std::string& name, bool inPlace, bool valuePointer) {
  using Call = Arguments<Sample>;
  Random random(name, 0);
  const Images<Sample> images(random, {9, 3}, channels);
  images.src.protectReadOnly();
  Call valid = images.call();
  if (inPlace)
    valid.dst = images.sourceIn(images.dst);
  CheckOrder<Call> order(valid, run);
  order.watch(images.dst);
  const auto badStep = [](const char* key, int Call::*step) {
    return valueFault(key, step, {0, -1, -64, INT32_MIN}, orvStsBadStep);
  };
  if (!inPlace)
    order.faults = {nullFault("src", &Call::src)};
  order.faults.push_back(nullFault("dst", &Call::dst));
  if (!inPlace)
    order.faults.push_back(badStep("srcStep", &Call::srcStep));
  order.faults.push_back(badStep("dstStep", &Call::dstStep));
  for (const auto& fault : geometryFaults<Sample>()) order.faults.push_back(fault);
  if (valuePointer)
    order.faults.push_back(nullFault("value", &Call::value));
  order.verify();
}

/// With src equal to dst the checks are those of the in-place form: src and its step are out of the game.
template <class Sample>
void expectChecksWhenPassedOn(const Run<Sample>& run, int channels, const std::string& name) {
  using Call = Arguments<Sample>;
  Random random(name, 1);
  const Images<Sample> images(random, {9, 3}, channels);
  Call valid = images.call();
  valid.dst = images.sourceIn(images.dst);
  valid.srcStep = -5;
  CheckOrder<Call> order(valid, [&](Call call) {
    call.src = call.dst;
    return run(call);
  });
  order.watch(images.dst);
  order.faults = {nullFault("dst", &Call::dst),
                  valueFault("dstStep", &Call::dstStep, {0, -1, INT32_MIN}, orvStsBadStep)};
  for (const auto& fault : geometryFaults<Sample>()) order.faults.push_back(fault);
  order.verify();
}

template <class Function>
struct SampleOf;
template <class Sample, class... Others>
struct SampleOf<OrvStatus(const Sample*, Others...)> {
  using Type = Sample;
};
template <class Sample, class... Others>
struct SampleOf<OrvStatus(Sample*, Others...)> {
  using Type = Sample;
};

/// Its own function alone is instantiated for each member, the tests once for each type.
template <class Function>
auto member(Function* function) {
  using Sample = typename SampleOf<Function>::Type;
  return Run<Sample>([function](const Arguments<Sample>& c) { return run(function, c); });
}

// Three channel counts, with and without _L.
#define FOR_MEMBERS(EACH, function, type, layout) \
  EACH(function##_##type##_C1##layout, 1)         \
  EACH(function##_##type##_C1##layout##_L, 1)     \
  EACH(function##_##type##_C3##layout, 3)         \
  EACH(function##_##type##_C3##layout##_L, 3)     \
  EACH(function##_##type##_C4##layout, 4)         \
  EACH(function##_##type##_C4##layout##_L, 4)

#define CONST_MEMBER(name, channels)                                                                  \
  TEST(BorderCopyModel, name) { expectModel(member(orv::name), channels, orvBorderConstant, #name); } \
  TEST(BorderCopyChecks, name) { expectChecks(member(orv::name), channels, #name, false, (channels) > 1); }

FOR_MEMBERS(CONST_MEMBER, orviCopyConstBorder, 8u, R)
FOR_MEMBERS(CONST_MEMBER, orviCopyConstBorder, 16s, R)
FOR_MEMBERS(CONST_MEMBER, orviCopyConstBorder, 32s, R)
FOR_MEMBERS(CONST_MEMBER, orviCopyConstBorder, 32f, R)
CONST_MEMBER(orviCopyConstBorder_16u_C1R, 1)

#define COPY_MEMBER(name, channels, kind)                                                          \
  TEST(BorderCopyModel, name) { expectModel(member(orv::name), channels, kind, #name); }           \
  TEST(BorderCopyModel, name##_PassedOn) {                                                         \
    expectModelInPlace(member(orv::name), channels, kind, #name " passed on", true);               \
  }                                                                                                \
  TEST(BorderCopyChecks, name) { expectChecks(member(orv::name), channels, #name, false, false); } \
  TEST(BorderCopyChecks, name##_PassedOn) { expectChecksWhenPassedOn(member(orv::name), channels, #name); }
#define IN_PLACE_MEMBER(name, channels, kind)                                                   \
  TEST(BorderCopyModel, name) { expectModelInPlace(member(orv::name), channels, kind, #name); } \
  TEST(BorderCopyChecks, name) { expectChecks(member(orv::name), channels, #name, true, false); }

#define REPLICATE_MEMBER(name, channels) COPY_MEMBER(name, channels, orvBorderReplicate)
#define REPLICATE_IN_PLACE(name, channels) IN_PLACE_MEMBER(name, channels, orvBorderReplicate)
#define MIRROR_MEMBER(name, channels) COPY_MEMBER(name, channels, orvBorderMirror)
#define MIRROR_IN_PLACE(name, channels) IN_PLACE_MEMBER(name, channels, orvBorderMirror)

FOR_MEMBERS(REPLICATE_MEMBER, orviCopyReplicateBorder, 8u, R)
FOR_MEMBERS(REPLICATE_MEMBER, orviCopyReplicateBorder, 16s, R)
FOR_MEMBERS(REPLICATE_MEMBER, orviCopyReplicateBorder, 32s, R)
FOR_MEMBERS(REPLICATE_MEMBER, orviCopyReplicateBorder, 32f, R)
FOR_MEMBERS(REPLICATE_IN_PLACE, orviCopyReplicateBorder, 8u, IR)
FOR_MEMBERS(REPLICATE_IN_PLACE, orviCopyReplicateBorder, 16s, IR)
FOR_MEMBERS(REPLICATE_IN_PLACE, orviCopyReplicateBorder, 32s, IR)
FOR_MEMBERS(MIRROR_MEMBER, orviCopyMirrorBorder, 8u, R)
FOR_MEMBERS(MIRROR_MEMBER, orviCopyMirrorBorder, 16u, R)
FOR_MEMBERS(MIRROR_MEMBER, orviCopyMirrorBorder, 16s, R)
FOR_MEMBERS(MIRROR_MEMBER, orviCopyMirrorBorder, 32s, R)
FOR_MEMBERS(MIRROR_MEMBER, orviCopyMirrorBorder, 32f, R)
FOR_MEMBERS(MIRROR_IN_PLACE, orviCopyMirrorBorder, 8u, IR)
FOR_MEMBERS(MIRROR_IN_PLACE, orviCopyMirrorBorder, 16u, IR)
FOR_MEMBERS(MIRROR_IN_PLACE, orviCopyMirrorBorder, 32s, IR)

// ------------------------------------------------------------------------------------------------------- By hand

using Row = std::vector<uint8_t>;

TEST(BorderCopy, MirrorGoesOnPastTheFarEdge) {
  const Row src{1, 2, 3};
  Row dst(9);
  EXPECT_EQ(orvStsOk, checkedCall(orv::orviCopyMirrorBorder_8u_C1R, src.data(), 3, OrvSize{3, 1}, dst.data(), 9,
                                  OrvSize{9, 1}, 0, 3));
  EXPECT_EQ((Row{2, 3, 2, 1, 2, 3, 2, 1, 2}), dst);
}

TEST(BorderCopy, MirrorOfOneColumnFillsTheRow) {
  const Row src{7, 8};
  Row dst(12);
  EXPECT_EQ(orvStsOk, checkedCall(orv::orviCopyMirrorBorder_8u_C1R, src.data(), 1, OrvSize{1, 2}, dst.data(), 3,
                                  OrvSize{3, 4}, 1, 1));
  EXPECT_EQ((Row{8, 8, 8, 7, 7, 7, 8, 8, 8, 7, 7, 7}), dst);
}

TEST(BorderCopy, CornersFollowBothAxes) {
  const Row src{1, 2, 3, 4, 5, 6, 7, 8, 9};
  Row dst(25);
  const auto copy = [&](auto* function, auto... value) {
    EXPECT_EQ(orvStsOk,
              checkedCall(function, src.data(), 3, OrvSize{3, 3}, dst.data(), 5, OrvSize{5, 5}, 1, 1, value...));
    return dst;
  };
  EXPECT_EQ((Row{1, 1, 2, 3, 3, 1, 1, 2, 3, 3, 4, 4, 5, 6, 6, 7, 7, 8, 9, 9, 7, 7, 8, 9, 9}),
            copy(orv::orviCopyReplicateBorder_8u_C1R));
  EXPECT_EQ((Row{5, 4, 5, 6, 5, 2, 1, 2, 3, 2, 5, 4, 5, 6, 5, 8, 7, 8, 9, 8, 5, 4, 5, 6, 5}),
            copy(orv::orviCopyMirrorBorder_8u_C1R));
  EXPECT_EQ((Row{0, 0, 0, 0, 0, 0, 1, 2, 3, 0, 0, 4, 5, 6, 0, 0, 7, 8, 9, 0, 0, 0, 0, 0, 0}),
            copy(orv::orviCopyConstBorder_8u_C1R, uint8_t{0}));
}

TEST(BorderCopy, ChannelsTravelTogether) {
  const Row src{1, 2, 3, 4, 5, 6};
  Row dst(12);
  EXPECT_EQ(orvStsOk, checkedCall(orv::orviCopyMirrorBorder_8u_C3R, src.data(), 6, OrvSize{2, 1}, dst.data(), 12,
                                  OrvSize{4, 1}, 0, 1));
  EXPECT_EQ((Row{4, 5, 6, 1, 2, 3, 4, 5, 6, 1, 2, 3}), dst);
}

TEST(BorderCopy, WithoutBorderItIsAPlainCopy) {
  Row src(17 * 5), dst(17 * 5);
  for (size_t i = 0; i < src.size(); ++i) src[i] = static_cast<uint8_t>(i * 7);
  const OrvSize size{17, 5};
  const auto expectCopy = [&](auto* function, auto... value) {
    std::fill(dst.begin(), dst.end(), uint8_t{0});
    EXPECT_EQ(orvStsOk, checkedCall(function, src.data(), 17, size, dst.data(), 17, size, 0, 0, value...));
    EXPECT_EQ(src, dst);
  };
  expectCopy(orv::orviCopyConstBorder_8u_C1R, uint8_t{9});
  expectCopy(orv::orviCopyReplicateBorder_8u_C1R);
  expectCopy(orv::orviCopyMirrorBorder_8u_C1R);
  const Row before = dst;
  EXPECT_EQ(orvStsOk, checkedCall(orv::orviCopyMirrorBorder_8u_C1IR, dst.data(), 17, size, size, 0, 0));
  EXPECT_EQ(before, dst);
}

TEST(BorderCopy, BitsOfNansSurvive) {
  for (const uint32_t bits : {0xffc12345u, 0xff812345u, 0x7f800001u, 0x80000000u}) {
    const auto value = std::bit_cast<float>(bits);
    const std::vector<float> src(20, value);
    std::vector<uint32_t> dst(60);
    EXPECT_EQ(orvStsOk, checkedCall(orv::orviCopyConstBorder_32f_C1R, src.data(), 80, OrvSize{20, 1},
                                    reinterpret_cast<float*>(dst.data()), 240, OrvSize{60, 1}, 0, 20, value));
    EXPECT_EQ(std::vector<uint32_t>(60, bits), dst);
  }
}

// A step is compared with nothing but 1.
TEST(BorderCopy, AStepMayBeShorterThanTheRow) {
  const Row src{1, 2, 3};
  Row dst(5);
  EXPECT_EQ(orvStsOk, checkedCall(orv::orviCopyReplicateBorder_8u_C1R, src.data(), 1, OrvSize{3, 1}, dst.data(), 1,
                                  OrvSize{5, 1}, 0, 1));
  EXPECT_EQ((Row{1, 1, 2, 3, 3}), dst);
  // Source rows may overlap: here each begins one pixel after the last.
  Row squares(9);
  EXPECT_EQ(orvStsOk, checkedCall(orv::orviCopyConstBorder_8u_C1R, src.data(), 1, OrvSize{2, 2}, squares.data(), 3,
                                  OrvSize{3, 3}, 0, 0, uint8_t{9}));
  EXPECT_EQ((Row{1, 2, 9, 2, 3, 9, 9, 9, 9}), squares);
}

}  // namespace
}  // namespace orvtest
