// The Gaussian filters' size queries and Init functions.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "filters/gaussian_support.h"
#include "support/cases.h"
#include "support/check_order.h"
#include "support/checksums.h"
#include "support/drivers.h"

namespace orvtest {
namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr int dataTypes[] = {orvDataType8u, orvDataType16u, orvDataType16s, orvDataType32f};

/// All arguments that a query or Init has.
struct Call {
  OrvSize roi;
  int taps;
  float sigma;
  int word;
  int dataType, channels;
  int* specSize = nullptr;
  int* bufferSize = nullptr;
  uint8_t* spec = nullptr;
  uint8_t* scratch = nullptr;
};

OrvSizeL sizeL(OrvSize size) { return {size.width, size.height}; }

OrvStatus runSizes(const Call& c) {
  return checkedCall(orviFilterGaussianGetBufferSize, c.roi, c.taps, c.dataType, c.channels, c.specSize, c.bufferSize);
}
OrvStatus runInit(const Call& c) {
  return checkedCall(orviFilterGaussianInit, c.roi, c.taps, c.sigma, c.word, c.dataType, c.channels, c.spec, c.scratch);
}
OrvStatus runSpecSizeL(const Call& c) {
  return checkedCall(orviFilterGaussianGetSpecSize_L, c.taps, c.dataType, c.channels, c.specSize, c.bufferSize);
}
OrvStatus runBufferSizeL(const Call& c) {
  return checkedCall(orviFilterGaussianGetBufferSize_L, sizeL(c.roi), c.taps, c.dataType, c.word, c.channels,
                     c.bufferSize);
}
OrvStatus runInitL(const Call& c) {
  return checkedCall(orviFilterGaussianInit_L, sizeL(c.roi), c.taps, c.sigma, c.word, c.dataType, c.channels, c.spec,
                     c.scratch);
}

using Run = OrvStatus (*)(const Call&);

/// Visits geometries of every type and channel count.
template <class Visit>
void forGeometries(const std::string& name, Visit visit) {
  forCases(name, 200, [&](Random& random) {
    Call call{};
    call.roi = random.oneIn(4) ? OrvSize{random.between(1, 5000), random.between(1, 5000)} : drawSize(random);
    call.taps = 2 * random.between(1, random.oneIn(3) ? 100 : 8) + 1;
    call.sigma = random.pick({0.05f, 0.4f, 0.85f, 1.0f, 1.7f, 4.0f, 33.0f, 1e-30f, 1e20f, infinity});
    call.dataType = dataTypes[random.below(4)];
    call.channels = random.pick({1, 3});
    call.word = random.oneIn(4) ? 240 : random.pick({1, 3, 6}) + 16 * random.below(16);
    visit(random, call);
  });
}

// ------------------------------------------------------------------------------------------------------------ Sizes

int ceilTo(int value, int multiple) { return (value + multiple - 1) / multiple * multiple; }

int rowPipeSize(int dataType, int channels, int taps) {
  const bool colour = channels == 3;
  switch (dataType) {
    case orvDataType8u:
      return (colour ? 60 : 36) * taps + 144;
    case orvDataType16u:
      return (colour ? 128 : 64) * taps + 96;
    case orvDataType16s:
      return colour ? 40 * taps + 96 : 48 * taps + 112;
    default:
      return (colour ? 144 : 48) * taps + 96;
  }
}

int columnPipeSize(int dataType, int channels, int taps, int width) {
  switch (dataType) {
    case orvDataType16u:
      return 32 * taps + 64 + 32 * ((channels * width + 3) / 4);
    case orvDataType32f:
      return 32 * taps + 32;
    default:
      return 12 * channels * ceilTo(width, 4) + 64;
  }
}

int specSize(const Call& c) { return c.dataType == orvDataType32f ? 32 * c.taps + 32 : 16 * c.taps + 36; }

int bufferSize(const Call& c) {
  const int K = c.taps, H = c.roi.height, B = std::min(H, K);
  const int R = ((K + c.roi.width) * c.channels + 7) / 8 * 8;
  const int pipes = rowPipeSize(c.dataType, c.channels, K) + columnPipeSize(c.dataType, c.channels, K, c.roi.width);
  if (c.dataType == orvDataType32f)
    return 2 * (4 * R * K / 2 + 16) + 4 * R * (K + B) + 64 + 32 + 32 + 4 * (K + B) + 32 + pipes;
  return 2 * (2 * R * (K / 2) + 16) + 2 * R * (K + B) + 64 + 32 + 32 + 4 * (K + H) + 32 + pipes;
}

int bufferSizeL(const Call& c) { return (c.taps + 1) * ceilTo(4 * c.roi.width * c.channels, 64) + 12 * c.taps + 64; }

ORV_MODEL_TEST(orviFilterGaussianGetBufferSize) {
  forGeometries("orviFilterGaussianGetBufferSize", [](Random&, Call& call) {
    int spec = -1, buffer = -1;
    call.specSize = &spec, call.bufferSize = &buffer;
    EXPECT_EQ(orvStsOk, runSizes(call));
    EXPECT_EQ(specSize(call), spec);
    EXPECT_EQ(bufferSize(call), buffer) << call.roi.width << "x" << call.roi.height << ", K " << call.taps << ", type "
                                        << call.dataType << ", channels " << call.channels;
  });
}

ORV_MODEL_TEST(orviFilterGaussianGetSpecSize_L) {
  forGeometries("orviFilterGaussianGetSpecSize_L", [](Random&, Call& call) {
    int spec = -1, scratch = -1;
    call.specSize = &spec, call.bufferSize = &scratch;
    EXPECT_EQ(orvStsOk, runSpecSizeL(call));
    EXPECT_EQ(4 * ((call.taps + 1) / 2) + 128, spec);
    EXPECT_EQ(64, scratch);
  });
}

ORV_MODEL_TEST(orviFilterGaussianGetBufferSize_L) {
  forGeometries("orviFilterGaussianGetBufferSize_L", [](Random&, Call& call) {
    int buffer = -1;
    call.bufferSize = &buffer;
    EXPECT_EQ(orvStsOk, runBufferSizeL(call));
    EXPECT_EQ(bufferSizeL(call), buffer);
  });
}

TEST(GaussianSizes, ByHand) {
  int spec = 0, buffer = 0;
  // R = (5 + 16 + 7) / 8 * 8 = 24.
  EXPECT_EQ(orvStsOk, orviFilterGaussianGetBufferSize({16, 10}, 5, orvDataType8u, 1, &spec, &buffer));
  EXPECT_EQ(116, spec);
  EXPECT_EQ(2 * (96 + 16) + 480 + 64 + (180 + 144) + 32 + (192 + 64) + 32 + 60 + 32, buffer);
  EXPECT_EQ(orvStsOk, orviFilterGaussianGetBufferSize({16, 10}, 5, orvDataType32f, 1, &spec, &buffer));
  EXPECT_EQ(192, spec);
  EXPECT_EQ(2 * (240 + 16) + 960 + 64 + (240 + 96) + 32 + (160 + 32) + 32 + 40 + 32, buffer);
  EXPECT_EQ(orvStsOk, orviFilterGaussianGetBufferSize_L({17, 10}, 5, orvDataType8u, 240, 1, &buffer));
  EXPECT_EQ(6 * 128 + 60 + 64, buffer);
  EXPECT_EQ(orvStsOk, orviFilterGaussianGetSpecSize_L(5, orvDataType8u, 1, &spec, &buffer));
  EXPECT_EQ(140, spec);
}

// ------------------------------------------------------------------------------------------------------------- Init

void putWords(std::vector<uint8_t>& bytes, size_t at, std::initializer_list<int32_t> words) {
  for (const int32_t word : words) {
    std::memcpy(&bytes[at], &word, sizeof word);
    at += sizeof word;
  }
}

template <class Tap>
void putTaps(std::vector<uint8_t>& bytes, size_t at, const std::vector<Tap>& taps, int copies) {
  for (const Tap tap : taps)
    for (int copy = 0; copy < copies; ++copy) {
      std::memcpy(&bytes[at], &tap, sizeof tap);
      at += sizeof tap;
    }
}

/// The block after Init where its contents are fixed; the rest is taken from `block`.
std::vector<uint8_t> expectedBlock(const Call& c, std::vector<uint8_t> block) {
  putWords(block, 0, {c.taps, 20, c.dataType, c.word, c.dataType == 1 ? 12 : c.dataType == 13 ? 0 : 15});
  if (c.dataType == orvDataType8u)
    putTaps(block, 32, model::gaussianTaps<uint8_t>(c.taps, c.sigma), 1);
  else if (c.dataType == orvDataType16u)
    putTaps(block, 32, model::gaussianTaps<uint16_t>(c.taps, c.sigma), 1);
  else if (c.dataType == orvDataType16s)
    putTaps(block, 32, model::gaussianTaps<int16_t>(c.taps, c.sigma), 1);
  else
    putTaps(block, 32, model::gaussianTaps<float>(c.taps, c.sigma), 8);
  return block;
}

std::vector<uint8_t> expectedBlockL(const Call& c, size_t padding, std::vector<uint8_t> block) {
  putWords(block, padding, {c.taps, 64, c.dataType, 0, 0});
  putTaps(block, padding + 64, model::halfKernel(c.taps, c.sigma), 1);
  return block;
}

/// Init into a block of exactly the queried size at a drawn address.
GuardedBlock initialised(Random& random, Call& call, bool singlePrecision) {
  int specBytes = 0, scratchBytes = 0;
  call.specSize = &specBytes, call.bufferSize = &scratchBytes;
  EXPECT_EQ(orvStsOk, (singlePrecision ? runSpecSizeL : runSizes)(call));
  GuardedBlock spec("spec", specBytes, random);
  const GuardedBlock scratch("scratch", scratchBytes, random);
  spec.fill(random);
  call.spec = spec.data(), call.scratch = scratch.data();
  EXPECT_EQ(orvStsOk, (singlePrecision ? runInitL : runInit)(call));
  return spec;
}

size_t paddingTo64(const uint8_t* address) { return (64 - reinterpret_cast<uintptr_t>(address) % 64) % 64; }

ORV_MODEL_TEST(orviFilterGaussianInit) {
  forGeometries("orviFilterGaussianInit", [](Random& random, Call& call) {
    const GuardedBlock spec = initialised(random, call, false);
    EXPECT_EQ(expectedBlock(call, spec.bytes()), spec.bytes()) << "K " << call.taps << ", sigma " << call.sigma;
  });
}

ORV_MODEL_TEST(orviFilterGaussianInit_L) {
  forGeometries("orviFilterGaussianInit_L", [](Random& random, Call& call) {
    const GuardedBlock spec = initialised(random, call, true);
    EXPECT_EQ(expectedBlockL(call, paddingTo64(spec.data()), spec.bytes()), spec.bytes())
        << "K " << call.taps << ", sigma " << call.sigma;
  });
}

TEST(GaussianInit, CoefficientsByHand) {
  Random random("Gaussian coefficients by hand", 0);
  Call call{.roi = {4, 4}, .taps = 3, .sigma = 1.0f, .word = 0xF1, .dataType = orvDataType8u, .channels = 1};
  const GuardedBlock bytes = initialised(random, call, false);
  const std::vector<int16_t> expected{1123, 1851, 1123};
  EXPECT_EQ(0, std::memcmp(expected.data(), bytes.data() + 32, 6));
  call.dataType = orvDataType16u;
  call.sigma = 0.05f;
  const GuardedBlock words = initialised(random, call, false);
  const std::vector<uint16_t> single{0, 32768, 0};
  EXPECT_EQ(0, std::memcmp(single.data(), words.data() + 32, 6));
}

TEST(GaussianInit, AnOddNegativeKernelSizeGivesAnEmptyKernelOnThePipelines) {
  for (const int type : dataTypes)
    for (const int taps : {-1, -3, -31, INT32_MIN + 1}) {
      const GuardedBlock spec("spec", 32, 13), scratch("scratch", 16, 5);
      spec.fill(0);
      const Call call{.roi = {4, 4},
                      .taps = taps,
                      .sigma = 1.0f,
                      .word = 1,
                      .dataType = type,
                      .channels = 1,
                      .spec = spec.data(),
                      .scratch = scratch.data()};
      EXPECT_EQ(orvStsOk, runInit(call));
      int32_t stored = 0;
      std::memcpy(&stored, spec.data(), 4);
      EXPECT_EQ(taps, stored);
      const GuardedBlock buffer("buffer", 64);
      const uint8_t src[16] = {};
      uint8_t dst[16];
      if (type == orvDataType8u) {
        EXPECT_EQ(orvStsBadArg, checkedCall(orviFilterGaussianBorder_8u_C1R, src, 4, dst, 4, OrvSize{4, 4}, 0,
                                            spec.data(), buffer.data()));
      }
    }
}

TEST(GaussianInit, ASigmaThatIsNotANumberPassesInSinglePrecisionOnly) {
  const GuardedBlock spec("spec", 136, 1), scratch("scratch", 64);
  Call call{.roi = {4, 4},
            .taps = 3,
            .sigma = nan,
            .word = 1,
            .dataType = orvDataType8u,
            .channels = 1,
            .spec = spec.data(),
            .scratch = scratch.data()};
  EXPECT_EQ(orvStsOk, runInitL(call));
  EXPECT_EQ(orvStsBadArg, runInit(call));
  for (const float sigma : {std::numeric_limits<float>::denorm_min(), infinity}) {
    call.sigma = sigma;
    EXPECT_EQ(orvStsOk, runInitL(call));
    EXPECT_EQ(orvStsOk, runInit(call));
  }
}

// ----------------------------------------------------------------------------------------------------- Check orders

const std::initializer_list<int> badChannels{2, 0, 4, -1, INT32_MIN};
const std::initializer_list<int> badTypes{0, 2, 6, 11, 14, 19, -1, INT32_MIN, INT32_MAX};

Fault<Call> tapsFault(std::initializer_list<int> values) {
  return valueFault("kernelSize", &Call::taps, values, orvStsBadArg);
}
Fault<Call> typeFault() { return valueFault("dataType", &Call::dataType, badTypes, orvStsBadAlgorithm); }
Fault<Call> channelsFault() { return valueFault("numChannels", &Call::channels, badChannels, orvStsBadChannels); }
const std::initializer_list<int> badTaps{2, 0, 1, 4, -2, INT32_MIN};

/// Two results of 4 bytes and two blocks, all guarded.
struct Blocks {
  GuardedBlock specSize{"specSize", 4, 0}, bufferSize{"bufferSize", 4, 4}, spec{"spec", 256, 3}, scratch{"scratch", 64};
  Call valid{{9, 4},        5, 1.0f, 0x16, orvDataType16s, 3, specSize.as<int>(), bufferSize.as<int>(), spec.data(),
             scratch.data()};

