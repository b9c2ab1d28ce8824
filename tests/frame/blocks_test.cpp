// Carving of blocks.
#include "frame/blocks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "support/guarded.h"

namespace orvtest {
namespace {

TEST(Blocks, RoundUpOfNumbers) {
  EXPECT_EQ(0, orv::roundUp(0, 32));
  EXPECT_EQ(32, orv::roundUp(1, 32));
  EXPECT_EQ(32, orv::roundUp(32, 32));
  EXPECT_EQ(64, orv::roundUp(33, 32));
  EXPECT_EQ(9, orv::roundUp(7, 3)) << "multiples need not be powers of two";
}

TEST(Blocks, RoundUpOfPointers) {
  const GuardedBlock block("block", 256);
  for (const size_t alignment : {1u, 2u, 16u, 32u, 64u})
    for (int offset = 0; offset < 128; ++offset) {
      const uint8_t* const rounded = orv::roundUp(block.data() + offset, alignment);
      EXPECT_EQ(0u, reinterpret_cast<uintptr_t>(rounded) % alignment);
      EXPECT_GE(rounded, block.data() + offset);
      EXPECT_LT(rounded, block.data() + offset + alignment);
    }
}

/// Takes a few areas of several types from a block that starts anywhere and fills them.
void expectCarves(size_t alignment, int residue) {
  constexpr size_t bytes = 7, shorts = 5, doubles = 3;
  const size_t size = (bytes + shorts * 2 + doubles * 8) + 3 * (alignment - 1);
  const GuardedBlock block("block", size, residue);
  orv::Carver carver(block.data(), alignment);
  auto* const first = carver.take<uint8_t>(bytes);
  auto* const second = carver.take<int16_t>(shorts);
  auto* const third = carver.take<double>(doubles);

  EXPECT_GE(first, block.data());
  EXPECT_LT(first, block.data() + alignment) << "the block is rounded up, no more";
  EXPECT_GE(reinterpret_cast<uint8_t*>(second), first + bytes);
  EXPECT_LT(reinterpret_cast<uint8_t*>(second), first + bytes + alignment);
  EXPECT_GE(reinterpret_cast<uint8_t*>(third), reinterpret_cast<uint8_t*>(second + shorts));
  EXPECT_LT(reinterpret_cast<uint8_t*>(third), reinterpret_cast<uint8_t*>(second + shorts) + alignment);
  for (const uintptr_t area :
       {reinterpret_cast<uintptr_t>(first), reinterpret_cast<uintptr_t>(second), reinterpret_cast<uintptr_t>(third)})
    EXPECT_EQ(0u, area % alignment);
  EXPECT_EQ(reinterpret_cast<const char*>(third + doubles), carver.end()) << "the end is not rounded";
  EXPECT_LE(carver.end(), reinterpret_cast<const char*>(block.data() + size));

  std::fill_n(first, bytes, uint8_t{1});
  std::fill_n(second, shorts, int16_t{2});
  std::fill_n(third, doubles, 3.0);
  EXPECT_EQ(std::vector<uint8_t>(bytes, 1), std::vector<uint8_t>(first, first + bytes));
  EXPECT_EQ(std::vector<int16_t>(shorts, 2), std::vector<int16_t>(second, second + shorts));
}

TEST(Blocks, AreasAreAlignedAndDisjoint) {
  for (const size_t alignment : {8u, 16u, 32u, 64u})
    for (int residue = 0; residue < 64; ++residue) expectCarves(alignment, residue);
}

TEST(Blocks, AreasAreAlignedTo32UnlessToldOtherwise) {
  const GuardedBlock block("block", 128, 5);
  orv::Carver carver(block.data());
  EXPECT_EQ(block.data() + 27, carver.take<uint8_t>(33));
  EXPECT_EQ(block.data() + 27 + 64, carver.take<uint8_t>(1));
  EXPECT_EQ(reinterpret_cast<const char*>(block.data()) + 92, carver.end());
}

}  // namespace
}  // namespace orvtest
