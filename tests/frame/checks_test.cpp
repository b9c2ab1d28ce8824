// The vocabulary of argument checks.
#include "frame/checks.h"

#include <gtest/gtest.h>

#include <climits>

namespace orvtest {
namespace {

using namespace orv;

int some = 0;

TEST(Checks, FirstFailureWins) {
  EXPECT_EQ(orvStsOk, firstFailure());
  EXPECT_EQ(orvStsOk, firstFailure(nullPointer(&some), badSize(OrvSize{1, 1})));
  EXPECT_EQ(orvStsBadSize, firstFailure(nullPointer(&some), badSize(OrvSize{0, 1}), badChannelOfInterest(0)));
  EXPECT_EQ(orvStsNullPointer, firstFailure(nullPointer(&some, static_cast<int*>(nullptr)), badSize(OrvSize{0, 1})));
}

TEST(Checks, DeferredChecksRunOnlyAfterTheirPredecessorsPassed) {
  const OrvSize* missing = nullptr;
  EXPECT_EQ(orvStsNullPointer, firstFailure(nullPointer(missing), [&] { return badSize(*missing); }));
  const OrvSize size{0, 4};
  const OrvSize* present = &size;
  EXPECT_EQ(orvStsBadSize, firstFailure(nullPointer(present), [&] { return badSize(*present); }));
}

TEST(Checks, ASublistIsOneLine) {
  const auto sizes = [](OrvSize size) { return firstFailure(badSize(size)); };
  EXPECT_EQ(orvStsBadSize, firstFailure(nullPointer(&some), sizes({1, 0}), badChannelOfInterest(9)));
  EXPECT_EQ(orvStsBadChannelOfInterest, firstFailure(nullPointer(&some), sizes({1, 1}), badChannelOfInterest(9)));
  EXPECT_EQ(orvStsBadSize, firstFailure([&] { return sizes({1, 0}); }));
}

TEST(Checks, PointersNeededInSomeModes) {
  EXPECT_FALSE(nullPointerIf(false, nullptr).failed);
  EXPECT_TRUE(nullPointerIf(true, nullptr).failed);
  EXPECT_FALSE(nullPointerIf(true, &some).failed);
}

TEST(Checks, SizesAndTheirLimits) {
  for (const int bad : {0, -1, INT_MIN}) {
    EXPECT_TRUE(badSize(OrvSize{bad, 1}).failed);
    EXPECT_TRUE(badSize(OrvSizeL{1, bad}).failed);
  }
  EXPECT_FALSE(badSize(OrvSize{INT_MAX, INT_MAX}).failed);
  EXPECT_TRUE(atTopOfRange(INT_MAX));
  EXPECT_FALSE(atTopOfRange(INT_MAX - 1));
}

TEST(Checks, StepsAgainstTheirRows) {
  EXPECT_FALSE(badStep<uint8_t>(10, 10).failed);
  EXPECT_TRUE(badStep<uint8_t>(9, 10).failed);
  EXPECT_FALSE(badStep<float>(120, 10, 3).failed);
  EXPECT_TRUE(badStep<float>(119, 10, 3).failed);
  EXPECT_TRUE(badStep<uint8_t>(-10, 1).failed);
  EXPECT_EQ(orvStsBadStep, badStep<uint8_t>(9, 10).status);
}

TEST(Checks, RowsLongerThanAnyStepDoNotWrapAround) {
  EXPECT_TRUE(badStep<float>(INT_MAX, 0x40000000).failed);  // 2^32 bytes, 0 in 32 bits
  EXPECT_TRUE(badStep<float>(16, 0x40000001).failed);
  EXPECT_TRUE(badStep<double>(INT_MAX, INT_MAX, 4).failed);
  EXPECT_FALSE(badStep<uint8_t>(INT_MAX, INT_MAX).failed);
  EXPECT_EQ(int64_t{INT_MAX} * 32, rowBytes<double>(INT_MAX, 4));
}

TEST(Checks, StepsOfWholeSamples) {
  EXPECT_FALSE(stepNotAligned<uint8_t>(3).failed);
  EXPECT_TRUE(stepNotAligned<uint16_t>(3).failed);
  EXPECT_FALSE(stepNotAligned<uint16_t>(2, 6).failed);
  EXPECT_TRUE(stepNotAligned<uint16_t>(2, 7).failed);
  for (const int excess : {1, 2, 3}) EXPECT_TRUE(stepNotAligned<float>(8, 16 + excess).failed);
  EXPECT_FALSE(stepNotAligned<float>(8, 16).failed);
  EXPECT_EQ(orvStsStepNotAligned, stepNotAligned<float>(1).status);
}

TEST(Checks, SelectorsAndSets) {
  for (const int coi : {1, 2, 3}) EXPECT_FALSE(badChannelOfInterest(coi).failed);
  for (const int coi : {0, 4, -1, INT_MIN, INT_MAX})
    EXPECT_EQ(orvStsBadChannelOfInterest, outcome(badChannelOfInterest(coi)));
  for (const int mask : {33, 55}) EXPECT_FALSE(badMaskCode(mask).failed);
  for (const int mask : {0, 3, 5, 35, 53, 77, -33}) EXPECT_EQ(orvStsBadMaskCode, outcome(badMaskCode(mask)));
  EXPECT_EQ(orvStsBadNorm, outcome(notAmong(3, {2, 4}, orvStsBadNorm)));
  EXPECT_EQ(orvStsOk, outcome(notAmong(4, {2, 4}, orvStsBadNorm)));
}

TEST(Checks, SameAddress) {
  const int image[2] = {};
  EXPECT_EQ(orvStsInPlaceNotAllowed, outcome(sameAddress(image, image)));
  EXPECT_EQ(orvStsOk, outcome(sameAddress(image, image + 1)));
}

}  // namespace
}  // namespace orvtest
