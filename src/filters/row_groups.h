// The walk along a row of a filter with a small radius, in groups of samples that fill a vector.
#pragma once

#include <cstring>

#include "frame/border.h"

namespace orv {

/// Divides the rows of an image into groups of `lanes` samples around which `radius` samples on either side can be
/// read. Groups at the ends of a row, whose neighbours the border supplies, are read from short extended copies; all
/// others straight from the source. A last group that isn't full steps back inside the row, so that some samples are
/// visited twice. The division is the same for all rows.
template <class Source, int lanes, int radius>
class RowGroups {
public:
  /// With lanes above 1, the width is at least `lanes`; singles are for narrower rows.
  RowGroups(int width, AxisBorder border, Source borderValue)
      : width_(width),
        borderValue_(borderValue),
        copiesWhole_(width < narrow),
        copiesLeft_(!copiesWhole_ && !border.lo),
        copiesRight_(!copiesWhole_ && !border.hi) {
    for (int i = 0; i < radius; ++i) {
      before_[i] = mapIndex(i - radius, width, border);
      after_[i] = mapIndex(width + i, width, border);
    }
    const int rightmost = width - lanes;
    if (copiesWhole_)
      cover(leftCopy, 0, width, rightmost);
    if (!copiesWhole_)
      cover(source, copiesLeft_ ? lanes : 0, copiesRight_ ? rightmost : width, rightmost - (copiesRight_ ? radius : 0));
    // The copies come last: by then they have left the store queue, and wide loads of narrow stores don't stall.
    if (copiesLeft_)
      cover(leftCopy, 0, lanes, 0);
    if (copiesRight_)
      cover(rightCopy, rightmost, width, rightmost);
  }

  /// Calls step(s, x) for each group of the row, s pointing at its first sample and x telling its position.
  template <class Step>
  [[gnu::always_inline]] void forEach(const Source* row, Step step) {
    const Source* bases[3];
    bases[source] = row;
    bases[leftCopy] = left_ + radius;
    bases[rightCopy] = right_ + radius - (width_ - lanes);
    if (copiesWhole_) {
      extend(left_, row, before_);
      std::memcpy(left_ + radius, row, static_cast<size_t>(width_) * sizeof(Source));
      extend(left_ + radius + width_, row, after_);
    }
    if (copiesLeft_) {
      extend(left_, row, before_);
      std::memcpy(left_ + radius, row, (lanes + radius) * sizeof(Source));
    }
    if (copiesRight_) {
      std::memcpy(right_, row + width_ - lanes - radius, (lanes + radius) * sizeof(Source));
      extend(right_ + lanes + radius, row, after_);
    }
    for (int i = 0; i < stretchCount_; ++i) {
      const auto [base, begin, last] = stretches_[i];
      const Source* const samples = bases[base];
      for (int x = begin; x <= last; x += lanes) step(samples + x, x);
    }
  }

private:
  /// Rows below this width are copied as a whole, so that a group that steps back never needs more than one copy.
  static constexpr int narrow = 32;
  static_assert(2 * lanes <= narrow && lanes + 2 * radius <= narrow);

  enum Base { source, leftCopy, rightCopy };
  struct Stretch {
    Base base;
    int begin, last;
  };

  /// Groups for the samples begin .. end - 1, none starting after `last`.
  void cover(Base base, int begin, int end, int last) {
    if (begin <= last)
      stretches_[stretchCount_++] = {base, begin, last};
    const int covered = begin <= last ? begin + ((last - begin) / lanes + 1) * lanes : begin;
    if (covered < end)
      stretches_[stretchCount_++] = {base, last, last};
  }

  void extend(Source* copy, const Source* row, const SourceIndex (&outside)[radius]) const {
    for (int i = 0; i < radius; ++i)
      std::memcpy(copy + i, outside[i].isBorderValue ? &borderValue_ : row + outside[i].index, sizeof(Source));
  }

  int width_;
  Source borderValue_;
  bool copiesWhole_, copiesLeft_, copiesRight_;
  SourceIndex before_[radius], after_[radius];
  Stretch stretches_[5];
  int stretchCount_ = 0;
  Source left_[narrow + 2 * radius], right_[lanes + 2 * radius];
};

}  // namespace orv
