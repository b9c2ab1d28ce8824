// Extreme values of regions and their first positions.
#include "frame/image_extrema.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "support/cases.h"
#include "support/check_order.h"
#include "support/checked_call.h"
#include "support/image.h"

namespace orvtest {
namespace {

template <class Sample>
struct Extremes {
  Sample min, max;
  int minX, minY, maxX, maxY;
};

/// In reading order; only a strict improvement moves a position. There are no NaNs.
template <class Sample>
Extremes<Sample> modelExtremes(const TestImage<Sample>& image, int channel) {
  const Sample first = image.pixel(0, 0, channel);
  Extremes<Sample> e{first, first, 0, 0, 0, 0};
  for (int y = 0; y < image.height(); ++y)
    for (int x = 0; x < image.width(); ++x) {
      const Sample value = image.pixel(x, y, channel);
      if (value < e.min)
        e.min = value, e.minX = x, e.minY = y;
      if (value > e.max)
        e.max = value, e.maxX = x, e.maxY = y;
    }
  return e;
}

template <class Sample>
using Value = OrvStatus(const Sample*, int, OrvSize, Sample*);
template <class Sample>
using TwoValues = OrvStatus(const Sample*, int, OrvSize, Sample*, Sample*);
template <class Sample>
using Position = OrvStatus(const Sample*, int, OrvSize, Sample*, int*, int*);

template <class Sample>
struct Members {
  Value<Sample>*min, *max;
  TwoValues<Sample>* both;
  Position<Sample>*minAt, *maxAt;
};

/// Results go to blocks of exactly their size, at any address that suits their type.
template <class Type, int channels>
struct Results {
  GuardedBlock block;
  Results(Random& random, const char* name)
      : block(name, channels * static_cast<int>(sizeof(Type)), random.below(16) * 4) {
    block.fill(random);
  }
  Type* data() const { return block.as<Type>(); }
};

template <class Sample, int channels>
void expectExtremes(const Members<Sample>& members, const TestImage<Sample>& image, Random& random) {
  const Results<Sample, channels> min(random, "min"), max(random, "max"), low(random, "low"), high(random, "high"),
      lowAt(random, "value at low"), highAt(random, "value at high");
  const Results<int, channels> lowX(random, "low x"), lowY(random, "low y"), highX(random, "high x"),
      highY(random, "high y");
  image.protectReadOnly();
  EXPECT_EQ(orvStsOk, checkedCall(members.min, image.data(), image.step(), image.size(), min.data()));
  EXPECT_EQ(orvStsOk, checkedCall(members.max, image.data(), image.step(), image.size(), max.data()));
  EXPECT_EQ(orvStsOk, checkedCall(members.both, image.data(), image.step(), image.size(), low.data(), high.data()));
  EXPECT_EQ(orvStsOk, checkedCall(members.minAt, image.data(), image.step(), image.size(), lowAt.data(), lowX.data(),
                                  lowY.data()));
  EXPECT_EQ(orvStsOk, checkedCall(members.maxAt, image.data(), image.step(), image.size(), highAt.data(), highX.data(),
                                  highY.data()));
  for (int channel = 0; channel < channels; ++channel) {
    SCOPED_TRACE(image.describe() + ", channel " + std::to_string(channel));
    const Extremes<Sample> expected = modelExtremes(image, channel);
    EXPECT_EQ(expected.min, min.data()[channel]);
    EXPECT_EQ(expected.max, max.data()[channel]);
    EXPECT_EQ(expected.min, low.data()[channel]);
    EXPECT_EQ(expected.max, high.data()[channel]);
    EXPECT_EQ(expected.min, lowAt.data()[channel]);
    EXPECT_EQ(expected.max, highAt.data()[channel]);
    EXPECT_EQ(expected.minX, lowX.data()[channel]);
    EXPECT_EQ(expected.minY, lowY.data()[channel]);
    EXPECT_EQ(expected.maxX, highX.data()[channel]);
    EXPECT_EQ(expected.maxY, highY.data()[channel]);
  }
}

template <class Sample, int channels>
void expectModel(const Members<Sample>& members, const std::string& name) {
  forCases(name, 250, [&](Random& random) {
    // Few values: ties everywhere.
    const Values values = random.oneIn(3) ? Values::few : random.oneIn(2) ? Values::ordinary : Values::finite;
    const TestImage<Sample> image =
        drawImage<Sample>(random, "src", drawSize(random), {.channels = channels, .values = values});
    expectExtremes<Sample, channels>(members, image, random);
  });
}

/// One pixel stands out, at every place of a region, or two do: the first counts.
template <class Sample, int channels>
void expectEveryPlace(const Members<Sample>& members) {
  Random random("extrema places", channels);
  const OrvSize size{37, 3};
  TestImage<Sample> image("src", {.size = size, .channels = channels, .stepPadding = sizeof(Sample)});
  const Sample low = std::numeric_limits<Sample>::lowest(), high = std::numeric_limits<Sample>::max();
  for (const Sample outlier : {low, high})
    for (int place = 0; place < size.width * size.height; ++place) {
      image.protectWritable();
      image.fillWith(static_cast<Sample>(100));
      const int channel = place % channels;
      image.setPixel(place % size.width, place / size.width, channel, outlier);
      if (const int other = random.below(size.width * size.height); random.oneIn(2))
        image.setPixel(other % size.width, other / size.width, channel, outlier);
      expectExtremes<Sample, channels>(members, image, random);
    }
}

template <class Sample>
struct Call {
  const Sample* src;
  OrvSize roi;
  Sample *first, *second;
  int *x, *y;
};

template <class Sample, int channels>
void expectChecks(const Members<Sample>& members) {
  using C = Call<Sample>;
  Random random("extrema checks", 0);
  const TestImage<Sample> image = drawImage<Sample>(random, "src", {9, 3}, {.channels = channels});
  const Results<Sample, channels> first(random, "first"), second(random, "second");
  const Results<int, channels> x(random, "x"), y(random, "y");
  const auto verify = [&](auto run, std::vector<Fault<C>> outputs) {
    CheckOrder<C> order({image.data(), image.size(), first.data(), second.data(), x.data(), y.data()}, run);
    order.watch(image, first.block, second.block, x.block, y.block);
    order.faults = {nullFault("src", &C::src), nullFault("first", &C::first)};
    for (const auto& output : outputs) order.faults.push_back(output);
    order.faults.push_back(sizeFault("roi", &C::roi));
    order.verify();
  };
  for (auto* function : {members.min, members.max})
    verify([&](const C& c) { return checkedCall(function, c.src, image.step(), c.roi, c.first); }, {});
  verify([&](const C& c) { return checkedCall(members.both, c.src, image.step(), c.roi, c.first, c.second); },
         {nullFault("second", &C::second)});
  for (auto* function : {members.minAt, members.maxAt})
    verify([&](const C& c) { return checkedCall(function, c.src, image.step(), c.roi, c.first, c.x, c.y); },
           {nullFault("x", &C::x), nullFault("y", &C::y)});
}

#define EXTREMA(type, Sample, channels)                                                               \
  constexpr Members<Sample> members_##type##_C##channels{                                             \
      orv::orviMin_##type##_C##channels##R, orv::orviMax_##type##_C##channels##R,                     \
      orv::orviMinMax_##type##_C##channels##R, orv::orviMinIndx_##type##_C##channels##R,              \
      orv::orviMaxIndx_##type##_C##channels##R};                                                      \
  TEST(ImageExtremaModel, type##_C##channels##R) {                                                    \
    expectModel<Sample, channels>(members_##type##_C##channels, "extrema " #type "_C" #channels "R"); \
  }                                                                                                   \
  TEST(ImageExtremaPlaces, type##_C##channels##R) {                                                   \
    expectEveryPlace<Sample, channels>(members_##type##_C##channels);                                 \
  }                                                                                                   \
  TEST(ImageExtremaChecks, type##_C##channels##R) { expectChecks<Sample, channels>(members_##type##_C##channels); }

EXTREMA(8u, uint8_t, 1)
EXTREMA(8u, uint8_t, 3)
EXTREMA(16u, uint16_t, 1)
EXTREMA(16u, uint16_t, 3)
EXTREMA(32f, float, 1)
EXTREMA(32f, float, 3)

TEST(ImageExtrema, InfinitiesAreValues) {
  TestImage<float> image("src", {.size = {20, 2}});
  image.fillWith(1.0f);
  image.setPixel(13, 1, std::numeric_limits<float>::infinity());
  image.setPixel(4, 0, -std::numeric_limits<float>::infinity());
  Random random("extrema infinities", 0);
  expectExtremes<float, 1>(members_32f_C1, image, random);
  image.protectWritable();
  image.fillWith(std::numeric_limits<float>::infinity());
  expectExtremes<float, 1>(members_32f_C1, image, random);
  image.protectWritable();
  image.fillWith(-std::numeric_limits<float>::infinity());
  expectExtremes<float, 1>(members_32f_C1, image, random);
}

}  // namespace
}  // namespace orvtest
