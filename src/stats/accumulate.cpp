// Running sums, squares, products and averages of images in a single-precision accumulator.
#include "frame/checks.h"
#include "frame/declarations.h"
#include "frame/views.h"
#include "simd/vectors.h"

namespace orv {
namespace {

// What is added to the accumulator element a for the source samples s; V is one sample or a vector of them.
struct Sum {
  template <class V>
  V operator()(V, V s) const {
    return s;
  }
};
struct Square {
  template <class V>
  V operator()(V, V s) const {
    return s * s;
  }
};
struct Product {
  template <class V>
  V operator()(V, V s1, V s2) const {
    return s1 * s2;
  }
};
struct Change {
  template <class V>
  V operator()(V a, V s) const {
    return s - a;
  }
};

// The weight of the term. Masks multiply: the product is taken under zero mask bytes too, so that an infinity there
// makes a NaN and a sum with +0.0 turns -0.0 into +0.0.
struct Unweighted {
  template <class V>
  V operator()(int, V term) const {
    return term;
  }
};
struct Weighted {
  float weight;
  template <class V>
  V operator()(int, V term) const {
    return V::broadcast(weight) * term;
  }
};
struct WeightedUnder {
  const uint8_t* mask;
  float weight;
  template <class V>
  V operator()(int x, V term) const {
    return selectedWeight(mask + x, V::broadcast(weight)) * term;
  }
};

/// A source of integers that counts under its mask only. Products of integers are finite, so that a zeroed sample gives
/// what the product with +0.0 gives.
template <class Source>
struct Selected {
  const Source* samples;
  const uint8_t* mask;
};

template <class V, class Source>
V loadAt(const Source* samples, int x) {
  return V::load(samples + x);
}
template <class V, class Source>
V loadAt(Selected<Source> source, int x) {
  return loadSelected(V{}, source.samples + x, source.mask + x);
}

/// dst = a + weight(term(a, sources...)). 8 pixels a step, bound by the loads and stores of the accumulator.
void accumulateRow(const float* acc, float* dst, int width, auto term, auto weight, auto... sources) {
  forEachVector<float>(width, [&]<class V>(V, int x) {
    const V a = V::load(acc + x);
    (a + weight(x, term(a, loadAt<V>(sources, x)...))).store(dst + x);
  });
}

/// The step checks. 16-bit sources are judged, length and alignment, before the other images; images of one sample
/// size are judged for length together and then for alignment. An absent mask passes noMask as its step.
constexpr int noMask = 0x7fffffff;
template <class Source, class... Steps>
OrvStatus badSteps(int width, int accStep, int maskStep, Steps... srcSteps) {
  constexpr bool mixedSizes = sizeof(Source) != sizeof(float);
  return firstFailure(badStep<Source>(srcSteps, width)..., mixedSizes ? stepNotAligned<Source>(srcSteps...) : Check{},
                      badStep<uint8_t>(maskStep, width), badStep<float>(accStep, width),
                      stepNotAligned<Source>(srcSteps...), stepNotAligned<float>(accStep));
}

template <class Source, class... Sources>
OrvStatus accumulate(auto term, auto weight, OrvSize roi, View<float> acc, View<const Source> src, Sources... more) {
  if (OrvStatus status = firstFailure(nullPointer(acc.first, src.first, more.first...), badSize(roi),
                                      badSteps<Source>(roi.width, acc.step, noMask, src.step, more.step...)))
    return status;
  for (const auto& row : rows(roi.height, acc, src, more...))
    std::apply([&](float* a, auto... s) { accumulateRow(a, a, roi.width, term, weight, s...); }, row);
  return orvStsOk;
}

template <class Source, class... Sources>
OrvStatus accumulateMasked(auto term, float weight, OrvSize roi, View<float> acc, View<const uint8_t> mask,
                           View<const Source> src, Sources... more) {
  if (OrvStatus status = firstFailure(nullPointer(acc.first, mask.first, src.first, more.first...), badSize(roi),
                                      badSteps<Source>(roi.width, acc.step, mask.step, src.step, more.step...)))
    return status;
  constexpr bool zeroesSamples = std::is_integral_v<Source> && !std::is_same_v<decltype(term), Change>;
  for (const auto& row : rows(roi.height, acc, mask, src, more...))
    std::apply(
        [&](float* a, const uint8_t* m, const Source* s, auto... others) {
          if constexpr (zeroesSamples)
            accumulateRow(a, a, roi.width, term, Unweighted{}, Selected<Source>{s, m}, others...);
          else
            accumulateRow(a, a, roi.width, term, WeightedUnder{m, weight}, s, others...);
        },
        row);
  return orvStsOk;
}

}  // namespace

#define ORV_SUM(name, Source)                                                                     \
  OrvStatus name(const Source* src, int srcStep, float* srcDst, int srcDstStep, OrvSize roi) {    \
    return accumulate(ORV_TERM, Unweighted{}, roi, View{srcDst, srcDstStep}, View{src, srcStep}); \
  }
#define ORV_SUM_MASKED(name, Source)                                                                                  \
  OrvStatus name(const Source* src, int srcStep, const uint8_t* mask, int maskStep, float* srcDst, int srcDstStep,    \
                 OrvSize roi) {                                                                                       \
    return accumulateMasked(ORV_TERM, 1.0f, roi, View{srcDst, srcDstStep}, View{mask, maskStep}, View{src, srcStep}); \
  }

#define ORV_TERM \
  Sum {}
ORV_SUM(orviAdd_8u32f_C1IR, uint8_t)
ORV_SUM(orviAdd_16u32f_C1IR, uint16_t)
ORV_SUM_MASKED(orviAdd_8u32f_C1IMR, uint8_t)
ORV_SUM_MASKED(orviAdd_16u32f_C1IMR, uint16_t)
ORV_SUM_MASKED(orviAdd_32f_C1IMR, float)
#undef ORV_TERM

#define ORV_TERM \
  Square {}
ORV_SUM(orviAddSquare_8u32f_C1IR, uint8_t)
ORV_SUM(orviAddSquare_16u32f_C1IR, uint16_t)
ORV_SUM(orviAddSquare_32f_C1IR, float)
ORV_SUM_MASKED(orviAddSquare_8u32f_C1IMR, uint8_t)
ORV_SUM_MASKED(orviAddSquare_16u32f_C1IMR, uint16_t)
ORV_SUM_MASKED(orviAddSquare_32f_C1IMR, float)
#undef ORV_TERM

#define ORV_PRODUCT(type, Source)                                                                             \
  OrvStatus orviAddProduct_##type##_C1IR(const Source* src1, int src1Step, const Source* src2, int src2Step,  \
                                         float* srcDst, int srcDstStep, OrvSize roi) {                        \
    return accumulate(Product{}, Unweighted{}, roi, View{srcDst, srcDstStep}, View{src1, src1Step},           \
                      View{src2, src2Step});                                                                  \
  }                                                                                                           \
  OrvStatus orviAddProduct_##type##_C1IMR(const Source* src1, int src1Step, const Source* src2, int src2Step, \
                                          const uint8_t* mask, int maskStep, float* srcDst, int srcDstStep,   \
                                          OrvSize roi) {                                                      \
    return accumulateMasked(Product{}, 1.0f, roi, View{srcDst, srcDstStep}, View{mask, maskStep},             \
                            View{src1, src1Step}, View{src2, src2Step});                                      \
  }

