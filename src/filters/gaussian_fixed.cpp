// The Gaussian filter on the row and column pipelines. Each row is filtered once, into a ring of float rows, where the
// results of the row pass are kept that are 16-bit integers for integer images; an array of row pointers leads to what
// an output row sees of it.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "filters/column_forms.h"
#include "filters/gaussian_kernel.h"
#include "filters/row_forms.h"
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

template <class Sample>
using CoefficientOf = std::conditional_t<std::is_same_v<Sample, uint8_t>, int16_t, Sample>;

/// Where the pipelines of a sample type scale the sums of blocks down a column.
template <class Sample>
constexpr Factor columnFactor = std::is_same_v<Sample, float>      ? Factor::none
                                : std::is_same_v<Sample, uint16_t> ? Factor::onSum
                                                                   : Factor::inCoefficients;

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

/// A specification block's kernel.
template <class Sample>
struct GaussianKernel {
  using Coefficient = CoefficientOf<Sample>;
  const Coefficient* taps;  ///< at any address
  int size, divisor;

  /// Float coefficients, each of which the block holds several times, are gathered.
  GaussianKernel(const void* block, const GaussianSpec& spec, Carver& carver) : size(spec.kernelSize), divisor(1) {
    const char* const table = static_cast<const char*>(block) + tableStart;
    if constexpr (std::is_same_v<Sample, float>) {
      float* const gathered = carver.take<float>(static_cast<size_t>(size));
      for (int tap = 0; tap < size; ++tap)
        std::memcpy(gathered + tap, table + static_cast<size_t>(tap * floatCopies) * sizeof(float), sizeof(float));
      taps = gathered;
    } else {
      divisor = static_cast<int>(1u << spec.shift);
      taps = reinterpret_cast<const Coefficient*>(table);
    }
  }

  int radius() const { return size / 2; }
  RowKernel<Coefficient> row() const { return {taps, size, radius(), divisor}; }
  ColumnKernel<Coefficient> column() const { return {taps, size, divisor}; }
};

/// A band of `bandRows` rows sees bandRows + kernelSize - 1 filtered rows, which never share a place in the ring.
template <class Sample, int channels>
class GaussianEngine {
public:
  GaussianEngine(const void* block, View<const Sample> src, OrvSize roi, const Sample* borderValue, void* buffer)
      : GaussianEngine(block, specIn(block), src, roi, borderValue, Carver{buffer}) {}

  void run(View<Sample> dst) {
    const int context = kernel_.size - 1;
    for (int y = 0; y < roi_.height; y += bandRows_) {
      const int height = std::min(bandRows_, roi_.height - y);
      const int known = y == 0 ? 0 : context;
      for (int i = 0; i < known; ++i) rows_[i] = rows_[i + bandRows_];
      enterRows(y - kernel_.radius(), known, height + context);
      filterColumnsWith(columns_, kernel_.size, rows_, View<Sample>{dst.row(y), dst.step},
                        OrvSize{rowSamples(), height});
    }
  }

private:
  using Filter = RowFilter<Sample, channels, float>;
  using Columns = FloatColumns<float, Sample, CoefficientOf<Sample>, columnFactor<Sample>>;

  GaussianEngine(const void* block, const GaussianSpec& spec, View<const Sample> src, OrvSize roi,
                 const Sample* borderValue, Carver carver)
      : src_(src),
        roi_(roi),
        vertical_(verticalBorder(spec.borderMode)),
        kernel_(block, spec, carver),
        bandRows_(rowsOfBand()),
        ringRows_(bandRows_ + kernel_.size - 1),
        columns_(kernel_.column(), reciprocal(kernel_.divisor)),
        rows_(carver.take<float*>(static_cast<size_t>(ringRows_))),
        ring_{carver.take<float>(ringRowSamples() * static_cast<size_t>(ringRows_)),
              static_cast<int>(ringRowSamples() * sizeof(float))},
        constantRow_(takeConstantRow(carver, borderValue)),
        filterRows_({roi.width, kernel_.row(), {spec.borderMode, borderValue}, carver.take<uint8_t>(0)}) {}

  int rowSamples() const { return roi_.width * channels; }
  size_t ringRowSamples() const { return static_cast<size_t>(roundUp(rowSamples(), F32x8::lanes)); }

  /// As many rows as the row filter likes at once, as far as the buffer has room for the ring: for integers, half as many
  /// rows as of words, less a constant row. Float columns are filtered two rows at a time.
  int rowsOfBand() const {
    const int K = kernel_.size;
    const int liked = std::min(roi_.height, Filter::rowsAtOnce(roi_.width, K));
    if (liked == 1)
      return std::is_same_v<Sample, float> ? std::min(roi_.height, 2) : 1;
    const int64_t words = (int64_t{2} * K - 1 + std::min(roi_.height, K)) * roundUp((roi_.width + K) * channels, 8);
    const int64_t room = words / (2 * static_cast<int64_t>(ringRowSamples())) - K;
    return static_cast<int>(std::clamp<int64_t>(room, 1, liked));
  }

  /// What rows above and below the image are under a constant border.
  float* takeConstantRow(Carver& carver, const Sample* borderValue) const {
    if (vertical_.kind != orvBorderConstant || (vertical_.lo && vertical_.hi))
      return nullptr;
    float* const row = carver.take<float>(ringRowSamples());
    float value[channels];
    for (int c = 0; c < channels; ++c) value[c] = static_cast<float>(loadSample(borderValue + c));
    FillPattern(value, sizeof value).fill(row, static_cast<size_t>(roi_.width) * sizeof value);
    return row;
  }

  /// Finds the rows begin .. end - 1 of a band whose context starts at row `top` of the image: real rows are filtered into
  /// the ring; rows above and below the image are those that they repeat or reflect, which the same band sees.
  void enterRows(int top, int begin, int end) {
    const int firstReal = std::clamp(vertical_.lo ? begin : -top, begin, end);
    const int endReal = vertical_.hi ? end : std::clamp(roi_.height - top, firstReal, end);
    for (int i = firstReal; i < endReal; ++i) {
      rows_[i] = ring_.row(place_);
      place_ = place_ + 1 == ringRows_ ? 0 : place_ + 1;
    }
    const auto derive = [&](int i) {
      const SourceIndex source = mapIndex(top + i, roi_.height, vertical_);
      rows_[i] = source.isBorderValue ? constantRow_ : rows_[source.index - top];
    };
    for (int i = begin; i < firstReal; ++i) derive(i);
    for (int i = endReal; i < end; ++i) derive(i);
    if (firstReal < endReal)
      filterRows_(View<const Sample>{src_.row(top + firstReal), src_.step}, rows_ + firstReal, endReal - firstReal);
  }

  View<const Sample> src_;
  OrvSize roi_;
  AxisBorder vertical_;
  GaussianKernel<Sample> kernel_;
  int bandRows_, ringRows_;
  int place_ = 0;  ///< in the ring, of the next row
  Columns columns_;
  float** rows_;
  View<float> ring_;
  float* constantRow_;
  Filter filterRows_;
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
  GaussianEngine<Sample, channels>(spec, src, roi, borderValue, buffer).run(dst);
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
  const auto W = static_cast<uint32_t>(roi.width);
  const uint32_t R = ((K + W) * static_cast<uint32_t>(numChannels) + 7) & ~7u;
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
