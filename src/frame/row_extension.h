// Rows of one-dimensional filters, extended beyond their ends by the border word's rules.
//
// A filter computes most of a row straight from the source and only its ends from an edge line, a few pixels of the
// extended row in scratch:
//
//   const RowExtension<float, 3> edges{row, width, horizontalBorder(borderMode), borderValue};
//   edges.left(line, anchor);                         // pixels -anchor .. -1
//   edges.copy(line + 3 * anchor, 0, inner);          // pixels 0 .. inner - 1
//   edges.right(line + 3 * (anchor + inner), after);  // pixels width .. width + after - 1
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "frame/border.h"

namespace orv {

template <class Sample, int channels>
struct RowExtension {
  const Sample* row;  ///< the first pixel of the region, at any address
  int width;
  AxisBorder border;          ///< the kind is replicate, mirror or constant, or none with both sides in memory
  const Sample* borderValue;  ///< one sample per channel; read under a constant border only

  /// Writes the pixels of the extended row with the indices first .. first + count - 1, whichever side they lie on.
  void copy(Sample* dst, int first, int count) const {
    const int end = first + count;
    int x = first;
    for (; x < std::min(end, 0); ++x, dst += channels) copyOutside(dst, x);
    if (const int inside = std::min(end, width) - x; inside > 0) {
      std::memcpy(dst, pixel(x), static_cast<size_t>(inside) * pixelBytes);
      x += inside;
      dst += static_cast<ptrdiff_t>(inside) * channels;
    }
    for (; x < end; ++x, dst += channels) copyOutside(dst, x);
  }

  /// The `count` pixels before the row, in the order of the row: dst[0] is pixel -count.
  void left(Sample* dst, int count) const { copy(dst, -count, count); }

  /// The `count` pixels after the row.
  void right(Sample* dst, int count) const { copy(dst, width, count); }

private:
  static constexpr size_t pixelBytes = channels * sizeof(Sample);

  const Sample* pixel(int x) const { return row + static_cast<ptrdiff_t>(x) * channels; }

  void copyOutside(Sample* dst, int x) const {
    const SourceIndex source = mapIndex(x, width, border);
    std::memcpy(dst, source.isBorderValue ? borderValue : pixel(source.index), pixelBytes);
  }
};

}  // namespace orv