  void expect(Run run, std::vector<Fault<Call>> faults) const {
    CheckOrder<Call> order(valid, run);
    order.watch(specSize, bufferSize, spec, scratch);
    order.faults = std::move(faults);
    order.verify();
  }
};

ORV_CHECK_ORDER_TEST(orviFilterGaussianGetBufferSize) {
  // As an unsigned number an odd negative size is a large one: it is no fault of its own.
  Blocks().expect(runSizes, {nullFault("specSize", &Call::specSize), nullFault("bufferSize", &Call::bufferSize),
                             sizeFault("roi", &Call::roi), tapsFault(badTaps), typeFault(), channelsFault()});
}

ORV_CHECK_ORDER_TEST(orviFilterGaussianGetSpecSize_L) {
  Blocks().expect(runSpecSizeL, {nullFault("specSize", &Call::specSize), nullFault("bufferSize", &Call::bufferSize),
                                 tapsFault({2, 0, 1, 4, -2, -1, -3, INT32_MIN}), typeFault(), channelsFault()});
}

ORV_CHECK_ORDER_TEST(orviFilterGaussianGetBufferSize_L) {
  Blocks().expect(
      runBufferSizeL,
      {nullFault("bufferSize", &Call::bufferSize), sizeFault("roi", &Call::roi),
       tapsFault({2, 0, 1, 4, -2, -1, -3, INT32_MIN}), typeFault(), channelsFault(),
       valueFault("borderMode", &Call::word, {0x106, 0, 2, 5, 16, 0x70, 0xE0, 0x1F0, -1, INT32_MIN}, orvStsBadBorder)});
}

ORV_CHECK_ORDER_TEST(orviFilterGaussianInit) {
  Blocks().expect(runInit, {nullFault("spec", &Call::spec), nullFault("buffer", &Call::scratch),
                            sizeFault("roi", &Call::roi), tapsFault(badTaps), typeFault(), channelsFault(),
                            valueFault("sigma", &Call::sigma, {0.0f, -0.0f, -1.0f, -infinity, nan, -nan}, orvStsBadArg),
                            valueFault("borderMode", &Call::word,
                                       {0x106, 0, 2, 4, 5, 15, 16, 0xE0, 0xF2, 0xFF, 0x1F0, 4096, -1, INT32_MIN},
                                       orvStsBadBorder)});
}

ORV_CHECK_ORDER_TEST(orviFilterGaussianInit_L) {
  Blocks().expect(
      runInitL, {nullFault("spec", &Call::spec), nullFault("initBuffer", &Call::scratch), sizeFault("roi", &Call::roi),
                 tapsFault({2, 0, 1, 4, -2, -1, -3, INT32_MIN}), typeFault(), channelsFault(),
                 valueFault("sigma", &Call::sigma, {0.0f, -0.0f, -1.0f, -infinity}, orvStsBadArg),
                 valueFault("borderMode", &Call::word, {0x106, 0, 2, 5, 16, 0x70, 0xE0, 0x1F0, 4096, -1, INT32_MIN},
                            orvStsBadBorder)});
}

TEST(GaussianInit, AcceptedWords) {
  const Blocks blocks;
  for (int word = 0; word < 256; ++word) {
    Call call = blocks.valid;
    call.word = word;
    const int kind = word & 15;
    const bool known = kind == 1 || kind == 3 || kind == 6;
    EXPECT_EQ(known || word == 240 ? orvStsOk : orvStsBadBorder, runInit(call)) << word;
    EXPECT_EQ(known || word >= 240 ? orvStsOk : orvStsBadBorder, runInitL(call)) << word;
    EXPECT_EQ(known || word >= 240 ? orvStsOk : orvStsBadBorder, runBufferSizeL(call)) << word;
  }
}

// ------------------------------------------------------------------------------------------------------- Checksums

void expectSizesRecorded(const std::string& name, Run run) {
  Checksum checksum;
  forGeometries(name, [&](Random&, Call& call) {
    int spec = -1, buffer = -1;
    call.specSize = &spec, call.bufferSize = &buffer;
    checksum.add(run(call));
    checksum.add(spec);
    checksum.add(buffer);
  });
  expectRecorded(name, checksum);
}

ORV_CHECKSUM_TEST(orviFilterGaussianGetBufferSize) { expectSizesRecorded("orviFilterGaussianGetBufferSize", runSizes); }
ORV_CHECKSUM_TEST(orviFilterGaussianGetSpecSize_L) {
  expectSizesRecorded("orviFilterGaussianGetSpecSize_L", runSpecSizeL);
}
ORV_CHECKSUM_TEST(orviFilterGaussianGetBufferSize_L) {
  expectSizesRecorded("orviFilterGaussianGetBufferSize_L", runBufferSizeL);
}

/// The words and the table, which is what Init fixes of a block.
void addBlock(Checksum& checksum, const uint8_t* words, const uint8_t* table, int tableBytes) {
  checksum.addBytes(words, 20);
  checksum.addBytes(table, static_cast<size_t>(tableBytes));
}

ORV_CHECKSUM_TEST(orviFilterGaussianInit) {
  Checksum checksum;
  forGeometries("orviFilterGaussianInit checksum", [&](Random& random, Call& call) {
    const GuardedBlock spec = initialised(random, call, false);
    addBlock(checksum, spec.data(), spec.data() + 32, (call.dataType == orvDataType32f ? 32 : 2) * call.taps);
  });
  expectRecorded("orviFilterGaussianInit", checksum);
}

ORV_CHECKSUM_TEST(orviFilterGaussianInit_L) {
  Checksum checksum;
  forGeometries("orviFilterGaussianInit_L checksum", [&](Random& random, Call& call) {
    const GuardedBlock spec = initialised(random, call, true);
    const uint8_t* words = spec.data() + paddingTo64(spec.data());
    addBlock(checksum, words, words + 64, 4 * (call.taps / 2 + 1));
  });
  expectRecorded("orviFilterGaussianInit_L", checksum);
}

}  // namespace
}  // namespace orvtest
