// The Gaussian filter on the row and column pipelines: 16-bit rows between the passes for integer images. Rows are
// filtered a band at a time into a ring, and a band's array of row pointers leads to what earlier bands left there.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "filters/gaussian_kernel.h"
#include "filters/pipelines.h"
#include "frame/blocks.h"
#include "frame/border.h"
#include "frame/fill.h"
#include "frame/views.h"

namespace orv {
namespace {

/// The words at the start of a specification block, which may lie at any address.
struct GaussianSpec {
  int32_t kernelSize, tableOffset, dataType, borderMode, shift;
};

constexpr int tableOffset = sizeof(GaussianSpec);
constexpr int tableStart = roundUp(tableOffset, 16);
constexpr int floatCopies = 8;

GaussianSpec specIn(const void* block) {
  GaussianSpec spec;
  std::memcpy(&spec, block, sizeof spec);
  return spec;
}

/// What a sample type filters with: its samples between the passes, its coefficients.
template <class Sample>
struct Form {
  using Row = Sample;
  using Coefficient = Sample;
};
template <>
struct Form<uint8_t> {
  using Row = int16_t;
  using Coefficient = int16_t;
};

/// The pipelines' buffer queries for a data type.
using PipelineQuery = OrvStatus (*)(OrvSize roi, int kernelSize, int32_t* bufferSize);
struct PipelineQueries {
  PipelineQuery rows, columns;
};
PipelineQueries pipelineQueries(OrvDataType dataType, int numChannels) {
#define ORV_QUERIES(rowForm, columnForm)                                                                               \
  numChannels == 1 ? PipelineQueries{orviFilterRowBorderPipelineGetBufferSize_##rowForm##_C1R,                         \
                                     orviFilterColumnPipelineGetBufferSize_##columnForm##_C1R}                         \
                   : PipelineQueries {                                                                                 \
    orviFilterRowBorderPipelineGetBufferSize_##rowForm##_C3R, orviFilterColumnPipelineGetBufferSize_##columnForm##_C3R \
  }
  switch (dataType) {
    case orvDataType8u:
      return ORV_QUERIES(8u16s, 16s8u);
    case orvDataType16u:
      return ORV_QUERIES(16u, 16u);
    case orvDataType16s:
      return ORV_QUERIES(16s, 16s);
    default:
      return ORV_QUERIES(32f, 32f);
  }
#undef ORV_QUERIES
}

/// Samples from one row of the ring to the next.
constexpr uint32_t ringRowSamples(int width, int kernelSize, int channels) {
  return ((static_cast<uint32_t>(kernelSize) + static_cast<uint32_t>(width)) * static_cast<uint32_t>(channels) + 7) &
         ~7u;
}

/// A band of `bandRows` rows, an even number because columns are filtered two rows at a time, sees
/// bandRows + kernelSize - 1 filtered rows, which never share a place in the ring.
template <class Sample, int channels>
class GaussianBands {
  using Row = typename Form<Sample>::Row;
  using Coefficient = typename Form<Sample>::Coefficient;

public:
  GaussianBands(const void* block, View<const Sample> src, OrvSize roi, const Sample* borderValue, void* buffer)
      : src_(src), roi_(roi), borderValue_(borderValue) {
    const GaussianSpec spec = specIn(block);
    kernelSize_ = spec.kernelSize;
    radius_ = kernelSize_ / 2;
    borderMode_ = spec.borderMode;
    vertical_ = verticalBorder(borderMode_);
    bandRows_ = std::min(roi.height, kernelSize_ + 1);
    ringRows_ = bandRows_ + kernelSize_ - 1;

    const auto taps = static_cast<size_t>(kernelSize_);
    const size_t rowSamples = ringRowSamples(roi.width, kernelSize_, channels);
    Carver carver(buffer);
    ring_ = {carver.take<Row>(rowSamples * static_cast<size_t>(ringRows_)), static_cast<int>(rowSamples * sizeof(Row))};
    constantRow_ = carver.take<Row>(rowSamples);
    rowPointers_ = carver.take<Row*>(static_cast<size_t>(ringRows_));
    const char* const table = static_cast<const char*>(block) + tableStart;
    if constexpr (std::is_same_v<Sample, float>) {
      float* const gathered = carver.take<float>(taps);
      for (size_t tap = 0; tap < taps; ++tap)
        std::memcpy(gathered + tap, table + tap * floatCopies * sizeof(float), sizeof(float));
      taps_ = gathered;
    } else {
      divisor_ = static_cast<int>(1u << spec.shift);
      taps_ = reinterpret_cast<const Coefficient*>(table);
    }
    rowBuffer_ = carver.take<uint8_t>(0);
    if (vertical_.kind == orvBorderConstant && !(vertical_.lo && vertical_.hi))
      fillConstantRow();
  }

  void run(View<Sample> dst) {
    for (int y = 0; y < roi_.height; y += bandRows_) filterBand(y, std::min(bandRows_, roi_.height - y), dst);
  }

private:
  Row* ringRow(int y) const { return ring_.row((y + radius_) % ringRows_); }

  void fillConstantRow() {
    Row value[channels];
    std::copy_n(borderValue_, channels, value);
    FillPattern(value, sizeof value).fill(constantRow_, static_cast<size_t>(roi_.width) * sizeof value);
  }

  /// Rows above and below the image are those rows of the ring that they repeat or reflect: both lie within the reach
  /// of the same band.
  Row* sourceOf(int y) const {
    const SourceIndex source = mapIndex(y, roi_.height, vertical_);
    return source.isBorderValue ? constantRow_ : ringRow(source.index);
  }

  void filterBand(int y, int height, View<Sample> dst) {
    const int first = y - radius_;
    const int end = y + height + radius_;
    for (int row = first; row < end; ++row) rowPointers_[row - first] = sourceOf(row);

    const int firstReal = vertical_.lo ? first : 0;
    const int entering = std::max(y == 0 ? first : y + radius_, firstReal);
    const int leaving = vertical_.hi ? end : std::min(end, roi_.height);
    if (entering < leaving)
      filterRows(View<const Sample>{src_.row(entering), src_.step}, rowPointers_ + (entering - first),
                 OrvSize{roi_.width, leaving - entering}, channels,
                 RowKernel<Coefficient>{taps_, kernelSize_, radius_, divisor_},
                 RowBorder<Sample>{borderMode_, borderValue_}, rowBuffer_);
    filterColumns(rowPointers_, View<Sample>{dst.row(y), dst.step}, OrvSize{roi_.width * channels, height},
                  ColumnKernel<Coefficient>{taps_, kernelSize_, divisor_});
  }

  View<const Sample> src_;
  OrvSize roi_;
  const Sample* borderValue_;
  int kernelSize_, radius_, bandRows_, ringRows_;
  int divisor_ = 1;
  OrvBorderMode borderMode_;
  AxisBorder vertical_;
  View<Row> ring_;
  Row* constantRow_;
  Row** rowPointers_;
  const Coefficient* taps_;
  uint8_t* rowBuffer_;
};

template <int channels, class Sample>
OrvStatus filterGaussianBorder(View<const Sample> src, View<Sample> dst, OrvSize roi, const Sample* borderValue,
                               const void* spec, void* buffer) {
  const auto badDivisor = [&] {
    return Check{std::numeric_limits<Sample>::is_integer && static_cast<uint32_t>(specIn(spec).shift) >= 32,
                 orvStsBadArg};
  };
  if (OrvStatus status = firstFailure(
          nullPointer(src.first, dst.first, buffer, spec), badStep<Sample>(src.step, roi.width, channels),
          badStep<Sample>(dst.step, roi.width, channels), badSize(roi), stepNotAligned<Sample>(src.step, dst.step),
          [&] { return badBorder(specIn(spec).borderMode, filterBorders); },
          [&] { return badTapCount(specIn(spec).kernelSize); }, badDivisor))
    return status;
  GaussianBands<Sample, channels>(spec, src, roi, borderValue, buffer).run(dst);
  return orvStsOk;
}

int shiftOf(OrvDataType dataType) { return dataType == orvDataType8u ? 12 : dataType == orvDataType32f ? 0 : 15; }

}  // namespace

OrvStatus orviFilterGaussianGetBufferSize(OrvSize roi, int kernelSize, OrvDataType dataType, int numChannels,
                                          int* specSize, int* bufferSize) {
  const auto K = static_cast<uint32_t>(kernelSize);
  if (OrvStatus status = firstFailure(nullPointer(specSize, bufferSize), badSize(roi),
                                      Check{K < 3 || K % 2 == 0, orvStsBadArg}, badImageKind(dataType, numChannels)))
    return status;
  const PipelineQueries queries = pipelineQueries(dataType, numChannels);
  int32_t rowPipe = 0;
  int32_t columnPipe = 0;
  if (OrvStatus status =
          firstFailure(queries.rows(roi, kernelSize, &rowPipe), queries.columns(roi, kernelSize, &columnPipe)))
    return status;

  // Sizes past the range of the result wrap.
  const auto H = static_cast<uint32_t>(roi.height);
  const uint32_t R = ringRowSamples(roi.width, kernelSize, numChannels);
  const uint32_t B = std::min(H, K);
  const uint32_t pipes = static_cast<uint32_t>(rowPipe) + 32 + static_cast<uint32_t>(columnPipe) + 32;
  if (dataType == orvDataType32f) {
    *specSize = static_cast<int>(32 * K + 32);
    *bufferSize = static_cast<int>(2 * (4 * R * K / 2 + 16) + 4 * R * (K + B) + 64 + pipes + 4 * (K + B) + 32);
  } else {
    *specSize = static_cast<int>(16 * K + 36);
    *bufferSize = static_cast<int>(2 * (2 * R * (K / 2) + 16) + 2 * R * (K + B) + 64 + pipes + 4 * (K + H) + 32);
  }
  return orvStsOk;
}

OrvStatus orviFilterGaussianInit(OrvSize roi, int kernelSize, float sigma, OrvBorderMode borderMode,
                                 OrvDataType dataType, int numChannels, void* spec, void* buffer) {
  // An odd negative size passes and leaves the kernel empty.
  const bool badKernelSize = (kernelSize >= 0 && kernelSize <= 2) || kernelSize % 2 == 0;
  if (OrvStatus status = firstFailure(nullPointer(spec, buffer), badSize(roi), Check{badKernelSize, orvStsBadArg},
                                      badImageKind(dataType, numChannels), Check{!(sigma > 0.0f), orvStsBadArg},
                                      badBorder(borderMode, filterBorders)))
    return status;
  const GaussianSpec words = {kernelSize, tableOffset, dataType, borderMode, shiftOf(dataType)};
  std::memcpy(spec, &words, sizeof words);

  const GaussianTaps taps(sigma);
  const int radius = kernelSize / 2;
  float sum = 0.0f;
  for (int j = 0; j < kernelSize; ++j) sum += taps.at(j - radius);
  char* entry = static_cast<char*>(spec) + tableStart;
  for (int j = 0; j < kernelSize; ++j) {
    const float share = taps.at(j - radius) / sum;
    if (dataType == orvDataType32f) {
      for (int copy = 0; copy < floatCopies; ++copy, entry += sizeof share) std::memcpy(entry, &share, sizeof share);
    } else {
      const float scaled = share * static_cast<float>(1 << words.shift);
      const auto coefficient = static_cast<uint16_t>(std::floor(static_cast<double>(scaled) + 0.5));
      std::memcpy(entry, &coefficient, sizeof coefficient);
      entry += sizeof coefficient;
    }
  }
  return orvStsOk;
}

#define ORV_FILTER_GAUSSIAN_BORDER(type, Sample)                                                                     \
  OrvStatus orviFilterGaussianBorder_##type##_C1R(const Sample* src, int srcStep, Sample* dst, int dstStep,          \
                                                  OrvSize roi, Sample borderValue, const void* spec, void* buffer) { \
    return filterGaussianBorder<1>(View{src, srcStep}, View{dst, dstStep}, roi, &borderValue, spec, buffer);         \
  }                                                                                                                  \
  OrvStatus orviFilterGaussianBorder_##type##_C3R(const Sample* src, int srcStep, Sample* dst, int dstStep,          \
                                                  OrvSize roi, const Sample* borderValue, const void* spec,          \
                                                  void* buffer) {                                                    \
    return filterGaussianBorder<3>(View{src, srcStep}, View{dst, dstStep}, roi, borderValue, spec, buffer);          \
  }

ORV_FILTER_GAUSSIAN_BORDER(8u, uint8_t)
ORV_FILTER_GAUSSIAN_BORDER(16u, uint16_t)
ORV_FILTER_GAUSSIAN_BORDER(16s, int16_t)
ORV_FILTER_GAUSSIAN_BORDER(32f, float)

}  // namespace orv
