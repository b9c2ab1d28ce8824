// Separable filter: a row kernel with taps of its own for each channel, and a column kernel, in one call. Filtered rows
// are floats in a ring as high as the column kernel.
#include "filters/column_forms.h"
#include "filters/row_sums.h"
#include "frame/blocks.h"
#include "frame/border.h"
#include "frame/row_extension.h"

namespace orv {
namespace {

/// What Init leaves in the caller's block, at the next multiple of 32 bytes; the kernels follow it.
template <class Coefficient>
struct SeparableSpec {
  int32_t reserved;
  int32_t kernelWidth, kernelHeight;
  int32_t divisor;
  int32_t roundMode;
  Coefficient* rowKernel;
  void* rowTable;
  Coefficient* columnKernel;
  void* columnTable;
  int32_t channels;
};

constexpr int vectorBytes = sizeof(__m256);

/// What the size query counts for each tap of the row kernel.
template <class Coefficient>
constexpr int queriedTapBytes(int channels) {
  return 128 + 4 * static_cast<int>(sizeof(Coefficient)) * channels;
}

constexpr Check badChannels(int channels) { return notAmong(channels, {1, 3, 4}, orvStsBadChannels); }

template <class Coefficient>
void initialise(void* block, const Coefficient* kernelX, const Coefficient* kernelY, OrvSize kernelSize, int divisor,
                int roundMode, int channels) {
  Carver carver{block};
  auto* const spec = carver.take<SeparableSpec<Coefficient>>(1);
  const size_t rowTaps = static_cast<size_t>(kernelSize.width) * static_cast<size_t>(channels);
  const size_t columnTaps = static_cast<size_t>(kernelSize.height);
  auto* const rowKernel = carver.take<Coefficient>(rowTaps);
  auto* const columnKernel = carver.take<Coefficient>(columnTaps);
  std::memcpy(rowKernel, kernelX, rowTaps * sizeof *kernelX);
  std::memcpy(columnKernel, kernelY, columnTaps * sizeof *kernelY);
  *spec = {0,         kernelSize.width, kernelSize.height, divisor, roundMode,
           rowKernel, nullptr,          columnKernel,      nullptr, channels};
}

/// Masks the exception for denormal operands, which small coefficients and sums meet, and restores the control word.
class DenormalExceptionMasked {
public:
  DenormalExceptionMasked() : saved_(_mm_getcsr()) { _mm_setcsr(saved_ | _MM_MASK_DENORM); }
  ~DenormalExceptionMasked() { _mm_setcsr(saved_); }
  DenormalExceptionMasked(const DenormalExceptionMasked&) = delete;
  DenormalExceptionMasked& operator=(const DenormalExceptionMasked&) = delete;

private:
  unsigned saved_;
};

template <class Source, class Dst, class Coefficient, int channels>
class SeparableFilter {
public:
  SeparableFilter(View<const Source> src, OrvSizeL roi, OrvBorderMode borderMode, const Source* borderValue,
                  const SeparableSpec<Coefficient>& spec, uint8_t* buffer)
      : src_(src),
        roi_(roi),
        rowBorder_(horizontalBorder(borderMode)),
        columnBorder_(verticalBorder(borderMode)),
        borderValue_(borderValue),
        spec_(spec),
        anchor_{(spec.kernelWidth - 1) / 2, (spec.kernelHeight - 1) / 2},
        reciprocal_(isInteger ? reciprocal(spec.divisor) : 1.0f) {
    // The table fills whole vectors, so that the ring starts at an aligned address, too.
    auto* const table = roundUp(reinterpret_cast<float*>(buffer), vectorBytes);
    sums_ = {table, spec.kernelWidth};
    sums_.expand(spec.rowKernel);
    exactInFloat_ = !isInteger || largestMagnitude() * largestSample <= 0x1p24;
    auto* const ring = table + ChannelSums<channels>::tableFloats(spec.kernelWidth);
    const ptrdiff_t ringRow = ringRowSamples();
    rows_ = reinterpret_cast<float**>(ring + ringRow * spec.kernelHeight);
    for (int i = 0; i < spec.kernelHeight; ++i) rows_[i] = ring + i * ringRow;
    if constexpr (std::is_same_v<Source, float>) {
      constexpr int blockPixels = ChannelSums<channels>::blockLanes / channels;
      innerBegin_ = roundUp(anchor_.x, blockPixels);
      const int blocks = (roi.width - reachRight() - innerBegin_) / blockPixels;
      innerEnd_ = blocks > 0 ? innerBegin_ + blocks * blockPixels : 0;
    }
  }

