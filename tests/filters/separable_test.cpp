// The separable filter, its Init functions and its size queries against their reference model.
#include <gtest/gtest.h>
#include <immintrin.h>

#include <functional>

#include "filters/pipeline_support.h"
#include "filters/separable_model.h"
#include "support/cases.h"
#include "support/check_order.h"
#include "support/checksums.h"
#include "support/drivers.h"
#include "support/photographs.h"

namespace orvtest {
namespace {

// ------------------------------------------------------------------------------------------------ What the members are

struct Call {
  const void* src;
  int srcStep;
  void* dst;
  int dstStep;
  OrvSizeL roi;
  int borderMode;
  const void* borderValue;
  const void* spec;
  uint8_t* buffer;
};

template <class Source, class Result, class Border>
OrvStatus run(OrvStatus (*function)(const Source*, OrvLength, Result*, OrvLength, OrvSizeL, OrvBorderMode, Border,
                                    const void*, uint8_t*),
              const Call& c) {
  const auto borderValue = [&] {
    if constexpr (std::is_pointer_v<Border>)
      return static_cast<Border>(c.borderValue);
    else
      return load(static_cast<const Border*>(c.borderValue));
  }();
  return checkedCall(function, static_cast<const Source*>(c.src), c.srcStep, static_cast<Result*>(c.dst), c.dstStep,
                     c.roi, c.borderMode, borderValue, c.spec, c.buffer);
}

struct Member {
  std::string name;
  std::function<OrvStatus(const Call&)> run;
  int channels;
};

template <class Sample>
constexpr OrvDataType dataTypeOf = std::is_same_v<Sample, uint8_t>    ? orvDataType8u
                                   : std::is_same_v<Sample, uint16_t> ? orvDataType16u
                                   : std::is_same_v<Sample, int16_t>  ? orvDataType16s
                                                                      : orvDataType32f;

OrvStatus initialise(const int16_t* x, const int16_t* y, OrvSize size, int divisor, OrvDataType type, int channels,
                     void* spec) {
  return checkedCall(orviFilterSeparableInit_16s_L, x, y, size, divisor, 0, type, channels, spec);
}
OrvStatus initialise(const float* x, const float* y, OrvSize size, int, OrvDataType type, int channels, void* spec) {
  return checkedCall(orviFilterSeparableInit_32f_L, x, y, size, type, channels, spec);
}

// ------------------------------------------------------------------------------------------------ What a call is given

struct Geometry {
  OrvSize roi, kernel;
  int word, divisor;
};

Geometry drawGeometry(Random& random) {
  const OrvSize kernel{drawKernelSize(random), drawKernelSize(random)};
  return {{drawWidth(random, kernel.width), random.between(1, 12)},
          kernel,
          drawBorderWord(random),
          drawDivisor(random, false)};
}

template <class Tap>
model::SeparableKernels<Tap> drawKernels(Random& random, const Geometry& g, int channels) {
  std::vector<Tap> x(static_cast<size_t>(g.kernel.width * channels));
  for (int c = 0; c < channels; ++c) {
    const std::vector<Tap> taps = drawTaps<Tap>(random, g.kernel.width);
    for (int j = 0; j < g.kernel.width; ++j) x[static_cast<size_t>(j * channels + c)] = taps[static_cast<size_t>(j)];
  }
  return {x, drawTaps<Tap>(random, g.kernel.height), g.kernel.width, g.kernel.height, channels, g.divisor};
}

/// A spec of exactly the queried size at any address, the kernels it was made from gone.
template <class Tap>
GuardedBlock makeSpec(Random& random, const model::SeparableKernels<Tap>& kernels, OrvDataType sampleType) {
  const OrvSize size{kernels.width, kernels.height};
  int32_t bytes = 0;
  EXPECT_EQ(orvStsOk, checkedCall(orviFilterSeparableGetSpecSize_L, size, dataTypeOf<Tap>, kernels.channels, &bytes));
  GuardedBlock spec("spec", bytes, random);
  spec.fill(random);
  const GuardedBlock x = guardedCopy(random, "kernelX", kernels.x), y = guardedCopy(random, "kernelY", kernels.y);
  EXPECT_EQ(orvStsOk,
            initialise(x.as<Tap>(), y.as<Tap>(), size, kernels.divisor, sampleType, kernels.channels, spec.data()));
  return spec;
}

GuardedBlock makeBuffer(Random& random, OrvSize roi, OrvSize kernel, OrvDataType sampleType, OrvDataType kernelType,
                        int channels) {
  int32_t bytes = 0;
  EXPECT_EQ(orvStsOk, checkedCall(orviFilterSeparableGetBufferSize_L, OrvSizeL{roi.width, roi.height}, kernel,
                                  sampleType, kernelType, channels, &bytes));
  GuardedBlock buffer("buffer", bytes, random);
  buffer.fill(random);
  return buffer;
}

template <class Source, class Result, class Tap>
struct Images {
  const Member& member;
  Geometry g;
  model::SeparableKernels<Tap> kernels;
  TestImage<Source> src;
  TestImage<Result> dst;
  GuardedBlock borderValue, spec, buffer;

