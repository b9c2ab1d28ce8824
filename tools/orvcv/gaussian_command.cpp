// orvcv blur: Gaussian smoothing, by either of the library's two engines.
#include <cmath>

#include "border.h"
#include "commands.h"

namespace tool {
namespace {

using Block = std::vector<uint8_t>;

Block blockOf(int bytes) { return Block(static_cast<size_t>(bytes)); }

struct Gaussian {
  int kernelSize;
  float sigma;
  Border border;
};

/// Integer rows between the two passes, rounded in both.
Picture blurFixed(const Picture& src, const Gaussian& gaussian, LibraryCalls& library) {
  Picture dst(src.size(), src.channels);
  int specSize = 0, bufferSize = 0;
  library.run("orviFilterGaussianGetBufferSize", {}, [&] {
    return orviFilterGaussianGetBufferSize(src.size(), gaussian.kernelSize, orvDataType8u, src.channels, &specSize,
                                           &bufferSize);
  });
  Block spec = blockOf(specSize), buffer = blockOf(bufferSize);
  library.run("orviFilterGaussianInit", {}, [&] {
    return orviFilterGaussianInit(src.size(), gaussian.kernelSize, gaussian.sigma, gaussian.border.mode, orvDataType8u,
                                  src.channels, spec.data(), buffer.data());
  });
  library.run("orviFilterGaussianBorder_8u", src.size(), [&] {
    const auto& value = gaussian.border.value;
    return src.channels == 1 ? orviFilterGaussianBorder_8u_C1R(src.data(), src.step(), dst.data(), dst.step(),
                                                               src.size(), value[0], spec.data(), buffer.data())
                             : orviFilterGaussianBorder_8u_C3R(src.data(), src.step(), dst.data(), dst.step(),
                                                               src.size(), value.data(), spec.data(), buffer.data());
  });
  return dst;
}

/// Single precision throughout, rounded once.
Picture blurFloat(const Picture& src, const Gaussian& gaussian, LibraryCalls& library) {
  Picture dst(src.size(), src.channels);
  const OrvSizeL size = {src.width, src.height};
  int specSize = 0, initSize = 0, bufferSize = 0;
  library.run("orviFilterGaussianGetSpecSize_L", {}, [&] {
    return orviFilterGaussianGetSpecSize_L(gaussian.kernelSize, orvDataType8u, src.channels, &specSize, &initSize);
  });
  library.run("orviFilterGaussianGetBufferSize_L", {}, [&] {
    return orviFilterGaussianGetBufferSize_L(size, gaussian.kernelSize, orvDataType8u, gaussian.border.mode,
                                             src.channels, &bufferSize);
  });
  Block spec = blockOf(specSize), initBuffer = blockOf(initSize), buffer = blockOf(bufferSize);
  library.run("orviFilterGaussianInit_L", {}, [&] {
    return orviFilterGaussianInit_L(size, gaussian.kernelSize, gaussian.sigma, gaussian.border.mode, orvDataType8u,
                                    src.channels, spec.data(), initBuffer.data());
  });
  library.run("orviFilterGaussian_8u_L", src.size(), [&] {
    const auto filter = src.channels == 1 ? orviFilterGaussian_8u_C1R_L : orviFilterGaussian_8u_C3R_L;
    return filter(src.data(), src.step(), dst.data(), dst.step(), size, gaussian.border.mode,
                  gaussian.border.value.data(), spec.data(), buffer.data());
  });
  return dst;
}

void runBlur(const Arguments& arguments, LibraryCalls& library) {
  const std::string output = outputPath(arguments);
  const double sigma = parseNumber(arguments.required("sigma"), "--sigma", {0.1, 100});
  const int enough = 2 * static_cast<int>(std::ceil(3 * sigma)) + 1;
  const Gaussian gaussian = {.kernelSize = arguments.integer("size", enough, {3, 999}),
                             .sigma = static_cast<float>(sigma),
                             .border = readBorder(arguments)};
  if (gaussian.kernelSize % 2 == 0)
    throw UserError("--size takes odd numbers, not " + std::to_string(gaussian.kernelSize));
  const std::string engine = arguments.text("engine", "float");
  if (engine != "float" && engine != "fixed")
    throw UserError("--engine: '" + engine + "' is neither float nor fixed");
  const Picture picture = readPicture(arguments.operands().front());
  writePng(output, engine == "float" ? blurFloat(picture, gaussian, library) : blurFixed(picture, gaussian, library));
}

}  // namespace

const Command blurCommand = {
    .name = "blur",
    .operands = "IMAGE",
    .summary = "Smooth an image with a Gaussian",
    .details =
        "The float engine works in single precision and rounds once; the fixed engine works in 16-bit integers\n"
        "and rounds after each of its two passes.\n",
    .fewestOperands = 1,
    .mostOperands = 1,
    .options = {outputOption,
                {"sigma", "S", "standard deviation in pixels, 0.1 to 100", 's'},
                {"size", "K", "taps of the kernel, odd; default: three deviations to each side", 'k'},
                {"engine", "NAME", "float (default) or fixed", 'e'},
                borderOption},
    .run = runBlur,
};

}  // namespace tool
