// Rows that are filtered as float copies, extended at both ends. Integers are converted once and not for each tap; short
// rows are mostly edge, and their copies have none.
#pragma once

#include <bit>

#include "filters/row_kernels.h"
#include "filters/row_walk.h"
#include "frame/blocks.h"
#include "frame/row_extension.h"

namespace orv {

/// A row is copied a stretch at a time, a short one as a whole with several others. `Sample` is the type of the result,
/// whose integers are stored as Kept.
template <class Source, int channels, class Sample, class Kept>
class ConvertedRow {
public:
  /// Longer kernels have no room in the stretch.
  static constexpr int longest = 127;

  /// A factor that is a power of two goes into the coefficients without rounding.
  template <class Coefficient>
  explicit ConvertedRow(const RowTask<Source, Coefficient>& task) : ConvertedRow(task, Carver{task.buffer}) {}

  void filter(View<const Source> src, Kept* const* results, int rows) const {
    if (factor_ == 1.0f)
      filterWith(Narrowed<Sample, Kept>{}, src, results, rows);
    else
      filterWith(Scaled<Sample, Kept>{factor_}, src, results, rows);
  }

  /// How many rows are converted before the first of them is filtered: what was just stored is slow to load otherwise.
  static constexpr int rowsAtOnce(int width, int taps) {
    return width > stretch || taps > longest ? 1 : std::max((capacity - lanes) / pitch(width, taps), 1);
  }

private:
  using Taps = FloatTaps<float, channels>;
  static constexpr int lanes = F32x8::lanes;
  static constexpr int stretch = 1008 / channels;  ///< pixels, whole vectors
  static constexpr int capacity = (stretch + longest - 1) * channels + lanes;

  static constexpr int pitch(int width, int taps) { return roundUp((width + taps - 1) * channels, lanes); }

  template <class Coefficient>
  ConvertedRow(const RowTask<Source, Coefficient>& task, Carver carver)
      : window_(task.window()),
        width_(task.width),
        border_(horizontalBorder(task.border.mode)),
        borderValue_(task.border.value),
        rowsAtOnce_(rowsAtOnce(width_, window_.taps)),
        pitch_(rowsAtOnce_ > 1 ? pitch(width_, window_.taps) : 0) {
    centreBegin_ = std::min(window_.anchor, width_) * channels;
    centreEnd_ = centreBegin_ + std::max(width_ - window_.reach(), 0) * channels;

    const RowKernel<Coefficient>& kernel = task.kernel;
    const float scale = reciprocal(kernel.divisor);
    const auto divisor = static_cast<uint32_t>(kernel.divisor);
    const bool powerOfTwo = std::has_single_bit(kernel.divisor < 0 ? 0u - divisor : divisor);
    factor_ = powerOfTwo ? 1.0f : scale;
    float* const coefficients = carver.take<float>(static_cast<size_t>(kernel.size));
    for (int j = 0; j < kernel.size; ++j)
      coefficients[j] = static_cast<float>(loadSample(kernel.taps + j)) * (powerOfTwo ? scale : 1.0f);
    coefficients_ = coefficients;
  }

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
  [[gnu::noinline]] void filterLine(Scaling scaling, const float* line, Kept* d, int first, int count) const {
    const Taps sums{coefficients_, window_.taps};
    const int left = centreBegin_ - first, right = std::min(centreEnd_ - first, count);
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
  [[gnu::noinline]] static int filterCentre(Scaling scaling, Taps sums, const float* line, Kept* d, int count) {
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
  [[gnu::noinline]] void fillLine(float* line, const Source* row, int first, int end) const {
    const RowExtension<Source, channels> extension{row, width_, border_, borderValue_};
    if (end - first == width_ + window_.reach())
      extension.copyAll(line, window_.anchor, window_.after());
    else
      extension.copy(line, first, end - first);
  }

  RowWindow window_;
  int width_;
  AxisBorder border_;
  const Source* borderValue_;
  int rowsAtOnce_, pitch_;
  int centreBegin_, centreEnd_;  ///< samples
  const float* coefficients_;
  float factor_;
};

}  // namespace orv
