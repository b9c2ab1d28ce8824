// Accumulators and absolute differences.
#include "harness.h"
#include "stats/absolute_difference_model.h"
#include "stats/accumulate_model.h"

namespace bench {
namespace {

namespace model = orvtest::model;

/// Everything that the families read and write, prepared once per case and size.
template <class Source>
struct Frame {
  OrvSize roi;
  Image<Source> src1 = photograph<Source>(roi);
  Image<Source> src2 = photograph<Source>(roi, 1, 7);
  Image<uint8_t> mask = photographMask(roi);
  Image<float> acc = photograph<float>(roi, 1, 3);
  Image<Source> dst = photograph<Source>(roi);
};

template <class Source, class Library, class Model>
std::function<Calls(OrvSize)> on(Library library, Model model) {
  return [library, model](OrvSize roi) -> Calls {
    auto frame = shared(Frame<Source>{roi});
    return {[frame, library] { library(*frame); }, [frame, model] { model(*frame); }};
  };
}

const bool registered = addCases({
    {.function = "orviAdd_8u32f_C1IR",
     .work = "running sum 8u into 32f",
     .budget = 5.9,
     .limit = 4.5,
     .bytesPerPixel = 9,
     .prepare = on<uint8_t>(
         [](auto& f) { orviAdd_8u32f_C1IR(f.src1.data(), f.src1.step(), f.acc.data(), f.acc.step(), f.roi); },
         [](auto& f) {
           model::accumulateSum(f.src1.data(), f.src1.step(), nullptr, 0, f.acc.data(), f.acc.step(), f.roi);
         })},
    {.function = "orviAdd_8u32f_C1IMR",
     .work = "running sum 8u into 32f, masked",
     .budget = 7,
     .limit = 5,
     .bytesPerPixel = 10,
     .prepare = on<uint8_t>(
         [](auto& f) {
           orviAdd_8u32f_C1IMR(f.src1.data(), f.src1.step(), f.mask.data(), f.mask.step(), f.acc.data(), f.acc.step(),
                               f.roi);
         },
         [](auto& f) {
           model::accumulateSum(f.src1.data(), f.src1.step(), f.mask.data(), f.mask.step(), f.acc.data(), f.acc.step(),
                                f.roi);
         })},
    {.function = "orviAddWeighted_8u32f_C1IR",
     .work = "running average 8u",
     .budget = 5.6,
     .limit = 4.5,
     .bytesPerPixel = 9,
     .prepare = on<uint8_t>(
         [](auto& f) {
           orviAddWeighted_8u32f_C1IR(f.src1.data(), f.src1.step(), f.acc.data(), f.acc.step(), f.roi, 0.05f);
         },
         [](auto& f) {
           model::accumulateAverage(f.src1.data(), f.src1.step(), nullptr, 0, f.acc.data(), f.acc.step(), f.roi, 0.05f);
         })},
    {.function = "orviAddSquare_32f_C1IR",
     .bytesPerPixel = 12,
     .prepare = on<float>(
         [](auto& f) { orviAddSquare_32f_C1IR(f.src1.data(), f.src1.step(), f.acc.data(), f.acc.step(), f.roi); },
         [](auto& f) {
           model::accumulateSquare(f.src1.data(), f.src1.step(), nullptr, 0, f.acc.data(), f.acc.step(), f.roi);
         })},
    {.function = "orviAddProduct_16u32f_C1IMR",
     .bytesPerPixel = 13,
     .prepare = on<uint16_t>(
         [](auto& f) {
           orviAddProduct_16u32f_C1IMR(f.src1.data(), f.src1.step(), f.src2.data(), f.src2.step(), f.mask.data(),
                                       f.mask.step(), f.acc.data(), f.acc.step(), f.roi);
         },
         [](auto& f) {
           model::accumulateProduct(f.src1.data(), f.src1.step(), f.src2.data(), f.src2.step(), f.mask.data(),
                                    f.mask.step(), f.acc.data(), f.acc.step(), f.roi);
         })},
    {.function = "orviAbsDiff_8u_C1R",
     .work = "absolute difference 8u",
     .budget = 1.9,
     .limit = 1.3,
     .bytesPerPixel = 3,
     .prepare = on<uint8_t>(
         [](auto& f) {
           orviAbsDiff_8u_C1R(f.src1.data(), f.src1.step(), f.src2.data(), f.src2.step(), f.dst.data(), f.dst.step(),
                              f.roi);
         },
         [](auto& f) {
           model::absoluteDifference(f.src1.data(), f.src1.step(), f.src2.data(), f.src2.step(), f.dst.data(),
                                     f.dst.step(), f.roi);
         })},
    {.function = "orviAbsDiff_16u_C1R",
     .bytesPerPixel = 6,
     .prepare = on<uint16_t>(
         [](auto& f) {
           orviAbsDiff_16u_C1R(f.src1.data(), f.src1.step(), f.src2.data(), f.src2.step(), f.dst.data(), f.dst.step(),
                               f.roi);
         },
         [](auto& f) {
           model::absoluteDifference(f.src1.data(), f.src1.step(), f.src2.data(), f.src2.step(), f.dst.data(),
                                     f.dst.step(), f.roi);
         })},
    {.function = "orviAbsDiff_32f_C1R",
     .bytesPerPixel = 12,
     .prepare = on<float>(
         [](auto& f) {
           orviAbsDiff_32f_C1R(f.src1.data(), f.src1.step(), f.src2.data(), f.src2.step(), f.dst.data(), f.dst.step(),
                               f.roi);
         },
         [](auto& f) {
           model::absoluteDifference(f.src1.data(), f.src1.step(), f.src2.data(), f.src2.step(), f.dst.data(),
                                     f.dst.step(), f.roi);
         })},
});

}  // namespace
}  // namespace bench
