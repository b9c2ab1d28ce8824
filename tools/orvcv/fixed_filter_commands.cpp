// orvcv laplacian, lowpass and gradient: filters with small fixed kernels.
#include <algorithm>
#include <cmath>
#include <numeric>

#include "border.h"
#include "commands.h"
#include "separable_filter.h"

namespace tool {
namespace {

constexpr Option sizeOption{"size", "K", "kernel of 3 x 3 (default) or 5 x 5 pixels", 'k'};
constexpr Option gainOption{"gain", "G", "multiply the results, to show them stronger or weaker", 'g'};

int readSize(const Arguments& arguments) {
  const int size = arguments.integer("size", 3, {3, 5});
  if (size == 4)
    throw UserError("--size: 4 is neither 3 nor 5");
  return size;
}

OrvMaskCode maskCode(int size) { return size == 3 ? orvMask3x3 : orvMask5x5; }

/// Runs a fixed-kernel filter: its size query, its scratch, the call.
template <class Sample, class Query, class Filter>
Image<Sample> filterFixed(std::string_view name, Query query, Filter filter, const Picture& src,
                          const Arguments& arguments, LibraryCalls& library) {
  const OrvMaskCode mask = maskCode(readSize(arguments));
  const Border border = readBorder(arguments);
  int bufferSize = 0;
  library.run(name, {}, [&] { return query(src.size(), mask, &bufferSize); });
  std::vector<uint8_t> buffer(static_cast<size_t>(bufferSize));
  Image<Sample> dst(src.size(), 1);
  library.run(name, src.size(), [&] {
    return filter(src.data(), src.step(), dst.data(), dst.step(), src.size(), mask, border.mode, border.value[0],
                  buffer.data());
  });
  return dst;
}

void runLaplacian(const Arguments& arguments, LibraryCalls& library) {
  const std::string output = outputPath(arguments);
  const float gain = static_cast<float>(arguments.number("gain", 0.25, {0, 255}));
  const Picture src = readPicture(arguments.operands().front(), Channels::gray);
  const Image<int16_t> filtered =
      filterFixed<int16_t>("orviFilterLaplacianBorder_8u16s_C1R", orviFilterLaplacianGetBufferSize_8u16s_C1R,
                           orviFilterLaplacianBorder_8u16s_C1R, src, arguments, library);
  FloatImage shown(src.size(), 1);
  std::copy(filtered.samples.begin(), filtered.samples.end(), shown.samples.begin());
  writePng(output, toPicture(shown, gain, 128));
}

void runLowpass(const Arguments& arguments, LibraryCalls& library) {
  const std::string output = outputPath(arguments);
  Picture picture = readPicture(arguments.operands().front());
  const auto channels = static_cast<size_t>(picture.channels);
  Picture plane(picture.size(), 1);
  for (size_t channel = 0; channel < channels; ++channel) {
    for (size_t i = 0; i < plane.samples.size(); ++i) plane.samples[i] = picture.samples[i * channels + channel];
    const Picture filtered =
        filterFixed<uint8_t>("orviFilterLowpassBorder_8u_C1R", orviFilterLowpassGetBufferSize_8u_C1R,
                             orviFilterLowpassBorder_8u_C1R, plane, arguments, library);
    for (size_t i = 0; i < plane.samples.size(); ++i) picture.samples[i * channels + channel] = filtered.samples[i];
  }
  writePng(output, picture);
}

std::vector<float> sobelKernel(int size, int order, LibraryCalls& library) {
  std::vector<float> kernel(static_cast<size_t>(size));
  library.run("orviGenSobelKernel_32f", {}, [&] { return orviGenSobelKernel_32f(kernel.data(), size, order, 1); });
  return kernel;
}

float sumOfPositive(const std::vector<float>& kernel) {
  return std::accumulate(kernel.begin(), kernel.end(), 0.0f,
                         [](float sum, float tap) { return sum + std::max(tap, 0.0f); });
}

OrvNormCode readNorm(const Arguments& arguments) {
  static constexpr std::string_view names[] = {"max", "l1", "l2"};
  const std::string name = arguments.text("norm", "max");
  const auto found = std::find(std::begin(names), std::end(names), name);
  if (found == std::end(names))
    throw UserError("--norm: '" + name + "' is neither max, l1 nor l2");
  return static_cast<OrvNormCode>(found - std::begin(names));
}

/// The length of the gradient in each channel, then one number for the three channels.
void runGradient(const Arguments& arguments, LibraryCalls& library) {
  const std::string output = outputPath(arguments);
  const float gain = static_cast<float>(arguments.number("gain", 1, {0, 255}));
  const OrvNormCode norm = readNorm(arguments);
  const int size = readSize(arguments);
  const Border border = readBorder(arguments);
  const Picture picture = readPicture(arguments.operands().front(), Channels::colour);

  const std::vector<float> smoothing = sobelKernel(size, 0, library), derivative = sobelKernel(size, 1, library);
  FloatImage gradient = filterSeparable(picture, {derivative, smoothing}, border, library);
  const FloatImage vertical = filterSeparable(picture, {smoothing, derivative}, border, library);
  std::transform(gradient.samples.begin(), gradient.samples.end(), vertical.samples.begin(), gradient.samples.begin(),
                 [](float x, float y) { return std::hypot(x, y); });

  FloatImage gray(picture.size(), 1);
  library.run("orviGradientColorToGray_32f_C3C1R", picture.size(), [&] {
    return orviGradientColorToGray_32f_C3C1R(gradient.data(), gradient.step(), gray.data(), gray.step(), picture.size(),
                                             norm);
  });
  // A straight edge from black to white gives white.
  const float fullEdge = sumOfPositive(smoothing) * sumOfPositive(derivative);
  writePng(output, toPicture(gray, gain / fullEdge));
}

}  // namespace

const Command laplacianCommand = {
    .name = "laplacian",
    .operands = "IMAGE",
    .summary = "Show the second derivative of an image",
    .details = "Works on the gray picture. Zero is shown as middle gray, 128.\n",
    .fewestOperands = 1,
    .mostOperands = 1,
    .options = {outputOption, sizeOption, gainOption, borderOption},
    .run = runLaplacian,
};

const Command lowpassCommand = {
    .name = "lowpass",
    .operands = "IMAGE",
    .summary = "Smooth an image by the mean of each pixel's surroundings",
    .details = "Channels are filtered one by one.\n",
    .fewestOperands = 1,
    .mostOperands = 1,
    .options = {outputOption, sizeOption, borderOption},
    .run = runLowpass,
};

const Command gradientCommand = {
    .name = "gradient",
    .operands = "IMAGE",
    .summary = "Show the edges of a colour image",
    .details =
        "The length of the gradient in each of the three channels, by Sobel kernels, and of these one number: the\n"
        "largest (max), their sum (l1) or the root of the mean of their squares (l2).\n",
    .fewestOperands = 1,
    .mostOperands = 1,
    .options = {outputOption, sizeOption, {"norm", "NAME", "max (default), l1 or l2", 'n'}, gainOption, borderOption},
    .run = runGradient,
};

}  // namespace tool
