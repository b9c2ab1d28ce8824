// Norms, means, deviations and extrema, most of them under a mask.
#include "harness.h"
#include "stats/norms_model.h"
#include "stats/reductions_model.h"

namespace bench {
namespace {

namespace model = orvtest::model;
using model::Norm;

/// Two images, a mask and room for results, prepared once per case and size.
template <class Sample>
struct Reduction {
  OrvSize roi;
  int channels = 1;
  Image<Sample> src1 = photograph<Sample>(roi, channels);
  Image<Sample> src2 = photograph<Sample>(roi, channels, 7);
  Image<uint8_t> mask = photographMask(roi);
  double value = 0, stdDev = 0;
  float minVal = 0, maxVal = 0;
  OrvPoint minIndex{}, maxIndex{};

  model::MaskedImages<Sample> input(bool twoImages, bool masked) const {
    return {src1.data(),
            src1.step(),
            twoImages ? src2.data() : nullptr,
            src2.step(),
            masked ? mask.data() : nullptr,
            mask.step(),
            roi.width,
            roi.height,
            channels,
            channels == 1 ? 0 : 1};
  }
};

template <class Sample, class Library, class Model>
std::function<Calls(OrvSize)> on(int channels, Library library, Model model) {
  return [=](OrvSize roi) -> Calls {
    auto r = shared(Reduction<Sample>{roi, channels});
    return {[r, library] { library(*r); }, [r, model] { model(*r); }};
  };
}

/// One image of one channel, masked.
template <class Sample, auto function, Norm norm>
std::function<Calls(OrvSize)> masked() {
  return on<Sample>(
      1, [](auto& r) { function(r.src1.data(), r.src1.step(), r.mask.data(), r.mask.step(), r.roi, &r.value); },
      [](auto& r) { r.value = model::norm(norm, r.input(false, true)); });
}

/// Two images of one channel, masked.
template <class Sample, auto function, Norm norm>
std::function<Calls(OrvSize)> compared() {
  return on<Sample>(
      1,
      [](auto& r) {
        function(r.src1.data(), r.src1.step(), r.src2.data(), r.src2.step(), r.mask.data(), r.mask.step(), r.roi,
                 &r.value);
      },
      [](auto& r) { r.value = model::norm(norm, r.input(true, true)); });
}

template <class Sample, auto function>
std::function<Calls(OrvSize)> deviation() {
  return on<Sample>(
      1, [](auto& r) { function(r.src1.data(), r.src1.step(), r.roi, &r.value, &r.stdDev); },
      [](auto& r) { r.stdDev = model::meanDeviation(r.input(false, false)).stdDev; });
}

template <class Sample, auto function>
std::function<Calls(OrvSize)> maskedDeviation() {
  return on<Sample>(
      1,
      [](auto& r) { function(r.src1.data(), r.src1.step(), r.mask.data(), r.mask.step(), r.roi, &r.value, &r.stdDev); },
      [](auto& r) { r.stdDev = model::meanDeviation(r.input(false, true)).stdDev; });
}

const bool registered = addCases({
    {.function = "orviNorm_L2_8u_C1MR",
     .work = "norm L2 8u masked",
     .budget = 5,
     .limit = 3.5,
     .bytesPerPixel = 2,
     .prepare = masked<uint8_t, orviNorm_L2_8u_C1MR, Norm::l2>()},
    {.function = "orviNorm_Inf_8u_C1MR",
     .work = "norm Inf 8u masked",
     .budget = 3.5,
     .limit = 2,
     .bytesPerPixel = 2,
     .prepare = masked<uint8_t, orviNorm_Inf_8u_C1MR, Norm::inf>()},
    {.function = "orviNormDiff_L1_8u_C1MR",
     .work = "norm L1 of difference 8u masked",
     .budget = 4,
     .limit = 2.5,
     .bytesPerPixel = 3,
     .prepare = compared<uint8_t, orviNormDiff_L1_8u_C1MR, Norm::l1>()},
    {.function = "orviNorm_L2_32f_C1MR",
     .work = "norm L2 32f masked",
     .budget = 11,
     .limit = 8,
     .bytesPerPixel = 5,
     .prepare = masked<float, orviNorm_L2_32f_C1MR, Norm::l2>()},
    {.function = "orviNorm_L1_16u_C1MR",
     .work = "norm L1 16u masked",
     .budget = 8,
     .limit = 5,
     .bytesPerPixel = 3,
     .prepare = masked<uint16_t, orviNorm_L1_16u_C1MR, Norm::l1>()},
    {.function = "orviNorm_L2_16u_C1MR",
     .work = "norm L2 16u masked",
     .budget = 12,
     .limit = 8,
     .bytesPerPixel = 3,
     .prepare = masked<uint16_t, orviNorm_L2_16u_C1MR, Norm::l2>()},
    {.function = "orviNorm_L2_8u_C3CMR",
     .bytesPerPixel = 4,
     .prepare = on<uint8_t>(
         3,
         [](auto& r) {
           orviNorm_L2_8u_C3CMR(r.src1.data(), r.src1.step(), r.mask.data(), r.mask.step(), r.roi, 2, &r.value);
         },
         [](auto& r) { r.value = model::norm(Norm::l2, r.input(false, true)); })},
    {.function = "orviNormRel_L1_32f_C1MR",
     .bytesPerPixel = 9,
     .prepare = on<float>(
         1,
         [](auto& r) {
           orviNormRel_L1_32f_C1MR(r.src1.data(), r.src1.step(), r.src2.data(), r.src2.step(), r.mask.data(),
                                   r.mask.step(), r.roi, &r.value);
         },
         [](auto& r) { r.value = model::relativeNorm(Norm::l1, r.input(true, true)).value; })},
    {.function = "orviMean_StdDev_8u_C1R",
     .work = "mean and deviation 8u",
     .budget = 3,
     .limit = 2,
     .bytesPerPixel = 1,
     .prepare = deviation<uint8_t, orviMean_StdDev_8u_C1R>()},
    {.function = "orviMean_StdDev_32f_C1R",
     .work = "mean and deviation 32f",
     .budget = 11,
     .limit = 8,
     .bytesPerPixel = 4,
     .prepare = deviation<float, orviMean_StdDev_32f_C1R>()},
    {.function = "orviMean_StdDev_8u_C1MR",
     .bytesPerPixel = 2,
     .prepare = maskedDeviation<uint8_t, orviMean_StdDev_8u_C1MR>()},
    {.function = "orviMean_StdDev_32f_C1MR",
     .bytesPerPixel = 5,
     .prepare = maskedDeviation<float, orviMean_StdDev_32f_C1MR>()},
    {.function = "orviMinMaxIndx_8u_C1R",
     .work = "extrema with positions 8u",
     .budget = 3,
     .limit = 1.5,
     .bytesPerPixel = 1,
     .prepare = on<uint8_t>(
         1,
         [](auto& r) {
           orviMinMaxIndx_8u_C1R(r.src1.data(), r.src1.step(), r.roi, &r.minVal, &r.maxVal, &r.minIndex, &r.maxIndex);
         },
         [](auto& r) { r.minVal = model::extrema(r.input(false, false)).minimum.value; })},
    {.function = "orviMinMaxIndx_32f_C1MR",
     .work = "extrema with positions 32f masked",
     .budget = 9,
     .limit = 6,
     .bytesPerPixel = 5,
     .prepare = on<float>(
         1,
         [](auto& r) {
           orviMinMaxIndx_32f_C1MR(r.src1.data(), r.src1.step(), r.mask.data(), r.mask.step(), r.roi, &r.minVal,
                                   &r.maxVal, &r.minIndex, &r.maxIndex);
         },
         [](auto& r) { r.minVal = model::extrema(r.input(false, true)).minimum.value; })},
});

}  // namespace
}  // namespace bench
