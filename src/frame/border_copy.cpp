#include "frame/border_copy.h"

#include <algorithm>

#include "frame/checks.h"
#include "frame/fill.h"
#include "frame/views.h"

namespace orv {
namespace {

/// Both generations of sizes as one.
constexpr OrvSize shape(auto size) { return {size.width, size.height}; }

/// Where the source lies in the result, in pixels.
struct Layout {
  int width, height;
  int left, top, right, bottom;

  int fullWidth() const { return left + width + right; }
};

Layout layoutOf(OrvSize srcRoi, OrvSize dstRoi, int top, int left) {
  return {
      srcRoi.width, srcRoi.height, left, top, dstRoi.width - srcRoi.width - left, dstRoi.height - srcRoi.height - top};
}

constexpr Check stepBelowOne(int step) { return {step < 1, orvStsBadStep}; }

OrvStatus badLayout(OrvSize srcRoi, OrvSize dstRoi, int top, int left) {
  return firstFailure(badSize(srcRoi), badSize(dstRoi),
                      Check{top < 0 || left < 0 || int64_t{srcRoi.width} + left > dstRoi.width ||
                                int64_t{srcRoi.height} + top > dstRoi.height,
                            orvStsBadSize});
}

/// Rows of whole pixels. Copies stay right when source and destination overlap.
template <size_t pixelBytes>
struct Pixels {
  static constexpr auto size = static_cast<intptr_t>(pixelBytes);

  static void copy(uint8_t* dst, const uint8_t* src, int count) {
    std::memmove(dst, src, static_cast<size_t>(count) * pixelBytes);
  }

  /// dst[k] = src[-k]; the stretches don't overlap.
  static void copyBackward(uint8_t* dst, const uint8_t* src, int count) {
    if constexpr (16 % pixelBytes == 0) {
      constexpr int lanes = 16 / pixelBytes;
      for (; count >= lanes; count -= lanes, dst += 16, src -= 16) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + size - 16));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst), _mm_shuffle_epi8(v, reversal()));
      }
    }
    for (; count > 0; --count, dst += size, src -= size) std::memcpy(dst, src, pixelBytes);
  }

private:
  static __m128i reversal() {
    alignas(16) uint8_t order[16];
    for (size_t i = 0; i < 16; ++i)
      order[i] = static_cast<uint8_t>((15 - i) / pixelBytes * pixelBytes + i % pixelBytes);
    return _mm_load_si128(reinterpret_cast<const __m128i*>(order));
  }
};

// The rule of a border along a row, whose source pixels lie in place at `first`, and down the rows.
struct Replicate {
  template <size_t pixelBytes>
  static void extendRow(uint8_t* first, const Layout& layout) {
    uint8_t* last = first + (layout.width - 1) * Pixels<pixelBytes>::size;
    fillPixels<pixelBytes>(first - layout.left * Pixels<pixelBytes>::size, layout.left, first);
    fillPixels<pixelBytes>(last + Pixels<pixelBytes>::size, layout.right, last);
  }
  /// The row to copy next, walking away from the edge row.
  static int nextRow(int row, int&, int) { return row; }
};

struct Mirror {
  /// The first n - 1 border pixels are the row turned round; from there on it repeats with the period 2n - 2, which is
  /// copied from the finished part in stretches that double.
  template <size_t pixelBytes>
  static void extendRow(uint8_t* first, const Layout& layout) {
    using P = Pixels<pixelBytes>;
    if (layout.width == 1)
      return Replicate::extendRow<pixelBytes>(first, layout);
    const int reach = layout.width - 1;
    uint8_t* last = first + reach * P::size;

    const int reflectedRight = std::min(layout.right, reach);
    P::copyBackward(last + P::size, last - P::size, reflectedRight);
    int done = reflectedRight;
    for (int distance = 2 * reach; done < layout.right; distance *= 2) {
      const int count = std::min(distance, layout.right - done);
      uint8_t* next = last + (done + 1) * P::size;
      P::copy(next, next - distance * P::size, count);
      done += count;
    }

    const int reflectedLeft = std::min(layout.left, reach);
    P::copyBackward(first - reflectedLeft * P::size, first + reflectedLeft * P::size, reflectedLeft);
    done = reflectedLeft;
    for (int distance = 2 * reach; done < layout.left; distance *= 2) {
      const int count = std::min(distance, layout.left - done);
      uint8_t* next = first - (done + count) * P::size;
      P::copy(next, next + distance * P::size, count);
      done += count;
    }
  }
  static int nextRow(int row, int& direction, int height) {
    if (height == 1)
      return row;
    if (row + direction < 0 || row + direction >= height)
      direction = -direction;
    return row + direction;
  }
};

