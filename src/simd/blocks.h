// The walk along a row in blocks of a fixed number of samples.
#pragma once

namespace orv {

/// Covers the samples 0 .. count - 1, at least `lanes` of them, by blocks. The last block ends with the row, so that some
/// samples are made twice.
template <int lanes, class Block>
[[gnu::always_inline]] inline void coverRow(int count, Block block) {
  int x = 0;
  for (; x <= count - lanes; x += lanes) block(x);
  if (x < count)
    block(count - lanes);
}

}  // namespace orv
