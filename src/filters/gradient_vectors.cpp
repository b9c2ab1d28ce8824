// Gradient vectors: both first derivatives, magnitude and angle in one walk.
#include "filters/derivative_kernels.h"
#include "filters/derivatives.h"
#include "frame/vector_kernels.h"
#include "simd/vectors.h"

namespace orv {
namespace {

constexpr OrvNormCode normL1 = 2, normL2 = 4;

template <class Source>
struct GradientOutputs {
  using Sample = typename StageOf<Source>::Sample;
  View<Sample> gx, gy, mag;
  View<float> angle;

  bool needsGx() const { return gx.first != nullptr || needsBoth(); }
  bool needsGy() const { return gy.first != nullptr || needsBoth(); }
  bool needsBoth() const { return mag.first != nullptr || angle.first != nullptr; }
};

template <class Sample>
OrvStatus badOutput(View<Sample> image) {
  if (image.first == nullptr)
    return orvStsOk;
  return firstFailure(Check{image.step < 1, orvStsBadStep}, stepNotAligned<Sample>(image.step));
}

template <class Source>
OrvStatus badGradientArguments(const BorderedImage<Source>& src, const GradientOutputs<Source>& outputs,
                               OrvMaskCode mask, OrvNormCode norm, const void* buffer) {
  const bool normMatters = outputs.mag.first != nullptr;
  return firstFailure(badBorder(src.borderMode, filterBorders), nullPointer(src.view.first),
                      Check{src.view.step < 1, orvStsBadStep}, stepNotAligned<Source>(src.view.step),
                      nullPointer(buffer), badOutput(outputs.gx), badOutput(outputs.gy), badOutput(outputs.mag),
                      badOutput(outputs.angle), Check{normMatters && norm != normL1 && norm != normL2, orvStsBadArg},
                      badSize(src.roi), badMaskCode(mask));
}

template <class Sample>
void sumOfMagnitudes(const Sample* gx, const Sample* gy, Sample* mag, int width) {
  forEachVector<Sample>(width,
                        [&]<class V>(V, int x) { (abs(V::load(gx + x)) + abs(V::load(gy + x))).store(mag + x); });
}
void euclideanMagnitude(const int16_t* gx, const int16_t* gy, int16_t* mag, int width) {
  orvsMagnitude_16s_Sfs(gx, gy, mag, width, 0);
}
void euclideanMagnitude(const float* gx, const float* gy, float* mag, int width) {
  orvsMagnitude_32f(gx, gy, mag, width);
}

/// The row as floats, in `scratch` if it isn't already.
const float* asFloats(const float* row, float*, int) { return row; }
const float* asFloats(const int16_t* row, float* scratch, int width) {
  forEachVector<float>(width, [&]<class V>(V, int x) { V::load(row + x).store(scratch + x); });
  return scratch;
}

template <class Vertical, class Horizontal, class Source>
void gradientVectors(const BorderedImage<Source>& src, GradientOutputs<Source> outputs, OrvNormCode norm,
                     void* buffer) {
  using Sample = typename StageOf<Source>::Sample;
  const int width = src.roi.width;
  const auto rowSamples = static_cast<size_t>(width);
  const auto nothing = [](int) {};
  Carver scratch{buffer};

  if (!outputs.needsBoth()) {
    if (outputs.needsGx() && outputs.needsGy())
      filterTwoStage<Gradient<Vertical, Horizontal>>(src, scratch, nothing, outputs.gx, outputs.gy);
    else if (outputs.needsGx())
      filterTwoStage<Vertical>(src, scratch, nothing, outputs.gx);
    else if (outputs.needsGy())
      filterTwoStage<Horizontal>(src, scratch, nothing, outputs.gy);
    return;
  }

  // Derivatives that nobody asked for go to one row in scratch.
  for (View<Sample>* derivative : {&outputs.gx, &outputs.gy})
    if (derivative->first == nullptr)
      *derivative = {scratch.take<Sample>(rowSamples), 0};
  float* const floatGx = scratch.take<float>(rowSamples);
  float* const floatGy = scratch.take<float>(rowSamples);
  const auto finishRow = [&](int y) {
    const Sample* const gx = outputs.gx.row(y);
    const Sample* const gy = outputs.gy.row(y);
    if (outputs.mag.first != nullptr && norm == normL1)
      sumOfMagnitudes(gx, gy, outputs.mag.row(y), width);
    else if (outputs.mag.first != nullptr)
      euclideanMagnitude(gx, gy, outputs.mag.row(y), width);
    if (outputs.angle.first != nullptr)
      orvsAtan2_32f_A21(asFloats(gy, floatGy, width), asFloats(gx, floatGx, width), outputs.angle.row(y), width);
  };
  filterTwoStage<Gradient<Vertical, Horizontal>>(src, scratch, finishRow, outputs.gx, outputs.gy);
}

template <class Source>
OrvStatus gradientVectorsSobel(const BorderedImage<Source>& src, const GradientOutputs<Source>& outputs,
                               OrvMaskCode mask, OrvNormCode norm, void* buffer) {
  if (OrvStatus status = badGradientArguments(src, outputs, mask, norm, buffer))
    return status;
  if (mask == orvMask3x3)
    gradientVectors<SobelVert3, SobelHoriz3>(src, outputs, norm, buffer);
  else
    gradientVectors<SobelVert5, SobelHoriz5>(src, outputs, norm, buffer);
  return orvStsOk;
}

template <class Source>
OrvStatus gradientVectorsScharr(const BorderedImage<Source>& src, const GradientOutputs<Source>& outputs,
                                OrvMaskCode mask, OrvNormCode norm, void* buffer) {
  if (OrvStatus status = firstFailure(badGradientArguments(src, outputs, mask, norm, buffer),
                                      Check{mask != orvMask3x3, orvStsBadMaskCode}))
    return status;
  gradientVectors<ScharrVert3, ScharrHoriz3>(src, outputs, norm, buffer);
  return orvStsOk;
}

}  // namespace

#define ORV_GRADIENT_VECTORS(operation, type, Source, Result)                                                         \
  OrvStatus orviGradientVector##operation##_##type##_C1R(                                                             \
      const Source* src, int srcStep, Result* gx, int gxStep, Result* gy, int gyStep, Result* mag, int magStep,       \
      float* angle, int angleStep, OrvSize roi, OrvMaskCode mask, OrvNormCode norm, OrvBorderMode borderMode,         \
      Source borderValue, void* buffer) {                                                                             \
    return gradientVectors##operation(                                                                                \
        BorderedImage<Source>{{src, srcStep}, roi, borderMode, borderValue},                                          \
        GradientOutputs<Source>{{gx, gxStep}, {gy, gyStep}, {mag, magStep}, {angle, angleStep}}, mask, norm, buffer); \
  }
ORV_GRADIENT_VECTORS(Sobel, 8u16s, uint8_t, int16_t)
ORV_GRADIENT_VECTORS(Sobel, 32f, float, float)
ORV_GRADIENT_VECTORS(Scharr, 8u16s, uint8_t, int16_t)
ORV_GRADIENT_VECTORS(Scharr, 32f, float, float)

OrvStatus orviGradientVectorGetBufferSize(OrvSize roi, OrvMaskCode mask, OrvDataType dataType, int numChannels,
                                          int* bufferSize) {
  if (OrvStatus status = firstFailure(nullPointer(bufferSize), badSize(roi), badMaskCode(mask),
                                      notAmong(dataType, {orvDataType8u, orvDataType32f}, orvStsBadAlgorithm),
                                      Check{numChannels != 1, orvStsBadDataType}))
    return status;
  return dataType == orvDataType8u ? twoStageBufferSizeQuery<uint8_t>(2, roi, mask, bufferSize)
                                   : twoStageBufferSizeQuery<float>(2, roi, mask, bufferSize);
}

}  // namespace orv
