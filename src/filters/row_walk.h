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

/// Where the pixels come from that windows see outside the row, `anchor` on the left and the others on the right. It is
/// the same for every row: worked out once a call.
template <class Source, int channels>
class OutsidePixels {
public:
  /// `offsets` has room for window.reach() entries.
  OutsidePixels(int32_t* offsets, int width, RowWindow window, RowBorder<Source> border)
      : offsets_(offsets), anchor_(window.anchor), width_(width), value_(border.value) {
    const AxisBorder axis = horizontalBorder(border.mode);
    const auto map = [&](int first, int end) {
      for (int x = first; x < end; ++x) {
        const SourceIndex source = mapIndex(x, width, axis);
        offsets_[entry(x)] = source.isBorderValue ? borderPixel : source.index * channels;
      }
    };
    map(-window.anchor, 0);
    map(width, width + window.after());
  }

  const Source* pixel(const Source* row, int x) const {
    const int32_t offset = offsets_[entry(x)];
    return offset == borderPixel ? value_ : row + offset;
  }

private:
  static constexpr int32_t borderPixel = std::numeric_limits<int32_t>::min();

  int entry(int x) const { return anchor_ + (x < 0 ? x : x - width_); }

  int32_t* offsets_;
  int anchor_, width_;
  const Source* value_;
};

/// Pixels of the edge line: up to three stretches of size - 1.
constexpr size_t edgeLinePixels(int kernelSize) { return 3 * static_cast<size_t>(kernelSize - 1); }

template <class Source, int channels>
class RowZones {
public:
  /// `line` has room for edgeLinePixels pixels.
  RowZones(Source* line, OutsidePixels<Source, channels> outside, int width, RowWindow window)
      : line_(line),
        outside_(outside),
        window_(window),
        width_(width),
        centrePixels_(std::max(width - window.reach(), 0)),
        leftPixels_(std::min(window.anchor, width)) {}

  /// Calls centre(source, result, samples), unless the row is narrower than the window, and edge(source) for each sample
  /// of the edges.
  template <class Result>
  void filter(const Source* row, Result* result, auto centre, auto edge) const {
    const auto edges = [&](const Source* s, Result* d, int pixels) {
      for (int i = 0; i < pixels * channels; ++i) storeSample(d + i, edge(s + i));
    };
    fillLine(row);
    edges(line_, result, leftPixels_);
    if (centrePixels_ > 0)
      centre(row, result + leftPixels_ * channels, centrePixels_ * channels);
    const int rightFirst = centrePixels_ > 0 ? window_.anchor + window_.reach() : leftPixels_;
    const int done = leftPixels_ + centrePixels_;
    edges(line_ + rightFirst * channels, result + done * channels, width_ - done);
  }

private:
  /// A row narrower than the window lies in the line once, as a whole, between its extensions.
  void fillLine(const Source* row) const {
    Source* d = line_;
    const auto append = [&](const Source* pixel) {
      std::memcpy(d, pixel, channels * sizeof(Source));
      d += channels;
    };
    const auto appendInside = [&](int first, int end) {
      for (int x = first; x < end; ++x) append(row + x * channels);
    };
    const int reach = window_.reach();
    for (int x = -window_.anchor; x < 0; ++x) append(outside_.pixel(row, x));
    appendInside(0, std::min(width_, reach));
    if (centrePixels_ > 0)
      appendInside(width_ - reach, width_);
    for (int x = width_; x < width_ + window_.after(); ++x) append(outside_.pixel(row, x));
  }

  Source* line_;
  OutsidePixels<Source, channels> outside_;
  RowWindow window_;
  int width_, centrePixels_, leftPixels_;
};

}  // namespace orv
