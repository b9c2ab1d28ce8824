// Compares two colour frames and reports the rectangle in which they differ: the first half of a motion detector.
// The frames are drawn here; a program would take them from its camera.
//
//   c++ -std=c++20 frame_difference.cpp $(pkg-config --cflags --libs orvcv)
#include <orvcv.h>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

struct ColourImage {
  OrvSize size;
  std::vector<uint8_t> samples = std::vector<uint8_t>(static_cast<size_t>(size.width * size.height * 3));

  int step() const { return size.width * 3; }
  uint8_t* at(int x, int y) { return samples.data() + y * step() + x * 3; }
};

/// A sunset with a dark square in front of it.
ColourImage drawFrame(OrvSize size, OrvPoint square) {
  constexpr int side = 40;
  ColourImage image{size};
  for (int y = 0; y < size.height; ++y)
    for (int x = 0; x < size.width; ++x) {
      const bool inside = x >= square.x && x < square.x + side && y >= square.y && y < square.y + side;
      uint8_t* pixel = image.at(x, y);
      pixel[0] = static_cast<uint8_t>(inside ? 20 : 200);
      pixel[1] = static_cast<uint8_t>(inside ? 20 : 100 + y * 100 / size.height);
      pixel[2] = static_cast<uint8_t>(inside ? 30 : 160 - y * 100 / size.height);
    }
  return image;
}

}  // namespace

int main() {
  constexpr OrvSize size = {480, 270};
  const ColourImage before = drawFrame(size, {100, 80}), after = drawFrame(size, {112, 90});
  ColourImage difference{size};
  if (OrvStatus status = orviAbsDiff_8u_C3R(before.samples.data(), before.step(), after.samples.data(), after.step(),
                                            difference.samples.data(), difference.step(), size)) {
    std::fprintf(stderr, "the library answered status %d\n", status);
    return 1;
  }

  constexpr uint8_t threshold = 32;
  OrvPoint first = {size.width, size.height}, last = {-1, -1};
  for (int y = 0; y < size.height; ++y)
    for (int x = 0; x < size.width; ++x)
      if (const uint8_t* pixel = difference.at(x, y); *std::max_element(pixel, pixel + 3) >= threshold) {
        first = {std::min(first.x, x), std::min(first.y, y)};
        last = {std::max(last.x, x), std::max(last.y, y)};
      }
  std::printf("the frames differ from (%d, %d) to (%d, %d)\n", first.x, first.y, last.x, last.y);
  return first.x == 100 && first.y == 80 && last.x == 151 && last.y == 129 ? 0 : 1;
}
