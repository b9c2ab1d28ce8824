// The photographs of photos/ as test images.
#pragma once

#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

#include "support/image.h"

namespace orvtest {

struct Photograph {
  int width, height;
  std::vector<uint8_t> colour;  ///< three interleaved channels
  std::vector<uint8_t> grey;
};

/// Loads a file of photos/ once: camera.png, chelsea.png, astronaut.png, rocket.jpg, text.png.
const Photograph& photograph(const std::string& file);

/// 8u as it is, 16u over its whole range, 16s likewise, floats 0 to 255.
template <class Sample>
Sample photographSample(uint8_t value) {
  if constexpr (std::is_same_v<Sample, uint16_t>)
    return static_cast<uint16_t>(value * 257);
  else if constexpr (std::is_same_v<Sample, int16_t>)
    return static_cast<int16_t>(value * 257 - 32768);
  else
    return static_cast<Sample>(value);
}

/// One channel grey, three channels colour.
template <class Sample>
TestImage<Sample> photographImage(const std::string& file, int channels = 1) {
  const Photograph& photo = photograph(file);
  const std::vector<uint8_t>& samples = channels == 1 ? photo.grey : photo.colour;
  TestImage<Sample> image(file, {.size = {photo.width, photo.height}, .channels = channels});
  size_t next = 0;
  image.forRegion(
      [&](int x, int y, int channel) { image.setPixel(x, y, channel, photographSample<Sample>(samples[next++])); });
  return image;
}

}  // namespace orvtest
