// Checks that the row and column pipelines share.
#pragma once

#include "frame/checks.h"

namespace orv {

/// Any of `count` row pointers null; a negative count checks nothing.
template <class Sample>
Check nullRow(Sample* const* rows, int64_t count) {
  for (int64_t i = 0; i < count; ++i)
    if (rows[i] == nullptr)
      return {true, orvStsNullPointer};
  return {false, orvStsNullPointer};
}

constexpr Check badKernelSize(int kernelSize) { return {kernelSize < 1, orvStsBadSize}; }

constexpr Check badAnchor(int anchor, int kernelSize) { return {anchor < 0 || anchor >= kernelSize, orvStsBadAnchor}; }

constexpr Check zeroDivisor(int divisor) { return {divisor == 0, orvStsBadArg}; }

/// A check that only some members make.
constexpr Check checkedIf(bool applies, Check check) { return {applies && check.failed, check.status}; }

}  // namespace orv
