// The ascending sort of doubles.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "frame/vector_kernels.h"
#include "support/cases.h"
#include "support/check_order.h"
#include "support/checked_call.h"
#include "support/image.h"

namespace orvtest {
namespace {

/// Sorted, and still the same elements. Which zero comes first is not told.
void expectSorted(std::vector<double> values, const std::string& what) {
  SCOPED_TRACE(what + " of " + std::to_string(values.size()));
  const GuardedBlock block("values", values.size() * sizeof(double), static_cast<int>(values.size()) % 64);
  std::memcpy(block.data(), values.data(), block.size());
  EXPECT_EQ(orvStsOk, checkedCall(orv::orvsSortAscend_64f_I, block.as<double>(), static_cast<int>(values.size())));
  std::vector<double> sorted(values.size());
  std::memcpy(sorted.data(), block.data(), block.size());
  const auto negativeZeros = [](const std::vector<double>& all) {
    return std::count_if(all.begin(), all.end(), [](double value) { return value == 0 && std::signbit(value); });
  };
  EXPECT_EQ(negativeZeros(values), negativeZeros(sorted));
  std::sort(values.begin(), values.end());
  EXPECT_TRUE(values == sorted);
}

TEST(SortAscend, EveryLengthInEveryOrder) {
  const std::vector<std::pair<const char*, std::function<double(int i, int n)>>> orders{
      {"ascending", [](int i, int) { return i; }},
      {"descending", [](int i, int n) { return n - i; }},
      {"all equal", [](int, int) { return 7.5; }},
      {"up and down", [](int i, int n) { return std::min(i, n - i); }},
      {"down and up", [](int i, int n) { return std::max(i, n - i); }},
      {"saw", [](int i, int) { return i % 5; }},
      {"two values", [](int i, int) { return i & 1; }},
      {"last is least", [](int i, int n) { return i == n - 1 ? -1 : i; }},
      {"first is greatest", [](int i, int n) { return i == 0 ? n : i; }},
      {"odd before even", [](int i, int n) { return i % 2 == 0 ? i : n + i; }}};
  std::vector<int> lengths;
  for (int length = 1; length <= 70; ++length) lengths.push_back(length);
  lengths.insert(lengths.end(), {100, 127, 128, 129, 1000, 20000});
  for (const auto& [name, order] : orders)
    for (const int length : lengths) {
      std::vector<double> values;
      for (int i = 0; i < length; ++i) values.push_back(order(i, length));
      expectSorted(values, name);
    }
}

TEST(SortAscend, EveryPermutationOfSix) {
  std::vector<double> values{-2, -1, 0, 1, 1, 3};
  do expectSorted(values, "permutation");
  while (std::next_permutation(values.begin(), values.end()));
}

TEST(SortAscend, AnyNumbers) {
  forCases("sort", 200, [](Random& random) {
    const int length = random.oneIn(8) ? random.between(300, 5000) : random.between(1, 300);
    const Values kind = random.pick({Values::few, Values::ordinary, Values::finite});
    std::vector<double> values;
    for (int i = 0; i < length; ++i)
      values.push_back(random.oneIn(50) ? random.pick({HUGE_VAL, -HUGE_VAL, 0.0, -0.0})
                                        : std::bit_cast<double>(drawBits<double>(random, kind)));
    expectSorted(values, "random numbers");
  });
}

struct Call {
  double* srcDst;
  int length;
};

TEST(SortAscend, Checks) {
  const GuardedBlock values("values", 16);
  const double pair[] = {1, 2};
  std::memcpy(values.data(), pair, sizeof pair);
  CheckOrder<Call> order({values.as<double>(), 2},
                         [](const Call& c) { return checkedCall(orv::orvsSortAscend_64f_I, c.srcDst, c.length); });
  order.watch(values);
  order.faults = {nullFault("srcDst", &Call::srcDst),
                  valueFault("length", &Call::length, {0, -1, INT_MIN}, orvStsBadSize)};
  order.verify();
}

}  // namespace
}  // namespace orvtest
