// What the tests of the pipelines and of the separable filter draw: border words with the margins that they vouch for,
// kernels, divisors, row pointers and buffers.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "frame/border_model.h"
#include "support/checksums.h"
#include "support/image.h"
#include "support/photographs.h"

namespace orvtest {

/// A word of any kind with any sides in memory.
inline int drawBorderWord(Random& random) {
  if (random.oneIn(8))
    return orvBorderMemAll;
  const int sides = random.oneIn(2) ? 0 : random.below(16) << 4;
  return random.pick<int>({orvBorderReplicate, orvBorderMirror, orvBorderConstant}) | sides;
}

/// How far beyond an axis of n pixels windows read memory, exactly.
struct Reach {
  int low = 0, high = 0;
};
inline Reach reachOf(int n, int taps, int anchor, int word, model::AxisIndex (*map)(int i, int n, int word)) {
  Reach reach;
  for (int i = -anchor; i < n + taps - 1 - anchor; ++i) {
    const model::AxisIndex source = map(i, n, word);
    if (source.constant)
      continue;
    reach.low = std::max(reach.low, -source.index);
    reach.high = std::max(reach.high, source.index - (n - 1));
  }
  return reach;
}

/// Mostly up to 11 taps, the sizes with kernels of their own preferred.
inline int drawKernelSize(Random& random) {
  if (random.oneIn(2))
    return random.pick<int>({3, 5});
  return random.oneIn(6) ? random.between(12, 31) : random.between(1, 11);
}

/// A row width for kernels of this size: narrower than the kernel, near 15 above it, or any.
inline int drawWidth(Random& random, int taps) {
  switch (random.below(6)) {
    case 0:
      return random.between(1, taps);
    case 1:
    case 2:
      return taps + random.between(10, 20);
    default:
      return drawSize(random).width;
  }
}

inline int drawDivisor(Random& random, bool positive) {
  const int divisor = random.pick<int>(
      {1, 1, 1, 16, 16, 2, 3, 5, 9, 100, 256, 4096, 32768, 65536, 98301, INT32_MAX, 1 + random.below(1000)});
  return positive || !random.oneIn(4) ? divisor : -divisor;
}

/// Coefficients whose sums stay small or don't, magnitudes around 65535 in all, the lowest coefficient, mirrored halves.
template <class Tap>
std::vector<Tap> drawTaps(Random& random, int count) {
  std::vector<Tap> taps(static_cast<size_t>(count));
  const int kind = random.below(6);
  for (Tap& tap : taps) {
    if constexpr (std::is_floating_point_v<Tap>)
      tap = std::bit_cast<Tap>(drawBits<Tap>(random, Values::ordinary));
    else if (kind == 0)
      tap = std::bit_cast<Tap>(drawBits<Tap>(random, Values::finite));
    else
      tap = static_cast<Tap>(std::is_signed_v<Tap> ? random.between(-20, 40) : random.below(60));
  }
  if constexpr (std::is_same_v<Tap, int16_t>) {
    const auto any = [&]() -> Tap& { return taps[static_cast<size_t>(random.below(count))]; };
    if (kind == 1)
      any() = -32768;
    if (kind == 2 && count > 2) {
      std::fill(taps.begin(), taps.end(), Tap{0});
      taps.front() = taps.back() = random.pick<int16_t>({-32767, 32767});
      taps[static_cast<size_t>(count / 2)] = random.pick<int16_t>({-2, -1, 0, 1, 2});
    }
  }
  if (random.oneIn(2))
    for (size_t j = 0; j < taps.size() / 2; ++j) taps[taps.size() - 1 - j] = taps[j];
  return taps;
}

/// A read-only copy of a vector, naturally aligned.
template <class Value>
GuardedBlock guardedCopy(Random& random, std::string name, const std::vector<Value>& values) {
  const int alignment = static_cast<int>(sizeof(Value));
  GuardedBlock block(std::move(name), values.size() * sizeof(Value), random.below(64 / alignment) * alignment);
  std::memcpy(block.data(), values.data(), block.size());
  block.protectReadOnly();
  return block;
}

/// One sample a channel.
template <class Sample>
GuardedBlock drawBorderValue(Random& random, int channels, Values values) {
  std::vector<BitsOf<Sample>> samples;
  for (int c = 0; c < channels; ++c) samples.push_back(drawBits<Sample>(random, values));
  return guardedCopy(random, "borderValue", samples);
}

/// An image at any address and step; of those without margins one in three has all rows on 64-byte boundaries.
template <class Sample>
TestImage<Sample> drawRows(Random& random, std::string name, OrvSize size, const DrawOptions& options) {
  const bool hasMargins = options.margins.left + options.margins.right > 0;
  if (hasMargins || !random.oneIn(3))
    return drawImage<Sample>(random, std::move(name), size, options);
  const int rowBytes = size.width * options.channels * static_cast<int>(sizeof(Sample));
  TestImage<Sample> image(std::move(name), {.size = size,
                                            .channels = options.channels,
                                            .stepPadding = (64 - rowBytes % 64) % 64,
                                            .placement = {Placement::Fence::before, 0}});
  image.fill(random, options.values);
  return image;
}

/// The rows of an image in this order.
template <class Sample>
std::vector<Sample*> rowsInOrder(const TestImage<Sample>& image, const std::vector<int>& order) {
  std::vector<Sample*> rows;
  for (int y : order) rows.push_back(addressOf(image.data(), image.step(), 0, y));
  return rows;
}

/// 0 to count - 1, shuffled.
inline std::vector<int> drawOrder(Random& random, int count) {
  std::vector<int> order;
  for (int i = 0; i < count; ++i) order.push_back(i);
  for (int i = count - 1; i > 0; --i)
    std::swap(order[static_cast<size_t>(i)], order[static_cast<size_t>(random.below(i + 1))]);
  return order;
}

using SizeQuery = OrvStatus(OrvSize roi, int kernelSize, int32_t* bufferSize);

/// A buffer of exactly the queried size at any address, full of rubbish.
inline GuardedBlock drawBuffer(Random& random, SizeQuery* query, OrvSize roi, int kernelSize) {
  int32_t size = 0;
  EXPECT_EQ(orvStsOk, query(roi, kernelSize, &size));
  GuardedBlock buffer("buffer", size, random);
  buffer.fill(random);
  return buffer;
}

/// The status and the result image of a member's run.
void addRun(Checksum& checksum, const auto& member, const auto& images) {
  checksum.add(member.run(images.call()));
  checksum.add(images.dst);
}

/// The photograph for one channel or three.
template <class Sample>
TestImage<Sample> memberPhotograph(int channels) {
  return photographImage<Sample>(channels == 1 ? "camera.png" : "chelsea.png", channels);
}

/// Samples for an image that is filtered: NaNs and infinities only now and then.
template <class Sample>
Values drawFilterValues(Random& random) {
  if (std::is_floating_point_v<Sample>)
    return random.oneIn(6) ? Values::anything : Values::ordinary;
  return random.pick({Values::few, Values::ordinary, Values::finite});
}

}  // namespace orvtest
