// The walk of a row filter over its rows. Each row has three zones: the left edge, the centre whose windows lie in the
// row, and the right edge. The centre is filtered straight from the source; the edges are filtered from the edge line,
// a few pixels of the extended row in scratch.
#pragma once

#include <algorithm>

#include "filters/filter_vectors.h"
#include "filters/pipelines.h"
#include "frame/border.h"

namespace orv {

/// Pixels of the edge line: up to three stretches of size - 1.
constexpr size_t edgeLinePixels(int kernelSize) { return 3 * static_cast<size_t>(kernelSize - 1); }

/// A window of one row: `taps` pixels, of which number `anchor` is the output's.
struct RowWindow {
  int taps, anchor;
};

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

/// Calls centre(source, result, samples) once a row, unless the row is narrower than the window, and edge(source) for
/// each sample of the edges.
template <int channels, class Source, class Result, class Centre, class Edge>
void walkRows(View<const Source> src, Result* const* dstRows, OrvSize roi, RowWindow window, RowBorder<Source> border,
              typename EdgeLine<Source, channels>::Scratch scratch, Centre centre, Edge edge) {
  const int reach = window.taps - 1;
  const int centrePixels = std::max(roi.width - reach, 0);
  const int leftPixels = std::min(window.anchor, roi.width);
  const int rightPixels = roi.width - centrePixels - leftPixels;
  const EdgeLine<Source, channels> line{scratch, roi.width, window, border};
  const Source* const rightWindows = line.pixel(centrePixels > 0 ? window.anchor + reach : leftPixels);

  const auto edges = [&](const Source* s, Result* d, int pixels) {
    for (int i = 0; i < pixels * channels; ++i) storeSample(d + i, edge(s + i));
  };
  for (int y = 0; y < roi.height; ++y) {
    const Source* const row = src.row(y);
    Result* const result = dstRows[y];
    line.fill(row);
    edges(line.pixel(0), result, leftPixels);
    if (centrePixels > 0)
      centre(row, result + leftPixels * channels, centrePixels * channels);
    edges(rightWindows, result + (leftPixels + centrePixels) * channels, rightPixels);
  }
}

}  // namespace orv