  Images(Random& random, const Member& m, const Geometry& geometry, model::SeparableKernels<Tap> taps,
         TestImage<Source> source)
      : member(m),
        g(geometry),
        kernels(std::move(taps)),
        src(std::move(source)),
        dst("dst", drawShape<Result>(random, g.roi, m.channels, {})),
        borderValue(drawBorderValue<Source>(random, m.channels, Values::ordinary)),
        spec(makeSpec(random, kernels, dataTypeOf<Source>)),
        buffer(makeBuffer(random, g.roi, g.kernel, dataTypeOf<Source>, dataTypeOf<Tap>, m.channels)) {
    src.protectReadOnly();
    spec.protectReadOnly();
  }

  /// Any step, even one that is no whole number of samples.
  template <class Sample>
  static Shape drawShape(Random& random, OrvSize size, int channels, const Margins& margins) {
    const int sampleBytes = sizeof(Sample);
    const int rowBytes = (margins.left + size.width + margins.right) * channels * sampleBytes;
    const int oddBytes = random.oneIn(8) ? random.below(4) : 0;
    return {.size = size,
            .channels = channels,
            .stepPadding = drawStepPadding(random, rowBytes, sampleBytes) + oddBytes,
            .margins = margins,
            .placement = drawPlacement(random)};
  }
  /// With exactly the pixels in memory that the word vouches for.
  static TestImage<Source> drawSource(Random& random, const Member& m, const Geometry& g) {
    const Reach rows = reachOf(g.roi.height, g.kernel.height, (g.kernel.height - 1) / 2, g.word, model::mapRow);
    const Reach columns = reachOf(g.roi.width, g.kernel.width, (g.kernel.width - 1) / 2, g.word, model::mapColumn);
    TestImage<Source> src(
        "src", drawShape<Source>(random, g.roi, m.channels, {rows.low, rows.high, columns.low, columns.high}));
    src.fill(random, drawFilterValues<Source>(random));
    return src;
  }
  Images(Random& random, const Member& m, const Geometry& geometry)
      : Images{random, m, geometry, drawKernels<Tap>(random, geometry, m.channels), drawSource(random, m, geometry)} {}

  Call call() const {
    return {src.data(), src.step(),         dst.data(),  dst.step(),   {g.roi.width, g.roi.height},
            g.word,     borderValue.data(), spec.data(), buffer.data()};
  }