  void run(View<Dst> dst) {
    constexpr Factor factor = isInteger ? Factor::onSum : Factor::none;
    const FloatColumns<float, Dst, Coefficient, factor, Rounding::towardZero> columns{
        ColumnKernel<Coefficient>{spec_.columnKernel, spec_.kernelHeight}, reciprocal_};
    const int height = spec_.kernelHeight;
    for (const bool real : {true, false})
      for (int i = 0; i < height - 1; ++i)
        if (isReal(i - anchor_.y) == real)
          fillRow(i, i - anchor_.y);
    for (int y = 0; y < roi_.height; ++y) {
      fillRow(height - 1, y - anchor_.y + height - 1);
      withTaps(height, [&](auto taps) {
        filterRowGroup<taps, 1>(columns, rows_, View<Dst>{dst.row(y), dst.step}, roi_.width * channels);
      });
      float* const oldest = rows_[0];
      std::copy(rows_ + 1, rows_ + height, rows_);
      rows_[height - 1] = oldest;
    }
  }

private:
  static constexpr bool isInteger = std::is_same_v<Coefficient, int16_t>;
  static constexpr float largestSample = sizeof(Source) == 1 ? 255.0f : 32768.0f;

  /// A filtered row and what its kernel reaches beyond. Rows are a whole number of vectors apart as far as what the query
  /// counts for tables, beyond the one in use, has room for that.
  ptrdiff_t ringRowSamples() const {
    const int samples = (roi_.width + spec_.kernelWidth - 1) * channels;
    const int padded = roundUp(samples, F32x8::lanes);
    const ptrdiff_t counted = ptrdiff_t{queriedTapBytes<Coefficient>(channels)} * spec_.kernelWidth;
    const ptrdiff_t table = ChannelSums<channels>::tableFloats(spec_.kernelWidth) * ptrdiff_t{sizeof(float)};
    const ptrdiff_t padding = ptrdiff_t{padded - samples} * spec_.kernelHeight * ptrdiff_t{sizeof(float)};
    return padding <= counted - table - (vectorBytes - 1) ? padded : samples;
  }

  float largestMagnitude() const {
    float largest = 0.0f;
    for (int c = 0; c < channels; ++c) {
      float sum = 0.0f;
      for (int j = 0; j < spec_.kernelWidth; ++j) sum += std::abs(coefficient(j, c));
      largest = std::max(largest, sum);
    }
    return largest;
  }
  int reachRight() const { return spec_.kernelWidth - 1 - anchor_.x; }
  float coefficient(int j, int c) const { return static_cast<float>(spec_.rowKernel[j * channels + c]); }

  /// In the image or in memory beyond it.
  bool isReal(int y) const { return (y >= 0 || columnBorder_.lo) && (y < roi_.height || columnBorder_.hi); }

  /// Puts row y of the image, extended at top and bottom and filtered, in a place of the ring: the rows of the ring follow
  /// each other. Rows outside the image are copied from the row that they repeat or reflect, where the ring has it.
  void fillRow(int place, int y) const {
    if (isReal(y))
      return filterRow(rows_[place], src_.row(y));
    const SourceIndex source = mapIndex(y, roi_.height, columnBorder_);
    if (source.isBorderValue)
      return fillConstant(rows_[place]);
    const int held = place + (source.index - y);
    if (0 <= held && held < spec_.kernelHeight - 1)
      copySamples(rows_[held], rows_[place], roi_.width * channels);
    else
      filterRow(rows_[place], src_.row(source.index));
  }

