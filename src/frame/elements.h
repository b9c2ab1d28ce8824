// Element-wise work on vectors and on the rows of images, a block of elements at a time.
#pragma once

#include <cstddef>
#include <cstring>

#include "frame/checks.h"
#include "frame/views.h"

namespace orv {

/// The last elements of a source, padded with zeros to a block.
template <int block, class Sample>
struct PaddedBlock {
  alignas(32) Sample samples[block] = {};

  PaddedBlock(const Sample* src, size_t bytes) { std::memcpy(samples, src, bytes); }
};

/// Calls step(dst, sources...) for each `block` elements. The step loads its block from each pointer, at any address,
/// before it stores, so that dst may be a source. The last, incomplete block goes through the same step on a copy.
template <int block, class Result, class... Sources>
void forEachBlock(int length, auto step, Result* dst, const Sources*... sources) {
  int x = 0;
  for (; x <= length - block; x += block) step(dst + x, sources + x...);
  if (x == length)
    return;
  const auto rest = static_cast<size_t>(length - x);
  alignas(32) Result results[block];
  step(results, PaddedBlock<block, Sources>(sources + x, rest * sizeof(Sources)).samples...);
  std::memcpy(dst + x, results, rest * sizeof(Result));
}

/// The same on each row of an image.
template <int block, class Result, class... Sources>
void forEachBlock(OrvSize roi, int channels, auto step, View<Result> dst, View<const Sources>... sources) {
  for (const auto& row : rows(roi.height, dst, sources...))
    std::apply([&](auto... pointers) { forEachBlock<block>(roi.width * channels, step, pointers...); }, row);
}

constexpr Check badLength(int length) { return {length < 1, orvStsBadSize}; }

}  // namespace orv
