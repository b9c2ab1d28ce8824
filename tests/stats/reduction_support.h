// What the tests of the masked reductions share: images, mask, channel of interest, and doubles that may be NaN.
#pragma once

#include <cmath>
#include <string>
#include <tuple>
#include <vector>

#include "stats/norms_model.h"
#include "support/cases.h"
#include "support/check_order.h"
#include "support/checksums.h"
#include "support/image.h"
#include "support/photographs.h"

namespace orvtest {

/// All arguments that a reduction may have.
template <class Sample>
struct ReductionCall {
  const Sample* src1;
  int src1Step;
  const Sample* src2;
  int src2Step;
  const uint8_t* mask;
  int maskStep;
  OrvSize roi;
  int coi;
  double* value = nullptr;  ///< the norm or the mean
  double* stdDev = nullptr;
  float* minVal = nullptr;
  float* maxVal = nullptr;
  OrvPoint* minIndex = nullptr;
  OrvPoint* maxIndex = nullptr;
};

template <class Sample>
struct ReductionImages {
  TestImage<Sample> src1, src2;
  TestImage<uint8_t> mask;
  int coi;

  ReductionImages(Random& random, OrvSize size, int channels, Values values = Values::anything)
      : src1(drawImage<Sample>(random, "src1", size, {.channels = channels, .values = values})),
        src2(drawImage<Sample>(random, "src2", size, {.channels = channels, .values = values})),
        mask(drawMask(random, size)),
        coi(random.between(1, 3)) {}

  ReductionCall<Sample> call() const {
    return {src1.data(), src1.step(), src2.data(), src2.step(), mask.data(), mask.step(), src1.size(), coi};
  }

  void protectInputs() const {
    src1.protectReadOnly();
    src2.protectReadOnly();
    mask.protectReadOnly();
  }
};

/// Arguments that only some members have.
template <bool present, class... Values>
auto onlyIf(Values... values) {
  if constexpr (present)
    return std::tuple(values...);
  else
    return std::tuple();
}

/// The photograph, its mirror image, and its bright parts as the mask.
template <class Sample>
ReductionImages<Sample> photographReduction(Random& random, int channels) {
  const TestImage<Sample> photo = photographImage<Sample>(channels == 1 ? "camera.png" : "astronaut.png", channels);
  ReductionImages<Sample> images(random, photo.size(), channels);
  photo.forRegion([&](int x, int y, int channel) {
    images.src1.setPixel(x, y, channel, photo.pixel(x, y, channel));
    images.src2.setPixel(x, y, channel, photo.pixel(photo.width() - 1 - x, y, channel));
    images.mask.setPixel(x, y, photo.pixel(x, y) > photographSample<Sample>(128) ? 255 : 0);
  });
  return images;
}

/// Calls add(checksum, random, images) for drawn images and a photograph.
template <class Sample, class Add>
void expectReductionChecksum(const std::string& name, int channels, Values values, Add add) {
  Checksum checksum;
  forCases(name + " checksum", 24, [&](Random& random) {
    add(checksum, random, ReductionImages<Sample>(random, drawSize(random), channels, values));
  });
  Random random(name, 1);
  ReductionImages<Sample> photo = photographReduction<Sample>(random, channels);
  photo.coi = 2;
  add(checksum, random, photo);
  expectRecorded(name, checksum);
}

template <class Call>
Fault<Call> channelFault() {
  return valueFault("coi", &Call::coi, {0, 4, -1, INT32_MIN, INT32_MAX}, orvStsBadChannelOfInterest);
}

template <class Sample>
model::MaskedImages<Sample> modelInput(const ReductionCall<Sample>& c, int channels, bool twoImages, bool masked) {
  return {c.src1,
          c.src1Step,
          twoImages ? c.src2 : nullptr,
          c.src2Step,
          masked ? c.mask : nullptr,
          c.maskStep,
          c.roi.width,
          c.roi.height,
          channels,
          channels == 1 ? 0 : c.coi - 1};
}

/// Bit for bit; a NaN may be any NaN.
inline void expectSameReal(double expected, double got, const char* what) {
  if (std::isnan(expected))
    EXPECT_TRUE(std::isnan(got)) << what << ": got " << got << ", want a NaN";
  else
    EXPECT_EQ(std::bit_cast<uint64_t>(expected), std::bit_cast<uint64_t>(got))
        << what << ": got " << got << ", want " << expected << ", apart by " << got - expected;
}

/// For sums in an order of the library's choice: as close as sums of positive terms in double precision are.
inline void expectClose(double expected, double got, double scale, const char* what) {
  if (!std::isfinite(expected) || expected == got)
    expectSameReal(expected, got, what);
  else
    EXPECT_NEAR(expected, got, 1e-12 * (std::fabs(scale) + std::fabs(expected)) + 1e-300) << what;
}

}  // namespace orvtest