  void filterRow(float* row, const Source* s) const {
    const RowExtension<Source, channels> extension{s, roi_.width, rowBorder_, borderValue_};
    if (innerEnd_ == 0) {
      extension.copyAll(row, anchor_.x, reachRight());
      return sumPixels(row, row, roi_.width);
    }
    const auto filterEnd = [&](int begin, int end) {
      float* const first = row + ptrdiff_t{begin} * channels;
      extension.copy(first, begin - anchor_.x, end - begin + spec_.kernelWidth - 1);
      sumPixels(first, first, end - begin);
    };
    filterEnd(0, innerBegin_);
    if constexpr (std::is_same_v<Source, float>)
      sumPixels(s + ptrdiff_t{innerBegin_ - anchor_.x} * channels, row + ptrdiff_t{innerBegin_} * channels,
                innerEnd_ - innerBegin_);
    filterEnd(innerEnd_, roi_.width);
  }

  void sumPixels(const float* src, float* dst, int pixels) const {
    const int samples = pixels * channels;
    if constexpr (isInteger) {
      const auto divided = [factor = F32x8::broadcast(reciprocal_)](F32x8 sum) { return sum * factor; };
      exactInFloat_ ? sums_.template filter<FloatSum>(src, dst, samples, divided)
                    : sums_.template filter<DoubleSum>(src, dst, samples, divided);
    } else {
      sums_.template filter<FloatSum>(src, dst, samples, [](F32x8 sum) { return sum; });
    }
  }

  /// The filtered row of an image that is borderValue everywhere.
  void fillConstant(float* row) const {
    float values[channels];
    for (int c = 0; c < channels; ++c) {
      const auto tap = [&](int j) { return F32x1::broadcast(coefficient(j, c)); };
      F32x1 sum = tap(0);
      for (int j = 1; j < spec_.kernelWidth; ++j) sum = sum + tap(j);
      (F32x1::load(borderValue_ + c) * sum * F32x1::broadcast(reciprocal_)).store(values + c);
    }
    for (int x = 0; x < roi_.width; ++x, row += channels) std::memcpy(row, values, sizeof values);
  }

