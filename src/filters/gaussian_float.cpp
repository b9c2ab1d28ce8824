// The Gaussian filter in single precision. Each source row is filtered along the row once, into a ring of as many float
// rows as the kernel has taps; each result row is a sum down the ring, rounded on its way to the image.
#include <cstring>

#include "filters/gaussian_kernel.h"
#include "filters/symmetric_sums.h"
#include "frame/blocks.h"
#include "frame/border.h"
#include "frame/cache.h"
#include "frame/fill.h"
#include "frame/row_extension.h"
#include "frame/views.h"

namespace orv {
namespace {

// The specification block, at its address rounded up to blockAlignment. The half kernel follows at halfKernelOffset,
// the farthest tap first, the centre last.
constexpr int blockAlignment = 64;
constexpr int halfKernelOffset = 64;
struct GaussianSpec {
  int32_t kernelSize, halfKernelOffset, dataType, reserved, shift;
};

constexpr uint32_t ringRowBytes(int width, int channels) {
  const uint32_t bytes = static_cast<uint32_t>(width) * static_cast<uint32_t>(channels) * sizeof(float);
  return (bytes + (blockAlignment - 1)) & ~uint32_t{blockAlignment - 1};
}

/// A row of pixels with its extension on both sides fits a ring row and 12 bytes a tap.
constexpr uint32_t extensionBytes(int kernelSize) { return 12 * static_cast<uint32_t>(kernelSize); }

// The passes. Each makes 16 or 32 results at a time, bound by loads and arithmetic alike.
using RowPass = void (*)(const float* half, int radius, const float* line, float* out, int count);

template <int channels, class Kernel>
void filterLine(const float* half, int radius, const float* line, float* out, int count) {
  const Kernel kernel(half, radius);
  const ShiftedLine<channels> rows{line};
  int x = 0;
  if constexpr (requires { Kernel::taps; }) {
    using Window = LineWindow<channels, Kernel::taps>;
    const int samples = count + channels * (Kernel::taps - 1);
    for (; x <= samples - Window::samples; x += F32x16::lanes) kernel.sum(Window(line + x)).store(out + x);
  }
  coverRow<F32x16>(
      x, count, [&](int at) { kernel.template sum<F32x16>(rows, at).store(out + at); },
      [&](int at) { kernel.template sum<F32x1>(rows, at).store(out + at); });
}

template <class Sample>
using ColumnPass = void (*)(const float* half, int radius, const float* const* rows, Sample* dst, int count);

template <class Kernel>
auto rowsOf(const float* const* ring) {
  if constexpr (requires { Kernel::taps; })
    return FixedRows<Kernel::taps>(ring);
  else
    return SeparateRows{ring};
}

/// Stores that pass the cache need aligned addresses: from the second block on they are, but for the last block.
template <class V, class Store, class Kernel, class Sample>
void filterDownBy(const float* half, int radius, const float* const* ring, Sample* dst, int count) {
  const Kernel kernel(half, radius);
  const auto rows = rowsOf<Kernel>(ring);
  constexpr bool streaming = std::is_same_v<Store, StreamingStore>;
  constexpr uintptr_t alignment = std::min(F32x16::lanes * sizeof(Sample), sizeof(__m256));
  const auto beyondAligned = [dst](int x) { return reinterpret_cast<uintptr_t>(dst + x) % alignment; };
  const bool alignable = beyondAligned(0) % sizeof(Sample) == 0;
  coverRow<V>(
      streaming && alignable ? -static_cast<int>(beyondAligned(0) / sizeof(Sample)) : 0, count,
      [&](int x) {
        const V sum = kernel.template sum<V>(rows, x);
        if (!streaming || beyondAligned(x) == 0)
          storeRounded<Store>(dst + x, sum);
        else
          storeRounded<CachedStore>(dst + x, sum);
      },
      [&](int x) { storeRounded(dst + x, kernel.template sum<F32x1>(rows, x)); });
}

template <class Sample, class Kernel, class Store>
void filterDown(const float* half, int radius, const float* const* ring, Sample* dst, int count) {
  if (count < Kernel::Widest::lanes)
    filterDownBy<F32x16, CachedStore, Kernel>(half, radius, ring, dst, count);
  else
    filterDownBy<typename Kernel::Widest, Store, Kernel>(half, radius, ring, dst, count);
}

/// The instantiation of a pass for a kernel size: 3, 5 and 7 taps have their own.
template <int channels>
RowPass rowPassOf(int radius) {
  switch (radius) {
    case 1:
      return filterLine<channels, FixedKernel<1>>;
    case 2:
      return filterLine<channels, FixedKernel<2>>;
    case 3:
      return filterLine<channels, FixedKernel<3>>;
    default:
      return filterLine<channels, AnyKernel>;
  }
}
template <class Sample, class Store>
ColumnPass<Sample> columnPassOf(int radius) {
  switch (radius) {
    case 1:
      return filterDown<Sample, FixedKernel<1>, Store>;
    case 2:
      return filterDown<Sample, FixedKernel<2>, Store>;
    case 3:
      return filterDown<Sample, FixedKernel<3>, Store>;
    default:
      return filterDown<Sample, AnyKernel, Store>;
  }
}

template <class Sample>
void convertToFloat(const Sample* src, float* dst, int count) {
  coverRow<F32x16>(
      0, count, [&](int x) { F32x16::load(src + x).store(dst + x); },
      [&](int x) { F32x1::load(src + x).store(dst + x); });
}

template <class Sample, int channels>
class GaussianEngine {
public:
  GaussianEngine(const GaussianSpec* spec, View<const Sample> src, OrvSizeL roi, OrvBorderMode borderMode,
                 const Sample* borderValue, bool streaming, void* buffer)
      : half_(reinterpret_cast<const float*>(reinterpret_cast<const char*>(spec) + halfKernelOffset)),
        radius_(spec->kernelSize / 2),
        src_(src),
        roi_(roi),
        horizontal_(horizontalBorder(borderMode)),
        vertical_(verticalBorder(borderMode)),
        rowPass_(rowPassOf<channels>(radius_)),
        columnPass_(streaming ? columnPassOf<Sample, StreamingStore>(radius_)
                              : columnPassOf<Sample, CachedStore>(radius_)) {
    if (borderKind(borderMode) == orvBorderConstant && !allSidesInMemory(borderMode))
      convertToFloat(borderValue, borderValue_, channels);
    // The line lies below the ring, so that it ends where an aligned area starts.
    const uint32_t lineBytes = ringRowBytes(roi.width, channels) + extensionBytes(spec->kernelSize);
    char* const ring = roundUp(static_cast<char*>(buffer) + lineBytes, blockAlignment);
    ring_ = {reinterpret_cast<float*>(ring), static_cast<int>(ringRowBytes(roi.width, channels))};
    line_ = reinterpret_cast<float*>(ring - lineBytes);
  }