/// Source rows first, each with its left and right border; then the rows above and below, copied from finished rows
/// so that they bring their corners along.
template <class Rule, size_t pixelBytes>
void addBorder(View<uint8_t> srcDst, const Layout& layout, auto placeRow) {
  for (int y = 0; y < layout.height; ++y) {
    placeRow(y);
    Rule::template extendRow<pixelBytes>(srcDst.row(y), layout);
  }
  const View<uint8_t> full{srcDst.first - layout.left * Pixels<pixelBytes>::size, srcDst.step};
  int direction = 1;
  for (int row = 0, y = -1; y >= -layout.top; --y) {
    row = Rule::nextRow(row, direction, layout.height);
    Pixels<pixelBytes>::copy(full.row(y), full.row(row), layout.fullWidth());
  }
  direction = -1;
  for (int row = layout.height - 1, y = layout.height; y < layout.height + layout.bottom; ++y) {
    row = Rule::nextRow(row, direction, layout.height);
    Pixels<pixelBytes>::copy(full.row(y), full.row(row), layout.fullWidth());
  }
}

template <class Rule, size_t pixelBytes>
OrvStatus borderInPlace(void* srcDst, int step, OrvSize srcRoi, OrvSize dstRoi, int top, int left) {
  if (OrvStatus status = firstFailure(nullPointer(srcDst), stepBelowOne(step), badLayout(srcRoi, dstRoi, top, left)))
    return status;
  addBorder<Rule, pixelBytes>(View{static_cast<uint8_t*>(srcDst), step}, layoutOf(srcRoi, dstRoi, top, left),
                              [](int) {});
  return orvStsOk;
}

template <class Rule, size_t pixelBytes>
OrvStatus copyWithBorder(const void* src, int srcStep, OrvSize srcRoi, void* dst, int dstStep, OrvSize dstRoi, int top,
                         int left) {
  if (src == dst)
    return borderInPlace<Rule, pixelBytes>(dst, dstStep, srcRoi, dstRoi, top, left);
  if (OrvStatus status = firstFailure(nullPointer(src, dst), stepBelowOne(srcStep), stepBelowOne(dstStep),
                                      badLayout(srcRoi, dstRoi, top, left)))
    return status;
  const View source{static_cast<const uint8_t*>(src), srcStep};
  const View<uint8_t> inner{View{static_cast<uint8_t*>(dst), dstStep}.row(top) + left * Pixels<pixelBytes>::size,
                            dstStep};
  addBorder<Rule, pixelBytes>(inner, layoutOf(srcRoi, dstRoi, top, left),
                              [&](int y) { Pixels<pixelBytes>::copy(inner.row(y), source.row(y), srcRoi.width); });
  return orvStsOk;
}

OrvStatus copyWithConstant(const void* src, int srcStep, OrvSize srcRoi, void* dst, int dstStep, OrvSize dstRoi,
                           int top, int left, const void* value, size_t pixelBytes) {
  if (OrvStatus status = firstFailure(nullPointer(src, dst), stepBelowOne(srcStep), stepBelowOne(dstStep),
                                      badLayout(srcRoi, dstRoi, top, left), nullPointer(value)))
    return status;
  const Layout layout = layoutOf(srcRoi, dstRoi, top, left);
  const FillPattern pattern(value, pixelBytes);
  const size_t leftBytes = static_cast<size_t>(layout.left) * pixelBytes;
  const size_t innerBytes = static_cast<size_t>(layout.width) * pixelBytes;
  const size_t rightBytes = static_cast<size_t>(layout.right) * pixelBytes;
  const View source{static_cast<const uint8_t*>(src), srcStep};
  const View result{static_cast<uint8_t*>(dst), dstStep};
  for (int y = 0; y < dstRoi.height; ++y) {
    uint8_t* row = result.row(y);
    if (y < layout.top || y >= layout.top + layout.height) {
      pattern.fill(row, leftBytes + innerBytes + rightBytes);
      continue;
    }
    std::memmove(row + leftBytes, source.row(y - layout.top), innerBytes);
    pattern.fill(row, leftBytes);
    pattern.fill(row + leftBytes + innerBytes, rightBytes);
  }
  return orvStsOk;
}

