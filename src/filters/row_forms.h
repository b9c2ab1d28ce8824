// Row filters by type. A filter is made once a call and takes row by row; integers of the result may be kept as floats
// for a column pass that would convert them anyway.
#pragma once

#include <optional>

#include "filters/converted_row.h"
#include "filters/row_kernels.h"
#include "filters/row_walk.h"
#include "frame/blocks.h"

namespace orv {

/// Filters `samples` outputs: wide blocks, then narrow ones, the last of which steps back to end with the row. Bound by
/// the loads of the samples, one or two an output and tap.
template <int taps, class Taps, class Scaling, class Source, class Kept>
void filterSpan(Taps sums, Scaling scaling, const Source* s, Kept* d, int samples) {
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

/// The sum of the magnitudes of the coefficients, which bounds what the kernel makes of samples.
inline float magnitudeOf(RowKernel<int16_t> kernel) {
  float sum = 0.0f;
  for (int j = 0; j < kernel.size; ++j) sum += static_cast<float>(std::abs(loadSample(kernel.taps + j)));
  return sum;
}

inline bool isSymmetric(RowKernel<int16_t> kernel) {
  for (int j = 0; j < kernel.size / 2; ++j)
    if (loadSample(kernel.taps + j) != loadSample(kernel.taps + kernel.size - 1 - j))
      return false;
  return true;
}

/// The zones of a row, and areas of the caller's buffer.
template <class Source, int channels>
struct RowParts {
  Carver carver;
  RowZones<Source, channels> zones;

  template <class Coefficient>
  explicit RowParts(const RowTask<Source, Coefficient>& task)
      : carver(task.buffer),
        zones({carver.take<Source>(edgeLinePixels(task.kernel.size) * static_cast<size_t>(channels)),
               carver.take<int32_t>(edgeLinePixels(task.kernel.size))},
              task.width, task.window(), task.border) {}

  IntegerTaps<Source, channels> integerTaps(RowKernel<int16_t> kernel) {
    using Taps = IntegerTaps<Source, channels>;
    float* const pairs = carver.template take<float>(static_cast<size_t>(Taps::pairCount(kernel.size)));
    Taps::expand(kernel.taps, kernel.size, pairs);
    return {kernel.taps, kernel.size, pairs};
  }

  template <class Coefficient>
  FloatTaps<Source, channels> floatTaps(RowKernel<Coefficient> kernel, float scale) {
    float* const coefficients = carver.template take<float>(static_cast<size_t>(kernel.size));
    for (int j = 0; j < kernel.size; ++j)
      coefficients[j] = static_cast<float>(loadSample(kernel.taps + j)) * scale / loadedUnit<Source>;
    return {coefficients, kernel.size};
  }

  /// The taps by the type of the coefficients.
  IntegerTaps<Source, channels> tapsOf(RowKernel<int16_t> kernel) { return integerTaps(kernel); }
  FloatTaps<Source, channels> tapsOf(RowKernel<uint16_t> kernel) { return floatTaps(kernel, 1.0f); }

  template <class Kept>
  void filter(View<const Source> src, Kept* const* results, int rows, auto taps, auto scaling, auto edgeTaps) const {
    zones.filter(src, results, rows, centreOf(taps, scaling), edgeOf(edgeTaps, scaling));
  }
};

/// Where rows are filtered one by one, a call should not be lost in its own cost.
constexpr int rowsWorthACall(int width) { return width <= 128 ? 8 : 1; }

/// Filters rows of a source type and 1 or 3 channels; the integers of the result are stored as Kept. Calls that have the
/// choice should filter rowsAtOnce rows.
template <class Source, int channels, class Kept>
class RowFilter;

/// Sums of bytes are integers, which float sums match where they are exact; sums of unsigned words are floats anyway.
inline bool sumsInFloat(RowKernel<int16_t> kernel) { return magnitudeOf(kernel) * 255.0f <= 0x1p24f; }
inline bool sumsInFloat(RowKernel<uint16_t>) { return true; }

/// Rows of unsigned integers are filtered as float copies, unless the kernel is too long for them or needs integer sums.
template <class Source, class Coefficient, class Sample, int channels, class Kept>
class UnsignedRowFilter {
public:
  explicit UnsignedRowFilter(const RowTask<Source, Coefficient>& task)
      : task_(task), converts_(task.kernel.size <= Converted::longest && sumsInFloat(task.kernel)), converted_(task) {}

  void operator()(View<const Source> src, Kept* const* results, int rows) const {
    if (converts_)
      return converted_.filter(src, results, rows);
    RowParts<Source, channels> parts{task_};
    const auto taps = parts.tapsOf(task_.kernel);
    parts.filter(src, results, rows, taps, Scaled<Sample, Kept>{reciprocal(task_.kernel.divisor)}, taps);
  }

  static constexpr int rowsAtOnce(int width, int taps) { return Converted::rowsAtOnce(width, taps); }

private:
  using Converted = ConvertedRow<Source, channels, Sample, Kept>;
  RowTask<Source, Coefficient> task_;
  bool converts_;
  Converted converted_;
};

template <int channels, class Kept>
class RowFilter<uint8_t, channels, Kept> : public UnsignedRowFilter<uint8_t, int16_t, int16_t, channels, Kept> {
public:
  using UnsignedRowFilter<uint8_t, int16_t, int16_t, channels, Kept>::UnsignedRowFilter;
};

template <int channels, class Kept>
class RowFilter<uint16_t, channels, Kept> : public UnsignedRowFilter<uint16_t, uint16_t, uint16_t, channels, Kept> {
public:
  using UnsignedRowFilter<uint16_t, uint16_t, uint16_t, channels, Kept>::UnsignedRowFilter;
};

/// Sums of kernels with large coefficients are made in float, since they can leave 32 bits.
template <int channels, class Kept>
class RowFilter<int16_t, channels, Kept> {
public:
  explicit RowFilter(const RowTask<int16_t, int16_t>& task)
      : parts_(task),
        integers_(parts_.integerTaps(task.kernel)),
        floats_(parts_.floatTaps(task.kernel, reciprocal(task.kernel.divisor))),
        scaling_(reciprocal(task.kernel.divisor)),
        sums_(sumsOf(task.kernel, task.width)) {}

  void operator()(View<const int16_t> src, Kept* const* results, int rows) const {
    switch (sums_) {
      case Sums::integers:
        return parts_.filter(src, results, rows, integers_, scaling_, integers_);
      case Sums::foldedFloats:
        return parts_.filter(src, results, rows, SymmetricFloatTaps<int16_t, channels>{floats_}, scaledBefore_,
                             floats_);
      case Sums::floats:
        return parts_.filter(src, results, rows, floats_, scaledBefore_, floats_);
      case Sums::floatsLikeEdges:
        return parts_.zones.filter(src, results, rows, centreLikeEdges(edgeOf(floats_, scaledBefore_)),
                                   edgeOf(integers_, scaling_));
      case Sums::floatsInCentre:
        return parts_.zones.filter(src, results, rows, centreOf(floats_, scaledBefore_), edgeOf(integers_, scaling_));
    }
  }

  static constexpr int rowsAtOnce(int width, int) { return rowsWorthACall(width); }

private:
  enum class Sums { integers, foldedFloats, floats, floatsLikeEdges, floatsInCentre };

  static Sums sumsOf(RowKernel<int16_t> kernel, int width) {
    const bool integerSums = magnitudeOf(kernel) < 65535.0f;
    if (kernel.size == 3 || kernel.size == 5)
      return integerSums ? Sums::integers : isSymmetric(kernel) ? Sums::foldedFloats : Sums::floats;
    if (width - kernel.size <= 15)  // such a narrow centre truncates as the edges do, but sums in float
      return Sums::floatsLikeEdges;
    bool smallest = false;
    for (int j = 0; j < kernel.size; ++j) smallest = smallest || loadSample(kernel.taps + j) == -32768;
    return integerSums && !smallest ? Sums::integers : Sums::floatsInCentre;
  }

  RowParts<int16_t, channels> parts_;
  IntegerTaps<int16_t, channels> integers_;
  FloatTaps<int16_t, channels> floats_;
  Scaled<int16_t, Kept> scaling_;
  Narrowed<int16_t, Kept> scaledBefore_;
  Sums sums_;
};

/// Short rows are copied with their extension, several at a time, long ones filtered where they lie.
template <int channels>
class RowFilter<float, channels, float> {
public:
  explicit RowFilter(const RowTask<float, float>& task) {
    if (isShort(task.width, task.kernel.size)) {
      copied_.emplace(task);
    } else {
      parts_.emplace(task);
      floats_ = parts_->floatTaps(task.kernel, 1.0f);
    }
  }

  void operator()(View<const float> src, float* const* results, int rows) const {
    if (copied_)
      copied_->filter(src, results, rows);
    else
      parts_->filter(src, results, rows, floats_, Narrowed<float, float>{}, floats_);
  }

  static constexpr int rowsAtOnce(int width, int taps) {
    return isShort(width, taps) ? Copied::rowsAtOnce(width, taps) : rowsWorthACall(width);
  }

private:
  using Copied = ConvertedRow<float, channels, float, float>;

  /// Rows of whole vectors, no sum of which goes beyond the row, with more edges than are made one by one at less cost.
  static constexpr bool isShort(int width, int taps) {
    const bool wholeVectors = width >= F32x8::lanes && width <= 128 / channels;
    return wholeVectors && (taps - 1) * channels >= 4 && taps <= Copied::longest;
  }

  std::optional<Copied> copied_;
  std::optional<RowParts<float, channels>> parts_;
  FloatTaps<float, channels> floats_{};
};

}  // namespace orv