  void run(View<Sample> dst) {
    for (int y = -radius_; y <= radius_; ++y)
      if (isReal(y))
        filterRow(y);
    for (int y = -radius_; y <= radius_; ++y)
      if (!isReal(y))
        deriveRow(y);
    makeRow(0, dst);
    for (int y = 1; y < roi_.height; ++y) {
      const int entering = y + radius_;
      if (isReal(entering))
        filterRow(entering);
      else
        deriveRow(entering);
      makeRow(y, dst);
    }
  }

private:
  int rowSamples() const { return roi_.width * channels; }
  int ringIndex(int y) const { return (y + radius_) % (2 * radius_ + 1); }
  float* ringRow(int y) const { return ring_.row(ringIndex(y)); }

  /// In the image or in memory beyond it. Other rows stem from rows that are in the ring at the same time.
  bool isReal(int y) const {
    const SourceIndex source = mapIndex(y, roi_.height, vertical_);
    return !source.isBorderValue && source.index == y;
  }

  void deriveRow(int y) {
    const SourceIndex source = mapIndex(y, roi_.height, vertical_);
    const size_t bytes = static_cast<size_t>(rowSamples()) * sizeof(float);
    if (source.isBorderValue)
      FillPattern(borderValue_, sizeof borderValue_).fill(ringRow(y), bytes);
    else
      std::memcpy(ringRow(y), ringRow(source.index), bytes);
  }

