#include "support/guarded.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <optional>
#include <set>

#include "support/cases.h"
#include "support/checked_call.h"

namespace orvtest {
namespace {

int readByte(const volatile uint8_t* address) { return *address; }
int writeByte(volatile uint8_t* address) {
  *address = *address;
  return 0;
}

/// The checked call reports a fault instead of ending the test program.
bool canRead(const uint8_t* address) {
  testing::TestPartResultArray failures;
  const testing::ScopedFakeTestPartResultReporter reporter(&failures);
  return checkedCall(readByte, address) != faulted;
}
bool canWrite(uint8_t* address) {
  testing::TestPartResultArray failures;
  const testing::ScopedFakeTestPartResultReporter reporter(&failures);
  return checkedCall(writeByte, address) != faulted;
}

TEST(GuardedMemory, FencesBothSides) {
  for (const size_t size : {size_t{1}, size_t{100}, size_t{4095}, size_t{4096}, size_t{4097}, size_t{10000}}) {
    const GuardedMemory after("after", size, {Placement::Fence::after, 0});
    EXPECT_TRUE(canRead(after.data()));
    EXPECT_TRUE(canWrite(after.data() + size - 1));
    EXPECT_FALSE(canRead(after.data() + size));
    EXPECT_FALSE(canRead(after.pages() - 1));
    const GuardedMemory before("before", size, {Placement::Fence::before, 0});
    EXPECT_TRUE(canRead(before.data()));
    EXPECT_FALSE(canRead(before.data() - 1));
    EXPECT_FALSE(canRead(before.pages() + before.pagesSize()));
  }
}

TEST(GuardedMemory, DistanceMovesTheDataFromTheFence) {
  const GuardedMemory after("after", 100, {Placement::Fence::after, 3});
  EXPECT_TRUE(canRead(after.data() + 102));
  EXPECT_FALSE(canRead(after.data() + 103));
  const GuardedMemory before("before", 100, {Placement::Fence::before, 5});
  EXPECT_TRUE(canRead(before.data() - 5));
  EXPECT_FALSE(canRead(before.data() - 6));
}

TEST(GuardedMemory, ProtectionForbidsWritingAlone) {
  const GuardedMemory memory("memory", 100);
  memory.protectReadOnly();
  EXPECT_TRUE(canRead(memory.data()));
  EXPECT_FALSE(canWrite(memory.data()));
  memory.protectWritable();
  EXPECT_TRUE(canWrite(memory.data()));
}

TEST(GuardedMemory, CanariesTellOfEveryByteOutside) {
  for (const int offset : {-1, -7, 100, 102}) {
    const GuardedMemory memory("memory", 100, {Placement::Fence::after, 3});
    memory.data()[0] = memory.data()[99] = 0;
    memory.expectCanariesIntact();
    memory.data()[offset] ^= 1;
    EXPECT_NONFATAL_FAILURE(memory.expectCanariesIntact(), "a byte outside was written");
  }
}

TEST(GuardedMemory, TwinsAreTheSameAtTheSameOffset) {
  const GuardedMemory memory("memory", 100, {Placement::Fence::before, 21});
  memory.data()[50] = 200;
  memory.protectReadOnly();
  const GuardedMemory twin(memory);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(memory.data()) % 4096, reinterpret_cast<uintptr_t>(twin.data()) % 4096);
  EXPECT_EQ(0, std::memcmp(memory.pages(), twin.pages(), memory.pagesSize()));
  twin.data()[0] ^= 1;
  EXPECT_NE(memory.data()[0], twin.data()[0]);
}

TEST(GuardedMemory, MovesWithItsName) {
  GuardedMemory memory("memory", 100);
  const uint8_t* data = memory.data();
  const GuardedMemory moved(std::move(memory));
  EXPECT_EQ(data, moved.data());
  EXPECT_EQ("at byte 4 of memory", GuardedMemory::describe(data + 4));
}

TEST(GuardedMemory, GivesItsPagesBack) {
  std::optional<GuardedMemory> memory;
  memory.emplace("memory", 100);
  const uint8_t* data = memory->data();
  EXPECT_EQ("at byte 0 of memory", GuardedMemory::describe(data));
  memory.reset();
  EXPECT_EQ("", GuardedMemory::describe(data));
  EXPECT_FALSE(canRead(data));
}

TEST(GuardedMemory, PlacementsReachBothFencesAndManyResidues) {
  std::set<uintptr_t> residues;
  int flush = 0, before = 0;
  for (uint32_t number = 0; number < 400; ++number) {
    Random random("placement", number);
    const Placement placement = drawPlacement(random);
    const GuardedMemory memory("memory", 128, placement);
    residues.insert(reinterpret_cast<uintptr_t>(memory.data()) % 64);
    flush += placement.distance == 0;
    before += placement.fence == Placement::Fence::before;
  }
  EXPECT_GT(residues.size(), 60u);
  EXPECT_GT(flush, 100);
  EXPECT_GT(before, 50);
}

TEST(GuardedBlock, HasTheSizeAndTheResidue) {
  forCases("blocks", 200, [](Random& random) {
    const int size = random.between(1, 5000);
    const int residue = random.below(64);
    const GuardedBlock block("block", size, residue);
    EXPECT_EQ(static_cast<size_t>(size), block.size());
    EXPECT_EQ(static_cast<uintptr_t>(residue), reinterpret_cast<uintptr_t>(block.data()) % 64);
    block.fill(random);
    EXPECT_FALSE(canRead(block.data() + size + 63));
  });
}

TEST(GuardedBlock, TellsOfAWriteAroundItAtItsEnd) {
  std::optional<GuardedBlock> block;
  block.emplace("block", 100, 7);
  block->data()[-1] ^= 1;
  EXPECT_NONFATAL_FAILURE(block.reset(), "1 bytes before the start of block");
}

}  // namespace
}  // namespace orvtest
