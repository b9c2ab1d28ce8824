// Row and column pipelines in a separable filter, Gaussian filters, fixed kernels, colour gradient.
#include <algorithm>
#include <cstring>

#include "filters/fixed_kernel_model.h"
#include "filters/gaussian_model.h"
#include "filters/separable_model.h"
#include "harness.h"

namespace bench {
namespace {

namespace model = orvtest::model;

constexpr OrvBorderMode border = orvBorderReplicate;

/// A source, a result and two blocks, prepared once per case and size.
template <class Source, class Result>
struct Filtering {
  OrvSize roi;
  int channels = 1;
  Image<Source> src = photograph<Source>(roi, channels);
  Image<Result> dst{roi.width, roi.height, channels};
  std::vector<uint8_t> spec = {}, buffer = {};
  Source borderValue[4] = {};
  std::vector<Result> modelResult =
      std::vector<Result>(static_cast<size_t>(roi.width) * static_cast<size_t>(roi.height * channels));

  OrvSizeL sizeL() const { return {roi.width, roi.height}; }
  model::ImageView<Source> view() const { return {src.data(), src.step(), roi.width, roi.height, channels}; }
};

size_t bytes(int count) { return static_cast<size_t>(count); }

template <class Sample>
constexpr OrvDataType dataType = orvDataType32f;
template <>
constexpr OrvDataType dataType<uint8_t> = orvDataType8u;
template <>
constexpr OrvDataType dataType<uint16_t> = orvDataType16u;
template <>
constexpr OrvDataType dataType<int16_t> = orvDataType16s;

template <class Sample, auto function>
std::function<Calls(OrvSize)> gaussianFloat(int taps, int channels) {
  return [taps, channels](OrvSize roi) -> Calls {
    auto f = shared(Filtering<Sample, Sample>{roi, channels});
    int specSize = 0, initSize = 0, bufferSize = 0;
    orviFilterGaussianGetSpecSize_L(taps, dataType<Sample>, channels, &specSize, &initSize);
    orviFilterGaussianGetBufferSize_L(f->sizeL(), taps, dataType<Sample>, border, channels, &bufferSize);
    f->spec.resize(bytes(specSize));
    f->buffer.resize(bytes(std::max(bufferSize, initSize)));
    const float sigma = static_cast<float>(taps) / 5;
    orviFilterGaussianInit_L(f->sizeL(), taps, sigma, border, dataType<Sample>, channels, f->spec.data(),
                             f->buffer.data());
    return {[f] {
              function(f->src.data(), f->src.step(), f->dst.data(), f->dst.step(), f->sizeL(), border, f->borderValue,
                       f->spec.data(), f->buffer.data());
            },
            [f, taps, sigma] {
              model::gaussianFloat(f->view(), f->modelResult.data(), taps, sigma, border, f->borderValue);
            }};
  };
}

std::function<Calls(OrvSize)> gaussianFixed8u(int taps) {
  return [taps](OrvSize roi) -> Calls {
    auto f = shared(Filtering<uint8_t, uint8_t>{roi});
    int specSize = 0, bufferSize = 0;
    orviFilterGaussianGetBufferSize(roi, taps, orvDataType8u, 1, &specSize, &bufferSize);
    f->spec.resize(bytes(specSize));
    f->buffer.resize(bytes(bufferSize));
    const float sigma = static_cast<float>(taps) / 5;
    orviFilterGaussianInit(roi, taps, sigma, border, orvDataType8u, 1, f->spec.data(), f->buffer.data());
    return {[f] {
              orviFilterGaussianBorder_8u_C1R(f->src.data(), f->src.step(), f->dst.data(), f->dst.step(), f->roi, 0,
                                              f->spec.data(), f->buffer.data());
            },
            [f, taps, sigma] {
              model::gaussianBorder(f->view(), f->modelResult.data(), taps, sigma, border, f->borderValue);
            }};
  };
}

template <class Source, class Result, auto function, auto query>
std::function<Calls(OrvSize)> fixedKernel(model::FixedFilter filter, OrvMaskCode mask) {
  return [filter, mask](OrvSize roi) -> Calls {
    auto f = shared(Filtering<Source, Result>{roi});
    int bufferSize = 0;
    query(roi, mask, &bufferSize);
    f->buffer.resize(bytes(bufferSize));
    return {[f, mask] {
              function(f->src.data(), f->src.step(), f->dst.data(), f->dst.step(), f->roi, mask, border, Source{},
                       f->buffer.data());
            },
            [f, filter, mask] {
              model::fixedKernelFilter(filter, f->view(), f->modelResult.data(), mask, border, Source{});
            }};
  };
}

std::function<Calls(OrvSize)> separable32f(int width, int height) {
  return [width, height](OrvSize roi) -> Calls {
    auto f = shared(Filtering<float, float>{roi});
    model::SeparableKernels<float> kernels{std::vector<float>(bytes(width), 1.0f / static_cast<float>(width)),
                                           std::vector<float>(bytes(height), 1.0f / static_cast<float>(height)), width,
                                           height, 1};
    const OrvSize size = {width, height};
    int specSize = 0, bufferSize = 0;
    orviFilterSeparableGetSpecSize_L(size, orvDataType32f, 1, &specSize);
    orviFilterSeparableGetBufferSize_L(f->sizeL(), size, orvDataType32f, orvDataType32f, 1, &bufferSize);
    f->spec.resize(bytes(specSize));
    f->buffer.resize(bytes(bufferSize));
    orviFilterSeparableInit_32f_L(kernels.x.data(), kernels.y.data(), size, orvDataType32f, 1, f->spec.data());
    return {[f] {
              orviFilterSeparable_32f_C1R_L(f->src.data(), f->src.step(), f->dst.data(), f->dst.step(), f->sizeL(),
                                            border, 0, f->spec.data(), f->buffer.data());
            },
            [f, kernels] { model::separable(f->view(), f->modelResult.data(), kernels, border, f->borderValue); }};
  };
}

Calls colorGradient(OrvSize roi) {
  struct Images {
    OrvSize roi;
    Image<uint8_t> src = photograph<uint8_t>(roi, 3);
    Image<uint8_t> dst{roi.width, roi.height, 1};
  };
  auto f = shared(Images{roi});
  return {
      [f] { orviGradientColorToGray_8u_C3C1R(f->src.data(), f->src.step(), f->dst.data(), f->dst.step(), f->roi, 2); },
      [f] {
        for (int y = 0; y < f->roi.height; ++y)
          for (int x = 0; x < f->roi.width; ++x)
            f->dst.at(x, y) = model::colorToGray(f->src.at(x, y, 0), f->src.at(x, y, 1), f->src.at(x, y, 2), 2);
      }};
}

using enum model::FixedFilter;

const bool registered = addCases({
    {.function = "orviFilterGaussian_8u_C1R_L [5 taps]",
     .work = "Gaussian, float engine, 5 taps 8u",
     .budget = 19,
     .limit = 12,
     .bytesPerPixel = 2,
     .prepare = gaussianFloat<uint8_t, orviFilterGaussian_8u_C1R_L>(5, 1)},
    {.function = "orviFilterGaussian_8u_C3R_L [5 taps]",
     .work = "Gaussian, float engine, 5 taps 8u C3",
     .budget = 54,
     .limit = 36,
     .bytesPerPixel = 6,
     .prepare = gaussianFloat<uint8_t, orviFilterGaussian_8u_C3R_L>(5, 3)},
    {.function = "orviFilterGaussian_16u_C1R_L [5 taps]",
     .work = "Gaussian, float engine, 5 taps 16u",
     .budget = 24,
     .limit = 14,
     .bytesPerPixel = 4,
     .prepare = gaussianFloat<uint16_t, orviFilterGaussian_16u_C1R_L>(5, 1)},
    {.function = "orviFilterGaussian_32f_C1R_L [5 taps]",
     .work = "Gaussian, float engine, 5 taps 32f",
     .budget = 18,
     .limit = 10,
     .bytesPerPixel = 8,
     .prepare = gaussianFloat<float, orviFilterGaussian_32f_C1R_L>(5, 1)},
    {.function = "orviFilterGaussian_8u_C1R_L [15 taps]",
     .work = "Gaussian, float engine, 15 taps 8u",
     .budget = 45,
     .limit = 30,
     .bytesPerPixel = 2,
     .prepare = gaussianFloat<uint8_t, orviFilterGaussian_8u_C1R_L>(15, 1)},
    {.function = "orviFilterGaussian_8u_C1R_L [31 taps]",
     .bytesPerPixel = 2,
     .prepare = gaussianFloat<uint8_t, orviFilterGaussian_8u_C1R_L>(31, 1)},
    {.function = "orviFilterGaussianBorder_8u_C1R [5 taps]",
     .work = "Gaussian, fixed-point pipelines, 5 taps 8u",
     .budget = 30,
     .limit = 18,
     .bytesPerPixel = 2,
     .prepare = gaussianFixed8u(5)},
    {.function = "orviFilterGaussianBorder_8u_C1R [15 taps]", .bytesPerPixel = 2, .prepare = gaussianFixed8u(15)},
    {.function = "orviFilterLaplacianBorder_8u16s_C1R [3x3]",
     .work = "Laplacian 3x3 8u16s",
     .budget = 6,
     .limit = 3.5,
     .bytesPerPixel = 3,
     .prepare =
         fixedKernel<uint8_t, int16_t, orviFilterLaplacianBorder_8u16s_C1R, orviFilterLaplacianGetBufferSize_8u16s_C1R>(
             laplacian, orvMask3x3)},
    {.function = "orviFilterLaplacianBorder_8u16s_C1R [5x5]",
     .bytesPerPixel = 3,
     .prepare =
         fixedKernel<uint8_t, int16_t, orviFilterLaplacianBorder_8u16s_C1R, orviFilterLaplacianGetBufferSize_8u16s_C1R>(
             laplacian, orvMask5x5)},
    {.function = "orviFilterLowpassBorder_8u_C1R [3x3]",
     .work = "lowpass 3x3 8u",
     .budget = 6,
     .limit = 3.5,
     .bytesPerPixel = 2,
     .prepare = fixedKernel<uint8_t, uint8_t, orviFilterLowpassBorder_8u_C1R, orviFilterLowpassGetBufferSize_8u_C1R>(
         lowpass, orvMask3x3)},
    {.function = "orviFilterLowpassBorder_32f_C1R [3x3]",
     .work = "lowpass 3x3 32f",
     .budget = 16,
     .limit = 10,
     .bytesPerPixel = 8,
     .prepare = fixedKernel<float, float, orviFilterLowpassBorder_32f_C1R, orviFilterLowpassGetBufferSize_32f_C1R>(
         lowpass, orvMask3x3)},
    {.function = "orviFilterSobelCrossBorder_8u16s_C1R [3x3]",
     .work = "Sobel cross 3x3 8u16s",
     .budget = 6,
     .limit = 3.5,
     .bytesPerPixel = 3,
     .prepare = fixedKernel<uint8_t, int16_t, orviFilterSobelCrossBorder_8u16s_C1R,
                            orviFilterSobelCrossGetBufferSize_8u16s_C1R>(sobelCross, orvMask3x3)},
    {.function = "orviFilterSeparable_32f_C1R_L [9x9]",
     .work = "separable 9x9 32f",
     .budget = 35,
     .limit = 20,
     .bytesPerPixel = 8,
     .prepare = separable32f(9, 9)},
    {.function = "orviFilterSeparable_32f_C1R_L [27x27]", .bytesPerPixel = 8, .prepare = separable32f(27, 27)},
    {.function = "orviGradientColorToGray_8u_C3C1R [L2]", .bytesPerPixel = 4, .prepare = colorGradient},
});

}  // namespace
}  // namespace bench
