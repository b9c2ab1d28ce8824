// Images for tests: any geometry, step and address, in guarded memory, with margins where a border lies in memory.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <iomanip>
#include <string>

#include "support/guarded.h"

namespace orvtest {

/// Pixels around the region that exist in memory.
struct Margins {
  int top = 0, bottom = 0, left = 0, right = 0;
};

struct Shape {
  OrvSize size;
  int channels = 1;
  int stepPadding = 0;  ///< bytes between the end of a row, margins included, and the start of the next
  Margins margins{};
  Placement placement{};
};

/// A region of interest in guarded memory. The last byte of the last row's last pixel (of its margin, if there is one)
/// is the last byte of the memory; what lies between the rows are canaries.
template <class Sample>
class TestImage {
public:
  using Bits = BitsOf<Sample>;

  TestImage(std::string name, const Shape& shape)
      : shape_(shape), memory_(std::move(name), memorySize(shape), shape.placement) {}

  OrvSize size() const { return shape_.size; }
  int width() const { return shape_.size.width; }
  int height() const { return shape_.size.height; }
  int channels() const { return shape_.channels; }
  const Margins& margins() const { return shape_.margins; }
  int step() const { return rowBytes(shape_) + shape_.stepPadding; }
  const GuardedMemory& memory() const { return memory_; }

  /// What the library is given: the first pixel of the region.
  Sample* data() const { return at(0, 0, 0); }

  /// Coordinates may lie in the margins.
  [[gnu::always_inline]] Sample pixel(int x, int y, int channel = 0) const { return load(at(x, y, channel)); }
  void setPixel(int x, int y, Sample value) const { store(at(x, y, 0), value); }
  void setPixel(int x, int y, int channel, Sample value) const { store(at(x, y, channel), value); }
  Bits bits(int x, int y, int channel = 0) const { return load(reinterpret_cast<const Bits*>(at(x, y, channel))); }
  void setBits(int x, int y, int channel, Bits bits) const { store(reinterpret_cast<Bits*>(at(x, y, channel)), bits); }

  /// Calls visit(x, y, channel) for the region and its margins, row by row.
  template <class Visit>
  void forAll(Visit visit) const {
    for (int y = -shape_.margins.top; y < height() + shape_.margins.bottom; ++y)
      for (int x = -shape_.margins.left; x < width() + shape_.margins.right; ++x)
        for (int channel = 0; channel < channels(); ++channel) visit(x, y, channel);
  }
  /// The same without the margins.
  template <class Visit>
  void forRegion(Visit visit) const {
    for (int y = 0; y < height(); ++y)
      for (int x = 0; x < width(); ++x)
        for (int channel = 0; channel < channels(); ++channel) visit(x, y, channel);
  }

  /// Region and margins.
  void fill(Random& random, Values values) const {
    forAll([&](int x, int y, int channel) { setBits(x, y, channel, drawBits<Sample>(random, values)); });
  }
  void fillWith(Sample value) const {
    forAll([&](int x, int y, int channel) { setPixel(x, y, channel, value); });
  }

  void protectReadOnly() const { memory_.protectReadOnly(); }
  void protectWritable() const { memory_.protectWritable(); }

  /// Fails the test unless the pages of both images, twins by copy construction, are the same bit for bit: pixels,
  /// margins and canaries.
  void expectSame(const TestImage& expected) const {
    if (std::memcmp(memory_.pages(), expected.memory_.pages(), memory_.pagesSize()) == 0)
      return;
    int differences = 0;
    int firstX = 0, firstY = 0, firstChannel = 0;
    forAll([&](int x, int y, int channel) {
      if (bits(x, y, channel) != expected.bits(x, y, channel) && differences++ == 0)
        firstX = x, firstY = y, firstChannel = channel;
    });
    if (differences == 0) {
      size_t byte = 0;
      while (memory_.pages()[byte] == expected.memory_.pages()[byte]) ++byte;
      ADD_FAILURE() << describe() << ": a byte between or around the rows was written, "
                    << GuardedMemory::describe(memory_.pages() + byte);
      return;
    }
    const auto show = [&](const TestImage& image) {
      testing::Message message;
      message << +image.pixel(firstX, firstY, firstChannel) << " (0x" << std::hex << std::setfill('0')
              << std::setw(2 * sizeof(Sample)) << +image.bits(firstX, firstY, firstChannel) << ")";
      return message.GetString();
    };
    const bool inside = firstX >= 0 && firstX < width() && firstY >= 0 && firstY < height();
    ADD_FAILURE() << describe() << ": " << differences << " samples differ, the first at x " << firstX << ", y "
                  << firstY << ", channel " << firstChannel << (inside ? "" : " (in the margin, not to be written)")
                  << ": got " << show(*this) << ", want " << show(expected);
  }

  /// "dst 17x3 c1, step 72, address mod 64 = 5".
  std::string describe() const {
    testing::Message message;
    message << memory_.name() << " " << width() << "x" << height() << " c" << channels() << ", step " << step()
            << ", address mod 64 = " << reinterpret_cast<uintptr_t>(data()) % 64;
    return message.GetString();
  }

private:
  static int rowBytes(const Shape& shape) {
    return (shape.margins.left + shape.size.width + shape.margins.right) * shape.channels *
           static_cast<int>(sizeof(Sample));
  }
  static size_t memorySize(const Shape& shape) {
    const int rows = shape.margins.top + shape.size.height + shape.margins.bottom;
    return static_cast<size_t>((rows - 1) * (rowBytes(shape) + shape.stepPadding) + rowBytes(shape));
  }
  Sample* at(int x, int y, int channel) const {
    const int pixel = x + shape_.margins.left;
    return addressOf(reinterpret_cast<Sample*>(memory_.data()), step(), pixel * channels() + channel,
                     y + shape_.margins.top);
  }

  Shape shape_;
  GuardedMemory memory_;
};

struct DrawOptions {
  int channels = 1;
  Values values = Values::anything;
  Margins margins{};
};

/// An image of the given size with drawn step, address and contents.
template <class Sample>
TestImage<Sample> drawImage(Random& random, std::string name, OrvSize size, const DrawOptions& options = {}) {
  const int sampleBytes = sizeof(Sample);
  const Margins& margins = options.margins;
  const int rowBytes = (margins.left + size.width + margins.right) * options.channels * sampleBytes;
  TestImage<Sample> image(std::move(name), {.size = size,
                                            .channels = options.channels,
                                            .stepPadding = drawStepPadding(random, rowBytes, sampleBytes),
                                            .margins = margins,
                                            .placement = drawPlacement(random)});
  image.fill(random, options.values);
  return image;
}

/// A mask of any kind.
inline TestImage<uint8_t> drawMask(Random& random, OrvSize size) {
  TestImage<uint8_t> mask = drawImage<uint8_t>(random, "mask", size);
  MaskBytes bytes(random, drawMaskKind(random));
  mask.forRegion([&](int x, int y, int) { mask.setPixel(x, y, bytes.next()); });
  return mask;
}

}  // namespace orvtest