  void expectModel() const {
    const TestImage<Result> expected(dst);
    std::vector<Result> out(static_cast<size_t>(g.roi.width * g.roi.height * member.channels));
    model::separable({src.data(), src.step(), g.roi.width, g.roi.height, member.channels}, out.data(), kernels, g.word,
                     borderValue.as<Source>());
    size_t next = 0;
    expected.forRegion([&](int x, int y, int channel) { expected.setPixel(x, y, channel, out[next++]); });
    EXPECT_EQ(orvStsOk, member.run(call()));
    dst.expectSame(expected);
    if (testing::Test::HasFailure())
      ADD_FAILURE() << src.describe() << ", word " << g.word << ", divisor " << g.divisor << ", kernels "
                    << testing::PrintToString(kernels.x) << testing::PrintToString(kernels.y);
  }
};

// -------------------------------------------------------------------------------------------- The tests of the filters

template <class Source, class Result, class Tap>
void expectModel(const Member& member) {
  forCases(member.name, 120,
           [&](Random& random) { Images<Source, Result, Tap>(random, member, drawGeometry(random)).expectModel(); });
}

void verifyChecks(const Member& member, const Call& valid, const GuardedMemory& dst, int sourceRow, int resultRow) {
  CheckOrder<Call> order(valid, member.run);
  order.watch(dst);
  order.faults = {nullFault("src", &Call::src),
                  nullFault("dst", &Call::dst),
                  nullFault("spec", &Call::spec),
                  nullFault("buffer", &Call::buffer),
                  sizeFault("roi", &Call::roi),
                  stepFault("srcStep", &Call::srcStep, sourceRow),
                  rowTooLongFault("roi", &Call::roi),
                  stepFault("dstStep", &Call::dstStep, resultRow),
                  valueFault("borderMode", &Call::borderMode,
                             {0, 2, 4, 5, 7, 15, 0x10, 0x40, 0xe0, 0xf2, 0xf5, 0x100, 0x101, 0x1f0, -1, INT32_MIN,
                              INT32_MIN + 1, INT32_MAX},
                             orvStsBadBorder)};
  if (member.channels > 1) {
    Fault<Call> noValue{"no value for a constant border", {"borderMode", "borderValue"}, orvStsNullPointer, {}};
    for (const int word : {0x06, 0x16, 0xf6})
      noValue.variants.push_back([word](Call& c) { c.borderMode = word, c.borderValue = nullptr; });
    order.faults.push_back(noValue);
  }
  order.verify();
  if (member.channels > 1) {
    Call call = valid;
    call.borderValue = nullptr;
    EXPECT_EQ(orvStsOk, member.run(call)) << "nothing asks for the border value";
  }
}

template <class Source, class Result, class Tap>
void expectChecks(const Member& member) {
  Random random(member.name + " checks", 0);
  const Images<Source, Result, Tap> images(random, member, {{11, 3}, {5, 3}, orvBorderMirror, 4});
  const int samples = 11 * member.channels;
  verifyChecks(member, images.call(), images.dst.memory(), samples * static_cast<int>(sizeof(Source)),
               samples * static_cast<int>(sizeof(Result)));
}

template <class Source, class Result, class Tap>
void expectChecksum(const Member& member) {
  Checksum checksum;
  const auto add = [&](const Images<Source, Result, Tap>& images) { addRun(checksum, member, images); };
  forCases(member.name + " checksum", 24, [&](Random& random) { add({random, member, drawGeometry(random)}); });
  if (member.channels != 4) {
    Random random(member.name, 1);
    TestImage<Source> photo = memberPhotograph<Source>(member.channels);
    std::vector<Tap> x;
    for (const int tap : {1, 4, 6, 4, 1})
      x.insert(x.end(), static_cast<size_t>(member.channels), static_cast<Tap>(tap));
    const OrvSize size = photo.size();
    add({random,
         member,
         {size, {5, 3}, orvBorderMirror, 8},
         {x, {1, 2, 1}, 5, 3, member.channels, 8},
         std::move(photo)});
  }
  expectRecorded(member.name, checksum);
}

#define SEPARABLE(type, channels, Source, Result, Tap)                                                      \
  static Member member_##type##_C##channels() {                                                             \
    return {"orviFilterSeparable_" #type "_C" #channels "R_L",                                              \
            [](const Call& c) { return run(orviFilterSeparable_##type##_C##channels##R_L, c); }, channels}; \
  }                                                                                                         \
  ORV_MEMBER_TESTS(orviFilterSeparable_##type##_C##channels##R_L, (member_##type##_C##channels()), Source, Result, Tap)
#define SEPARABLES(type, Source, Result, Tap) \
  SEPARABLE(type, 1, Source, Result, Tap)     \
  SEPARABLE(type, 3, Source, Result, Tap)     \
  SEPARABLE(type, 4, Source, Result, Tap)

SEPARABLES(8u, uint8_t, uint8_t, int16_t)
SEPARABLES(8u16s, uint8_t, int16_t, int16_t)
SEPARABLES(16s, int16_t, int16_t, int16_t)
SEPARABLES(16u, uint16_t, uint16_t, float)
SEPARABLES(32f, float, float, float)

// ------------------------------------------------------------------------------------------------------------- Init

/// Init is seen through the filter: drawn kernels at work.
template <class Sample, class Tap>
void expectInit(const Member& member, const std::string& name) {
  forCases(name, 40,
           [&](Random& random) { Images<Sample, Sample, Tap>(random, member, drawGeometry(random)).expectModel(); });
}

template <class Tap>
struct InitCall {
  const Tap *kernelX, *kernelY;
  OrvSize kernelSize;
  int divisor, dataType, numChannels;
  void* spec;
};

template <class Tap>
void expectInitChecks(int dataType, std::initializer_list<int> refusedTypes) {
  using C = InitCall<Tap>;
  const std::vector<Tap> taps(20, Tap{1});
  int32_t bytes = 0;
  EXPECT_EQ(orvStsOk, checkedCall(orviFilterSeparableGetSpecSize_L, OrvSize{5, 3}, dataTypeOf<Tap>, 3, &bytes));
  const GuardedBlock spec("spec", bytes, 12);
  CheckOrder<C> order({taps.data(), taps.data(), {5, 3}, 2, dataType, 3, spec.data()}, [](const C& c) {
    return initialise(c.kernelX, c.kernelY, c.kernelSize, c.divisor, c.dataType, c.numChannels, c.spec);
  });
  order.watch(spec);
  order.faults = {nullFault("kernelX", &C::kernelX),
                  nullFault("kernelY", &C::kernelY),
                  nullFault("spec", &C::spec),
                  sizeFault("kernelSize", &C::kernelSize),
                  valueFault("dataType", &C::dataType, refusedTypes, orvStsBadAlgorithm),
                  valueFault("numChannels", &C::numChannels, {0, 2, 5, -1, INT32_MIN, INT32_MAX}, orvStsBadChannels)};
  if (std::is_same_v<Tap, int16_t>)
    order.faults.push_back(valueFault("divisor", &C::divisor, {0}, orvStsBadDivisor));
  order.verify();
}

template <class Sample, class Tap>
void expectInitChecksum(const Member& member, const std::string& name) {
  Checksum checksum;
  forCases(name + " checksum", 24, [&](Random& random) {
    const Images<Sample, Sample, Tap> images(random, member, drawGeometry(random));
    checksum.add(member.run(images.call()));
    checksum.add(images.dst);
  });
  expectRecorded(name, checksum);
}

ORV_MODEL_TEST(orviFilterSeparableInit_16s_L) {
  expectInit<int16_t, int16_t>(member_16s_C4(), "orviFilterSeparableInit_16s_L");
}
ORV_CHECK_ORDER_TEST(orviFilterSeparableInit_16s_L) {
  expectInitChecks<int16_t>(orvDataType8u, {0, 2, 5, 6, 8, 13, -1, INT32_MIN, INT32_MAX});
  expectInitChecks<int16_t>(orvDataType16s, {0, 2, 5, 6, 8, 13, -1, INT32_MIN, INT32_MAX});
}
ORV_CHECKSUM_TEST(orviFilterSeparableInit_16s_L) {
  expectInitChecksum<int16_t, int16_t>(member_16s_C4(), "orviFilterSeparableInit_16s_L");
}
ORV_MODEL_TEST(orviFilterSeparableInit_32f_L) {
  expectInit<float, float>(member_32f_C4(), "orviFilterSeparableInit_32f_L");
}
ORV_CHECK_ORDER_TEST(orviFilterSeparableInit_32f_L) {
  expectInitChecks<float>(orvDataType16u, {0, 1, 4, 6, 7, 12, 14, -1, INT32_MIN, INT32_MAX});
  expectInitChecks<float>(orvDataType32f, {0, 1, 4, 6, 7, 12, 14, -1, INT32_MIN, INT32_MAX});
}
ORV_CHECKSUM_TEST(orviFilterSeparableInit_32f_L) {
  expectInitChecksum<float, float>(member_32f_C4(), "orviFilterSeparableInit_32f_L");
}

// ------------------------------------------------------------------------------------------------------------- Sizes

struct SizeCall {
  OrvSizeL roi;
  OrvSize kernelSize;
  int dataType, kernelType, numChannels;
  int32_t* size;
};

OrvStatus specSize(const SizeCall& c) {
  return checkedCall(orviFilterSeparableGetSpecSize_L, c.kernelSize, c.kernelType, c.numChannels, c.size);
}
OrvStatus bufferSize(const SizeCall& c) {
  return checkedCall(orviFilterSeparableGetBufferSize_L, c.roi, c.kernelSize, c.dataType, c.kernelType, c.numChannels,
                     c.size);
}

SizeCall drawSizeCall(Random& random, int32_t* size) {
  return {{random.between(1, 5000), random.between(1, 5000)},
          {random.between(1, 31), random.between(1, 31)},
          random.pick<int>({orvDataType8u, orvDataType16u, orvDataType16s, orvDataType32f}),
          random.pick<int>({orvDataType16s, orvDataType32f}),
          random.pick<int>({1, 3, 4}),
          size};
}

void expectSize(OrvStatus (*query)(const SizeCall&), const std::string& name, int (*formula)(const SizeCall&)) {
  forCases(name, 200, [&](Random& random) {
    int32_t size = -1;
    const SizeCall call = drawSizeCall(random, &size);
    EXPECT_EQ(orvStsOk, query(call));
    EXPECT_EQ(formula(call), size);
  });
}

void expectSizeChecksum(OrvStatus (*query)(const SizeCall&), const std::string& name) {
  Checksum checksum;
  forCases(name + " checksum", 100, [&](Random& random) {
    int32_t size = -1;
    checksum.add(query(drawSizeCall(random, &size)));
    checksum.add(size);
  });
  expectRecorded(name, checksum);
}

void expectSizeChecks(OrvStatus (*query)(const SizeCall&), bool ofBuffer) {
  const GuardedBlock size("size", 4);
  using C = SizeCall;
  CheckOrder<C> order({{9, 3}, {5, 3}, orvDataType8u, orvDataType16s, 3, size.as<int32_t>()}, query);
  order.watch(size);
  auto& faults = order.faults;
  if (ofBuffer)
    faults.push_back(sizeFault("roi", &C::roi));
  faults.push_back(sizeFault("kernelSize", &C::kernelSize));
  faults.push_back(nullFault("size", &C::size));
  if (ofBuffer)
    faults.push_back(valueFault("dataType", &C::dataType, {0, 2, 6, 8, 12, 14, -1, INT32_MIN}, orvStsBadAlgorithm));
  faults.push_back(valueFault("kernelType", &C::kernelType, {0, 1, 5, 6, 8, 14, -1, INT32_MIN}, orvStsBadAlgorithm));
  faults.push_back(valueFault("numChannels", &C::numChannels, {0, 2, 5, -1, INT32_MIN}, orvStsBadChannels));
  order.verify();
}

ORV_MODEL_TEST(orviFilterSeparableGetSpecSize_L) {
  expectSize(specSize, "orviFilterSeparableGetSpecSize_L", [](const SizeCall& c) {
    const int tapBytes = c.kernelType == orvDataType16s ? 2 : 4;
    return 2 * (c.kernelSize.width + c.kernelSize.height) * c.numChannels * tapBytes + 127;
  });
}
ORV_CHECK_ORDER_TEST(orviFilterSeparableGetSpecSize_L) { expectSizeChecks(specSize, false); }
ORV_CHECKSUM_TEST(orviFilterSeparableGetSpecSize_L) {
  expectSizeChecksum(specSize, "orviFilterSeparableGetSpecSize_L");
}
ORV_MODEL_TEST(orviFilterSeparableGetBufferSize_L) {
  expectSize(bufferSize, "orviFilterSeparableGetBufferSize_L", [](const SizeCall& c) {
    const int K = c.kernelSize.width, L = c.kernelSize.height, W = c.roi.width;
    const int S = c.kernelType == orvDataType16s ? 2 : 4;
    return 128 * K + 4 * (((W + K - 1) * L + K * S) * c.numChannels + L);
  });
}
ORV_CHECK_ORDER_TEST(orviFilterSeparableGetBufferSize_L) { expectSizeChecks(bufferSize, true); }
ORV_CHECKSUM_TEST(orviFilterSeparableGetBufferSize_L) {
  expectSizeChecksum(bufferSize, "orviFilterSeparableGetBufferSize_L");
}

// ------------------------------------------------------------------------------------------------------------- By hand

/// An image of one channel through one member.
template <class Result, class Source, class Tap>
std::vector<Result> filter(const Member& member, OrvSize roi, const std::vector<Source>& image,
                           const std::vector<Tap>& x, const std::vector<Tap>& y, int divisor, int word) {
  Random random("by hand", 0);
  const OrvSize kernel{static_cast<int>(x.size()), static_cast<int>(y.size())};
  TestImage<Source> src("src", {.size = roi});
  size_t next = 0;
  src.forRegion([&](int i, int j, int) { src.setPixel(i, j, image[next++]); });
  const Images<Source, Result, Tap> images(random, member, {roi, kernel, word, divisor},
                                           {x, y, kernel.width, kernel.height, 1, divisor}, std::move(src));
  EXPECT_EQ(orvStsOk, member.run(images.call()));
  std::vector<Result> result;
  images.dst.forRegion([&](int i, int j, int) { result.push_back(images.dst.pixel(i, j)); });
  return result;
}

using Bytes = std::vector<uint8_t>;
using Shorts = std::vector<int16_t>;

TEST(Separable, KernelOfOneTapCopies) {
  const Bytes bytes{0, 1, 2, 127, 128, 255};
  EXPECT_EQ(bytes, filter<uint8_t>(member_8u_C1(), {3, 2}, bytes, Shorts{1}, Shorts{1}, 1, orvBorderReplicate));
  const Shorts shorts{-32768, -1, 0, 32767};
  EXPECT_EQ(shorts, filter<int16_t>(member_16s_C1(), {2, 2}, shorts, Shorts{1}, Shorts{1}, 1, orvBorderMirror));
}

TEST(Separable, BothPassesDivide) {
  EXPECT_EQ((Bytes{0, 0, 1, 25, 63}), filter<uint8_t>(member_8u_C1(), {5, 1}, Bytes{0, 3, 4, 103, 255}, Shorts{1},
                                                      Shorts{1}, 2, orvBorderReplicate));
  EXPECT_EQ((Shorts{0, -1, -1}),
            filter<int16_t>(member_16s_C1(), {3, 1}, Shorts{-3, -4, -7}, Shorts{1}, Shorts{1}, 2, orvBorderReplicate));
}

TEST(Separable, EvenKernelsAreAnchoredBeforeTheirMiddle) {
  // Of 4 taps the second lies on the output pixel.
  const Shorts column{1, 2, 3, 4, 5}, kernel{1, 10, 100, 1000};
  const Shorts expected{3211, 4321, 5432, 5543, 5554};
  EXPECT_EQ(expected, filter<int16_t>(member_16s_C1(), {1, 5}, column, Shorts{1}, kernel, 1, orvBorderReplicate));
  EXPECT_EQ(expected, filter<int16_t>(member_16s_C1(), {5, 1}, column, kernel, Shorts{1}, 1, orvBorderReplicate));
}

TEST(Separable, OneRowMirrorsOntoItself) {
  EXPECT_EQ((Shorts{111, 222}),
            filter<int16_t>(member_16s_C1(), {2, 1}, Shorts{1, 2}, Shorts{1}, Shorts{1, 10, 100}, 1, orvBorderMirror));
}

TEST(Separable, DenormalsTrapNobody) {
  // A caller may have unmasked the exception of denormal operands: it is masked inside and stays unmasked outside.
  Random random("denormals", 0);
  TestImage<float> src("src", {.size = {20, 5}});
  src.forRegion([&](int x, int y, int) { src.setBits(x, y, 0, static_cast<uint32_t>(1 + x)); });
  const Member member = member_32f_C1();
  const Images<float, float, float> images(random, member, {{20, 5}, {3, 3}, orvBorderMirror, 1},
                                           {{1, 1, 1}, {1, 1, 1}, 3, 3, 1, 1}, std::move(src));
  const Call call = images.call();
  const unsigned before = _mm_getcsr();
  const unsigned unmasked = 0x1e80;
  _mm_setcsr(unmasked);
  const OrvStatus status = member.run(call);
  const unsigned after = _mm_getcsr();
  _mm_setcsr(before);
  EXPECT_EQ(orvStsOk, status);
  EXPECT_EQ(unmasked, after & ~0x3fu);
  EXPECT_EQ(9u * 2u, images.dst.bits(1, 1));
}

}  // namespace
}  // namespace orvtest
