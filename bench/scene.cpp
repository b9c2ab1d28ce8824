#include "scene.h"

#include <cstdio>
#include <string>

#define STB_IMAGE_IMPLEMENTATION
#define STBI_ONLY_PNG
#define STBI_NO_SIMD
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wold-style-cast"
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wsign-conversion"
#pragma GCC diagnostic ignored "-Wcast-qual"
#pragma GCC diagnostic ignored "-Wundef"
#pragma GCC diagnostic ignored "-Wshadow"
#include <stb/stb_image.h>
#pragma GCC diagnostic pop

namespace bench {
namespace {

struct Photograph {
  int width, height;
  std::vector<uint8_t> samples;
};

const Photograph& load(int channels) {
  static Photograph loaded[5];
  Photograph& photo = loaded[channels];
  if (photo.samples.empty()) {
    const std::string path = std::string(ORV_PHOTOGRAPHS) + (channels == 1 ? "/camera.png" : "/astronaut.png");
    int inFile = 0;
    stbi_uc* const data = stbi_load(path.c_str(), &photo.width, &photo.height, &inFile, channels);
    if (data == nullptr) {
      std::fprintf(stderr, "can't read %s: %s\n", path.c_str(), stbi_failure_reason());
      std::exit(2);
    }
    photo.samples.assign(data, data + photo.width * photo.height * channels);
    stbi_image_free(data);
  }
  return photo;
}

int mirrored(int i, int n) {
  const int phase = i % (2 * n);
  return phase < n ? phase : 2 * n - 1 - phase;
}

template <class Sample>
Sample converted(uint8_t sample);
template <>
uint8_t converted(uint8_t sample) {
  return sample;
}
template <>
uint16_t converted(uint8_t sample) {
  return static_cast<uint16_t>(sample * 257);
}
template <>
int16_t converted(uint8_t sample) {
  return static_cast<int16_t>((sample - 128) * 256);
}
template <>
float converted(uint8_t sample) {
  return sample;
}

}  // namespace

template <class Sample>
Image<Sample> photograph(OrvSize size, int channels, int shift) {
  const Photograph& photo = load(channels);
  Image<Sample> image(size.width, size.height, channels);
  for (int y = 0; y < size.height; ++y) {
    const int row = mirrored(y + shift, photo.height) * photo.width;
    for (int x = 0; x < size.width; ++x) {
      const int pixel = row + mirrored(x + 2 * shift, photo.width);
      for (int c = 0; c < channels; ++c)
        image.at(x, y, c) = converted<Sample>(photo.samples[static_cast<size_t>(pixel * channels + c)]);
    }
  }
  return image;
}

template Image<uint8_t> photograph(OrvSize, int, int);
template Image<uint16_t> photograph(OrvSize, int, int);
template Image<int16_t> photograph(OrvSize, int, int);
template Image<float> photograph(OrvSize, int, int);

Image<uint8_t> photographMask(OrvSize size) {
  Image<uint8_t> mask = photograph<uint8_t>(size, 1, 9);
  for (int y = 0; y < size.height; ++y)
    for (int x = 0; x < size.width; ++x) mask.at(x, y) = mask.at(x, y) > 127 ? 255 : 0;
  return mask;
}

}  // namespace bench
