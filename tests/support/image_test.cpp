#include "support/image.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include "support/cases.h"

namespace orvtest {
namespace {

TestImage<uint16_t> image3x2(int padding = 6) {
  TestImage<uint16_t> image("dst", {.size = {3, 2},
                                    .channels = 3,
                                    .stepPadding = padding,
                                    .margins = {.top = 1, .bottom = 2, .left = 4, .right = 5},
                                    .placement = {Placement::Fence::after, 3}});
  image.fillWith(7);
  return image;
}

TEST(TestImage, LiesWhereItsShapeSays) {
  const TestImage<uint16_t> image = image3x2();
  EXPECT_EQ((4 + 3 + 5) * 3 * 2 + 6, image.step());
  const uint8_t* first = reinterpret_cast<const uint8_t*>(image.data());
  EXPECT_EQ(image.memory().data() + image.step() + 4 * 3 * 2, first);
  EXPECT_EQ(static_cast<size_t>(image.step() * 4 + 72), image.memory().size());
  image.setPixel(-4, -1, 0, 1000);
  EXPECT_EQ(1000, load(reinterpret_cast<const uint16_t*>(image.memory().data())));
  image.setPixel(3 + 4, 2 + 1, 2, 2000);
  EXPECT_EQ(2000, load(reinterpret_cast<const uint16_t*>(image.memory().data() + image.memory().size() - 2)));
  image.setPixel(1, 1, 2, 3000);
  EXPECT_EQ(3000, image.pixel(1, 1, 2));
  EXPECT_EQ(3000, load(reinterpret_cast<const uint16_t*>(first + image.step() + (1 * 3 + 2) * 2)));
}

TEST(TestImage, TwinsAreTheSame) {
  const TestImage<uint16_t> image = image3x2();
  const TestImage<uint16_t> twin(image);
  image.expectSame(twin);
}

TEST(TestImage, TellsOfAnyDifference) {
  const TestImage<uint16_t> image = image3x2();
  const TestImage<uint16_t> twin(image);
  image.setPixel(2, 1, 1, 9);
  EXPECT_NONFATAL_FAILURE(image.expectSame(twin), "x 2, y 1, channel 1: got 9 (0x0009), want 7 (0x0007)");
  image.setPixel(2, 1, 1, 7);
  image.setPixel(-1, 0, 0, 9);
  EXPECT_NONFATAL_FAILURE(image.expectSame(twin), "x -1, y 0, channel 0 (in the margin, not to be written)");
  image.setPixel(-1, 0, 0, 7);
  // Between two rows, and behind the last.
  image.memory().data()[image.step() - 1] ^= 1;
  EXPECT_NONFATAL_FAILURE(image.expectSame(twin), "between or around the rows");
  image.memory().data()[image.step() - 1] ^= 1;
  image.memory().data()[image.memory().size()] ^= 1;
  EXPECT_NONFATAL_FAILURE(image.expectSame(twin), "1 bytes past the last of dst");
  image.memory().data()[image.memory().size()] ^= 1;
  image.expectSame(twin);
}

TEST(TestImage, TellsZerosAndNansApart) {
  TestImage<float> image("dst", {.size = {2, 1}});
  image.setPixel(0, 0, 0.0f);
  image.setBits(1, 0, 0, 0x7f800001u);
  const TestImage<float> twin(image);
  image.expectSame(twin);
  image.setPixel(0, 0, -0.0f);
  EXPECT_NONFATAL_FAILURE(image.expectSame(twin), "got -0 (0x80000000), want 0 (0x00000000)");
  image.setPixel(0, 0, 0.0f);
  image.setBits(1, 0, 0, 0x7fc00001u);
  EXPECT_NONFATAL_FAILURE(image.expectSame(twin), "(0x7fc00001)");
}

TEST(TestImage, KeepsSignallingNans) {
  TestImage<float> image("dst", {.size = {1, 1}});
  image.setBits(0, 0, 0, 0x7f800001u);
  const float value = image.pixel(0, 0);
  image.setPixel(0, 0, value);
  EXPECT_EQ(0x7f800001u, image.bits(0, 0));
}

TEST(TestImage, DrawnImagesAreReproducible) {
  forCases("drawn", 50, [](Random& random) {
    Random copy = random;
    const OrvSize size = drawSize(random);
    drawSize(copy);
    const DrawOptions options{.channels = 3, .margins = {.top = 2, .bottom = 0, .left = 0, .right = 1}};
    const auto first = drawImage<float>(random, "first", size, options);
    const auto second = drawImage<float>(copy, "second", size, options);
    EXPECT_EQ(first.step(), second.step());
    first.expectSame(second);
  });
}

}  // namespace
}  // namespace orvtest
