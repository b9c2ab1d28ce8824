// The zones of a row that is filtered: the left edge, the centre whose windows lie in the row, and the right edge. The
// centre is filtered straight from the source; the edges are filtered from the edge line, a few pixels of the extended
// row in scratch.
#pragma once

#include <algorithm>

#include "filters/filter_vectors.h"
#include "filters/pipelines.h"
#include "frame/border.h"

namespace orv {

/// A window of one row: `taps` pixels, of which number `anchor` is the output's.
struct RowWindow {
  int taps, anchor;

  int reach() const { return taps - 1; }
  int after() const { return reach() - anchor; }
};

/// What all rows of a call share; the caller's buffer for it.
template <class Source, class Coefficient>
struct RowTask {
  int width;
  RowKernel<Coefficient> kernel;
  RowBorder<Source> border;
  uint8_t* buffer;

  RowWindow window() const { return {kernel.size, kernel.anchor}; }
};

/// Pixels of the edge line: up to three stretches of size - 1.
constexpr size_t edgeLinePixels(int kernelSize) { return 3 * static_cast<size_t>(kernelSize - 1); }

/// The edge line of a row and where its pixels come from, which is the same for every row: worked out once a call.
template <class Source, int channels>
class EdgeLine {
public:
  /// Room for edgeLinePixels pixels and as many offsets.
  struct Scratch {
    Source* line;
    int32_t* offsets;
  };

  EdgeLine(Scratch scratch, int width, RowWindow window, RowBorder<Source> border) : scratch_(scratch) {
    const int reach = window.taps - 1;
    if (width > reach) {
      append(-window.anchor, reach, width, border);
      append(width - reach, width + reach - window.anchor, width, border);
    } else {  // a row narrower than the window lies in the line once, as a whole, between its extensions
      append(-window.anchor, width + reach - window.anchor, width, border);
    }
  }

  /// Takes the pixels from a row; those of a constant border stay as they are.
  void fill(const Source* row) const {
    for (int i = 0; i < pixels_; ++i)
      if (scratch_.offsets[i] != borderPixel)
        std::memcpy(scratch_.line + i * channels, row + scratch_.offsets[i], channels * sizeof(Source));
  }

  const Source* pixel(int i) const { return scratch_.line + i * channels; }

private:
  static constexpr int32_t borderPixel = std::numeric_limits<int32_t>::min();

  /// The pixels first .. end - 1 of the extended row.
  void append(int first, int end, int width, RowBorder<Source> border) {
    for (int x = first; x < end; ++x, ++pixels_) {
      const SourceIndex source = mapIndex(x, width, horizontalBorder(border.mode));
      scratch_.offsets[pixels_] = source.isBorderValue ? borderPixel : source.index * channels;
      if (source.isBorderValue)
        std::memcpy(scratch_.line + pixels_ * channels, border.value, channels * sizeof(Source));
    }
  }

  Scratch scratch_;
  int pixels_ = 0;
};

/// The zones of the rows of an image.
template <class Source, int channels>
class RowZones {
public:
  RowZones(typename EdgeLine<Source, channels>::Scratch scratch, int width, RowWindow window, RowBorder<Source> border)
      : line_(scratch, width, window, border), window_(window), width_(width) {}

  /// Calls centre(source, result, samples) once a row, unless the row is narrower than the window, and edge(source) for
  /// each sample of the edges.
  template <class Result>
  void filter(View<const Source> src, Result* const* results, int rows, auto centre, auto edge) const {
    const int centrePixels = std::max(width_ - window_.reach(), 0);
    const int leftPixels = std::min(window_.anchor, width_);
    const int rightPixels = width_ - centrePixels - leftPixels;
    const EdgeLine<Source, channels> line = line_;
    const Source* const rightWindows = line.pixel(centrePixels > 0 ? window_.anchor + window_.reach() : leftPixels);

    const auto edges = [&](const Source* s, Result* d, int pixels) {
      for (int i = 0; i < pixels * channels; ++i) storeSample(d + i, edge(s + i));
    };
    for (int y = 0; y < rows; ++y) {
      const Source* const row = src.row(y);
      Result* const result = results[y];
      line.fill(row);
      edges(line.pixel(0), result, leftPixels);
      if (centrePixels > 0)
        centre(row, result + leftPixels * channels, centrePixels * channels);
      edges(rightWindows, result + (leftPixels + centrePixels) * channels, rightPixels);
    }
  }

private:
  EdgeLine<Source, channels> line_;
  RowWindow window_;
  int width_;
};

}  // namespace orv
