// The walk along a row in blocks of a fixed number of samples.
#pragma once

#include <algorithm>

namespace orv {

/// Covers the samples begin .. count - 1, at least `lanes` of them, by blocks. The last block ends with the row and the
/// first starts at 0 even if `begin` is negative, so that some samples are made twice.
template <int lanes, class Block>
[[gnu::always_inline]] inline void coverRow(int begin, int count, Block block) {
  int x = begin;
  for (; x <= count - lanes; x += lanes) block(std::max(x, 0));
  if (x < count)
    block(count - lanes);
}

}  // namespace orv
