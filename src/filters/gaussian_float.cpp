// The Gaussian filter in single precision. Each source row is filtered along the row once, into a ring of as many float
// rows as the kernel has taps; each result row is a sum down the ring, rounded on its way to the image.
#include <array>
#include <cstring>

#include "filters/gaussian_kernel.h"
#include "filters/symmetric_sums.h"
#include "frame/blocks.h"
#include "frame/border.h"
#include "frame/cache.h"
#include "frame/fill.h"
#include "frame/row_extension.h"
#include "frame/views.h"
#include "simd/copy.h"

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
constexpr int blockLanes = F32x16::lanes;
static_assert(blockLanes * sizeof(float) == blockAlignment);

/// Filters the samples of a line that starts a radius before them, and some more to fill a block. Bound by loads.
template <int channels, class Radius>
[[gnu::noinline]] void filterLine(const float* half, Radius radius, const float* line, float* out, int count) {
  const SymmetricKernel<Radius> kernel(half, radius);
  const auto filter = [&]<class V>(V) __attribute__((always_inline)) {
    kernel.template sum<V>(LineTaps<Radius>{line, radius, channels}).store(out);
    line += V::lanes;
    out += V::lanes;
    count -= V::lanes;
  };
  while (count > F32x16::lanes) filter(F32x32{});
  if (count > 0)
    filter(F32x16{});
}

/// The taps of a short kernel.
template <class Radius>
constexpr size_t localTaps = 2 * Radius::value + 1;
template <>
constexpr size_t localTaps<int> = 0;

/// Stores that pass the cache need aligned addresses.
int bytesToAligned(const void* p) { return static_cast<int>(-reinterpret_cast<uintptr_t>(p) % sizeof(__m256)); }

/// Apart, so that filterDown, which calls nothing else, is spared the preparations of a call.
template <class Sample>
[[gnu::noinline]] void storeFirst(const Sample* block, Sample* dst, int count) {
  std::memcpy(dst, block, static_cast<size_t>(count) * sizeof(Sample));
}

/// Rounded sums down the rows of the ring, the oldest of which is at index `oldest`. The pointers to the rows of a long
/// kernel go to the memory given for them. Bound by loads.
template <class Store, class Radius, class Sample>
[[gnu::noinline]] void filterDown(const float* half, Radius radius, View<float> ring, int oldest, void* memory,
                                  Sample* dst, int count) {
  std::array<const float*, localTaps<Radius>> local;
  const float** const rows = local.empty() ? static_cast<const float**>(memory) : local.data();
  const int taps = 2 * radius + 1;
  const float* row = ring.row(oldest);
#pragma GCC unroll 8
  for (int tap = 0; tap < taps; ++tap) {
    rows[tap] = row;
    row = tap == taps - 1 - oldest ? ring.first : advanceBytes(row, ring.step);
  }
  Column<Radius> column(radius, rows);
  const auto move = [&](int samples) __attribute__((always_inline)) {
    dst += samples;
    column.move(samples);
    count -= samples;
  };
  const auto cover = [&]<class Way, class Block>(Way, Block) __attribute__((always_inline)) {
    constexpr int lanes = Block::lanes;
    const SymmetricKernel<Radius> kernel(half, radius);
    const auto sum = [&]() __attribute__((always_inline)) { return kernel.template sum<Block>(column.taps()); };
    if constexpr (std::is_same_v<Way, StreamingStore>) {
      if (const int ahead = bytesToAligned(dst) / static_cast<int>(sizeof(Sample)); ahead > 0) {
        storeRounded<CachedStore>(dst, sum());
        move(ahead);
      }
    }
    while (count >= lanes) {
      storeRounded<Way>(dst, sum());
      move(lanes);
    }
    if (count > 0) {
      move(count - lanes);
      storeRounded<CachedStore>(dst, sum());
    }
  };
  if (count >= F32x32::lanes) {
    cover(Store{}, F32x32{});
  } else if (count >= blockLanes) {
    cover(CachedStore{}, F32x16{});
  } else {
    Sample block[blockLanes];
    storeRounded<CachedStore>(block, SymmetricKernel<Radius>(half, radius).template sum<F32x16>(column.taps()));
    storeFirst(block, dst, count);
  }
}

/// Kernels of 3, 5 and 7 taps have a Constant for a Radius, others an int.
template <class Sample, int channels, class Radius>
class GaussianEngine {
public:
  GaussianEngine(const GaussianSpec* spec, Radius radius, View<const Sample> src, OrvSizeL roi,
                 OrvBorderMode borderMode, const Sample* borderValue, bool streaming, void* buffer)
      : half_(reinterpret_cast<const float*>(reinterpret_cast<const char*>(spec) + halfKernelOffset)),
        radius_(radius),
        src_(src),
        roi_(roi),
        horizontal_(horizontalBorder(borderMode)),
        vertical_(verticalBorder(borderMode)),
        borderValue_(borderValue),
        streaming_(streaming) {
    // The line lies below the ring, so that it ends where an aligned area starts.
    const uint32_t rowBytes = ringRowBytes(roi.width, channels);
    const uint32_t lineBytes = rowBytes + extensionBytes(taps());
    char* const ring = roundUp(static_cast<char*>(buffer) + lineBytes, blockAlignment);
    ring_ = {reinterpret_cast<float*>(ring), static_cast<int>(rowBytes)};
    line_ = reinterpret_cast<float*>(ring - lineBytes);
    if (readsSource && roi.width >= 3 * blockLanes) {
      leftEnd_ = blockLanes;
      rightEnd_ = (roi.width - blockLanes) / blockLanes * blockLanes;
    }
  }

