// Views and the walk over rows.
#include "frame/views.h"

#include <gtest/gtest.h>

#include <vector>

namespace orvtest {
namespace {

using namespace orv;

TEST(Views, RowsLieAStepApartInBytes) {
  float samples[20];
  const View<float> view{samples, 5 * 4};
  EXPECT_EQ(samples, view.row(0));
  EXPECT_EQ(samples + 15, view.row(3));
  EXPECT_EQ(reinterpret_cast<uint8_t*>(samples) + 3, advanceBytes(reinterpret_cast<uint8_t*>(samples), 3));
  EXPECT_EQ(samples + 1, advanceBytes(samples + 3, -8));
}

TEST(Views, WalksSeveralViewsWithTheirOwnSteps) {
  const uint8_t source[7 * 3] = {};
  float result[4 * 3] = {};
  int y = 0;
  for (auto [s, r] : rows(3, View{source, 7}, View{result, 16})) {
    EXPECT_EQ(source + 7 * y, s);
    EXPECT_EQ(result + 4 * y, r);
    ++y;
  }
  EXPECT_EQ(3, y);
}

TEST(Views, WalksPastAnyAddress) {
  // The last row may end at the end of memory, where the next row's pointer wraps around.
  const auto* last = reinterpret_cast<const uint8_t*>(uintptr_t{0xfffffff0});
  std::vector<const uint8_t*> seen;
  for (auto [row] : rows(1, View{last, 0x7fffffff})) seen.push_back(row);
  EXPECT_EQ((std::vector<const uint8_t*>{last}), seen);
}

TEST(Views, OddPointersKeepTheirResidue) {
  float memory[8];
  auto* odd = advanceBytes(memory, 1);
  for (auto [row] : rows(2, View{odd, 12})) EXPECT_EQ(1u, reinterpret_cast<uintptr_t>(row) % 4);
}

}  // namespace
}  // namespace orvtest
