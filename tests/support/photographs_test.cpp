#include "support/photographs.h"

#include <gtest/gtest.h>

#include "support/checksums.h"

namespace orvtest {
namespace {

TEST(Photographs, HaveTheirSizes) {
  const auto expectSize = [](const char* file, int width, int height) {
    EXPECT_EQ(width, photograph(file).width) << file;
    EXPECT_EQ(height, photograph(file).height) << file;
    EXPECT_EQ(static_cast<size_t>(3 * width * height), photograph(file).colour.size()) << file;
    EXPECT_EQ(static_cast<size_t>(width * height), photograph(file).grey.size()) << file;
  };
  expectSize("camera.png", 512, 512);
  expectSize("chelsea.png", 451, 300);
  expectSize("astronaut.png", 512, 512);
  expectSize("rocket.jpg", 640, 427);
  expectSize("text.png", 448, 172);
}

// What other checksums build upon: if this one differs, the reader does, not the library.
TEST(Photographs, DecodeToTheSameBytesEverywhere) {
  Checksum checksum;
  for (const char* file : {"camera.png", "rocket.jpg"})
    checksum.addBytes(photograph(file).colour.data(), photograph(file).colour.size());
  EXPECT_EQ(2262351826233571896u, checksum.value());
}

TEST(Photographs, ComeInSeveralTypes) {
  const TestImage<uint8_t> bytes = photographImage<uint8_t>("chelsea.png", 3);
  const TestImage<uint16_t> words = photographImage<uint16_t>("chelsea.png", 3);
  const TestImage<int16_t> signedWords = photographImage<int16_t>("chelsea.png", 3);
  const TestImage<float> floats = photographImage<float>("chelsea.png", 3);
  bytes.forRegion([&](int x, int y, int channel) {
    const int value = bytes.pixel(x, y, channel);
    ASSERT_EQ(value * 257, words.pixel(x, y, channel));
    ASSERT_EQ(value * 257 - 32768, signedWords.pixel(x, y, channel));
    ASSERT_EQ(static_cast<float>(value), floats.pixel(x, y, channel));
  });
  // Grey of a grey photograph is the photograph.
  const TestImage<uint8_t> camera = photographImage<uint8_t>("camera.png");
  EXPECT_EQ(photograph("camera.png").colour[3 * (512 * 100 + 50)], camera.pixel(50, 100));
}

}  // namespace
}  // namespace orvtest