  View<const Source> src_;
  OrvSizeL roi_;
  AxisBorder rowBorder_, columnBorder_;
  const Source* borderValue_;
  const SeparableSpec<Coefficient>& spec_;
  OrvPoint anchor_;
  float reciprocal_;
  bool exactInFloat_;
  ChannelSums<channels> sums_;
  float** rows_;
  /// Floats between these pixels are filtered where they lie: whole blocks that see no pixels beyond the ends.
  int innerBegin_ = 0, innerEnd_ = 0;
};

template <class Coefficient, int channels, class Source, class Dst>
OrvStatus filterSeparable(View<const Source> src, View<Dst> dst, OrvSizeL roi, OrvBorderMode borderMode,
                          const Source* borderValue, const void* spec, uint8_t* buffer) {
  if (OrvStatus status = firstFailure(nullPointer(src.first, dst.first, spec, buffer), badSize(roi),
                                      badStep<Source>(src.step, roi.width, channels),
                                      badStep<Dst>(dst.step, roi.width, channels), badBorder(borderMode, filterBorders),
                                      nullPointerIf(borderKind(borderMode) == orvBorderConstant, borderValue)))
    return status;
  const DenormalExceptionMasked masked;
  const auto& kernels = *static_cast<const SeparableSpec<Coefficient>*>(roundUp(spec, 32));
  SeparableFilter<Source, Dst, Coefficient, channels>{src, roi, borderMode, borderValue, kernels, buffer}.run(dst);
  return orvStsOk;
}

}  // namespace

OrvStatus orviFilterSeparableGetSpecSize_L(OrvSize kernelSize, OrvDataType dataType, int numChannels,
                                           int32_t* specSize) {
  if (OrvStatus status = firstFailure(badSize(kernelSize), nullPointer(specSize),
                                      notAmong(dataType, {orvDataType16s, orvDataType32f}, orvStsBadAlgorithm),
                                      badChannels(numChannels)))
    return status;
  const int coefficientBytes = dataType == orvDataType16s ? 2 : 4;
  *specSize = 2 * (kernelSize.width + kernelSize.height) * numChannels * coefficientBytes + 127;
  return orvStsOk;
}

OrvStatus orviFilterSeparableGetBufferSize_L(OrvSizeL roi, OrvSize kernelSize, OrvDataType dataType,
                                             OrvDataType kernelType, int numChannels, int32_t* bufferSize) {
  if (OrvStatus status = firstFailure(
          badSize(roi), badSize(kernelSize), nullPointer(bufferSize),
          notAmong(dataType, {orvDataType8u, orvDataType16u, orvDataType16s, orvDataType32f}, orvStsBadAlgorithm),
          notAmong(kernelType, {orvDataType16s, orvDataType32f}, orvStsBadAlgorithm), badChannels(numChannels)))
    return status;
  const int width = kernelSize.width, height = kernelSize.height;
  const int tapBytes =
      kernelType == orvDataType16s ? queriedTapBytes<int16_t>(numChannels) : queriedTapBytes<float>(numChannels);
  *bufferSize = tapBytes * width + 4 * ((roi.width + width - 1) * height * numChannels + height);
  return orvStsOk;
}

OrvStatus orviFilterSeparableInit_16s_L(const int16_t* kernelX, const int16_t* kernelY, OrvSize kernelSize, int divisor,
                                        int roundMode, OrvDataType dataType, int numChannels, void* spec) {
  if (OrvStatus status = firstFailure(nullPointer(kernelX, kernelY, spec), badSize(kernelSize),
                                      notAmong(dataType, {orvDataType8u, orvDataType16s}, orvStsBadAlgorithm),
                                      badChannels(numChannels), Check{divisor == 0, orvStsBadDivisor}))
    return status;
  initialise(spec, kernelX, kernelY, kernelSize, divisor, roundMode, numChannels);
  return orvStsOk;
}

OrvStatus orviFilterSeparableInit_32f_L(const float* kernelX, const float* kernelY, OrvSize kernelSize,
                                        OrvDataType dataType, int numChannels, void* spec) {
  if (OrvStatus status = firstFailure(nullPointer(kernelX, kernelY, spec), badSize(kernelSize),
                                      notAmong(dataType, {orvDataType16u, orvDataType32f}, orvStsBadAlgorithm),
                                      badChannels(numChannels)))
    return status;
  initialise(spec, kernelX, kernelY, kernelSize, 1, 0, numChannels);
  return orvStsOk;
}

#define ORV_SEPARABLE(type, channels, Source, Dst, Coefficient, BorderArgument, address)                         \
  OrvStatus orviFilterSeparable_##type##_C##channels##R_L(                                                       \
      const Source* src, OrvLength srcStep, Dst* dst, OrvLength dstStep, OrvSizeL roi, OrvBorderMode borderMode, \
      BorderArgument borderValue, const void* spec, uint8_t* buffer) {                                           \
    return filterSeparable<Coefficient, channels>(View{src, srcStep}, View{dst, dstStep}, roi, borderMode,       \
                                                  address borderValue, spec, buffer);                            \
  }
#define ORV_SEPARABLES(type, Source, Dst, Coefficient)              \
  ORV_SEPARABLE(type, 1, Source, Dst, Coefficient, Source, &)       \
  ORV_SEPARABLE(type, 3, Source, Dst, Coefficient, const Source*, ) \
  ORV_SEPARABLE(type, 4, Source, Dst, Coefficient, const Source*, )

ORV_SEPARABLES(8u, uint8_t, uint8_t, int16_t)
ORV_SEPARABLES(8u16s, uint8_t, int16_t, int16_t)
ORV_SEPARABLES(16s, int16_t, int16_t, int16_t)
ORV_SEPARABLES(16u, uint16_t, uint16_t, float)
ORV_SEPARABLES(32f, float, float, float)

}  // namespace orv
