#include "support/random.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <set>

#include "support/cases.h"

namespace orvtest {
namespace {

TEST(Random, IsAFunctionOfNameAndNumber) {
  // The values themselves are fixed, or recorded checksums would change.
  EXPECT_EQ(0x6c595a2e7327c8e1u, Random("name", 3).bits());
  EXPECT_EQ(Random("name", 3).bits(), Random("name", 3).bits());
  EXPECT_NE(Random("name", 3).bits(), Random("name", 4).bits());
  EXPECT_NE(Random("name", 3).bits(), Random("names", 3).bits());
}

TEST(Random, StaysInItsLimits) {
  Random random("limits", 0);
  std::set<int> seen;
  for (int draw = 0; draw < 1000; ++draw) seen.insert(random.between(-2, 3));
  EXPECT_EQ((std::set<int>{-2, -1, 0, 1, 2, 3}), seen);
}

TEST(Random, SizesReachTheInterestingWidths) {
  std::set<int> widths;
  for (uint32_t number = 0; number < 300; ++number) {
    Random random("sizes", number);
    const OrvSize size = drawSize(random);
    EXPECT_GE(size.width, 1);
    EXPECT_LE(size.width, 300);
    EXPECT_GE(size.height, 1);
    EXPECT_LE(size.height, 70);
    widths.insert(size.width);
    const OrvSize atLeast = drawSize(random, {6, 5});
    EXPECT_GE(atLeast.width, 6);
    EXPECT_GE(atLeast.height, 5);
  }
  for (const int width : {1, 2, 3, 7, 8, 9, 15, 16, 17, 31, 32, 33}) EXPECT_TRUE(widths.contains(width)) << width;
  EXPECT_GT(*widths.rbegin(), 70);
}

TEST(Random, StepsAreExactPaddedAndAligned) {
  std::map<std::string, int> seen;
  for (uint32_t number = 0; number < 300; ++number) {
    Random random("steps", number);
    const int row = 4 * random.between(1, 70);
    const int padding = drawStepPadding(random, row, 4);
    EXPECT_GE(padding, 0);
    EXPECT_EQ(0, padding % 4);
    ++seen[padding == 0 ? "exact" : padding >= 400 ? "large" : (row + padding) % 32 == 0 ? "aligned" : "odd"];
  }
  EXPECT_EQ(4u, seen.size());
}

TEST(Random, FloatsHoldEverySpecial) {
  std::set<std::string> seen;
  Random random("specials", 0);
  for (int draw = 0; draw < 5000; ++draw) {
    const uint32_t bits = drawBits<float>(random, Values::anything);
    const uint32_t magnitudeBits = bits & 0x7fffffffu;
    const char* sign = bits >> 31 ? "-" : "+";
    const auto note = [&](bool is, const char* what) {
      if (is)
        seen.insert(std::string(sign) + what);
    };
    note(magnitudeBits == 0, "zero");
    note(magnitudeBits > 0 && magnitudeBits < 0x00800000u, "denormal");
    note(magnitudeBits == 0x7f7fffffu, "largest");
    note(magnitudeBits == 0x7f800000u, "infinity");
    note(magnitudeBits > 0x7fc00000u, "quiet");
    note(magnitudeBits > 0x7f800000u && magnitudeBits < 0x7fc00000u, "signalling");
    note(magnitudeBits > 0x3f800000u && magnitudeBits < 0x7f000000u, "ordinary");
  }
  EXPECT_EQ(14u, seen.size());
}

TEST(Random, KindsOfValuesKeepTheirPromise) {
  Random random("kinds", 0);
  for (int draw = 0; draw < 5000; ++draw) {
    EXPECT_TRUE(std::isfinite(std::bit_cast<float>(drawBits<float>(random, Values::finite))));
    EXPECT_TRUE(std::isfinite(std::bit_cast<double>(drawBits<double>(random, Values::finite))));
    EXPECT_LE(std::fabs(std::bit_cast<float>(drawBits<float>(random, Values::ordinary))), 4096.0f);
    EXPECT_LE(drawBits<uint8_t>(random, Values::few), 3);
  }
}

TEST(Random, IntegersHoldTheirExtremes) {
  Random random("integers", 0);
  std::set<int> seen;
  for (int draw = 0; draw < 2000; ++draw)
    seen.insert(std::bit_cast<int16_t>(drawBits<int16_t>(random, Values::anything)));
  for (const int extreme : {-32768, -32767, 0, 1, 32766, 32767}) EXPECT_TRUE(seen.contains(extreme)) << extreme;
}

TEST(Random, MasksAreWhatTheirKindSays) {
  Random random("masks", 0);
  const auto selectedOf1000 = [&](MaskKind kind) {
    MaskBytes bytes(random, kind);
    int selected = 0;
    for (int i = 0; i < 1000; ++i) selected += bytes.next() != 0;
    return selected;
  };
  EXPECT_EQ(0, selectedOf1000(MaskKind::none));
  EXPECT_EQ(1000, selectedOf1000(MaskKind::all));
  EXPECT_LT(selectedOf1000(MaskKind::sparse), 200);
  EXPECT_GT(selectedOf1000(MaskKind::dense), 800);
  EXPECT_GT(selectedOf1000(MaskKind::runs), 100);
  EXPECT_LT(selectedOf1000(MaskKind::runs), 900);
  EXPECT_GT(selectedOf1000(MaskKind::any), 300);
}

// The rule that reference models rely on, in values that a compiler could get wrong.
TEST(Arithmetic, FirstNanSurvivesMadeQuiet) {
  const auto real = [](uint32_t bits) { return std::bit_cast<float>(bits); };
  const auto bits = [](float value) { return std::bit_cast<uint32_t>(value); };
  const float quiet = real(0xffc11111u), signalling = real(0x7f822222u), infinity = real(0x7f800000u);
  EXPECT_EQ(0xffc11111u, bits(add(quiet, signalling)));
  EXPECT_EQ(0x7fc22222u, bits(add(signalling, quiet)));
  EXPECT_EQ(0x7fc22222u, bits(multiply(1.0f, signalling)));
  EXPECT_EQ(0xffc11111u, bits(subtract(infinity, quiet)));
  EXPECT_EQ(0xffc00000u, bits(subtract(infinity, infinity)));
  EXPECT_EQ(0xffc00000u, bits(multiply(infinity, 0.0f)));
  EXPECT_EQ(0xffc00000u, bits(divide(0.0f, 0.0f)));
  EXPECT_EQ(0x7fc11111u, bits(magnitude(quiet)));
  EXPECT_EQ(0u, bits(magnitude(-0.0f)));
  EXPECT_EQ(0xfff8000000000000u, std::bit_cast<uint64_t>(divide(0.0, 0.0)));
}

TEST(Cases, StopAtTheFirstFailureAndNameIt) {
  int ran = 0;
  forCases("counted", 5, [&](Random&) { ++ran; });
  EXPECT_EQ(5, ran);
}

}  // namespace
}  // namespace orvtest
