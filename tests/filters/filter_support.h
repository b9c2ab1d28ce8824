// What the tests of the filters with a border word share.
#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

#include "filters/gaussian_model.h"
#include "support/image.h"

namespace orvtest {

/// Every border word that the filters accept: three kinds with all combinations of sides in memory, and 240.
inline std::vector<int> filterBorderWords() {
  std::vector<int> words = {240};
  for (int kind : {1, 3, 6})
    for (int sides = 0; sides < 256; sides += 16) words.push_back(kind | sides);
  return words;
}

inline int drawFilterWord(Random& random) {
  static const std::vector<int> words = filterBorderWords();
  return words[static_cast<size_t>(random.below(static_cast<int>(words.size())))];
}

/// Real pixels on the sides that the word says are in memory, and on no other.
inline Margins marginsOf(int word, int reachX, int reachY) {
  return {word & 0x10 ? reachY : 0, word & 0x20 ? reachY : 0, word & 0x40 ? reachX : 0, word & 0x80 ? reachX : 0};
}

/// Steps of any number of bytes, whatever the sample.
template <class Sample>
TestImage<Sample> drawImageOfAnyStep(Random& random, std::string name, OrvSize size, const DrawOptions& options = {}) {
  const Margins& margins = options.margins;
  const int rowBytes =
      (margins.left + size.width + margins.right) * options.channels * static_cast<int>(sizeof(Sample));
  const int padding = drawStepPadding(random, rowBytes, 1);
  TestImage<Sample> image(std::move(name), {.size = size,
                                            .channels = options.channels,
                                            .stepPadding = padding,
                                            .margins = margins,
                                            .placement = drawPlacement(random)});
  image.fill(random, options.values);
  return image;
}

template <class Sample>
model::ImageView<Sample> viewOf(const TestImage<Sample>& image) {
  return {image.data(), image.step(), image.width(), image.height(), image.channels()};
}

template <class Sample>
Sample drawSample(Random& random, Values values) {
  return std::bit_cast<Sample>(drawBits<Sample>(random, values));
}

/// A NaN may be any NaN: all become one.
template <class Sample>
void makeNansAlike(const TestImage<Sample>& image) {
  if constexpr (std::is_floating_point_v<Sample>)
    image.forRegion([&](int x, int y, int channel) {
      if (isNan(image.pixel(x, y, channel)))
        image.setBits(x, y, channel, infinityBits<Sample> | quietBit<Sample>);
    });
}

template <class Sample>
void expectSameButNans(const TestImage<Sample>& expected, const TestImage<Sample>& got) {
  makeNansAlike(expected);
  makeNansAlike(got);
  got.expectSame(expected);
}

/// The pixels of `got`, which may be any part of a larger result, against those of `expected`.
template <class Sample>
void expectSamePixels(const TestImage<Sample>& expected, const TestImage<Sample>& got) {
  int differences = 0, lastX = 0, lastY = 0;
  expected.forRegion([&](int x, int y, int channel) {
    if (expected.bits(x, y, channel) != got.bits(x, y, channel))
      ++differences, lastX = x, lastY = y;
  });
  EXPECT_EQ(0, differences) << got.describe() << ", the last at x " << lastX << ", y " << lastY;
}

}  // namespace orvtest
