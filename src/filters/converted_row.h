// Rows of small integers that are filtered in float. A row is converted once, with its extension, a stretch at a time:
// float sums take fewer instructions than integer ones.
#pragma once

#include <bit>

#include "filters/row_kernels.h"
#include "filters/row_walk.h"

namespace orv {

/// `Sample` is the type of the result, whose integers are stored as Kept.
template <class Source, int channels, class Sample, class Kept>
class ConvertedRow {
public:
  /// Longer kernels have no room in the stretch.
  static constexpr int longest = 127;

  /// `coefficients` has room for the kernel. A factor that is a power of two goes into them without rounding.
  template <class Coefficient>
  ConvertedRow(OutsidePixels<Source, channels> outside, int width, RowKernel<Coefficient> kernel,
               RowBorder<Source> border, float* coefficients)
      : outside_(outside), window_{kernel.size, kernel.anchor}, width_(width), coefficients_(coefficients) {
    const AxisBorder axis = horizontalBorder(border.mode);
    firstInside_ = axis.lo ? -window_.anchor : 0;
    endInside_ = width + (axis.hi ? window_.after() : 0);
    const float scale = reciprocal(kernel.divisor);
    const auto divisor = static_cast<uint32_t>(kernel.divisor);
    const bool powerOfTwo = std::has_single_bit(kernel.divisor < 0 ? 0u - divisor : divisor);
    factor_ = powerOfTwo ? 1.0f : scale;
    for (int j = 0; j < kernel.size; ++j)
      coefficients[j] = static_cast<float>(loadSample(kernel.taps + j)) * (powerOfTwo ? scale : 1.0f);
  }

  void filter(const Source* row, Kept* result) const {
    if (factor_ == 1.0f)
      filterWith(Narrowed<Sample, Kept>{}, row, result);
    else
      filterWith(Scaled<Sample, Kept>{factor_}, row, result);
  }

private:
  using Taps = FloatTaps<float, channels>;
  static constexpr int lanes = F32x8::lanes;
  static constexpr int stretch = 1008 / channels;  ///< pixels, whole vectors

  template <class Scaling>
  void filterWith(const Scaling& scaling, const Source* row, Kept* result) const {
    switch (window_.taps) {
      case 3:
        return filterStretches<3>(scaling, row, result);
      case 5:
        return filterStretches<5>(scaling, row, result);
      default:
        return filterStretches<0>(scaling, row, result);
    }
  }

  template <int taps, class Scaling>
  void filterStretches(const Scaling& scaling, const Source* row, Kept* result) const {
    const Taps sums{coefficients_, window_.taps};
    alignas(32) float line[(stretch + longest - 1) * channels + lanes];
    if (width_ * channels < lanes)  // sums are made of a whole vector
      std::fill_n(line, lanes + window_.reach() * channels, 0.0f);

    for (int x = 0; x < width_; x += stretch) {
      const int pixels = std::min(width_ - x, stretch);
      fillLine(line, row, x - window_.anchor, x + pixels + window_.after());
      const int outputs = pixels * channels;
      Kept* const d = result + x * channels;
      // Vectors at the edges reach into the centre, which is made last.
      const int left = std::clamp(window_.anchor - x, 0, pixels) * channels;
      const int right = std::clamp(width_ - window_.after() - x, left / channels, pixels) * channels;
      const auto edge = [&](int i, Kept* to) __attribute__((always_inline)) {
        scaling.storeEdge(sums.template sum<taps, false>(line + i).v, to);
      };
      const auto centre = [&](int i, Kept* to) __attribute__((always_inline)) {
        scaling.store(sums.template sum<taps, false>(line + i).v, to);
      };
      cover(0, left, outputs, d, edge);
      cover(right, outputs, outputs, d, edge);
      int i = left;
      for (; i <= right - Taps::wide; i += Taps::wide) scaling.store(sums.template sum<taps, true>(line + i).v, d + i);
      coverExactly(i, left, right, d, centre);
    }
  }

  /// Makes the outputs begin .. end - 1 of `room` by vectors within the room, or one of fewer outputs.
  [[gnu::always_inline]] static void cover(int begin, int end, int room, Kept* d, auto vector) {
    if (room < lanes)
      part(begin, end, d, vector);
    else
      for (int i = begin; i < end; i += lanes) {
        const int at = std::min(i, room - lanes);
        vector(at, d + at);
      }
  }
  /// The same without touching outputs before `first` or from `end` on.
  [[gnu::always_inline]] static void coverExactly(int begin, int first, int end, Kept* d, auto vector) {
    for (; begin <= end - lanes; begin += lanes) vector(begin, d + begin);
    if (begin < end && end - first >= lanes)
      vector(end - lanes, d + end - lanes);
    else
      part(begin, end, d, vector);
  }
  [[gnu::always_inline]] static void part(int begin, int end, Kept* d, auto vector) {
    if (begin >= end)
      return;
    Kept outputs[lanes];
    vector(begin, outputs);
    std::memcpy(d + begin, outputs, static_cast<size_t>(end - begin) * sizeof(Kept));
  }

  /// The pixels first .. end - 1 of the extended row.
  void fillLine(float* line, const Source* row, int first, int end) const {
    const int from = std::max(first, firstInside_);
    const int to = std::min(end, endInside_);
    const auto outside = [&](int begin, int stop) {
      for (int x = begin; x < stop; ++x) {
        const Source* const pixel = outside_.pixel(row, x);
        for (int c = 0; c < channels; ++c) F32x1::load(pixel + c).store(line + (x - first) * channels + c);
      }
    };
    outside(first, from);
    convert(row + from * channels, line + (from - first) * channels, (to - from) * channels);
    outside(to, end);
  }

  static void convert(const Source* s, float* d, int samples) {
    if (samples < lanes)
      for (int i = 0; i < samples; ++i) F32x1::load(s + i).store(d + i);
    else
      for (int i = 0; i < samples; i += lanes) {
        const int at = std::min(i, samples - lanes);
        F32x8::load(s + at).store(d + at);
      }
  }

  OutsidePixels<Source, channels> outside_;
  RowWindow window_;
  int width_, firstInside_, endInside_;
  const float* coefficients_;
  float factor_;
};

}  // namespace orv
