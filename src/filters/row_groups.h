// The walk along the rows of a filter with a small radius, in groups of samples that fill a vector. A group's
// neighbourhood is a window s, where s(j) is the vector of the samples j positions after the group's own.
#pragma once

#include <immintrin.h>

#include <algorithm>
#include <cstring>
#include <iterator>

#include "frame/border.h"
#include "simd/float.h"
#include "simd/pair.h"

namespace orv {

/// A window of which all samples can be read from the row.
template <class V, class Source>
struct RowWindow {
  using Vector = V;
  const Source* centre;

  V operator()(int offset) const { return V::load(centre + offset); }
  __m128i bytes(int offset) const requires(sizeof(Source) == 1) { return loadBytes(centre + offset); }
};

/// What stands in for the samples beyond the ends of the rows of an image. 16 bytes that reach beyond are read where
/// they can be, and one shuffle puts every sample where it belongs.
template <class Source, int radius>
class RowEnds {
public:
  static constexpr int lanes = 16 / static_cast<int>(sizeof(Source));

  /// The width is at least `lanes`.
  RowEnds(int width, AxisBorder border, Source borderValue)
      : first_(border.lo ? -radius : 0), last_(width - lanes + (border.hi ? radius : 0)) {
    for (int i = 0; i < lanes; ++i) pick(i, i);
    for (int i = 1; i <= radius; ++i) {
      standIn(-i, mapIndex(-i, width, border), 0, borderValue);
      standIn(lanes - 1 + i, mapIndex(width - 1 + i, width, border), width - lanes, borderValue);
    }
  }

  /// Where 16 bytes are read, and their place among the picks.
  struct Place {
    int start, slot;
  };
  Place place(int x) const {
    const int start = std::clamp(x, first_, last_);
    return {start, radius + x - start};
  }
  [[gnu::always_inline]] __m128i load(const Source* row, Place at) const {
    const __m128i picked = _mm_shuffle_epi8(loadBytes(row + at.start), loadBytes(&picks_[at.slot]));
    return _mm_or_si128(picked, loadBytes(&constants_[at.slot]));
  }

private:
  struct Pick {
    uint8_t bytes[sizeof(Source)];
  };
  static constexpr uint8_t none = 0x80;

  /// Slot `radius` belongs to the first sample that is read, where nothing is beyond.
  void pick(int i, int lane) {
    int byte = lane * static_cast<int>(sizeof(Source));
    for (uint8_t& b : picks_[radius + i].bytes) b = static_cast<uint8_t>(byte++);
  }
  void standIn(int i, SourceIndex source, int start, Source borderValue) {
    pick(i, source.index - start);
    if (source.isBorderValue) {
      std::fill(std::begin(picks_[radius + i].bytes), std::end(picks_[radius + i].bytes), none);
      constants_[radius + i] = borderValue;
    }
  }

  int first_, last_;
  Pick picks_[lanes + 2 * radius];
  Source constants_[lanes + 2 * radius] = {};
};

/// A group near the end of a row: the places of the outermost 16 bytes of each of its window's vectors, which are the
/// first of those before the group and the last of those after it.
template <class V, class Source, int radius>
class EndGroup {
public:
  EndGroup() = default;
  EndGroup(const RowEnds<Source, radius>& ends, int start, int place) : x(start), slot(place) {
    for (int i = 1; i <= radius; ++i) {
      places_[radius - i] = ends.place(start - i);
      places_[radius + i] = ends.place(start + lastPart + i);
    }
  }

  struct Window {
    using Vector = V;
    const RowEnds<Source, radius>& ends;
    const EndGroup& group;
    const Source* row;

    [[gnu::always_inline]] V operator()(int offset) const {
      if constexpr (sizeof(Source) == 1) {
        return V::widen(bytes(offset));
      } else {
        const auto inside = [&](int lane) { return _mm_loadu_ps(row + group.x + offset + lane); };
        const auto outermost = [&] { return _mm_castsi128_ps(ends.load(row, group.places_[radius + offset])); };
        return {F32x8::fromHalves(offset < 0 ? outermost() : inside(0), inside(4)),
                F32x8::fromHalves(inside(8), offset > 0 ? outermost() : inside(lastPart))};
      }
    }
    [[gnu::always_inline]] __m128i bytes(int offset) const requires(sizeof(Source) == 1) {
      return offset == 0 ? loadBytes(row + group.x) : ends.load(row, group.places_[radius + offset]);
    }
  };

  int x, slot;

private:
  static constexpr int lastPart = V::lanes - RowEnds<Source, radius>::lanes;

  typename RowEnds<Source, radius>::Place places_[2 * radius + 1];
};

/// The walk in vectors V along rows that are at least as wide. A last group that isn't full steps back inside the row,
/// so that some samples are visited twice.
template <class V, class Source, int radius>
class RowGroups {
public:
  RowGroups(int width, AxisBorder border, Source borderValue) : ends_(width, border, borderValue) {
    endGroups_[0] = {ends_, 0, 0};
    int x = V::lanes;
    while (x <= width - V::lanes - radius) x += V::lanes;
    innerEnd_ = x;
    for (; x < width; x += V::lanes) endGroups_[endGroupCount_++] = {ends_, std::min(x, width - V::lanes), x};
  }

  /// Calls step(x, slot, window) for each group of a row from x on. The slots of different groups are `lanes` apart from
  /// 0 on, and don't overlap where the groups do.
  template <class Step>
  void forEach(const Source* row, Step step) const {
    for (int x = V::lanes, end = innerEnd_; x < end; x += V::lanes) step(x, x, RowWindow<V, Source>{row + x});
    for (int i = 0; i < endGroupCount_; ++i) {
      const EndGroup<V, Source, radius>& group = endGroups_[i];
      step(group.x, group.slot, typename EndGroup<V, Source, radius>::Window{ends_, group, row});
    }
  }

private:
  RowEnds<Source, radius> ends_;
  int innerEnd_;
  int endGroupCount_ = 1;
  EndGroup<V, Source, radius> endGroups_[3];
};

/// The walk in single values along rows that are narrower than a vector, in extended copies.
template <class V, class Source, int radius>
requires(V::lanes == 1) class RowGroups<V, Source, radius> {
public:
  RowGroups(int width, AxisBorder border, Source borderValue) : width_(width), borderValue_(borderValue) {
    for (int i = 0; i < radius; ++i) {
      before_[i] = mapIndex(i - radius, width, border);
      after_[i] = mapIndex(width + i, width, border);
    }
  }

  template <class Step>
  void forEach(const Source* row, Step step) const {
    Source copy[widest + 2 * radius];
    extend(copy, row, before_);
    std::memcpy(copy + radius, row, static_cast<size_t>(width_) * sizeof(Source));
    extend(copy + radius + width_, row, after_);
    for (int x = 0; x < width_; ++x) step(x, x, RowWindow<V, Source>{copy + radius + x});
  }

private:
  static constexpr int widest = 15;

  void extend(Source* copy, const Source* row, const SourceIndex (&outside)[radius]) const {
    for (int i = 0; i < radius; ++i)
      std::memcpy(copy + i, outside[i].isBorderValue ? &borderValue_ : row + outside[i].index, sizeof(Source));
  }

  int width_;
  Source borderValue_;
  SourceIndex before_[radius], after_[radius];
};

}  // namespace orv
