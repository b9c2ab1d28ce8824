// Means and standard deviations, of a whole region or under a mask.
#include "frame/scalar_functions.h"
#include "stats/reductions.h"
#include "stats/weighted_rows.h"

namespace orv {
namespace {

struct Moments {
  double mean, stdDev;
};

Moments momentsOf(double sum, double squares, double count) {
  const double mean = sum / count;
  return {mean, orvsSqrtOne(orvsFabsOne(squares / count - mean * mean))};
}

template <class Sample>
class IntegerSum {
public:
  void add(const auto& group) { sum_.add(zeroWhere(group.excluded(), group.sample())); }
  void flush() { sum_.flush(); }
  double sum() const { return toDouble(sum_.total()); }

private:
  SampleSum<Sample> sum_;
};

template <class Sample>
class IntegerSums {
public:
  void add(const auto& group) {
    const auto samples = zeroWhere(group.excluded(), group.sample());
    sum_.add(samples);
    squares_.add(samples);
  }
  void flush() {
    sum_.flush();
    squares_.flush();
  }
  double sum() const { return toDouble(sum_.total()); }
  double squares() const { return toDouble(squares_.total()); }

private:
  SampleSum<Sample> sum_;
  SquareSum<Sample> squares_;
};

/// Sums of floats in the order of walkWeighted.
struct WeightedTally {
  void endGroups() {}
  void endRow() {}
};

class FloatSum : public WeightedTally {
public:
  void add(const auto& pixels) { sum_.add(pixels.weighted(pixels.sample())); }
  double sum() const { return sum_.total(); }

private:
  WideSum sum_;
};

class FloatSums : public WeightedTally {
public:
  void add(const auto& pixels) {
    const auto samples = widen(pixels.weighted(pixels.sample()));
    sum_.add(samples);
    squares_.add(samples * samples);
  }
  double sum() const { return sum_.total(); }
  double squares() const { return squares_.total(); }

private:
  WideSum sum_, squares_;
};

class FloatDeviations : public WeightedTally {
public:
  explicit FloatDeviations(double mean) : mean_(mean) {}
  void add(const auto& pixels) {
    const auto samples = widen(pixels.sample());
    const auto deviation = pixels.weighted(samples - decltype(samples)::broadcast(mean_));
    squares_.add(deviation * deviation);
  }
  double squares() const { return squares_.total(); }

private:
  double mean_;
  WideSum squares_;
};

template <class Channel, class Selection, std::integral Sample>
double sumOf(const Region<Channel, Selection, Sample, 1>& region) {
  return walkRows(region, IntegerSum<Sample>{}).sum();
}

template <class Channel, class Selection>
double sumOf(const Region<Channel, Selection, float, 1>& region) {
  return walkWeighted(region, FloatSum{}).sum();
}

template <class Channel, class Selection, std::integral Sample>
Moments moments(const Region<Channel, Selection, Sample, 1>& region, double count) {
  const auto sums = walkRows(region, IntegerSums<Sample>{});
  return momentsOf(sums.sum(), sums.squares(), count);
}

/// Where the difference has lost too much to cancellation, a second pass sums squared deviations from the mean.
template <class Channel, class Selection>
Moments moments(const Region<Channel, Selection, float, 1>& region, double count) {
  const auto sums = walkWeighted(region, FloatSums{});
  Moments result = momentsOf(sums.sum(), sums.squares(), count);
  if (result.mean * 0.05 * result.mean > result.stdDev * result.stdDev) {
    const auto deviations = walkWeighted(region, FloatDeviations(result.mean));
    result.stdDev = orvsSqrtOne(deviations.squares() / count);
  }
  return result;
}

/// Pixels that count, 0 to all.
double pixelCount(EveryPixel, OrvSize roi) { return static_cast<double>(roi.width) * roi.height; }
double pixelCount(Mask mask, OrvSize roi) { return toDouble(countSelected(mask, roi)); }

template <class Channel, class Sample>
OrvStatus mean(StepChecks order, View<const Sample> src, OrvSize roi, int coi, Mask mask, double* result) {
  if (OrvStatus status = badReduction<Channel>(order, roi, coi, mask, src, result))
    return status;
  const double count = pixelCount(mask, roi);
  store(result, count == 0.0 ? 0.0 : sumOf(region(roi, channelOf<Channel>(coi), mask, src)) / count);
  return orvStsOk;
}

template <class Channel, class Selection, class Sample>
OrvStatus meanAndDeviation(StepChecks order, View<const Sample> src, OrvSize roi, int coi, Selection selection,
                           double* meanResult, double* stdDevResult) {
  if (OrvStatus status = badReduction<Channel>(order, roi, coi, selection, src))
    return status;
  const double count = pixelCount(selection, roi);
  const Moments result =
      count == 0.0 ? Moments{} : moments(region(roi, channelOf<Channel>(coi), selection, src), count);
  if (meanResult != nullptr)
    store(meanResult, result.mean);
  if (stdDevResult != nullptr)
    store(stdDevResult, result.stdDev);
  return orvStsOk;
}

}  // namespace

#define ORV_MEANS(type, Sample)                                                                                       \
  OrvStatus orviMean_##type##_C1MR(const Sample* src, int srcStep, const uint8_t* mask, int maskStep, OrvSize roi,    \
                                   double* result) {                                                                  \
    return mean<OnlyChannel<Sample>>(StepChecks::imageThenMask, View{src, srcStep}, roi, onlyChannel,                 \
                                     Mask{{mask, maskStep}}, result);                                                 \
  }                                                                                                                   \
  OrvStatus orviMean_##type##_C3CMR(const Sample* src, int srcStep, const uint8_t* mask, int maskStep, OrvSize roi,   \
                                    int coi, double* result) {                                                        \
    return mean<OneOfThree<Sample>>(StepChecks::shortFirst, View{src, srcStep}, roi, coi, Mask{{mask, maskStep}},     \
                                    result);                                                                          \
  }                                                                                                                   \
  OrvStatus orviMean_StdDev_##type##_C1R(const Sample* src, int srcStep, OrvSize roi, double* mean, double* stdDev) { \
    return meanAndDeviation<OnlyChannel<Sample>>(StepChecks::shortFirst, View{src, srcStep}, roi, onlyChannel,        \
                                                 EveryPixel{}, mean, stdDev);                                         \
  }                                                                                                                   \
  OrvStatus orviMean_StdDev_##type##_C3CR(const Sample* src, int srcStep, OrvSize roi, int coi, double* mean,         \
                                          double* stdDev) {                                                           \
    return meanAndDeviation<OneOfThree<Sample>>(StepChecks::shortFirst, View{src, srcStep}, roi, coi, EveryPixel{},   \
                                                mean, stdDev);                                                        \
  }                                                                                                                   \
  OrvStatus orviMean_StdDev_##type##_C1MR(const Sample* src, int srcStep, const uint8_t* mask, int maskStep,          \
                                          OrvSize roi, double* mean, double* stdDev) {                                \
    return meanAndDeviation<OnlyChannel<Sample>>(StepChecks::imageThenMask, View{src, srcStep}, roi, onlyChannel,     \
                                                 Mask{{mask, maskStep}}, mean, stdDev);                               \
  }                                                                                                                   \
  OrvStatus orviMean_StdDev_##type##_C3CMR(const Sample* src, int srcStep, const uint8_t* mask, int maskStep,         \
                                           OrvSize roi, int coi, double* mean, double* stdDev) {                      \
    return meanAndDeviation<OneOfThree<Sample>>(StepChecks::shortFirst, View{src, srcStep}, roi, coi,                 \
                                                Mask{{mask, maskStep}}, mean, stdDev);                                \
  }

ORV_MEANS(8u, uint8_t)
ORV_MEANS(16u, uint16_t)
ORV_MEANS(32f, float)

}  // namespace orv
