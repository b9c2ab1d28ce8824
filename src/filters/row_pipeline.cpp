// Row pipelines: one-dimensional filters along the rows of an image.
#include <functional>

#include "filters/row_kernels.h"
#include "filters/row_walk.h"
#include "frame/blocks.h"

namespace orv {
namespace {

/// Filters `samples` outputs: wide blocks, then narrow ones, the last of which steps back to end with the row. Bound by
/// the loads of the samples, one or two an output and tap.
template <int taps, class Taps, class Scaling, class Source, class Result>
void filterSpan(const Taps& sums, const Scaling& scaling, const Source* s, Result* d, int samples) {
  const auto wide = [&](int x) __attribute__((always_inline)) {
    scaling.store(sums.template sum<taps, true>(s + x).v, d + x);
  };
  const auto narrow = [&](int x) __attribute__((always_inline)) {
    scaling.store(sums.template sum<taps, false>(s + x).v, d + x);
  };
  int x = 0;
  if constexpr (requires { scaling.streamed; }) {
    if (scaling.streamed && samples >= narrowBlock) {  // overlaps the blocks, which begin on a vector's boundary
      narrow(0);
      x = static_cast<int>((-reinterpret_cast<uintptr_t>(d) & 15) / sizeof *d);
    }
  }
  for (; x <= samples - Taps::wideReach; x += Taps::wide) wide(x);
  for (; x <= samples - narrowBlock; x += narrowBlock) narrow(x);
  if (x < samples && samples >= narrowBlock)
    narrow(samples - narrowBlock);
  else
    for (; x < samples; ++x) storeSample(d + x, scaling.centre(sums.single(s + x)));
}

/// The centre of a row by the loop for its number of taps.
template <class Taps, class Scaling>
auto centreOf(Taps sums, Scaling scaling) {
  return [sums, scaling](auto* s, auto* d, int samples) {
    switch (sums.count) {
      case 1:
        return filterSpan<1>(sums, scaling, s, d, samples);
      case 3:
        return filterSpan<3>(sums, scaling, s, d, samples);
      case 5:
        return filterSpan<5>(sums, scaling, s, d, samples);
      default:
        return filterSpan<0>(sums, scaling, s, d, samples);
    }
  };
}

template <class Taps, class Scaling>
auto edgeOf(Taps sums, Scaling scaling) {
  return [sums, scaling](auto* s) { return scaling.edge(sums.single(s)); };
}

/// A centre that is filtered sample by sample like the edges.
auto centreLikeEdges(auto edge) {
  return [edge](auto* s, auto* d, int samples) {
    for (int x = 0; x < samples; ++x) storeSample(d + x, edge(s + x));
  };
}

/// The areas of the caller's buffer.
template <class Source, int channels>
struct RowScratch {
  Carver carver;
  typename EdgeLine<Source, channels>::Scratch edges;

  RowScratch(uint8_t* buffer, int taps)
      : carver(buffer),
        edges{carver.take<Source>(edgeLinePixels(taps) * static_cast<size_t>(channels)),
              carver.take<int32_t>(edgeLinePixels(taps))} {}

  IntegerTaps<Source, channels> integerTaps(RowKernel<int16_t> kernel) {
    const IntegerTaps<Source, channels> taps{
        kernel.taps, kernel.size,
        carver.take<float>(static_cast<size_t>(IntegerTaps<Source, channels>::pairCount(kernel.size)))};
    taps.expandPairs();
    return taps;
  }
  template <class Coefficient>
  FloatTaps<Source, channels> floatTaps(RowKernel<Coefficient> kernel, float scale) {
    const FloatTaps<Source, channels> taps{carver.take<float>(static_cast<size_t>(kernel.size)), kernel.size};
    taps.expand(kernel.taps, scale);
    return taps;
  }
};

/// The images and the geometry that every form hands to the walk.
template <int channels, class Source, class Result>
struct RowPass {
  View<const Source> src;
  Result* const* dstRows;
  OrvSize roi;
  RowWindow window;
  RowBorder<Source> border;
  RowScratch<Source, channels> scratch;