  void run(View<Sample> dst) const {
    for (int y = -radius_; y <= radius_; ++y)
      if (isReal(y)) {
        writeLine(y);
        filterRow(y);
      }
    for (int y = -radius_; y <= radius_; ++y)
      if (!isReal(y))
        deriveRow(y);
    for (int y = 0; y < roi_.height; ++y) {
      const int entering = y + 1 + radius_;
      const bool isLast = y == roi_.height - 1;
      const bool filters = !isLast && isReal(entering);
      // Wide loads of what narrow stores have just written would wait for them: the line is written ahead of its use. The
      // pointers to the rows of a long kernel take its place in between.
      if (filters && isShort)
        writeLine(entering);
      const auto makeRow = [&](auto* filter) {
        filter(half_, radius_, ring_, ringIndex(y - radius_), line_, dst.row(y), rowSamples());
      };
      streaming_ ? makeRow(filterDown<StreamingStore, Radius, Sample>)
                 : makeRow(filterDown<CachedStore, Radius, Sample>);
      if (filters && !isShort)
        writeLine(entering);
      if (filters)
        filterRow(entering);
      else if (!isLast)
        deriveRow(entering);
    }
  }

private:
  static constexpr bool isShort = !std::is_same_v<Radius, int>;
  static constexpr bool readsSource = isShort && std::is_same_v<Sample, float>;

  int taps() const { return 2 * radius_ + 1; }
  int rowSamples() const { return roi_.width * channels; }
  int ringIndex(int y) const { return (y + radius_) % taps(); }
  float* ringRow(int y) const { return ring_.row(ringIndex(y)); }

  /// In the image or in memory beyond it. Other rows stem from rows that are in the ring at the same time.
  bool isReal(int y) const { return (y >= 0 || vertical_.lo) && (y < roi_.height || vertical_.hi); }

  void deriveRow(int y) const {
    const SourceIndex source = mapIndex(y, roi_.height, vertical_);
    if (source.isBorderValue) {
      float value[channels];
      copySamples(borderValue_, value, channels);
      FillPattern(value, sizeof value).fill(ringRow(y), static_cast<size_t>(rowSamples()) * sizeof(float));
    } else {
      copySamples(ringRow(source.index), ringRow(y), rowSamples());
    }
  }

  /// Writes what filterRow doesn't read where it lies: all of the row, or both ends, one behind the other.
  void writeLine(int y) const {
    const RowExtension<Sample, channels> row{src_.row(y), roi_.width, horizontal_, borderValue_};
    if constexpr (readsSource)
      if (leftEnd_ > 0) {
        row.copy(line_, -radius_, leftEnd_ + 2 * radius_);
        row.copy(rightLine(), rightEnd_ - radius_, roi_.width - rightEnd_ + 2 * radius_);
        return;
      }
    row.copyAll(line_, radius_, radius_);
  }
  float* rightLine() const { return line_ + (leftEnd_ > 0 ? (leftEnd_ + 2 * radius_) * channels : 0); }

  /// Filters a row into the ring. The parts start at multiples of a block, for their excess to stay within the ring row.
  void filterRow(int y) const {
    const auto filter = [&, out = ringRow(y)](const float* line, int begin, int end) {
      filterLine<channels>(half_, radius_, line, out + begin * channels, (end - begin) * channels);
    };
    if constexpr (readsSource)
      if (leftEnd_ > 0) {
        filter(line_, 0, leftEnd_);
        filter(src_.row(y) + (leftEnd_ - radius_) * channels, leftEnd_, rightEnd_);
      }
    filter(rightLine(), rightEnd_, roi_.width);
  }

  const float* half_;
  [[no_unique_address]] Radius radius_;
  View<const Sample> src_;
  OrvSizeL roi_;
  AxisBorder horizontal_, vertical_;
  const Sample* borderValue_;
  bool streaming_;
  View<float> ring_;
  float* line_;
  /// Between these pixels floats are filtered where they lie, in whole blocks that see no pixels beyond the ends.
  int leftEnd_ = 0, rightEnd_ = 0;
};

/// Large images go past the cache when they would not fit it, unless no sample of theirs is at an aligned address.
template <class Sample>
bool passesCache(View<Sample> dst, OrvSizeL roi) {
  const int64_t pixels = int64_t{roi.width} * roi.height;
  int32_t cacheBytes = 0;
  return pixels >= 524288 && orvGetMaxCacheSizeB(&cacheBytes) == 0 && pixels >= cacheBytes &&
         reinterpret_cast<uintptr_t>(dst.first) % sizeof(Sample) == 0;
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
  const bool streaming = passesCache(dst, roi);
  const auto filter = [&]<class Radius>(Radius radius) {
    GaussianEngine<Sample, channels, Radius>(specIn(spec), radius, src, roi, borderMode, borderValue, streaming, buffer)
        .run(dst);
  };
  switch (specIn(spec)->kernelSize) {
    case 3:
      filter(Constant<1>{});
      break;
    case 5:
      filter(Constant<2>{});
      break;
    case 7:
      filter(Constant<3>{});
      break;
    default:
      filter(specIn(spec)->kernelSize / 2);
  }
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
