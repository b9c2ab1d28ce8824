// Rows of one-dimensional filters as floats, extended beyond their ends by the border word's rules.
//
// A filter computes most of a row straight from the source and only its ends from an edge line, a few pixels of the
// extended row in scratch:
//
//   const RowExtension<float, 3> edges{row, width, horizontalBorder(borderMode), borderValue};
//   edges.copy(line, -anchor, anchor + inner);  // pixels -anchor .. inner - 1
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "frame/border.h"
#include "simd/copy.h"

namespace orv {

template <class Sample, int channels>
struct RowExtension {
  const Sample* row;  ///< the first pixel of the region, at any address
  int width;
  AxisBorder border;          ///< the kind is replicate, mirror or constant, or none with both sides in memory
  const Sample* borderValue;  ///< one sample per channel; read under a constant border only

  /// Writes the pixels of the extended row with the indices first .. first + count - 1, whichever side they lie on.
  void copy(float* dst, int first, int count) const {
    const int end = first + count;
    const int inside = std::clamp(0, first, end);
    const int right = std::clamp(width, first, end);
    copyOutside(dst, first, inside - first);
    copySamples(pixel(inside), at(dst, inside - first), (right - inside) * channels);
    copyOutside(at(dst, right - first), right, end - right);
  }

  /// Writes the row with `before` and `after` pixels beyond its ends.
  [[gnu::always_inline]] void copyAll(float* dst, auto before, auto after) const {
    copyOutside(dst, -before, before);
    copySamples(row, at(dst, before), width * channels);
    copyOutside(at(dst, before + width), width, after);
  }

private:
  const Sample* pixel(int x) const { return at(row, x); }

  template <class T>
  static T* at(T* first, int x) {
    return first + static_cast<ptrdiff_t>(x) * channels;
  }

  static void copyPixel(const Sample* src, float* dst) {
    for (int c = 0; c < channels; ++c) F32x1::load(src + c).store(dst + c);
  }

  /// Pixels beyond one side. A reflection that doesn't leave the row again needs no mapping one by one.
  [[gnu::always_inline]] void copyOutside(float* dst, int first, int count) const {
    if (count == 0)
      return;
    const bool isLeft = first < 0;
    if (isLeft ? border.lo : border.hi) {
      copySamples(pixel(first), dst, count * channels);
    } else if (border.kind != orvBorderMirror) {
      float value[channels];
      copyPixel(border.kind == orvBorderConstant ? borderValue : pixel(isLeft ? 0 : width - 1), value);
      for (int i = 0; i < count; ++i, dst += channels) std::memcpy(dst, value, sizeof value);
    } else {
      const int end = isLeft ? 0 : width - 1;
      const int farthest = isLeft ? -first : first + count - width;
      if (farthest < width) {
        const Sample* from = pixel(2 * end - first);
        for (int i = 0; i < count; ++i, dst += channels, from -= channels) copyPixel(from, dst);
      } else {
        for (int i = 0; i < count; ++i, dst += channels)
          copyPixel(pixel(mapIndex(first + i, width, border).index), dst);
      }
    }
  }
};

}  // namespace orv
