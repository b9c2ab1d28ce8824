// orvcv diff: the absolute difference of two images.
#include <algorithm>
#include <cstdio>
#include <numeric>

#include "commands.h"
#include "image_io.h"

namespace tool {
namespace {

Picture absoluteDifference(const Picture& a, const Picture& b, LibraryCalls& library) {
  Picture difference(a.size(), a.channels);
  const bool colour = a.channels == 3;
  library.run(colour ? "orviAbsDiff_8u_C3R" : "orviAbsDiff_8u_C1R", a.size(), [&] {
    const auto function = colour ? orviAbsDiff_8u_C3R : orviAbsDiff_8u_C1R;
    return function(a.data(), a.step(), b.data(), b.step(), difference.data(), difference.step(), a.size());
  });
  return difference;
}

void runDiff(const Arguments& arguments, LibraryCalls& library) {
  const std::string output = outputPath(arguments);
  const double gain = arguments.number("gain", 1, {1, 255});
  const std::vector<Picture> pictures = readAlike(arguments.operands());
  Picture difference = absoluteDifference(pictures[0], pictures[1], library);

  auto& samples = difference.samples;
  const double sum = std::accumulate(samples.begin(), samples.end(), 0.0);
  const int largest = *std::max_element(samples.begin(), samples.end());
  for (uint8_t& sample : samples) sample = static_cast<uint8_t>(std::min(sample * gain, 255.0));
  writePng(output, difference);
  std::printf("mean difference %.4f, largest %d\n", sum / static_cast<double>(samples.size()), largest);
}

}  // namespace

const Command diffCommand = {
    .name = "diff",
    .operands = "A B",
    .summary = "Show where two images of one size differ",
    .details =
        "Writes |A - B| for every sample and prints the mean and the largest difference on the scale 0 to 255.\n"
        "If one image is gray and the other in colour, the gray one is taken as colour.\n",
    .fewestOperands = 2,
    .mostOperands = 2,
    .options = {outputOption,
                {"gain", "G", "multiply the written differences by 1 to 255, to make small ones visible", 'g'}},
    .run = runDiff,
};

}  // namespace tool
