// orvcv stats and orvcv compare: numbers of one image, and of the difference of two, under a mask.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <tuple>

#include "commands.h"
#include "image_io.h"

namespace tool {
namespace {

/// Calls the members that measure one channel of pictures under a mask.
class ChannelMeter {
public:
  ChannelMeter(const Picture& mask, int channel, LibraryCalls& library)
      : mask_(mask), channel_(channel), library_(library) {}

  /// `one` is the member for gray pictures, `three` the one that takes a channel of interest.
  template <class One, class Three, class... Results, class... Pictures>
  OrvStatus measure(std::string_view function, One one, Three three, const std::tuple<Results*...>& results,
                    const Pictures&... pictures) const {
    const auto sources = std::tuple_cat(std::tuple(pictures.data(), pictures.step())...,
                                        std::tuple(mask_.data(), mask_.step(), mask_.size()));
    const bool gray = ((pictures.channels == 1) && ...);
    return library_.run(function, mask_.size(), [&] {
      return gray ? std::apply(one, std::tuple_cat(sources, results))
                  : std::apply(three, std::tuple_cat(sources, std::tuple(channel_), results));
    });
  }

private:
  const Picture& mask_;
  int channel_;
  LibraryCalls& library_;
};

// A name and the two members that bear it.
#define MEMBERS(operation) #operation "_8u", operation##_8u_C1MR, operation##_8u_C3CMR

struct Norms {
  double l1 = 0, l2 = 0, largest = 0;
};

struct Interval {
  int first, last;
};

/// The channels to measure, counted from 1: all, or the one that the option names.
Interval channelsOf(const Picture& picture, const Arguments& arguments) {
  const int channel = arguments.integer("channel", 0, {1, static_cast<double>(picture.channels)});
  return channel == 0 ? Interval{1, picture.channels} : Interval{channel, channel};
}

int64_t countSelected(const Picture& mask) {
  const auto count = std::count_if(mask.samples.begin(), mask.samples.end(), [](uint8_t byte) { return byte != 0; });
  if (count == 0)
    throw UserError("the mask selects no pixel");
  return count;
}

void printStatistics(const Picture& picture, const ChannelMeter& meter) {
  double mean = 0, deviation = 0;
  float least = 0, largest = 0;
  OrvPoint leastAt = {}, largestAt = {};
  Norms norms;
  meter.measure(MEMBERS(orviMean_StdDev), std::tuple(&mean, &deviation), picture);
  meter.measure(MEMBERS(orviMinMaxIndx), std::tuple(&least, &largest, &leastAt, &largestAt), picture);
  meter.measure(MEMBERS(orviNorm_L1), std::tuple(&norms.l1), picture);
  meter.measure(MEMBERS(orviNorm_L2), std::tuple(&norms.l2), picture);
  meter.measure(MEMBERS(orviNorm_Inf), std::tuple(&norms.largest), picture);
  std::printf("%9.3f  %9.3f  %4.0f at (%d, %d)  %4.0f at (%d, %d)  L1 %.0f  L2 %.3f  Inf %.0f\n", mean, deviation,
              least, leastAt.x, leastAt.y, largest, largestAt.x, largestAt.y, norms.l1, norms.l2, norms.largest);
}

void runStats(const Arguments& arguments, LibraryCalls& library) {
  const std::string& path = arguments.operands().front();
  const Picture picture = readPicture(path);
  const Picture mask = readMask(arguments, picture.size());
  const Interval channels = channelsOf(picture, arguments);
  std::printf("%s: %s, %lld pixels selected\n", path.c_str(), shownSize(picture.size()).c_str(),
              static_cast<long long>(countSelected(mask)));
  std::puts("channel       mean  deviation  least          largest         norms");
  for (int channel = channels.first; channel <= channels.last; ++channel) {
    std::printf("%-9d", channel);
    printStatistics(picture, ChannelMeter(mask, channel, library));
  }
}

std::string shownRelative(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.6f", value);
  return std::isnan(value) ? "undefined" : text;
}

void printComparison(const Picture& a, const Picture& b, const ChannelMeter& meter, double& squares) {
  Norms difference, relative;
  meter.measure(MEMBERS(orviNormDiff_L1), std::tuple(&difference.l1), a, b);
  meter.measure(MEMBERS(orviNormDiff_L2), std::tuple(&difference.l2), a, b);
  meter.measure(MEMBERS(orviNormDiff_Inf), std::tuple(&difference.largest), a, b);
  meter.measure(MEMBERS(orviNormRel_L1), std::tuple(&relative.l1), a, b);
  meter.measure(MEMBERS(orviNormRel_L2), std::tuple(&relative.l2), a, b);
  meter.measure(MEMBERS(orviNormRel_Inf), std::tuple(&relative.largest), a, b);
  squares += difference.l2 * difference.l2;
  std::printf("absolute: L1 %.0f  L2 %.3f  Inf %.0f   relative: L1 %s  L2 %s  Inf %s\n", difference.l1, difference.l2,
              difference.largest, shownRelative(relative.l1).c_str(), shownRelative(relative.l2).c_str(),
              shownRelative(relative.largest).c_str());
}

void runCompare(const Arguments& arguments, LibraryCalls& library) {
  const std::vector<Picture> pictures = readAlike(arguments.operands());
  const Picture mask = readMask(arguments, pictures[0].size());
  const double samples = static_cast<double>(countSelected(mask)) * pictures[0].channels;
  double squares = 0;
  for (int channel = 1; channel <= pictures[0].channels; ++channel) {
    std::printf("channel %d  ", channel);
    printComparison(pictures[0], pictures[1], ChannelMeter(mask, channel, library), squares);
  }
  if (squares == 0)
    std::puts("equal where the mask selects; the signal-to-noise ratio is infinite");
  else
    std::printf("peak signal-to-noise ratio %.3f dB\n", 10 * std::log10(255.0 * 255.0 * samples / squares));
}

}  // namespace

const Command statsCommand = {
    .name = "stats",
    .operands = "IMAGE",
    .summary = "Print mean, deviation, extrema and norms of an image",
    .details =
        "One line a channel: mean and standard deviation, the least and the largest sample with the first place\n"
        "in reading order, the sum of the samples (L1), the root of the sum of squares (L2), the largest (Inf).\n",
    .fewestOperands = 1,
    .mostOperands = 1,
    .options = {maskOption, {"channel", "N", "only this channel, counted from 1", 'c'}},
    .run = runStats,
};

const Command compareCommand = {
    .name = "compare",
    .operands = "A B",
    .summary = "Print how far two images of one size are apart",
    .details =
        "One line a channel: the norms of A - B, and the same divided by those of B (undefined where both are 0).\n"
        "Then the peak signal-to-noise ratio over all channels.\n",
    .fewestOperands = 2,
    .mostOperands = 2,
    .options = {maskOption},
    .run = runCompare,
};

}  // namespace tool
