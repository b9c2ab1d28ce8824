// Gaussian filters, fixed kernels, separable filter, colour gradient.
#include <algorithm>

#include "filtering.h"
#include "filters/fixed_kernel_model.h"
#include "filters/separable_model.h"

namespace bench {
namespace {

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

template <class Sample, int channels, auto function>
std::function<Calls(OrvSize)> gaussianFixed(int taps) {
  return [taps](OrvSize roi) -> Calls {
    auto f = shared(Filtering<Sample, Sample>{roi, channels});
    int specSize = 0, bufferSize = 0;
    orviFilterGaussianGetBufferSize(roi, taps, dataType<Sample>, channels, &specSize, &bufferSize);
    f->spec.resize(bytes(specSize));
    f->buffer.resize(bytes(bufferSize));
    const float sigma = static_cast<float>(taps) / 5;
    orviFilterGaussianInit(roi, taps, sigma, border, dataType<Sample>, channels, f->spec.data(), f->buffer.data());
    return {[f] {
              function(f->src.data(), f->src.step(), f->dst.data(), f->dst.step(), f->roi,
                       borderArgument<channels>(f->borderValue), f->spec.data(), f->buffer.data());
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

/// A box: integer kernels of ones with the divisor in both passes, float kernels of quotients.
template <class Sample, int channels, auto function>
std::function<Calls(OrvSize)> separable(int taps) {
  return [taps](OrvSize roi) -> Calls {
    using Tap = std::conditional_t<std::is_same_v<Sample, float> || std::is_same_v<Sample, uint16_t>, float, int16_t>;
    constexpr bool isFloat = std::is_same_v<Tap, float>;
    auto f = shared(Filtering<Sample, Sample>{roi, channels});
    const Tap tap = isFloat ? static_cast<Tap>(1.0f / static_cast<float>(taps)) : Tap{1};
    const model::SeparableKernels<Tap> kernels{
        std::vector<Tap>(bytes(taps * channels), tap), std::vector<Tap>(bytes(taps), tap), taps, taps, channels, taps};
    const OrvSize size = {taps, taps};
    int specSize = 0, bufferSize = 0;
    orviFilterSeparableGetSpecSize_L(size, dataType<Tap>, channels, &specSize);
    orviFilterSeparableGetBufferSize_L(f->sizeL(), size, dataType<Sample>, dataType<Tap>, channels, &bufferSize);
    f->spec.resize(bytes(specSize));
    f->buffer.resize(bytes(bufferSize));
    if constexpr (isFloat)
      orviFilterSeparableInit_32f_L(kernels.x.data(), kernels.y.data(), size, dataType<Sample>, channels,
                                    f->spec.data());
    else
      orviFilterSeparableInit_16s_L(kernels.x.data(), kernels.y.data(), size, taps, 0, dataType<Sample>, channels,
                                    f->spec.data());
    return {[f] {
              function(f->src.data(), f->src.step(), f->dst.data(), f->dst.step(), f->sizeL(), border,
                       borderArgument<channels>(f->borderValue), f->spec.data(), f->buffer.data());
            },
            [f, kernels] { model::separable(f->view(), f->modelResult.data(), kernels, border, f->borderValue); }};
  };
}

template <class Sample, auto function>
Calls colorGradient(OrvSize roi) {
  struct Images {
    OrvSize roi;
    Image<Sample> src = photograph<Sample>(roi, 3);
    Image<Sample> dst{roi.width, roi.height, 1};
  };
  constexpr OrvNormCode l2 = 2;
  auto f = shared(Images{roi});
  return {[f] { function(f->src.data(), f->src.step(), f->dst.data(), f->dst.step(), f->roi, l2); },
          [f] {
            for (int y = 0; y < f->roi.height; ++y)
              for (int x = 0; x < f->roi.width; ++x)
                f->dst.at(x, y) = model::colorToGray(f->src.at(x, y, 0), f->src.at(x, y, 1), f->src.at(x, y, 2), l2);
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
    {.function = "orviFilterGaussian_16s_C1R_L [5 taps]",
     .bytesPerPixel = 4,
     .prepare = gaussianFloat<int16_t, orviFilterGaussian_16s_C1R_L>(5, 1)},
    {.function = "orviFilterGaussian_32f_C3R_L [5 taps]",
     .bytesPerPixel = 24,
     .prepare = gaussianFloat<float, orviFilterGaussian_32f_C3R_L>(5, 3)},
    {.function = "orviFilterGaussian_8u_C1R_L [7 taps]",
     .bytesPerPixel = 2,
     .prepare = gaussianFloat<uint8_t, orviFilterGaussian_8u_C1R_L>(7, 1)},
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
     .prepare = gaussianFixed<uint8_t, 1, orviFilterGaussianBorder_8u_C1R>(5)},
    {.function = "orviFilterGaussianBorder_8u_C1R [15 taps]",
     .bytesPerPixel = 2,
     .prepare = gaussianFixed<uint8_t, 1, orviFilterGaussianBorder_8u_C1R>(15)},
    {.function = "orviFilterGaussianBorder_8u_C3R [5 taps]",
     .bytesPerPixel = 6,
     .slowModel = true,
     .prepare = gaussianFixed<uint8_t, 3, orviFilterGaussianBorder_8u_C3R>(5)},
    {.function = "orviFilterGaussianBorder_16u_C1R [5 taps]",
     .bytesPerPixel = 4,
     .slowModel = true,
     .prepare = gaussianFixed<uint16_t, 1, orviFilterGaussianBorder_16u_C1R>(5)},
    {.function = "orviFilterGaussianBorder_16s_C1R [5 taps]",
     .bytesPerPixel = 4,
     .slowModel = true,
     .prepare = gaussianFixed<int16_t, 1, orviFilterGaussianBorder_16s_C1R>(5)},
    {.function = "orviFilterGaussianBorder_32f_C1R [5 taps]",
     .bytesPerPixel = 8,
     .slowModel = true,
     .prepare = gaussianFixed<float, 1, orviFilterGaussianBorder_32f_C1R>(5)},
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
    {.function = "orviFilterLaplacianBorder_32f_C1R [3x3]",
     .bytesPerPixel = 8,
     .slowModel = true,
     .prepare = fixedKernel<float, float, orviFilterLaplacianBorder_32f_C1R, orviFilterLaplacianGetBufferSize_32f_C1R>(
         laplacian, orvMask3x3)},
    {.function = "orviFilterLaplacianBorder_32f_C1R [5x5]",
     .bytesPerPixel = 8,
     .slowModel = true,
     .prepare = fixedKernel<float, float, orviFilterLaplacianBorder_32f_C1R, orviFilterLaplacianGetBufferSize_32f_C1R>(
         laplacian, orvMask5x5)},
    {.function = "orviFilterLowpassBorder_8u_C1R [3x3]",
     .work = "lowpass 3x3 8u",
     .budget = 6,
     .limit = 3.5,
     .bytesPerPixel = 2,
     .prepare = fixedKernel<uint8_t, uint8_t, orviFilterLowpassBorder_8u_C1R, orviFilterLowpassGetBufferSize_8u_C1R>(
         lowpass, orvMask3x3)},
    {.function = "orviFilterLowpassBorder_8u_C1R [5x5]",
     .bytesPerPixel = 2,
     .slowModel = true,
     .prepare = fixedKernel<uint8_t, uint8_t, orviFilterLowpassBorder_8u_C1R, orviFilterLowpassGetBufferSize_8u_C1R>(
         lowpass, orvMask5x5)},
    {.function = "orviFilterLowpassBorder_32f_C1R [3x3]",
     .work = "lowpass 3x3 32f",
     .budget = 16,
     .limit = 10,
     .bytesPerPixel = 8,
     .prepare = fixedKernel<float, float, orviFilterLowpassBorder_32f_C1R, orviFilterLowpassGetBufferSize_32f_C1R>(
         lowpass, orvMask3x3)},
    {.function = "orviFilterLowpassBorder_32f_C1R [5x5]",
     .bytesPerPixel = 8,
     .slowModel = true,
     .prepare = fixedKernel<float, float, orviFilterLowpassBorder_32f_C1R, orviFilterLowpassGetBufferSize_32f_C1R>(
         lowpass, orvMask5x5)},
    {.function = "orviFilterSobelCrossBorder_8u16s_C1R [3x3]",
     .work = "Sobel cross 3x3 8u16s",
     .budget = 6,
     .limit = 3.5,
     .bytesPerPixel = 3,
     .prepare = fixedKernel<uint8_t, int16_t, orviFilterSobelCrossBorder_8u16s_C1R,
                            orviFilterSobelCrossGetBufferSize_8u16s_C1R>(sobelCross, orvMask3x3)},
    {.function = "orviFilterSobelCrossBorder_8u16s_C1R [5x5]",
     .bytesPerPixel = 3,
     .slowModel = true,
     .prepare = fixedKernel<uint8_t, int16_t, orviFilterSobelCrossBorder_8u16s_C1R,
                            orviFilterSobelCrossGetBufferSize_8u16s_C1R>(sobelCross, orvMask5x5)},
    {.function = "orviFilterSobelCrossBorder_32f_C1R [3x3]",
     .bytesPerPixel = 8,
     .slowModel = true,
     .prepare =
         fixedKernel<float, float, orviFilterSobelCrossBorder_32f_C1R, orviFilterSobelCrossGetBufferSize_32f_C1R>(
             sobelCross, orvMask3x3)},
    {.function = "orviFilterSobelCrossBorder_32f_C1R [5x5]",
     .bytesPerPixel = 8,
     .slowModel = true,
     .prepare =
         fixedKernel<float, float, orviFilterSobelCrossBorder_32f_C1R, orviFilterSobelCrossGetBufferSize_32f_C1R>(
             sobelCross, orvMask5x5)},
    {.function = "orviFilterSeparable_32f_C1R_L [9x9]",
     .work = "separable 9x9 32f",
     .budget = 35,
     .limit = 20,
     .bytesPerPixel = 8,
     .prepare = separable<float, 1, orviFilterSeparable_32f_C1R_L>(9)},
    {.function = "orviFilterSeparable_32f_C1R_L [27x27]",
     .bytesPerPixel = 8,
     .prepare = separable<float, 1, orviFilterSeparable_32f_C1R_L>(27)},
    {.function = "orviFilterSeparable_8u_C1R_L [9x9]",
     .bytesPerPixel = 2,
     .slowModel = true,
     .prepare = separable<uint8_t, 1, orviFilterSeparable_8u_C1R_L>(9)},
    {.function = "orviFilterSeparable_8u_C3R_L [9x9]",
     .bytesPerPixel = 6,
     .slowModel = true,
     .prepare = separable<uint8_t, 3, orviFilterSeparable_8u_C3R_L>(9)},
    {.function = "orviFilterSeparable_16u_C1R_L [9x9]",
     .bytesPerPixel = 4,
     .slowModel = true,
     .prepare = separable<uint16_t, 1, orviFilterSeparable_16u_C1R_L>(9)},
    {.function = "orviFilterSeparable_16s_C1R_L [9x9]",
     .bytesPerPixel = 4,
     .slowModel = true,
     .prepare = separable<int16_t, 1, orviFilterSeparable_16s_C1R_L>(9)},
    {.function = "orviFilterSeparable_32f_C3R_L [9x9]",
     .bytesPerPixel = 24,
     .slowModel = true,
     .prepare = separable<float, 3, orviFilterSeparable_32f_C3R_L>(9)},
    {.function = "orviGradientColorToGray_8u_C3C1R [L2]",
     .bytesPerPixel = 4,
     .prepare = colorGradient<uint8_t, orviGradientColorToGray_8u_C3C1R>},
    {.function = "orviGradientColorToGray_16u_C3C1R [L2]",
     .bytesPerPixel = 8,
     .prepare = colorGradient<uint16_t, orviGradientColorToGray_16u_C3C1R>},
    {.function = "orviGradientColorToGray_32f_C3C1R [L2]",
     .bytesPerPixel = 16,
     .prepare = colorGradient<float, orviGradientColorToGray_32f_C3C1R>},
});

}  // namespace
}  // namespace bench