  template <class Coefficient>
  RowPass(View<const Source> source, Result* const* rows, OrvSize size, RowKernel<Coefficient> kernel,
          RowBorder<Source> rowBorder, uint8_t* buffer)
      : src(source),
        dstRows(rows),
        roi(size),
        window{kernel.size, kernel.anchor},
        border(rowBorder),
        scratch(buffer, kernel.size) {}

  void run(auto centre, auto edge) {
    walkRows<channels>(src, dstRows, roi, window, border, scratch.edges, centre, edge);
  }
  void run(auto taps, auto scaling, auto edgeTaps) { run(centreOf(taps, scaling), edgeOf(edgeTaps, scaling)); }
};

/// The sum of the magnitudes of the coefficients, which bounds what the kernel makes of samples.
float magnitudeOf(RowKernel<int16_t> kernel) {
  float sum = 0.0f;
  for (int j = 0; j < kernel.size; ++j) sum += static_cast<float>(std::abs(loadSample(kernel.taps + j)));
  return sum;
}

/// A centre of bytes, which are converted to floats a stretch at a time: float sums take half the instructions of
/// integer ones. The sums must be exact.
template <int channels>
class ConvertedCentre {
public:
  static bool serves(RowKernel<int16_t> kernel, int width) {
    return kernel.size <= longest && width >= narrowest && magnitudeOf(kernel) * 255.0f <= 0x1p24f;
  }

  ConvertedCentre(RowKernel<int16_t> kernel, Scaled<int16_t> scaling) : count_(kernel.size), scaling_(scaling) {
    FloatTaps<float, channels>{coefficients_, count_}.expand(kernel.taps, 1.0f);
  }

  void operator()(const uint8_t* s, int16_t* d, int samples) {
    const auto centre = centreOf(FloatTaps<float, channels>{coefficients_, count_}, scaling_);
    for (int x = 0; x < samples; x += stretch) {
      const int outputs = std::min(samples - x, stretch);
      convert(s + x, outputs + (count_ - 1) * channels);
      centre(static_cast<const float*>(converted_), d + x, outputs);
    }
  }

private:
  static constexpr int longest = 31;
  static constexpr int narrowest = 64;
  static constexpr int stretch = 1024;

  void convert(const uint8_t* s, int samples) {
    int x = 0;
    for (; x <= samples - F32x8::lanes; x += F32x8::lanes) F32x8::load(s + x).store(converted_ + x);
    for (; x < samples; ++x) F32x1::load(s + x).store(converted_ + x);
  }