/// Of a constant given by value, or by pointer.
template <class Sample>
const void* addressOf(const Sample& value) {
  return &value;
}
template <class Sample>
const void* addressOf(const Sample* value) {
  return value;
}

}  // namespace

#define ORV_DEFINE_ONE(name, Sample, channels, Size)                                                   \
  ORV_COPY_CONST_BORDER(name, Sample, channels, Size) {                                                \
    return copyWithConstant(src, srcStep, shape(srcRoi), dst, dstStep, shape(dstRoi), topBorderHeight, \
                            leftBorderWidth, addressOf(value), channels * sizeof(Sample));             \
  }
#define ORV_DEFINE(name, Sample, channels)           \
  ORV_DEFINE_ONE(name##R, Sample, channels, OrvSize) \
  ORV_DEFINE_ONE(name##R_L, Sample, channels, OrvSizeL)
ORV_BORDER_CONST_MEMBERS(ORV_DEFINE)
ORV_DEFINE_ONE(16u_C1R, uint16_t, 1, OrvSize)
#undef ORV_DEFINE
#undef ORV_DEFINE_ONE

#define ORV_DEFINE_ONE(function, Rule, Sample, channels, Size)                                                       \
  ORV_COPY_BORDER(function, Sample, Size) {                                                                          \
    return copyWithBorder<Rule, channels * sizeof(Sample)>(src, srcStep, shape(srcRoi), dst, dstStep, shape(dstRoi), \
                                                           topBorderHeight, leftBorderWidth);                        \
  }
#define ORV_DEFINE(name, Sample, channels)                                                \
  ORV_DEFINE_ONE(orviCopyReplicateBorder_##name##R, Replicate, Sample, channels, OrvSize) \
  ORV_DEFINE_ONE(orviCopyReplicateBorder_##name##R_L, Replicate, Sample, channels, OrvSizeL)
ORV_BORDER_REPLICATE_MEMBERS(ORV_DEFINE)
#undef ORV_DEFINE
#define ORV_DEFINE(name, Sample, channels)                                          \
  ORV_DEFINE_ONE(orviCopyMirrorBorder_##name##R, Mirror, Sample, channels, OrvSize) \
  ORV_DEFINE_ONE(orviCopyMirrorBorder_##name##R_L, Mirror, Sample, channels, OrvSizeL)
ORV_BORDER_MIRROR_MEMBERS(ORV_DEFINE)
#undef ORV_DEFINE
#undef ORV_DEFINE_ONE

#define ORV_DEFINE_ONE(function, Rule, Sample, channels, Size)                                              \
  ORV_COPY_BORDER_IN_PLACE(function, Sample, Size) {                                                        \
    return borderInPlace<Rule, channels * sizeof(Sample)>(srcDst, srcDstStep, shape(srcRoi), shape(dstRoi), \
                                                          topBorderHeight, leftBorderWidth);                \
  }
#define ORV_DEFINE(name, Sample, channels)                                                 \
  ORV_DEFINE_ONE(orviCopyReplicateBorder_##name##IR, Replicate, Sample, channels, OrvSize) \
  ORV_DEFINE_ONE(orviCopyReplicateBorder_##name##IR_L, Replicate, Sample, channels, OrvSizeL)
ORV_BORDER_REPLICATE_IN_PLACE_MEMBERS(ORV_DEFINE)
#undef ORV_DEFINE
#define ORV_DEFINE(name, Sample, channels)                                           \
  ORV_DEFINE_ONE(orviCopyMirrorBorder_##name##IR, Mirror, Sample, channels, OrvSize) \
  ORV_DEFINE_ONE(orviCopyMirrorBorder_##name##IR_L, Mirror, Sample, channels, OrvSizeL)
ORV_BORDER_MIRROR_IN_PLACE_MEMBERS(ORV_DEFINE)
#undef ORV_DEFINE
#undef ORV_DEFINE_ONE

}  // namespace orv
