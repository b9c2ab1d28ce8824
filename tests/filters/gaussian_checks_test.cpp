// The order of checks of the Gaussian filters' working calls.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "filters/gaussian_support.h"
#include "support/check_order.h"
#include "support/drivers.h"
#include "support/image.h"

namespace orvtest {
namespace {

constexpr size_t tapsField = 0, wordField = 12, shiftField = 16;  // bytes from the first word of a block

int32_t readField(const uint8_t* words, size_t field) {
  int32_t value;
  std::memcpy(&value, words + field, sizeof value);
  return value;
}

/// A call and what its block says.
template <class Sample>
struct DamagedCall {
  const Sample* src;
  int srcStep;
  Sample* dst;
  int dstStep;
  OrvSize roi;
  int word;
  const Sample* borderValue;
  const void* spec;
  void* buffer;
  int32_t tapsInSpec, wordInSpec, shiftInSpec;

  GaussianCall<Sample> arguments() const { return {src, srcStep, dst, dstStep, roi, word, borderValue, spec, buffer}; }
};

template <class Sample>
void expectChecks(const GaussianMember<Sample>& member) {
  using Call = DamagedCall<Sample>;
  const bool pipelines = member.generation == Gaussian::pipelines;
  const OrvSize size{9, 4};
  const Shape shape{.size = size, .channels = member.channels};
  const TestImage<Sample> src("src", shape), dst("dst", shape);
  src.fillWith(1);
  dst.fillWith(2);
  const Sample values[3] = {5, 6, 7};
  const GaussianSetup setup = member.setup(size, 5, 1.0f, orvBorderConstant);
  const GuardedBlock spec = gaussianSpec(setup, 20), buffer("buffer", gaussianBufferSize(setup), 3);
  uint8_t* words = spec.data();
  if (!pipelines)
    words += (64 - reinterpret_cast<uintptr_t>(words) % 64) % 64;

  Call valid{src.data(),
             src.step(),
             dst.data(),
             dst.step(),
             size,
             orvBorderConstant,
             values,
             spec.data(),
             buffer.data(),
             readField(words, tapsField),
             readField(words, wordField),
             readField(words, shiftField)};
  const auto run = [&](const Call& call) {
    std::memcpy(words + tapsField, &call.tapsInSpec, 4);
    std::memcpy(words + wordField, &call.wordInSpec, 4);
    std::memcpy(words + shiftField, &call.shiftInSpec, 4);
    spec.protectReadOnly();
    const OrvStatus status = member.run(call.arguments());
    spec.protectWritable();
    return status;
  };

  CheckOrder<Call> order(valid, run);
  order.watch(src, dst, buffer);
  auto& faults = order.faults;
  faults = {nullFault("src", &Call::src), nullFault("dst", &Call::dst), nullFault("buffer", &Call::buffer),
            nullFault("spec", &Call::spec)};
  faults.push_back(stepFault("srcStep", &Call::srcStep, src.step()));
  faults.push_back(stepFault("dstStep", &Call::dstStep, dst.step()));
  faults.push_back(rowTooLongFault("roi", &Call::roi));
  faults.push_back(sizeFault("roi", &Call::roi));
  if (sizeof(Sample) > 1) {
    faults.push_back(alignFault<Sample>("srcStep", &Call::srcStep));
    faults.push_back(alignFault<Sample>("dstStep", &Call::dstStep));
  }
  if (pipelines) {
    faults.push_back(valueFault("word in spec", &Call::wordInSpec,
                                {0x106, 0, 2, 4, 5, 7, 15, 16, 0xE0, 0xF0 + 2, 0xF8, 0x1F0, 4096, -1, -250, INT32_MIN},
                                orvStsBadBorder));
  } else {
    faults.push_back(
        valueFault("word", &Call::word, {0x106, 0x1F0, 256, 4096, -1, -10, INT32_MIN, INT32_MAX}, orvStsBadBorder));
    faults.push_back(nullFault("borderValue", &Call::borderValue));
    Fault<Call> otherKind =
        valueFault("word", &Call::word, {0, 2, 4, 5, 7, 8, 15, 16, 0x70, 0xE0, 0xB5}, orvStsBadBorder);
    otherKind.name = "kind";
    otherKind.keys.push_back("borderValue");  // read under a constant border only
    faults.push_back(otherKind);
  }
  faults.push_back(
      valueFault("kernelSize in spec", &Call::tapsInSpec, {4, 0, 1, 2, 6, -2, -1, -3, INT32_MIN}, orvStsBadArg));
  if (pipelines && dataType<Sample> != orvDataType32f)
    faults.push_back(valueFault("shift in spec", &Call::shiftInSpec, {32, 33, 44, 64, INT32_MAX}, orvStsBadArg));
  order.verify();
}

#define ORV_GAUSSIAN(name) \
  ORV_CHECK_ORDER_TEST(name) { expectChecks(gaussianMember(#name, name)); }
#include "filters/gaussian_members.inc"
#undef ORV_GAUSSIAN

// ------------------------------------------------------------------------------------------------------------- By hand

TEST(GaussianChecks, AShortStepComesBeforeAnEmptyRegion) {
  const GuardedBlock spec = gaussianSpec({Gaussian::pipelines, {8, 8}, 3, 1.0f, 1, orvDataType8u, 1}, 0);
  uint8_t image[64] = {}, buffer[4096];
  EXPECT_EQ(orvStsBadStep, checkedCall(orviFilterGaussianBorder_8u_C1R, image, 7, image + 1, 8, OrvSize{8, 0}, 0,
                                       spec.data(), buffer));
  EXPECT_EQ(orvStsBadSize, checkedCall(orviFilterGaussianBorder_8u_C1R, image, 8, image + 1, 8, OrvSize{8, 0}, 0,
                                       spec.data(), buffer));
}

TEST(GaussianChecks, TheBorderValueIsNeededUnderAConstantBorderOnly) {
  const OrvSize size{5, 4};
  const Shape shape{.size = size, .margins = {1, 1, 1, 1}};
  const TestImage<uint8_t> src("src", shape), dst("dst", shape);
  src.fillWith(9);
  for (int word = 0; word < 256; ++word) {
    const bool all = (word & 240) == 240;
    const int kind = word & 15;
    const GaussianSetup setup{Gaussian::singlePrecision, size, 3, 1.0f, 1, orvDataType8u, 1};
    const GuardedBlock spec = gaussianSpec(setup, 7), buffer("buffer", gaussianBufferSize(setup), 9);
    const OrvStatus expected = all || kind == 1 || kind == 3 ? orvStsOk
                               : kind == 6                   ? orvStsNullPointer
                                                             : orvStsBadBorder;
    EXPECT_EQ(expected, checkedCall(orviFilterGaussian_8u_C1R_L, src.data(), src.step(), dst.data(), dst.step(),
                                    OrvSizeL{size.width, size.height}, word, nullptr, spec.data(), buffer.data()))
        << "word " << word;
  }
}

TEST(GaussianChecks, ThreeChannelsOfThePipelinesNeverLookAtAnUnusedBorderValue) {
  const OrvSize size{5, 4};
  const TestImage<int16_t> src("src", {.size = size, .channels = 3}), dst("dst", {.size = size, .channels = 3});
  src.fillWith(9);
  for (const int word : {1, 3}) {
    const GaussianSetup setup{Gaussian::pipelines, size, 5, 1.0f, word, orvDataType16s, 3};
    const GuardedBlock spec = gaussianSpec(setup, 1), buffer("buffer", gaussianBufferSize(setup), 2);
    EXPECT_EQ(orvStsOk, checkedCall(orviFilterGaussianBorder_16s_C3R, src.data(), src.step(), dst.data(), dst.step(),
                                    size, nullptr, spec.data(), buffer.data()));
  }
}

}  // namespace
}  // namespace orvtest
