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

/// Rows are filtered in whole blocks of so many samples; ring rows have room for the excess.
constexpr int blockLanes = 16;
static_assert(blockLanes * sizeof(float) == blockAlignment);

// The passes, bound by loads and arithmetic alike.
using RowPass = void (*)(const float* half, int radius, const float* line, float* out, int blocks);

/// The taps of a short kernel and its window fit the registers.
template <int channels, int radius>
void filterLineByWindow(const float* half, int, const float* line, float* out, int blocks) {
  const FixedKernel<radius> kernel(half);
  for (; blocks > 0; --blocks, line += blockLanes, out += blockLanes) {
    const LineWindow<channels, kernel.taps> window(line);
    kernel.template sum<0>(window).store(out);
    kernel.template sum<F32x8::lanes>(window).store(out + F32x8::lanes);
  }
}

template <int channels>
void filterLineByTaps(const float* half, int radius, const float* line, float* out, int blocks) {
  const auto filter = [&]<class V>(V) __attribute__((always_inline)) {
    symmetricSum<V>(half, radius, [line](int tap) { return line + tap * channels; }).store(out);
    line += V::lanes;
    out += V::lanes;
  };
  for (; blocks > 1; blocks -= 2) filter(F32x32{});
  if (blocks > 0)
    filter(F32x16{});
}

template <class Sample>
using ColumnPass = void (*)(const float* half, int radius, const float* const* rows, Sample* dst, int count);

/// Stores that pass the cache need aligned addresses: from the second block on they are, but for the last block.
template <class Sample, class Store, class Radius>
void filterDown(const float* half, int anyRadius, const float* const* ring, Sample* dst, int count) {
  Radius radius{};
  if constexpr (std::is_same_v<Radius, int>)
    radius = anyRadius;
  const auto filter = [&]<class V, class Kind>(V, Kind, int x, Sample* out) __attribute__((always_inline)) {
    storeRounded<Kind>(out, symmetricSum<V>(half, radius, [=](int tap) { return ring[tap] + x; }));
  };
  constexpr int lanes = F32x32::lanes;
  if (count < blockLanes) {
    Sample block[blockLanes];
    filter(F32x16{}, CachedStore{}, 0, block);
    std::memcpy(dst, block, static_cast<size_t>(count) * sizeof(Sample));
  } else if (count < lanes) {
    coverRow<blockLanes>(0, count, [&](int x) { filter(F32x16{}, CachedStore{}, x, dst + x); });
  } else if constexpr (std::is_same_v<Store, CachedStore>) {
    coverRow<lanes>(0, count, [&](int x) { filter(F32x32{}, Store{}, x, dst + x); });
  } else {
    constexpr uintptr_t alignment = std::min(lanes * sizeof(Sample), sizeof(__m256));
    const auto beyondAligned = [dst](int x) { return reinterpret_cast<uintptr_t>(dst + x) % alignment; };
    const bool alignable = beyondAligned(0) % sizeof(Sample) == 0;
    coverRow<lanes>(alignable ? -static_cast<int>(beyondAligned(0) / sizeof(Sample)) : 0, count, [&](int x) {
      if (beyondAligned(x) == 0)
        filter(F32x32{}, Store{}, x, dst + x);
      else
        filter(F32x32{}, CachedStore{}, x, dst + x);
    });
  }
}

/// The instantiation of a pass for a kernel size: 3, 5 and 7 taps have their own.
template <int channels>
RowPass rowPassOf(int radius) {
  switch (radius) {
    case 1:
      return filterLineByWindow<channels, 1>;
    case 2:
      return filterLineByWindow<channels, 2>;
    case 3:
      return filterLineByWindow<channels, 3>;
    default:
      return filterLineByTaps<channels>;
  }
}
template <class Sample, class Store>
ColumnPass<Sample> columnPassOf(int radius) {
  switch (radius) {
    case 1:
      return filterDown<Sample, Store, Constant<1>>;
    case 2:
      return filterDown<Sample, Store, Constant<2>>;
    case 3:
      return filterDown<Sample, Store, Constant<3>>;
    default:
      return filterDown<Sample, Store, int>;
  }
}

template <class Sample>
void convertToFloat(const Sample* src, float* dst, int count) {
  if (count < F32x16::lanes)
    for (int x = 0; x < count; ++x) F32x1::load(src + x).store(dst + x);
  else
    coverRow<F32x16::lanes>(0, count, [&](int x) { F32x16::load(src + x).store(dst + x); });
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
    rowPass_(half_, radius_, line, out, (pixels * channels + blockLanes - 1) / blockLanes);
  }

  /// The row and its extension, converted or at least copied.
  void filterConverted(const Sample* row, float* out) const {
    const int before = horizontal_.lo ? radius_ : 0;
    const int after = horizontal_.hi ? radius_ : 0;
    float* const first = line_ + radius_ * channels;
    convertToFloat(row - before * channels, first - before * channels, (before + roi_.width + after) * channels);
    extend(first);
    filterPixels(line_, out, roi_.width);
  }

  /// Both ends of the line, as far as they are not in memory. The rule of the usual case, a row longer than the radius,
  /// needs no mapping of each pixel.
  void extend(float* first) const {
    const RowExtension<float, channels> extension{first, roi_.width, horizontal_, borderValue_};
    const bool constant = horizontal_.kind == orvBorderConstant;
    float* const last = first + rowSamples() - channels;
    const auto extendBy = [&](float* end, int outwards) {
      const int inwards = horizontal_.kind == orvBorderMirror ? -outwards : 0;
      for (int i = 1; i <= radius_; ++i) {
        const float* const source = constant ? borderValue_ : end + i * inwards;
        for (int c = 0; c < channels; ++c) end[i * outwards + c] = source[c];
      }
    };
    const bool simple = radius_ < roi_.width;
    if (!horizontal_.lo)
      simple ? extendBy(first, -channels) : extension.left(line_, radius_);
    if (!horizontal_.hi)
      simple ? extendBy(last, channels) : extension.right(last + channels, radius_);
  }

  /// Floats are filtered where they lie, as far as whole blocks see no other samples; the ends of the row in an
  /// extended copy. The parts start at multiples of a block, for their excess to stay within the ring row.
  void filterFloats(const float* row, float* out) const {
    const RowExtension<float, channels> extension{row, roi_.width, horizontal_, borderValue_};
    const auto filterEnd = [&](int x, int pixels) {
      extension.copy(line_, x - radius_, pixels + 2 * radius_);
      filterPixels(line_, out + x * channels, pixels);
    };
    const int left = horizontal_.lo ? 0 : roundUp(radius_, blockLanes);
    const int right = F32x8::lanes + (horizontal_.hi ? 0 : radius_);
    const int inside = (roi_.width - left - right) / blockLanes * blockLanes;
    if (inside <= 0) {
      filterConverted(row, out);
      return;
    }
    if (left > 0)
      filterEnd(0, left);
    filterPixels(row + (left - radius_) * channels, out + left * channels, inside);
    filterEnd(left + inside, roi_.width - left - inside);
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