ORV_PRODUCT(8u32f, uint8_t)
ORV_PRODUCT(16u32f, uint16_t)
ORV_PRODUCT(32f, float)

#define ORV_AVERAGE(type, Source)                                                                                      \
  OrvStatus orviAddWeighted_##type##_C1IR(const Source* src, int srcStep, float* srcDst, int srcDstStep, OrvSize roi,  \
                                          float alpha) {                                                               \
    return accumulate(Change{}, Weighted{alpha}, roi, View{srcDst, srcDstStep}, View{src, srcStep});                   \
  }                                                                                                                    \
  OrvStatus orviAddWeighted_##type##_C1IMR(const Source* src, int srcStep, const uint8_t* mask, int maskStep,          \
                                           float* srcDst, int srcDstStep, OrvSize roi, float alpha) {                  \
    return accumulateMasked(Change{}, alpha, roi, View{srcDst, srcDstStep}, View{mask, maskStep}, View{src, srcStep}); \
  }

ORV_AVERAGE(8u32f, uint8_t)
ORV_AVERAGE(16u32f, uint16_t)
ORV_AVERAGE(32f, float)

OrvStatus orviAddWeighted_32f_C1R(const float* src1, int src1Step, const float* src2, int src2Step, float* dst,
                                  int dstStep, OrvSize roi, float alpha) {
  if (OrvStatus status = firstFailure(nullPointer(src1, src2, dst), badSize(roi),
                                      badSteps<float>(roi.width, dstStep, noMask, src1Step, src2Step)))
    return status;
  for (auto [s1, s2, d] : rows(roi.height, View{src1, src1Step}, View{src2, src2Step}, View{dst, dstStep}))
    accumulateRow(s2, d, roi.width, Change{}, Weighted{alpha}, s1);
  return orvStsOk;
}

}  // namespace orv
