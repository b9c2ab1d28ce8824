// Smooths a large image on all cores. The library starts no threads, but it lets a caller cut an image into bands: each
// thread filters one band with a scratch buffer of its own, all share one spec, and the border word says that the rows
// beyond an inner edge of a band exist in memory. The result is that of one call on the whole image, bit for bit.
//
//   c++ -std=c++20 -O2 -pthread banded_filter.cpp $(pkg-config --cflags --libs orvcv)
#include <orvcv.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

namespace {

constexpr OrvSizeL imageSize{4001, 3001};
constexpr int kernelSize = 9;
constexpr float sigma = 1.8f;

using Image = std::vector<uint8_t>;  // rows without gaps

void stopOnFailure(OrvStatus status, const char* what) {
  if (status == orvStsOk)
    return;
  std::fprintf(stderr, "%s: status %d\n", what, status);
  std::exit(1);
}

/// Rings around a point off the centre.
Image syntheticImage() {
  Image image;
  for (int y = 0; y < imageSize.height; ++y)
    for (int x = 0; x < imageSize.width; ++x)
      image.push_back(static_cast<uint8_t>(((x - 1200) * (x - 1200) + (y - 700) * (y - 700)) >> 8));
  return image;
}

/// The block that all calls read: the kernel.
std::vector<uint8_t> makeSpec() {
  int specSize = 0, scratchSize = 0;
  stopOnFailure(orviFilterGaussianGetSpecSize_L(kernelSize, orvDataType8u, 1, &specSize, &scratchSize), "spec size");
  std::vector<uint8_t> spec(static_cast<size_t>(specSize)), scratch(static_cast<size_t>(scratchSize));
  stopOnFailure(orviFilterGaussianInit_L(imageSize, kernelSize, sigma, orvBorderMirror, orvDataType8u, 1, spec.data(),
                                         scratch.data()),
                "initialisation");
  return spec;
}

/// Filters the rows from `firstRow` to `endRow` - 1. What lies beyond an inner edge is read where it is.
OrvStatus filterBand(const Image& in, Image& out, const std::vector<uint8_t>& spec, int firstRow, int endRow) {
  const OrvSizeL band{imageSize.width, endRow - firstRow};
  OrvBorderMode border = orvBorderMirror;
  if (firstRow > 0)
    border |= orvBorderMemTop;
  if (endRow < imageSize.height)
    border |= orvBorderMemBottom;

  int bufferSize = 0;
  const OrvStatus status = orviFilterGaussianGetBufferSize_L(band, kernelSize, orvDataType8u, border, 1, &bufferSize);
  if (status != orvStsOk)
    return status;
  std::vector<uint8_t> buffer(static_cast<size_t>(bufferSize));
  const ptrdiff_t offset = static_cast<ptrdiff_t>(firstRow) * imageSize.width;
  return orviFilterGaussian_8u_C1R_L(in.data() + offset, imageSize.width, out.data() + offset, imageSize.width, band,
                                     border, nullptr, spec.data(), buffer.data());
}

/// Cuts the image into `count` bands of about the same height, a thread each. A band is to be at least as high as the
/// kernel's radius, so that what lies beyond its edges is inside the image.
OrvStatus filterInBands(const Image& in, Image& out, const std::vector<uint8_t>& spec, int count) {
  std::vector<OrvStatus> statuses(static_cast<size_t>(count), orvStsOk);
  std::vector<std::thread> threads;
  for (int i = 0; i < count; ++i)
    threads.emplace_back([&, i] {
      const int firstRow = imageSize.height * i / count, endRow = imageSize.height * (i + 1) / count;
      statuses[static_cast<size_t>(i)] = filterBand(in, out, spec, firstRow, endRow);
    });
  for (std::thread& thread : threads) thread.join();
  const auto failure = std::find_if(statuses.begin(), statuses.end(), [](OrvStatus s) { return s != orvStsOk; });
  return failure == statuses.end() ? orvStsOk : *failure;
}

template <class Work>
double milliseconds(Work work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace

int main() {
  const Image image = syntheticImage();
  const std::vector<uint8_t> spec = makeSpec();
  Image whole(image.size());
  const double wholeTime =
      milliseconds([&] { stopOnFailure(filterBand(image, whole, spec, 0, imageSize.height), "filter"); });
  std::printf("%dx%d, %d taps\n", imageSize.width, imageSize.height, kernelSize);
  std::printf("whole image at once  %7.1f ms\n", wholeTime);

  const int cores = std::clamp(static_cast<int>(std::thread::hardware_concurrency()), 2, 64);
  for (const int bands : {cores, 2 * cores + 1}) {
    Image banded(image.size());
    const double time = milliseconds([&] { stopOnFailure(filterInBands(image, banded, spec, bands), "filter"); });
    if (banded != whole) {
      std::fprintf(stderr, "%d bands: the result differs from the whole image's\n", bands);
      return 1;
    }
    std::printf("%3d bands on threads %7.1f ms, the same result\n", bands, time);
  }
  return 0;
}