  void filterRow(int y) {
    const Sample* const row = src_.row(y);
    float* const out = ringRow(y);
    if constexpr (std::is_same_v<Sample, float>)
      filterFloats(row, out);
    else
      filterConverted(row, out);
  }

  void filterPixels(const float* line, float* out, int pixels) const {
    rowPass_(half_, radius_, line, out, pixels * channels);
  }

  /// The row and its extension, converted.
  void filterConverted(const Sample* row, float* out) const {
    const int before = horizontal_.lo ? radius_ : 0;
    const int after = horizontal_.hi ? radius_ : 0;
    float* const first = line_ + radius_ * channels;
    convertToFloat(row - before * channels, first - before * channels, (before + roi_.width + after) * channels);
    const RowExtension<float, channels> extension{first, roi_.width, horizontal_, borderValue_};
    if (!horizontal_.lo)
      extension.left(line_, radius_);
    if (!horizontal_.hi)
      extension.right(first + rowSamples(), radius_);
    filterPixels(line_, out, roi_.width);
  }

  /// Floats are filtered where they lie; the ends of the row, a vector or more long, in an extended copy.
  void filterFloats(const float* row, float* out) const {
    const RowExtension<float, channels> extension{row, roi_.width, horizontal_, borderValue_};
    const int end = std::max(radius_, F32x16::lanes);
    const int left = horizontal_.lo ? 0 : end;
    const int right = horizontal_.hi ? 0 : end;
    const auto filterEnd = [&](int x, int pixels) {
      extension.copy(line_, x - radius_, pixels + 2 * radius_);
      filterPixels(line_, out + x * channels, pixels);
    };
    if (roi_.width < left + right) {
      filterEnd(0, roi_.width);
      return;
    }
    if (left > 0)
      filterEnd(0, left);
    filterPixels(row + (left - radius_) * channels, out + left * channels, roi_.width - left - right);
    if (right > 0)
      filterEnd(roi_.width - right, right);
  }

  /// The pointers to the ring rows take the place of the line, which is not in use by then.
  void makeRow(int y, View<Sample> dst) const {
    const auto rows = reinterpret_cast<const float**>(line_);
    const int kernelSize = 2 * radius_ + 1;
    int index = ringIndex(y - radius_);
    for (int tap = 0; tap < kernelSize; ++tap) {
      rows[tap] = ring_.row(index);
      index = index + 1 == kernelSize ? 0 : index + 1;
    }
    columnPass_(half_, radius_, rows, dst.row(y), rowSamples());
  }

