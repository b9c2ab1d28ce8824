// Rows extended beyond their ends, against the index mapping pixel by pixel.
#include "frame/row_extension.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <string>
#include <vector>

#include "frame/border_model.h"
#include "support/cases.h"
#include "support/image.h"

namespace orvtest {
namespace {

constexpr int reach = 40;  // how far an operation looks beyond the row

int drawWord(Random& random) {
  if (random.oneIn(8))
    return orvBorderMemAll;
  const int kind = random.pick<int>({orvBorderReplicate, orvBorderMirror, orvBorderConstant});
  return kind | (random.below(16) << 4);
}

/// A row whose neighbours exist only where the word says so: everything else is an inaccessible page or a canary.
template <class Sample, int channels>
struct ExtendedRow {
  int word;
  TestImage<Sample> row;
  GuardedBlock borderValue;

  ExtendedRow(Random& random, int width)
      : word(drawWord(random)),
        row(drawImage<Sample>(random, "row", {width, 1},
                              {.channels = channels,
                               .margins = {.left = (word & orvBorderMemLeft) != 0 ? reach : 0,
                                           .right = (word & orvBorderMemRight) != 0 ? reach : 0}})),
        borderValue("borderValue", channels * static_cast<int>(sizeof(Sample)), random) {
    borderValue.fill(random);
  }

  orv::RowExtension<Sample, channels> extension() const {
    const bool constant = word % 16 == orvBorderConstant;
    return {row.data(), row.width(), orv::horizontalBorder(word), constant ? borderValue.as<Sample>() : nullptr};
  }

  /// The pixels first .. first + count - 1 of the extended row.
  std::vector<uint32_t> expected(int first, int count) const {
    std::vector<uint32_t> pixels;
    for (int x = first; x < first + count; ++x) {
      const model::AxisIndex source = model::mapColumn(x, row.width(), word);
      for (int channel = 0; channel < channels; ++channel)
        pixels.push_back(floatBits(source.constant ? load(borderValue.as<BitsOf<Sample>>() + channel)
                                                   : row.bits(source.index, 0, channel)));
    }
    return pixels;
  }

private:
  /// Floats stay as they are, signalling NaNs too.
  static uint32_t floatBits(BitsOf<Sample> bits) {
    if constexpr (std::is_floating_point_v<Sample>)
      return bits;
    else
      return std::bit_cast<uint32_t>(static_cast<float>(std::bit_cast<Sample>(bits)));
  }
};

template <int channels>
class Line {
public:
  explicit Line(int count) : count_(count), samples_("line", count * pixelBytes) { samples_.fill(0xA5); }

  float* data() const { return samples_.as<float>(); }

  void expectSame(const std::vector<uint32_t>& expected) const {
    const auto* bits = samples_.as<uint32_t>();
    for (int i = 0; i < count_ * channels; ++i)
      ASSERT_EQ(expected[static_cast<size_t>(i)], bits[i]) << "pixel " << i / channels << ", channel " << i % channels;
  }

private:
  static constexpr int pixelBytes = channels * static_cast<int>(sizeof(float));
  int count_;
  GuardedBlock samples_;
};

template <class Sample, int channels>
void expectModel(const std::string& name) {
  forCases(name, 150, [](Random& random) {
    const int width = random.oneIn(2) ? random.between(1, 5) : random.between(1, 70);
    const ExtendedRow<Sample, channels> row(random, width);
    row.row.protectReadOnly();
    row.borderValue.protectReadOnly();
    SCOPED_TRACE(testing::Message() << "word " << row.word << ", width " << width);

    // Any stretch: before, inside, after, across either end or both.
    const int first = random.between(-reach, width + reach - 1);
    const int count = random.between(1, std::min(width + reach - first, 2 * reach + width));
    const Line<channels> stretch(count);
    row.extension().copy(stretch.data(), first, count);
    stretch.expectSame(row.expected(first, count));

    const int before = random.between(0, reach), after = random.between(0, reach);
    const Line<channels> all(before + width + after);
    row.extension().copyAll(all.data(), before, after);
    all.expectSame(row.expected(-before, before + width + after));
  });
}

#define ROW_EXTENSION(Sample)                               \
  TEST(RowExtension, Of_##Sample) {                         \
    expectModel<Sample, 1>("row extension " #Sample " C1"); \
    expectModel<Sample, 3>("row extension " #Sample " C3"); \
    expectModel<Sample, 4>("row extension " #Sample " C4"); \
  }

ROW_EXTENSION(uint8_t)
ROW_EXTENSION(uint16_t)
ROW_EXTENSION(int16_t)
ROW_EXTENSION(float)

TEST(RowExtension, NothingIsWrittenForNoPixels) {
  const uint8_t row[] = {1, 2, 3};
  const orv::RowExtension<uint8_t, 1> extension{row, 3, orv::horizontalBorder(orvBorderMirror), nullptr};
  float untouched = 77;
  extension.copy(&untouched, 1, 0);
  EXPECT_EQ(77, untouched);
}

/// A row whose kernel reaches beyond neither end has no use for a border value.
TEST(RowExtension, NoBorderValueIsReadForNoPixels) {
  const uint8_t row[] = {1, 2, 3};
  std::vector<float> line(3);
  orv::RowExtension<uint8_t, 1>{row, 3, orv::horizontalBorder(orvBorderConstant), nullptr}.copyAll(line.data(), 0, 0);
  EXPECT_EQ((std::vector<float>{1, 2, 3}), line);
}

TEST(RowExtension, MirrorByHand) {
  const uint8_t row[] = {1, 2, 3};
  std::vector<float> line(9);
  orv::RowExtension<uint8_t, 1>{row, 3, orv::horizontalBorder(orvBorderMirror), nullptr}.copy(line.data(), -3, 9);
  EXPECT_EQ((std::vector<float>{2, 3, 2, 1, 2, 3, 2, 1, 2}), line);
}

TEST(RowExtension, BytesBecomeFloatsByHand) {
  const uint8_t row[] = {10, 20, 30};
  const uint8_t value = 7;
  const auto floats = [&](int word) {
    std::vector<float> line(7);
    orv::RowExtension<uint8_t, 1>{row, 3, orv::horizontalBorder(word), &value}.copy(line.data(), -2, 7);
    return line;
  };
  EXPECT_EQ((std::vector<float>{30, 20, 10, 20, 30, 20, 10}), floats(orvBorderMirror));
  EXPECT_EQ((std::vector<float>{10, 10, 10, 20, 30, 30, 30}), floats(orvBorderReplicate));
  EXPECT_EQ((std::vector<float>{7, 7, 10, 20, 30, 7, 7}), floats(orvBorderConstant));
}

}  // namespace
}  // namespace orvtest
