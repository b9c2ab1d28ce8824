// orvcv average: the mean or the running average of many images.
#include "commands.h"
#include "image_io.h"

namespace tool {
namespace {

/// The accumulators have one channel. Channels of a picture that lie side by side become pixels; so do mask bytes.
Picture maskPerSample(const Picture& mask, int channels) {
  Picture repeated(mask.size(), channels);
  for (size_t i = 0; i < repeated.samples.size(); ++i)
    repeated.samples[i] = mask.samples[i / static_cast<size_t>(channels)];
  return repeated;
}

class Accumulator {
public:
  Accumulator(const Arguments& arguments, const Picture& first, LibraryCalls& library)
      : image_(first.size(), first.channels),
        mask_(maskPerSample(readMask(arguments, first.size()), first.channels)),
        masked_(arguments.has("mask")),
        library_(library) {}

  void add(const Picture& frame) {
    library_.run(masked_ ? "orviAdd_8u32f_C1IMR" : "orviAdd_8u32f_C1IR", frame.size(), [&] {
      return masked_
                 ? orviAdd_8u32f_C1IMR(frame.data(), frame.step(), mask_.data(), mask_.step(), image_.data(),
                                       image_.step(), image_.sizeInSamples())
                 : orviAdd_8u32f_C1IR(frame.data(), frame.step(), image_.data(), image_.step(), image_.sizeInSamples());
    });
  }

  void blend(const Picture& frame, float alpha) {
    library_.run(masked_ ? "orviAddWeighted_8u32f_C1IMR" : "orviAddWeighted_8u32f_C1IR", frame.size(), [&] {
      return masked_ ? orviAddWeighted_8u32f_C1IMR(frame.data(), frame.step(), mask_.data(), mask_.step(),
                                                   image_.data(), image_.step(), image_.sizeInSamples(), alpha)
                     : orviAddWeighted_8u32f_C1IR(frame.data(), frame.step(), image_.data(), image_.step(),
                                                  image_.sizeInSamples(), alpha);
    });
  }

  Picture picture(float scale) const { return toPicture(image_, scale); }

private:
  FloatImage image_;
  Picture mask_;
  bool masked_;
  LibraryCalls& library_;
};

void runAverage(const Arguments& arguments, LibraryCalls& library) {
  const std::string output = outputPath(arguments);
  const bool running = arguments.has("alpha");
  const float alpha = static_cast<float>(arguments.number("alpha", 1, {0, 1}));
  const std::vector<Picture> frames = readAlike(arguments.operands());

  Accumulator accumulator(arguments, frames.front(), library);
  Progress progress("averaging", frames.size());
  for (const Picture& frame : frames) {
    if (running && &frame != &frames.front())
      accumulator.blend(frame, alpha);
    else
      accumulator.add(frame);
    progress.advance();
  }
  writePng(output, accumulator.picture(running ? 1.0f : 1.0f / static_cast<float>(frames.size())));
}

}  // namespace

const Command averageCommand = {
    .name = "average",
    .operands = "IMAGES...",
    .summary = "Average images of one size: what stays is kept, what moves and noise fade",
    .details =
        "Without --alpha every image has the same weight. With it the first image starts a running average and\n"
        "each next one moves it by a + alpha * (s - a), so that later images count more.\n"
        "Pixels that a mask does not select come out black.\n",
    .fewestOperands = 1,
    .mostOperands = SIZE_MAX,
    .options = {outputOption, {"alpha", "A", "running average: weight of each next image, 0 to 1", 'a'}, maskOption},
    .run = runAverage,
};

}  // namespace tool