  const float* half_;
  int radius_;
  View<const Sample> src_;
  OrvSizeL roi_;
  AxisBorder horizontal_, vertical_;
  RowPass rowPass_;
  ColumnPass<Sample> columnPass_;
  View<float> ring_;
  float* line_;
  float borderValue_[channels] = {};
};

/// Large images go past the cache when they would not fit it.
bool exceedsCache(OrvSizeL roi) {
  const int64_t pixels = int64_t{roi.width} * roi.height;
  int32_t cacheBytes = 0;
  return pixels >= 524288 && orvGetMaxCacheSizeB(&cacheBytes) == 0 && pixels >= cacheBytes;
}

const GaussianSpec* specIn(const void* block) {
  return reinterpret_cast<const GaussianSpec*>(roundUp(static_cast<const char*>(block), blockAlignment));
}

OrvStatus badBorderOf(OrvBorderMode borderMode, const void* borderValue) {
  const bool needsValue = borderKind(borderMode) == orvBorderConstant && !allSidesInMemory(borderMode);
  return firstFailure(Check{static_cast<uint32_t>(borderMode) > gaussianBordersL.limit, orvStsBadBorder},
                      nullPointerIf(needsValue, borderValue), badBorder(borderMode, gaussianBordersL));
}

template <int channels, class Sample>
OrvStatus filterGaussian(View<const Sample> src, View<Sample> dst, OrvSizeL roi, OrvBorderMode borderMode,
                         const Sample* borderValue, const void* spec, void* buffer) {
  if (OrvStatus status = firstFailure(
          nullPointer(src.first, dst.first, buffer, spec), badStep<Sample>(src.step, roi.width, channels),
          badStep<Sample>(dst.step, roi.width, channels), badSize(roi), stepNotAligned<Sample>(src.step, dst.step),
          badBorderOf(borderMode, borderValue), [&] { return badTapCount(specIn(spec)->kernelSize); }))
    return status;
  const bool streaming = exceedsCache(roi);
  GaussianEngine<Sample, channels>(specIn(spec), src, roi, borderMode, borderValue, streaming, buffer).run(dst);
  if (streaming)
    _mm_sfence();
  return orvStsOk;
}

}  // namespace

OrvStatus orviFilterGaussianGetSpecSize_L(int kernelSize, OrvDataType dataType, int numChannels, int* specSize,
                                          int* initBufferSize) {
  if (OrvStatus status = firstFailure(nullPointer(specSize, initBufferSize), badTapCount(kernelSize),
                                      badImageKind(dataType, numChannels)))
    return status;
  *specSize = static_cast<int>(2 * (static_cast<uint32_t>(kernelSize) + 1)) + 2 * blockAlignment;
  *initBufferSize = blockAlignment;
  return orvStsOk;
}

OrvStatus orviFilterGaussianGetBufferSize_L(OrvSizeL roi, int kernelSize, OrvDataType dataType,
                                            OrvBorderMode borderMode, int numChannels, int* bufferSize) {
  if (OrvStatus status = firstFailure(nullPointer(bufferSize), badSize(roi), badTapCount(kernelSize),
                                      badImageKind(dataType, numChannels), badBorder(borderMode, gaussianBordersL)))
    return status;
  const uint32_t rows = static_cast<uint32_t>(kernelSize) + 1;
  *bufferSize =
      static_cast<int>(rows * ringRowBytes(roi.width, numChannels) + extensionBytes(kernelSize) + blockAlignment);
  return orvStsOk;
}

OrvStatus orviFilterGaussianInit_L(OrvSizeL roi, int kernelSize, float sigma, OrvBorderMode borderMode,
                                   OrvDataType dataType, int numChannels, void* spec, void* initBuffer) {
  if (OrvStatus status = firstFailure(nullPointer(spec, initBuffer), badSize(roi), badTapCount(kernelSize),
                                      badImageKind(dataType, numChannels), Check{0.0f >= sigma, orvStsBadArg},
                                      badBorder(borderMode, gaussianBordersL)))
    return status;
  char* const block = roundUp(static_cast<char*>(spec), blockAlignment);
  const GaussianSpec words = {kernelSize, halfKernelOffset, dataType, 0, 0};
  std::memcpy(block, &words, sizeof words);

  const auto half = reinterpret_cast<float*>(block + halfKernelOffset);
  const int radius = kernelSize / 2;
  const GaussianTaps taps(sigma);
  float sum = 0.0f;
  for (int i = 0; i <= radius; ++i) {
    half[i] = taps.at(radius - i);
    sum += half[i];
    if (i < radius)
      sum += half[i];
  }
  for (int i = 0; i <= radius; ++i) half[i] /= sum;
  return orvStsOk;
}

#define ORV_FILTER_GAUSSIAN(type, channels, Sample)                                                                   \
  OrvStatus orviFilterGaussian_##type##_C##channels##R_L(const Sample* src, OrvLength srcStep, Sample* dst,           \
                                                         OrvLength dstStep, OrvSizeL roi, OrvBorderMode borderMode,   \
                                                         const Sample* borderValue, const void* spec, void* buffer) { \
    return filterGaussian<channels>(View{src, srcStep}, View{dst, dstStep}, roi, borderMode, borderValue, spec,       \
                                    buffer);                                                                          \
  }

ORV_FILTER_GAUSSIAN(8u, 1, uint8_t)
ORV_FILTER_GAUSSIAN(8u, 3, uint8_t)
ORV_FILTER_GAUSSIAN(16u, 1, uint16_t)
ORV_FILTER_GAUSSIAN(16u, 3, uint16_t)
ORV_FILTER_GAUSSIAN(16s, 1, int16_t)
ORV_FILTER_GAUSSIAN(16s, 3, int16_t)
ORV_FILTER_GAUSSIAN(32f, 1, float)
ORV_FILTER_GAUSSIAN(32f, 3, float)

}  // namespace orv
