// Rows of small integers that are filtered in float. A row is converted once, with its extension, a stretch at a time:
// float sums take fewer instructions than integer ones.
#pragma once

#include <bit>

#include "filters/row_kernels.h"
#include "filters/row_walk.h"
#include "frame/blocks.h"

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
    rowsAtOnce_ = rowsAtOnce(width, window_.taps);
    pitch_ = rowsAtOnce_ > 1 ? pitch(width, window_.taps) : 0;
    centreBegin_ = std::min(window_.anchor, width) * channels;
    centreEnd_ = centreBegin_ + std::max(width - window_.reach(), 0) * channels;
    const float scale = reciprocal(kernel.divisor);
    const auto divisor = static_cast<uint32_t>(kernel.divisor);
    const bool powerOfTwo = std::has_single_bit(kernel.divisor < 0 ? 0u - divisor : divisor);
    factor_ = powerOfTwo ? 1.0f : scale;
    for (int j = 0; j < kernel.size; ++j)
      coefficients[j] = static_cast<float>(loadSample(kernel.taps + j)) * (powerOfTwo ? scale : 1.0f);
  }

  /// How many rows are converted before the first of them is filtered: what was just stored is slow to load otherwise.
  static constexpr int rowsAtOnce(int width, int taps) {
    return width > stretch || taps > longest ? 1 : std::max((capacity - lanes) / pitch(width, taps), 1);
  }

  void filter(View<const Source> src, Kept* const* results, int rows) const {
    if (factor_ == 1.0f)
      filterWith(Narrowed<Sample, Kept>{}, src, results, rows);
    else
      filterWith(Scaled<Sample, Kept>{factor_}, src, results, rows);
  }

private:
  using Taps = FloatTaps<float, channels>;
  static constexpr int lanes = F32x8::lanes;
  static constexpr int stretch = 1008 / channels;  ///< pixels, whole vectors
  static constexpr int capacity = (stretch + longest - 1) * channels + lanes;

  static constexpr int pitch(int width, int taps) { return roundUp((width + taps - 1) * channels, lanes); }

  template <class Scaling>
  void filterWith(const Scaling& scaling, View<const Source> src, Kept* const* results, int rows) const {
    switch (window_.taps) {
      case 3:
        return filterStretches<3>(scaling, src, results, rows);
      case 5:
        return filterStretches<5>(scaling, src, results, rows);
      default:
        return filterStretches<0>(scaling, src, results, rows);
    }
  }

  /// A stretch of one row at a time, or several rows that fit one.
  template <int taps, class Scaling>
  void filterStretches(const Scaling& scaling, View<const Source> src, Kept* const* results, int rows) const {
    alignas(32) float lines[capacity];
    if (width_ * channels < lanes)  // sums are made of a whole vector
      std::fill_n(lines, std::min(rows, rowsAtOnce_) * pitch_ + lanes, 0.0f);
    for (int y = 0; y < rows; y += rowsAtOnce_) {
      const int group = std::min(rows - y, rowsAtOnce_);
      for (int x = 0; x < width_; x += stretch) {
        const int pixels = std::min(width_ - x, stretch);
        for (int i = 0; i < group; ++i)
          fillLine(lines + i * pitch_, src.row(y + i), x - window_.anchor, x + pixels + window_.after());
        for (int i = 0; i < group; ++i)
          filterLine<taps>(scaling, lines + i * pitch_, results[y + i] + x * channels, x * channels, pixels * channels);
      }
    }
  }

  /// The outputs first .. first + count - 1 of the row.
  template <int taps, class Scaling>
  [[gnu::noinline]] void filterLine(const Scaling& scaling, const float* line, Kept* d, int first, int count) const {
    const Taps sums{coefficients_, window_.taps};
    const int left = centreBegin_ - first, right = centreEnd_ - first;
    const auto mixed = [&](int i, Kept* to) __attribute__((always_inline)) {
      scaling.store(sums.template sum<taps, false>(line + i).v, to, edgeLanes(i, left, right));
    };
    if (count < lanes) {
      Kept block[lanes];
      mixed(0, block);
      std::memcpy(d, block, static_cast<size_t>(count) * sizeof(Kept));
      return;
    }
    for (int i = 0; i < count; i += lanes) {
      if (left <= i && i <= right - Taps::wide)
        i += filterCentre<taps>(scaling, sums, line + i, d + i, right - i);
      const int at = std::min(i, count - lanes);
      mixed(at, d + at);
    }
  }

  /// Wide blocks of at most `count` outputs; returns their number of outputs. Apart, for the registers' sake.
  template <int taps, class Scaling>
  [[gnu::noinline]] static int filterCentre(const Scaling& scaling, const Taps& sums, const float* line, Kept* d,
                                            int count) {
    int i = 0;
    for (; i <= count - Taps::wide; i += Taps::wide) scaling.store(sums.template sum<taps, true>(line + i).v, d + i);
    return i;
  }

  /// Which of the outputs i .. i + 7 lie outside left .. right - 1.
  static F32x8 edgeLanes(int i, int left, int right) {
    const __m256 index = _mm256_add_ps(_mm256_set1_ps(static_cast<float>(i)), _mm256_setr_ps(0, 1, 2, 3, 4, 5, 6, 7));
    return {_mm256_or_ps(_mm256_cmp_ps(index, _mm256_set1_ps(static_cast<float>(left)), _CMP_LT_OQ),
                         _mm256_cmp_ps(index, _mm256_set1_ps(static_cast<float>(right)), _CMP_GE_OQ))};
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
    if (samples < lanes) {
      for (int i = 0; i < samples; ++i) F32x1::load(s + i).store(d + i);
      return;
    }
    const auto vectors = [&](auto count, int i) __attribute__((always_inline)) {
      for (; i <= samples - count * lanes; i += count * lanes)
        unrolled<count>([&](auto v) __attribute__((always_inline)) {
          F32x8::load(s + i + lanes * v).store(d + i + lanes * v);
        });
      return i;
    };
    const int i = vectors(std::integral_constant<int, 1>{}, vectors(std::integral_constant<int, 4>{}, 0));
    if (i < samples)
      F32x8::load(s + samples - lanes).store(d + samples - lanes);
  }

  OutsidePixels<Source, channels> outside_;
  RowWindow window_;
  int width_;
  int rowsAtOnce_, pitch_;
  int firstInside_, endInside_;  ///< pixels
  int centreBegin_, centreEnd_;  ///< samples
  const float* coefficients_;
  float factor_;
};

}  // namespace orv