  int count_;
  Scaled<int16_t> scaling_;
  float coefficients_[longest];
  alignas(32) float converted_[stretch + (longest - 1) * channels];
};

template <int channels>
void filterForm(RowPass<channels, uint8_t, int16_t> pass, RowKernel<int16_t> kernel) {
  const auto taps = pass.scratch.integerTaps(kernel);
  const Scaled<int16_t> scaling{reciprocal(kernel.divisor)};
  if (ConvertedCentre<channels>::serves(kernel, pass.roi.width)) {
    ConvertedCentre<channels> centre{kernel, scaling};
    pass.run(std::ref(centre), edgeOf(taps, scaling));
  } else {
    pass.run(taps, scaling, taps);
  }
}

bool isSymmetric(RowKernel<int16_t> kernel) {
  for (int j = 0; j < kernel.size / 2; ++j)
    if (loadSample(kernel.taps + j) != loadSample(kernel.taps + kernel.size - 1 - j))
      return false;
  return true;
}

/// Sums of kernels with large coefficients are made in float, since they can leave 32 bits.
template <int channels>
void filterForm(RowPass<channels, int16_t, int16_t> pass, RowKernel<int16_t> kernel) {
  const float scale = reciprocal(kernel.divisor);
  const Scaled<int16_t> scaling{scale};
  const Scaled<int16_t> scaledBefore{1.0f};
  bool smallest = false;
  for (int j = 0; j < kernel.size; ++j) smallest = smallest || loadSample(kernel.taps + j) == -32768;
  const bool integerSums = magnitudeOf(kernel) < 65535.0f;
  const bool ownLoop = kernel.size == 3 || kernel.size == 5;
  const auto integers = pass.scratch.integerTaps(kernel);
  const auto floats = pass.scratch.floatTaps(kernel, scale);

  if (ownLoop && integerSums)
    pass.run(integers, scaling, integers);
  else if (ownLoop && isSymmetric(kernel))
    pass.run(SymmetricFloatTaps<int16_t, channels>{floats}, scaledBefore, floats);
  else if (ownLoop)
    pass.run(floats, scaledBefore, floats);
  else if (pass.roi.width - kernel.size <= 15)  // such a narrow centre truncates as the edges do, but sums in float
    pass.run(centreLikeEdges(edgeOf(floats, scaledBefore)), edgeOf(integers, scaling));
  else if (integerSums && !smallest)
    pass.run(integers, scaling, integers);
  else
    pass.run(centreOf(floats, scaledBefore), edgeOf(integers, scaling));
}

template <int channels>
void filterForm(RowPass<channels, uint16_t, uint16_t> pass, RowKernel<uint16_t> kernel) {
  const auto taps = pass.scratch.floatTaps(kernel, 1.0f);
  pass.run(taps, Scaled<uint16_t>{reciprocal(kernel.divisor)}, taps);
}

template <int channels>
void filterForm(RowPass<channels, float, float> pass, RowKernel<float> kernel) {
  const auto taps = pass.scratch.floatTaps(kernel, 1.0f);
  pass.run(taps, Unscaled{}, taps);
}

template <int channels>
void filterLowForm(RowPass<channels, int16_t, int16_t> pass, RowKernel<int16_t> kernel) {
  auto* const coefficients = pass.scratch.carver.template take<WordPair>(static_cast<size_t>(kernel.size));
  for (int j = 0; j < kernel.size; ++j) coefficients[j] = WordPair{loadSample(kernel.taps + j)};
  const WrappingTaps<channels> taps{coefficients, kernel.size};
  const bool smoothing = kernel.size == 5 && kernel.anchor == 2 && kernel.divisor == 16 && isSymmetric(kernel) &&
                         pass.border.mode == orvBorderReplicate && pass.roi.width > 10;
  constexpr int64_t streamedFrom = 524289;
  const bool streamed = int64_t{pass.roi.width} * pass.roi.height >= streamedFrom;
  if (smoothing) {
    pass.run(taps, Sixteenth{streamed}, taps);
    if (streamed)
      _mm_sfence();
  } else {
    pass.run(taps, FixedPointScaled{fixedPointFactor(kernel.divisor)}, taps);
  }
}

/// The form for one or for three channels.
template <class Source, class Result, class Coefficient>
void filterChannels(View<const Source> src, Result* const* dstRows, OrvSize roi, int channels,
                    RowKernel<Coefficient> kernel, RowBorder<Source> border, uint8_t* buffer) {
  if (channels == 1)
    filterForm(RowPass<1, Source, Result>{src, dstRows, roi, kernel, border, buffer}, kernel);
  else
    filterForm(RowPass<3, Source, Result>{src, dstRows, roi, kernel, border, buffer}, kernel);
}

}  // namespace

#define ORV_ROW_PASS(Source, Result, Coefficient)                                             \
  void filterRows(View<const Source> src, Result* const* dstRows, OrvSize roi, int channels,  \
                  RowKernel<Coefficient> kernel, RowBorder<Source> border, uint8_t* buffer) { \
    filterChannels(src, dstRows, roi, channels, kernel, border, buffer);                      \
  }
ORV_ROW_PASS(uint8_t, int16_t, int16_t)
ORV_ROW_PASS(int16_t, int16_t, int16_t)
ORV_ROW_PASS(uint16_t, uint16_t, uint16_t)
ORV_ROW_PASS(float, float, float)

void filterRowsLow(View<const int16_t> src, int16_t* const* dstRows, OrvSize roi, int channels,
                   RowKernel<int16_t> kernel, RowBorder<int16_t> border, uint8_t* buffer) {
  if (channels == 1)
    filterLowForm(RowPass<1, int16_t, int16_t>{src, dstRows, roi, kernel, border, buffer}, kernel);
  else
    filterLowForm(RowPass<3, int16_t, int16_t>{src, dstRows, roi, kernel, border, buffer}, kernel);
}

}  // namespace orv
