// The pipelines as they are meant to be used: an image streamed through both in bands, by rotating the pointers to a
// ring of rows, is the same as the whole image at once.
#include <gtest/gtest.h>

#include <algorithm>

#include "filters/pipeline_support.h"
#include "support/checked_call.h"
#include "support/concurrency.h"
#include "support/photographs.h"

namespace orvtest {
namespace {

/// Both stages of one filter, whose kernels have as many taps down as along.
template <class Source, class Row, class Result>
struct Filter {
  int taps;
  void (*filterRows)(const Source* src, int srcStep, Row* const* rows, OrvSize roi, uint8_t* buffer);
  void (*filterColumns)(const Row* const* rows, Result* dst, int dstStep, OrvSize roi, uint8_t* buffer);
  SizeQuery *rowSize, *columnSize;
};

/// Filters into bands of so many rows. Rows beyond the top and bottom replicate the first and last.
template <class Source, class Row, class Result>
void stream(const Filter<Source, Row, Result>& filter, const TestImage<Source>& src, const TestImage<Result>& dst,
            int bandHeight) {
  const int width = src.width(), height = src.height(), anchor = filter.taps / 2;
  const int held = bandHeight + filter.taps - 1;
  Random random("stream", static_cast<uint32_t>(bandHeight));
  const GuardedBlock rowBuffer = drawBuffer(random, filter.rowSize, {width, bandHeight}, filter.taps);
  const GuardedBlock columnBuffer = drawBuffer(random, filter.columnSize, {width, bandHeight}, filter.taps);
  const TestImage<Row> ring("ring", {.size = {width, held}, .channels = src.channels(), .stepPadding = 6});
  const auto ringRow = [&](int y) { return addressOf(ring.data(), ring.step(), 0, y % held); };

  int filtered = 0;
  for (int top = 0; top < height; top += bandHeight) {
    const int rows = std::min(bandHeight, height - top);
    const int needed = std::min(height, top + rows + filter.taps - 1 - anchor);
    std::vector<Row*> fresh;
    for (int y = filtered; y < needed; ++y) fresh.push_back(ringRow(y));
    if (!fresh.empty())
      filter.filterRows(addressOf(src.data(), src.step(), 0, filtered), src.step(), fresh.data(),
                        {width, static_cast<int>(fresh.size())}, rowBuffer.data());
    filtered = std::max(filtered, needed);
    std::vector<const Row*> window;
    for (int y = top - anchor; y < top + rows + filter.taps - 1 - anchor; ++y)
      window.push_back(ringRow(std::clamp(y, 0, height - 1)));
    filter.filterColumns(window.data(), addressOf(dst.data(), dst.step(), 0, top), dst.step(), {width, rows},
                         columnBuffer.data());
  }
}

template <class Source, class Row, class Result>
void expectBandsEqualTheWhole(const Filter<Source, Row, Result>& filter, const TestImage<Source>& src) {
  src.protectReadOnly();
  const TestImage<Result> whole("whole", {.size = src.size(), .channels = src.channels(), .stepPadding = 8});
  stream(filter, src, whole, src.height());
  for (const int bandHeight : {1, 2, 7, 64}) {
    SCOPED_TRACE(testing::Message() << "bands of " << bandHeight << " rows");
    const TestImage<Result> bands("bands", {.size = src.size(), .channels = src.channels(), .stepPadding = 8});
    stream(filter, src, bands, bandHeight);
    bands.expectSame(whole);
  }
}

constexpr int16_t smooth[] = {1, 4, 6, 4, 1};
constexpr float smoothReal[] = {0.0625f, 0.25f, 0.375f, 0.25f, 0.0625f};

const Filter<uint8_t, int16_t, uint8_t> greyFilter = {
    5,
    [](const uint8_t* src, int srcStep, int16_t* const* rows, OrvSize roi, uint8_t* buffer) {
      EXPECT_EQ(orvStsOk, checkedCall(orviFilterRowBorderPipeline_8u16s_C1R, src, srcStep, rows, roi, smooth, 5, 2,
                                      orvBorderMirror, uint8_t{0}, 1, buffer));
    },
    [](const int16_t* const* rows, uint8_t* dst, int dstStep, OrvSize roi, uint8_t* buffer) {
      EXPECT_EQ(orvStsOk,
                checkedCall(orviFilterColumnPipeline_16s8u_C1R, rows, dst, dstStep, roi, smooth, 5, 256, buffer));
    },
    orviFilterRowBorderPipelineGetBufferSize_8u16s_C1R, orviFilterColumnPipelineGetBufferSize_16s8u_C1R};

TEST(PipelineStreams, GreyPhotograph) {
  const TestImage<uint8_t> camera = photographImage<uint8_t>("camera.png");
  expectBandsEqualTheWhole(greyFilter, camera);

  // The whole is right: near its middle the sums of the 25 weighted pixels, rounded once.
  const TestImage<uint8_t> dst("dst", {.size = camera.size()});
  stream(greyFilter, camera, dst, 16);
  for (int y = 10; y < 60; ++y)
    for (int x = 10; x < 60; ++x) {
      int sum = 0;
      for (int j = 0; j < 5; ++j)
        for (int i = 0; i < 5; ++i) sum += smooth[j] * smooth[i] * camera.pixel(x + i - 2, y + j - 2);
      ASSERT_EQ(std::nearbyint(static_cast<float>(sum) / 256.0f), static_cast<float>(dst.pixel(x, y)));
    }
}

TEST(PipelineStreams, ColourPhotographInFloats) {
  const Filter<float, float, float> filter = {
      5,
      [](const float* src, int srcStep, float* const* rows, OrvSize roi, uint8_t* buffer) {
        const float black[3] = {};
        EXPECT_EQ(orvStsOk, checkedCall(orviFilterRowBorderPipeline_32f_C3R, src, srcStep, rows, roi, smoothReal, 5, 2,
                                        orvBorderConstant, black, buffer));
      },
      [](const float* const* rows, float* dst, int dstStep, OrvSize roi, uint8_t* buffer) {
        EXPECT_EQ(orvStsOk,
                  checkedCall(orviFilterColumnPipeline_32f_C3R, rows, dst, dstStep, roi, smoothReal, 5, buffer));
      },
      orviFilterRowBorderPipelineGetBufferSize_32f_C3R, orviFilterColumnPipelineGetBufferSize_32f_C3R};
  expectBandsEqualTheWhole(filter, photographImage<float>("chelsea.png", 3));
}

TEST(PipelineStreams, WordsOfAColourPhotograph) {
  const Filter<int16_t, int16_t, int16_t> filter = {
      3,
      [](const int16_t* src, int srcStep, int16_t* const* rows, OrvSize roi, uint8_t* buffer) {
        const int16_t black[3] = {};
        const int16_t kernel[] = {1, 2, 1};
        EXPECT_EQ(orvStsOk, checkedCall(orviFilterRowBorderPipeline_16s_C3R, src, srcStep, rows, roi, kernel, 3, 1,
                                        orvBorderReplicate, black, 4, buffer));
      },
      [](const int16_t* const* rows, int16_t* dst, int dstStep, OrvSize roi, uint8_t* buffer) {
        const int16_t kernel[] = {-1, 0, 1};
        EXPECT_EQ(orvStsOk,
                  checkedCall(orviFilterColumnPipeline_16s_C3R, rows, dst, dstStep, roi, kernel, 3, 2, buffer));
      },
      orviFilterRowBorderPipelineGetBufferSize_16s_C3R, orviFilterColumnPipelineGetBufferSize_16s_C3R};
  expectBandsEqualTheWhole(filter, photographImage<int16_t>("chelsea.png", 3));
}

TEST(PipelineStreams, SeveralThreadsShareTheirSource) {
  const TestImage<uint8_t> camera = photographImage<uint8_t>("camera.png");
  camera.protectReadOnly();
  const TestImage<uint8_t> expected("expected", {.size = camera.size()});
  stream(greyFilter, camera, expected, 32);
  concurrently(3, 2, [&](int thread) {
    const TestImage<uint8_t> own("own", {.size = camera.size()});
    stream(greyFilter, camera, own, 10 + thread);
    own.expectSame(expected);
  });
}

}  // namespace
}  // namespace orvtest
