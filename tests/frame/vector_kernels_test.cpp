// The internal vector operations against their formulas, element by element.
#include "frame/vector_kernels.h"

#include <gtest/gtest.h>
#include <immintrin.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "frame/image_kernels_model.h"
#include "support/cases.h"
#include "support/check_order.h"
#include "support/checked_call.h"
#include "support/image.h"

namespace orvtest {
namespace {

constexpr uint32_t anyNan = 0x7fc00000u;

/// Which NaN results from an operation is not told: all count as one.
void makeNansAlike(const TestImage<float>& vector) {
  vector.forRegion([&](int x, int y, int channel) {
    if (isNan(model::fromBits(vector.bits(x, y, channel))))
      vector.setBits(x, y, channel, anyNan);
  });
}
template <class Sample>
void makeNansAlike(const TestImage<Sample>&) {}

template <class Source, class Result>
struct Vectors {
  const Source *src1, *src2;
  Result* dst;
  int length;
};

/// run(vectors, scalars) against formula(first source's bits, second's, scalars); the scalars are drawn anew in each
/// case. dst may be a source. Vectors are rows of images: at any address, between fences.
template <class Source, class Result, class Draw, class Run, class Formula>
void expectModel(const std::string& name, Values values, Draw draw, Run run, Formula formula,
                 bool nansAreAlike = false) {
  forCases(name, 150, [&](Random& random) {
    const OrvSize size{drawSize(random).width, 1};
    const auto vector = [&]<class Sample>(const char* vectorName, Sample) {
      return drawImage<Sample>(random, vectorName, size, {.values = values});
    };
    const TestImage<Source> src1 = vector("src1", Source{}), src2 = vector("src2", Source{});
    const TestImage<Result> dst = vector("dst", Result{});
    Vectors<Source, Result> call{src1.data(), src2.data(), dst.data(), size.width};
    const TestImage<Source>* first = &src1;
    const TestImage<Source>* second = &src2;
    if constexpr (std::is_same_v<Source, Result>) {
      const int kind = random.below(6);
      if (kind == 0)
        first = &dst, call.src1 = call.dst;
      if (kind == 1)
        second = &dst, call.src2 = call.dst;
    }
    const auto scalars = draw(random);
    const TestImage<Result> expected(dst);
    for (int i = 0; i < size.width; ++i)
      expected.setBits(i, 0, 0, formula(first->bits(i, 0), second->bits(i, 0), scalars));
    src1.protectReadOnly();
    src2.protectReadOnly();
    EXPECT_EQ(orvStsOk, run(call, scalars));
    if (nansAreAlike) {
      makeNansAlike(dst);
      makeNansAlike(expected);
    }
    dst.expectSame(expected);
  });
}

enum class Takes { nothing, oneSource, twoSources };

/// Null pointers, then lengths below 1.
template <class Source, class Result, class Run>
void expectChecks(Takes takes, Run run) {
  using Call = Vectors<Source, Result>;
  Random random("vector kernel checks", 0);
  const OrvSize size{21, 1};
  const auto src1 = drawImage<Source>(random, "src1", size, {.values = Values::few});
  const auto src2 = drawImage<Source>(random, "src2", size, {.values = Values::few});
  const auto dst = drawImage<Result>(random, "dst", size, {.values = Values::few});
  CheckOrder<Call> order({src1.data(), src2.data(), dst.data(), size.width}, run);
  order.watch(src1, src2, dst);
  if (takes != Takes::nothing)
    order.faults.push_back(nullFault("src1", &Call::src1));
  if (takes == Takes::twoSources)
    order.faults.push_back(nullFault("src2", &Call::src2));
  order.faults.push_back(nullFault("dst", &Call::dst));
  order.faults.push_back(valueFault("length", &Call::length, {0, -1, INT_MIN}, orvStsBadSize));
  order.verify();
}

constexpr auto noScalars = [](Random&) { return 0; };

uint32_t drawFloat(Random& random) { return drawBits<float>(random, Values::anything); }

// ----------------------------------------------------------------------------------------------------- Fill and copy

template <class Sample>
void testZero(OrvStatus (*function)(Sample*, int), const std::string& name) {
  const auto run = [&](const Vectors<Sample, Sample>& v, int = 0) { return checkedCall(function, v.dst, v.length); };
  expectModel<Sample, Sample>(name, Values::anything, noScalars, run,
                              [](auto, auto, int) { return BitsOf<Sample>{0}; });
  expectChecks<Sample, Sample>(Takes::nothing, run);
}

template <class Sample>
void testSet(OrvStatus (*function)(Sample, Sample*, int), const std::string& name) {
  using Bits = BitsOf<Sample>;
  const auto run = [&](const Vectors<Sample, Sample>& v, Bits value = 1) {
    return checkedCall(function, std::bit_cast<Sample>(value), v.dst, v.length);
  };
  expectModel<Sample, Sample>(
      name, Values::anything, [](Random& random) { return drawBits<Sample>(random, Values::anything); }, run,
      [](Bits, Bits, Bits value) { return value; });
  expectChecks<Sample, Sample>(Takes::nothing, run);
}

template <class Sample>
void testCopy(OrvStatus (*function)(const Sample*, Sample*, int), const std::string& name) {
  const auto run = [&](const Vectors<Sample, Sample>& v, int = 0) {
    return checkedCall(function, v.src1, v.dst, v.length);
  };
  expectModel<Sample, Sample>(name, Values::anything, noScalars, run, [](auto source, auto, int) { return source; });
  expectChecks<Sample, Sample>(Takes::oneSource, run);
}

#define VECTOR_TEST(test, name) \
  TEST(VectorKernels, name) { test(orv::name, #name); }

VECTOR_TEST(testZero, orvsZero_8u)
VECTOR_TEST(testZero, orvsZero_16s)
VECTOR_TEST(testZero, orvsZero_32s)
VECTOR_TEST(testZero, orvsZero_32f)
VECTOR_TEST(testSet, orvsSet_8u)
VECTOR_TEST(testSet, orvsSet_16s)
VECTOR_TEST(testSet, orvsSet_32s)
VECTOR_TEST(testSet, orvsSet_32f)
VECTOR_TEST(testCopy, orvsCopy_8u)
VECTOR_TEST(testCopy, orvsCopy_16s)
VECTOR_TEST(testCopy, orvsCopy_32f)

// -------------------------------------------------------------------------------------------- Element-wise extremes

/// The second source's element unless the first is strictly the better one: so of NaNs and of two zeros.
template <class Sample, bool maximum>
void testEvery(OrvStatus (*function)(const Sample*, const Sample*, Sample*, int), const std::string& name) {
  using Bits = BitsOf<Sample>;
  const auto run = [&](const Vectors<Sample, Sample>& v, int = 0) {
    return checkedCall(function, v.src1, v.src2, v.dst, v.length);
  };
  for (const Values values : {Values::few, Values::anything})
    expectModel<Sample, Sample>(name, values, noScalars, run, [](Bits first, Bits second, int) {
      const auto a = std::bit_cast<Sample>(first), b = std::bit_cast<Sample>(second);
      return (maximum ? a > b : a < b) ? first : second;
    });
  expectChecks<Sample, Sample>(Takes::twoSources, run);
}

#define EVERY_MEMBER(type, Sample)                                                                                    \
  TEST(VectorKernels, orvsMaxEvery_##type) { testEvery<Sample, true>(orv::orvsMaxEvery_##type, "max every " #type); } \
  TEST(VectorKernels, orvsMinEvery_##type) { testEvery<Sample, false>(orv::orvsMinEvery_##type, "min every " #type); }

EVERY_MEMBER(8u, uint8_t)
EVERY_MEMBER(16u, uint16_t)
EVERY_MEMBER(32f, float)
EVERY_MEMBER(64f, double)

// -------------------------------------------------------------------------------------------------------- Conversion

struct Conversion {
  int rounding, scaleFactor;
};

/// Through exact numbers: every float times every power of two in question is a double.
template <class Result>
BitsOf<Result> modelConversion(uint32_t source, Conversion conversion) {
  if (isNan(model::fromBits(source)))
    return 0;
  const int s = std::clamp(conversion.scaleFactor, -600, 600);
  const double exact = std::ldexp(static_cast<double>(model::fromBits(source)), -s);
  const double rounded = conversion.rounding == 1 ? std::nearbyint(exact) : std::trunc(exact);
  const double most = std::numeric_limits<Result>::max();
  return static_cast<Result>(std::clamp(rounded, 0.0, most));
}

/// Wide and dense ranges, halves among them.
void fillForConversion(Random& random, const TestImage<float>& src, int scaleFactor) {
  src.forRegion([&](int x, int y, int) {
    if (random.oneIn(4))
      return;
    const int range = random.pick({4, 256, 1024, 70000});
    const auto halves = static_cast<float>(random.between(-range, 2 * range)) / 2;
    src.setPixel(x, y, std::ldexp(halves, std::clamp(scaleFactor, -100, 100)));
  });
}

template <class Result>
void testConversion(OrvStatus (*function)(const float*, Result*, int, int, int), const std::string& name) {
  forCases(name, 400, [&](Random& random) {
    const OrvSize size{drawSize(random).width, 1};
    const Conversion conversion{random.pick({0, 0, 1, 1, 2, 3, -1, INT_MAX, INT_MIN}),
                                random.oneIn(2) ? random.between(-20, 20)
                                                : random.pick({0, 0, 126, 127, 128, 149, 150, 151, 300, -126, -127,
                                                               -128, -150, -300, INT_MAX, INT_MIN})};
    const auto src = drawImage<float>(random, "src", size);
    fillForConversion(random, src, conversion.scaleFactor);
    const auto dst = drawImage<Result>(random, "dst", size);
    const TestImage<Result> expected(dst);
    for (int i = 0; i < size.width; ++i) expected.setBits(i, 0, 0, modelConversion<Result>(src.bits(i, 0), conversion));
    src.protectReadOnly();
    SCOPED_TRACE(testing::Message() << "rounding " << conversion.rounding << ", scale factor "
                                    << conversion.scaleFactor);
    EXPECT_EQ(orvStsOk,
              checkedCall(function, src.data(), dst.data(), size.width, conversion.rounding, conversion.scaleFactor));
    dst.expectSame(expected);
  });
  for (const int rounding : {0, 1, 2})
    expectChecks<float, Result>(Takes::oneSource, [&](const Vectors<float, Result>& v) {
      return checkedCall(function, v.src1, v.dst, v.length, rounding, 0);
    });
}

VECTOR_TEST(testConversion, orvsConvert_32f8u_Sfs)
VECTOR_TEST(testConversion, orvsConvert_32f16u_Sfs)

/// Whatever the rounding mode on entry, it is the same afterwards; truncation truncates in all of them.
template <class Result>
void expectModeKept(OrvStatus (*function)(const float*, Result*, int, int, int)) {
  std::vector<float> src(37);
  for (size_t i = 0; i < src.size(); ++i) src[i] = static_cast<float>(i) / 4 - 1;
  constexpr unsigned control = 0xffc0;
  const unsigned before = _mm_getcsr();
  for (const unsigned mode : {_MM_ROUND_NEAREST, _MM_ROUND_DOWN, _MM_ROUND_UP, _MM_ROUND_TOWARD_ZERO})
    for (const int rounding : {0, 1, 2, 3, -1}) {
      std::vector<Result> dst(src.size());
      const unsigned entry = (before & ~static_cast<unsigned>(_MM_ROUND_MASK)) | mode;
      _mm_setcsr(entry);
      const OrvStatus status = checkedCall(function, src.data(), dst.data(), 37, rounding, 0);
      // Also on the way out that a failed check takes.
      const OrvStatus failure = checkedCall(function, src.data(), dst.data(), 0, rounding, 0);
      const unsigned after = _mm_getcsr();
      _mm_setcsr(before);
      EXPECT_EQ(orvStsOk, status);
      EXPECT_EQ(orvStsBadSize, failure);
      EXPECT_EQ(entry & control, after & control) << "mode " << mode << ", rounding " << rounding;
      if (rounding == 1 && mode != _MM_ROUND_NEAREST)
        continue;  // to nearest is what the library finds, not what it sets
      for (size_t i = 0; i < src.size(); ++i)
        EXPECT_EQ(modelConversion<Result>(model::bitsOf(src[i]), {rounding, 0}), dst[i])
            << src[i] << ", mode " << mode << ", rounding " << rounding;
    }
}

TEST(VectorKernels, ConversionsRestoreTheRoundingMode) {
  expectModeKept(orv::orvsConvert_32f8u_Sfs);
  expectModeKept(orv::orvsConvert_32f16u_Sfs);
}

TEST(VectorKernels, ConversionByHand) {
  const std::vector<float> src{0.5f, 1.5f, 2.5f, 2.75f, -0.5f, -3.0f, 254.5f, 255.5f, 300.0f, 1e30f, -1e30f, HUGE_VALF};
  const auto length = static_cast<int>(src.size());
  std::vector<uint8_t> dst(src.size());
  const auto convert = [&](int rounding) {
    EXPECT_EQ(orvStsOk, checkedCall(orv::orvsConvert_32f8u_Sfs, src.data(), dst.data(), length, rounding, 0));
    return dst;
  };
  EXPECT_EQ((std::vector<uint8_t>{0, 1, 2, 2, 0, 0, 254, 255, 255, 255, 0, 255}), convert(0));
  EXPECT_EQ((std::vector<uint8_t>{0, 2, 2, 3, 0, 0, 254, 255, 255, 255, 0, 255}), convert(1));
  EXPECT_EQ((std::vector<uint8_t>{0, 1, 2, 2, 0, 0, 254, 255, 255, 255, 0, 255}), convert(2));
}

// --------------------------------------------------------------------------------------------------------- Arithmetic

TEST(VectorKernels, orvsMulC_32f) {
  const auto run = [](const Vectors<float, float>& v, uint32_t value) {
    return checkedCall(orv::orvsMulC_32f, v.src1, model::fromBits(value), v.dst, v.length);
  };
  expectModel<float, float>(
      "orvsMulC_32f", Values::anything, drawFloat, run,
      [](uint32_t source, uint32_t, uint32_t value) {
        return model::bitsOf(multiply(model::fromBits(source), model::fromBits(value)));
      },
      true);
  expectChecks<float, float>(Takes::oneSource, [&](const auto& v) { return run(v, 0); });
}

/// What works in place, as if it had a source: the source is copied first.
template <class InPlace>
auto copiedFirst(InPlace inPlace) {
  return [inPlace](const Vectors<float, float>& v, uint32_t scalar) {
    std::memmove(static_cast<void*>(v.dst), static_cast<const void*>(v.src1), static_cast<size_t>(v.length) * 4);
    return inPlace(v, scalar);
  };
}

template <class Run>
void expectQuotients(const std::string& name, Run run) {
  const auto drawDivisor = [](Random& random) {
    const uint32_t bits = drawFloat(random);
    return (bits & 0x7fffffffu) != 0 ? bits : model::bitsOf(3.0f);
  };
  expectModel<float, float>(
      name, Values::anything, drawDivisor, run,
      [](uint32_t source, uint32_t, uint32_t divisor) {
        const float reciprocal = divide(1.0f, model::fromBits(divisor));
        return model::bitsOf(multiply(model::fromBits(source), reciprocal));
      },
      true);
}

template <class Run>
void expectDivisionChecks(Takes takes, Run run) {
  expectChecks<float, float>(takes, [&](const auto& v) { return run(v, model::bitsOf(3.0f)); });
  // A zero of either sign is refused after the length.
  for (const uint32_t zero : {0u, 0x80000000u}) {
    std::vector<float> samples(9, 6.0f);
    EXPECT_EQ(orv::orvStsDivideByZero, run({samples.data(), nullptr, samples.data(), 9}, zero));
    EXPECT_EQ(orvStsBadSize, run({samples.data(), nullptr, samples.data(), 0}, zero));
    EXPECT_EQ(orvStsNullPointer, run({samples.data(), nullptr, nullptr, 0}, zero));
    EXPECT_EQ(std::vector<float>(9, 6.0f), samples);
  }
}

TEST(VectorKernels, orvsDivC_32f) {
  const auto run = [](const Vectors<float, float>& v, uint32_t divisor) {
    return checkedCall(orv::orvsDivC_32f, v.src1, model::fromBits(divisor), v.dst, v.length);
  };
  expectQuotients("orvsDivC_32f", run);
  expectDivisionChecks(Takes::oneSource, run);
}

TEST(VectorKernels, orvsDivC_32f_I) {
  const auto run = [](const Vectors<float, float>& v, uint32_t divisor) {
    return checkedCall(orv::orvsDivC_32f_I, model::fromBits(divisor), v.dst, v.length);
  };
  expectQuotients("orvsDivC_32f_I", copiedFirst(run));
  expectDivisionChecks(Takes::nothing, run);
}

TEST(VectorKernels, orvsThreshold_LT_32f) {
  const auto run = [](const Vectors<float, float>& v, uint32_t threshold) {
    return checkedCall(orv::orvsThreshold_LT_32f, v.src1, v.dst, v.length, model::fromBits(threshold));
  };
  for (const Values values : {Values::few, Values::anything})
    expectModel<float, float>(
        "orvsThreshold_LT_32f", values, drawFloat, run,
        [](uint32_t source, uint32_t, uint32_t threshold) { return model::thresholdBelow<float>(source, threshold); });
  expectChecks<float, float>(Takes::oneSource, [&](const auto& v) { return run(v, 0); });
}

// -------------------------------------------------------------------------------------------------- Roots, magnitudes

TEST(VectorKernels, orvsMagnitude_32f) {
  const auto run = [](const Vectors<float, float>& v, int = 0) {
    return checkedCall(orv::orvsMagnitude_32f, v.src1, v.src2, v.dst, v.length);
  };
  expectModel<float, float>(
      "orvsMagnitude_32f", Values::anything, noScalars, run,
      [](uint32_t first, uint32_t second, int) {
        const float x = model::fromBits(first), y = model::fromBits(second);
        return model::bitsOf(std::sqrt(add(multiply(x, x), multiply(y, y))));
      },
      true);
  expectChecks<float, float>(Takes::twoSources, run);
}

/// The whole number nearest to sqrt(n) * 2^-scaleFactor, ties to even, found without rounding on the way.
uint16_t modelMagnitude(int x, int y, int scaleFactor) {
  uint64_t square = static_cast<uint64_t>(int64_t{x} * x + int64_t{y} * y);
  if (scaleFactor > 17 || square == 0)
    return 0;  // below one half
  if (scaleFactor < -15)
    return 32767;
  // Compare with the squares of half numbers: (2 * root + 1)^2 * 4^s against 4 * square.
  uint64_t unit = 1;
  for (int s = 0; s < scaleFactor; ++s) unit *= 4;
  for (int s = 0; s > scaleFactor; --s) square *= 4;
  uint64_t low = 0, high = 32767;  // the largest root whose lower half number is not above the exact value
  while (low < high) {
    const uint64_t root = (low + high + 1) / 2;
    const uint64_t half = (2 * root - 1) * (2 * root - 1) * unit;
    const bool reached = half < 4 * square || (half == 4 * square && root % 2 == 0);
    (reached ? low : high) = reached ? root : root - 1;
  }
  return static_cast<uint16_t>(low);
}

TEST(VectorKernels, orvsMagnitude_16s_Sfs) {
  const auto run = [](const Vectors<int16_t, int16_t>& v, int scaleFactor) {
    return checkedCall(orv::orvsMagnitude_16s_Sfs, v.src1, v.src2, v.dst, v.length, scaleFactor);
  };
  const auto draw = [](Random& random) {
    return random.oneIn(2) ? random.between(-18, 20) : random.pick({0, 0, 1, 40, 130, -40, -130, INT_MAX, INT_MIN});
  };
  for (const Values values : {Values::few, Values::finite})
    expectModel<int16_t, int16_t>(
        "orvsMagnitude_16s_Sfs", values, draw, run, [](uint16_t x, uint16_t y, int scaleFactor) {
          return modelMagnitude(std::bit_cast<int16_t>(x), std::bit_cast<int16_t>(y), scaleFactor);
        });
  expectChecks<int16_t, int16_t>(Takes::twoSources, [&](const auto& v) { return run(v, 0); });
}

TEST(VectorKernels, MagnitudesOfTriplesAndTies) {
  const std::vector<int16_t> x{3, -5, 0, 6, 10, 1, 7, -32768, 32767}, y{4, 12, 0, 8, 0, 0, 0, -32768, 0};
  std::vector<int16_t> dst(x.size());
  const auto magnitude = [&](int scaleFactor) {
    EXPECT_EQ(orvStsOk, checkedCall(orv::orvsMagnitude_16s_Sfs, x.data(), y.data(), dst.data(),
                                    static_cast<int>(x.size()), scaleFactor));
    return dst;
  };
  EXPECT_EQ((std::vector<int16_t>{5, 13, 0, 10, 10, 1, 7, 32767, 32767}), magnitude(0));
  EXPECT_EQ((std::vector<int16_t>{2, 6, 0, 5, 5, 0, 4, 23170, 16384}), magnitude(1)) << "halves to the even result";
  EXPECT_EQ((std::vector<int16_t>{10, 26, 0, 20, 20, 2, 14, 32767, 32767}), magnitude(-1));
}

template <class Run>
void testRoot(const std::string& name, Run run) {
  forCases(name, 200, [&](Random& random) {
    const OrvSize size{drawSize(random).width, 1};
    const auto src = drawImage<float>(random, "src", size), dst = drawImage<float>(random, "dst", size);
    const bool negativesAllowed = random.oneIn(2);
    bool anyNegative = false;
    const TestImage<float> expected(dst);
    for (int i = 0; i < size.width; ++i) {
      if (!negativesAllowed)
        src.setBits(i, 0, 0, src.bits(i, 0) & 0x7fffffffu);
      anyNegative |= model::fromBits(src.bits(i, 0)) < 0;
      expected.setBits(i, 0, 0, model::bitsOf(std::sqrt(model::fromBits(src.bits(i, 0)))));
    }
    src.protectReadOnly();
    EXPECT_EQ(anyNegative ? orv::orvStsSqrtOfNegative : orvStsOk,
              run({src.data(), nullptr, dst.data(), size.width}, 0));
    makeNansAlike(dst);
    makeNansAlike(expected);
    dst.expectSame(expected);
  });
  // One negative element warns wherever it stands; -0.0 and a NaN of either sign do not.
  for (int place = 0; place < 41; ++place)
    for (const uint32_t bits : {0x80000001u, 0xbf800000u, 0xff800000u, 0x80000000u, 0xffc00000u, 0x7fc00000u}) {
      std::vector<float> src(41, 4.0f), dst(41);
      src[static_cast<size_t>(place)] = model::fromBits(bits);
      const bool negative = model::fromBits(bits) < 0;
      EXPECT_EQ(negative ? orv::orvStsSqrtOfNegative : orvStsOk, run({src.data(), nullptr, dst.data(), 41}, 0));
      for (int i = 0; i < 41; ++i) {
        if (i != place)
          EXPECT_EQ(2.0f, dst[static_cast<size_t>(i)]);
        else if (bits == 0x80000000u)
          EXPECT_EQ(bits, model::bitsOf(dst[static_cast<size_t>(i)]));
        else
          EXPECT_TRUE(isNan(dst[static_cast<size_t>(i)]));
      }
    }
}

TEST(VectorKernels, orvsSqrt_32f) {
  EXPECT_EQ(3, orv::orvStsSqrtOfNegative);
  const auto run = [](const Vectors<float, float>& v, uint32_t = 0) {
    return checkedCall(orv::orvsSqrt_32f, v.src1, v.dst, v.length);
  };
  testRoot("orvsSqrt_32f", run);
  expectChecks<float, float>(Takes::oneSource, run);
}

TEST(VectorKernels, orvsSqrt_32f_I) {
  const auto run = [](const Vectors<float, float>& v, uint32_t = 0) {
    return checkedCall(orv::orvsSqrt_32f_I, v.dst, v.length);
  };
  testRoot("orvsSqrt_32f_I", copiedFirst(run));
  expectChecks<float, float>(Takes::nothing, run);
}

}  // namespace
}  // namespace orvtest
