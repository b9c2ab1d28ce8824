// The walk of a row filter over its rows. Each row has three zones: the left edge, the centre whose windows lie in the
// row, and the right edge. The centre is filtered straight from the source; the edges are filtered from the edge line,
// a few pixels of the extended row in scratch.
#pragma once

#include <algorithm>

#include "filters/filter_vectors.h"
#include "filters/pipelines.h"
#include "frame/row_extension.h"

namespace orv {

/// Pixels of the edge line: up to three stretches of size - 1.
constexpr size_t edgeLinePixels(int kernelSize) { return 3 * static_cast<size_t>(kernelSize - 1); }

/// A window of one row: `taps` pixels, of which number `anchor` is the output's.
struct RowWindow {
  int taps, anchor;
};

/// Calls centre(source, result, samples) once a row, unless the row is narrower than the window, and edge(source) for
/// each sample of the edges.
template <int channels, class Source, class Result, class Centre, class Edge>
void walkRows(View<const Source> src, Result* const* dstRows, OrvSize roi, RowWindow window, RowBorder<Source> border,
              Source* line, Centre centre, Edge edge) {
  const int width = roi.width;
  const int reach = window.taps - 1;
  const int centrePixels = std::max(width - reach, 0);
  const int leftPixels = std::min(window.anchor, width);
  const int rightPixels = width - centrePixels - leftPixels;
  // A row narrower than the window lies in the line once, as a whole, between its extensions.
  const int leftLine = centrePixels > 0 ? window.anchor + reach : window.anchor + width;
  const int rightStart = centrePixels > 0 ? width - reach : width;
  const Source* const rightWindows = line + (centrePixels > 0 ? leftLine : leftPixels) * channels;

  const auto edges = [&](const Source* s, Result* d, int pixels) {
    for (int i = 0; i < pixels * channels; ++i) storeSample(d + i, edge(s + i));
  };
  for (int y = 0; y < roi.height; ++y) {
    const Source* const row = src.row(y);
    Result* const result = dstRows[y];
    if (reach > 0) {
      const RowExtension<Source, channels> extension{row, width, horizontalBorder(border.mode), border.value};
      extension.copy(line, -window.anchor, leftLine);
      extension.copy(line + leftLine * channels, rightStart, width + reach - window.anchor - rightStart);
      edges(line, result, leftPixels);
      edges(rightWindows, result + (leftPixels + centrePixels) * channels, rightPixels);
    }
    if (centrePixels > 0)
      centre(row, result + leftPixels * channels, centrePixels * channels);
  }
}

}  // namespace orv
