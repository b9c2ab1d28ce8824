// Images in memory, and image files.
#pragma once

#include <orvcv.h>

#include <string>
#include <vector>

#include "arguments.h"

namespace tool {

/// Interleaved samples, rows without gaps.
template <class Sample>
struct Image {
  int width, height, channels;
  std::vector<Sample> samples;

  Image(OrvSize size, int channelCount)
      : width(size.width),
        height(size.height),
        channels(channelCount),
        samples(static_cast<size_t>(width) * static_cast<size_t>(height) * static_cast<size_t>(channels)) {}

  OrvSize size() const { return {width, height}; }
  /// The same memory as an image of one channel, for operations that don't tell channels apart.
  OrvSize sizeInSamples() const { return {width * channels, height}; }
  int step() const { return width * channels * static_cast<int>(sizeof(Sample)); }
  Sample* data() { return samples.data(); }
  const Sample* data() const { return samples.data(); }
};

using Picture = Image<uint8_t>;
using FloatImage = Image<float>;

/// How many channels a picture gets in memory; an alpha channel is always dropped.
enum class Channels { asInFile = 0, gray = 1, colour = 3 };

/// Reads a PNG, JPEG or binary PNM file, 8 bits a sample. Throws UserError.
Picture readPicture(const std::string& path, Channels channels = Channels::asInFile);

/// Reads two or more pictures of one size. If some are in colour, all become colour.
std::vector<Picture> readAlike(const std::vector<std::string>& paths);

/// The mask that the option --mask names, a gray picture of the given size; without the option every pixel is selected.
Picture readMask(const Arguments& arguments, OrvSize size);

/// Writes the file under another name first, so that it appears whole or not at all. Throws UserError.
void writePng(const std::string& path, const Picture& picture);

/// The file name that the option --output gives, checked before any work is done.
std::string outputPath(const Arguments& arguments);

/// Rounded to nearest and cut to 0..255.
Picture toPicture(const FloatImage& image, float scale = 1.0f, float offset = 0.0f);

std::string shownSize(OrvSize size);

inline constexpr Option outputOption{"output", "OUT.png", "the picture to write", 'o'};
inline constexpr Option maskOption{"mask", "MASK", "picture whose nonzero pixels select; of the images' size", 'm'};

}  // namespace tool
