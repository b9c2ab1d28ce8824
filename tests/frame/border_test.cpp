// The border word: which words each rule accepts, how a two-stage word is taken apart, and the mapping of indices.
#include "frame/border.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

#include "frame/border_model.h"

namespace orvtest {
namespace {

// ------------------------------------------------------------------------------------------------- Accepted words

bool kindIn(int word, std::initializer_list<int> kinds) {
  for (int kind : kinds)
    if (word % 16 == kind)
      return true;
  return false;
}

bool allFourSides(int word) {
  return (word & 0x10) != 0 && (word & 0x20) != 0 && (word & 0x40) != 0 && (word & 0x80) != 0;
}

/// Upper nibble onto the middle one.
int folded(int word) {
  int effective = word & 0xFF;
  for (int bit = 0; bit < 4; ++bit)
    if (word & (0x100 << bit))
      effective |= 0x10 << bit;
  return effective;
}

/// Every word up to 65535, every single bit above with every low byte, and negative words.
template <class Visit>
void forAllWords(Visit visit) {
  for (int word = 0; word <= 0xFFFF; ++word) visit(word);
  for (int bit = 16; bit < 31; ++bit)
    for (int low = 0; low <= 0xFFF; ++low) visit((1 << bit) | low);
  for (int low = 0; low <= 0xFFF; ++low) {
    visit(INT32_MIN + low);
    visit(-1 - low);
    visit(INT32_MAX - low);
  }
}

template <class Accepts>
void expectRule(const orv::BorderRule& rule, Accepts accepts) {
  int accepted = 0;
  forAllWords([&](int word) {
    const bool valid = word >= 0 && accepts(word);
    accepted += valid;
    EXPECT_EQ(valid ? orvStsOk : orvStsBadBorder, orv::outcome(orv::badBorder(word, rule)))
        << "word 0x" << std::hex << word;
  });
  EXPECT_GT(accepted, 0);
}

TEST(BorderWord, Filters) {
  expectRule(orv::filterBorders, [](int word) { return word <= 255 && (word == 240 || kindIn(word, {1, 3, 6})); });
}

TEST(BorderWord, GaussianOfTheLongGeneration) {
  expectRule(orv::gaussianBordersL, [](int word) {
    return word <= 255 && (allFourSides(word) || kindIn(word, {1, 3, 6}));
  });
}

TEST(BorderWord, CannyAndLineSuppression) {
  expectRule(orv::cannyBorders, [](int word) { return word <= 255 && (word == 240 || kindIn(word, {1, 6})); });
}

TEST(BorderWord, MorphologicalGradient) {
  expectRule(orv::morphologyGradientBorders, [](int word) {
    return word <= 255 && (word == 240 || kindIn(word, {1, 3, 6}));
  });
  expectRule(orv::bitMorphologyGradientBorders, [](int word) {
    return word <= 255 && (word == 240 || kindIn(word, {1, 6}));
  });
}

TEST(BorderWord, ErosionAndDilation) {
  expectRule(orv::erosionBorders, [](int word) { return word <= 4095 && (word == 240 || kindIn(word, {1, 3, 5, 6})); });
  expectRule(orv::bitErosionBorders, [](int word) { return word <= 4095 && (word == 240 || kindIn(word, {1, 5, 6})); });
}

TEST(BorderWord, ErosionAndDilationOfTheLongGenerationFold) {
  expectRule(orv::erosionBordersL, [](int word) { return folded(word) == 240 || kindIn(word, {1, 3, 5, 6}); });
  expectRule(orv::bitErosionBordersL, [](int word) { return folded(word) == 240 || kindIn(word, {1, 5, 6}); });
}

TEST(BorderWord, CompositesAndCornerMeasures) {
  expectRule(orv::compositeBorders, [](int word) {
    return word <= 4095 && (allFourSides(word) || kindIn(word, {1, 3, 5, 6}));
  });
}

TEST(BorderWord, ByHand) {
  const auto accepts = [](int word, const orv::BorderRule& rule) { return !orv::badBorder(word, rule).failed; };
  EXPECT_FALSE(accepts(0x10, orv::filterBorders)) << "a side in memory is no kind";
  EXPECT_FALSE(accepts(0xF0 | 2, orv::filterBorders));
  EXPECT_TRUE(accepts(0xF1, orv::filterBorders));
  EXPECT_TRUE(accepts(0xFF, orv::gaussianBordersL));
  EXPECT_FALSE(accepts(3, orv::cannyBorders));
  EXPECT_TRUE(accepts(0xF00, orv::erosionBordersL)) << "folds to 240";
  EXPECT_FALSE(accepts(0xF00, orv::erosionBorders));
  EXPECT_FALSE(accepts(0x1F0, orv::erosionBorders)) << "240 with a first-stage side is not the bare word";
  EXPECT_TRUE(accepts(0x1F0, orv::compositeBorders));
  EXPECT_FALSE(accepts(0x1001, orv::compositeBorders));
  EXPECT_TRUE(accepts(0x1001, orv::erosionBordersL));
}

TEST(BorderWord, FoldingMovesFirstStageSidesOntoSidesInMemory) {
  forAllWords([](int word) { EXPECT_EQ(folded(word), orv::foldStageSides(word)) << word; });
}

// ----------------------------------------------------------------------------------------------------- The parser

struct Parsed {
  OrvStatus status;
  int kind = -1, sides = -1, stageSides = -1;
  bool operator==(const Parsed&) const = default;
};

Parsed parse(int word, int defaultKind) {
  Parsed parsed{orvStsOk};
  parsed.status =
      orv::CV_BORDER_CHECK_PARSE_FLAGS_NEW(word, &parsed.kind, &parsed.sides, &parsed.stageSides, defaultKind);
  return parsed;
}

/// Side by side: a first-stage side counts only where the side is not in memory.
Parsed modelParse(int word, int defaultKind) {
  if (word < 0 || word > 4095)
    return {orvStsBadBorder};
  int stageSides = 0;
  for (int side = 0; side < 4; ++side)
    if ((word & (0x100 << side)) != 0 && (word & (0x10 << side)) == 0)
      stageSides |= 0x100 << side;
  const int kind = word % 16;
  if (kindIn(word, {1, 3, 5, 6}))
    return {orvStsOk, kind, word & 240, stageSides};
  if (stageSides == 0 && allFourSides(word))
    return {orvStsOk, defaultKind, 240, 0};
  return {orvStsBadBorder};
}

TEST(BorderParser, EveryWord) {
  forAllWords([](int word) {
    const Parsed expected = modelParse(word, 5), parsed = parse(word, 5);
    // The results of a refused word mean nothing.
    EXPECT_EQ(expected.status, parsed.status) << "word 0x" << std::hex << word;
    EXPECT_TRUE(expected.status != orvStsOk || expected == parsed) << "word 0x" << std::hex << word;
  });
}

TEST(BorderParser, ByHand) {
  EXPECT_EQ((Parsed{orvStsOk, 5, 0x10, 0}), parse(0x115, 5)) << "the first-stage bit of a side in memory is dropped";
  EXPECT_EQ((Parsed{orvStsOk, 5, 0x10, 0x200}), parse(0x315, 5));
  EXPECT_EQ((Parsed{orvStsOk, 9, 240, 0}), parse(240, 9));
  EXPECT_EQ((Parsed{orvStsOk, 9, 240, 0}), parse(0xFFF, 9))
      << "all first-stage sides are dropped, then no kind is needed";
  EXPECT_EQ((Parsed{orvStsOk, 6, 240, 0}), parse(0xFF6, 9));
  EXPECT_EQ(orvStsBadBorder, parse(0x170, 5).status);
  EXPECT_EQ(orvStsBadBorder, parse(0x1001, 5).status);
  EXPECT_EQ(orvStsBadBorder, parse(0, 5).status);
}

// ---------------------------------------------------------------------------------------------------- The mapping

void expectMapping(int i, int n, orv::AxisBorder border) {
  SCOPED_TRACE(testing::Message() << "index " << i << " of " << n << ", kind " << border.kind << ", in memory "
                                  << border.lo << border.hi);
  const model::AxisIndex expected = model::mapAxis(i, n, border.kind, border.lo, border.hi);
  const orv::SourceIndex mapped = orv::mapIndex(i, n, border);
  EXPECT_EQ(expected.constant, mapped.isBorderValue);
  if (!expected.constant) {
    EXPECT_EQ(expected.index, mapped.index);
  }
}

TEST(BorderMapping, EveryKindAndSide) {
  for (const int kind : {orvBorderReplicate, orvBorderMirror, orvBorderConstant})
    for (int sides = 0; sides < 4; ++sides)
      for (int n = 1; n <= 9; ++n)
        for (int i = -40; i <= n + 40; ++i) expectMapping(i, n, {kind, (sides & 1) != 0, (sides & 2) != 0});
}

TEST(BorderMapping, WithAllSidesInMemoryNothingIsMapped) {
  for (int kind = 0; kind < 16; ++kind)
    for (int n = 1; n <= 5; ++n)
      for (int i = -20; i <= n + 20; ++i) {
        const orv::SourceIndex mapped = orv::mapIndex(i, n, orv::horizontalBorder(orvBorderMemAll | kind));
        EXPECT_EQ(i, mapped.index) << kind;
        EXPECT_FALSE(mapped.isBorderValue) << kind;
      }
}

// The words' bits reach the right axis and end: rows by 0x10 and 0x20, columns by 0x40 and 0x80.
TEST(BorderMapping, AxesOfAWord) {
  for (int word = 0; word <= 0xFF; ++word) {
    const orv::AxisBorder rows = orv::verticalBorder(word), columns = orv::horizontalBorder(word);
    EXPECT_EQ(word % 16, rows.kind);
    EXPECT_EQ(word % 16, columns.kind);
    EXPECT_EQ((word & 0x10) != 0, rows.lo) << word;
    EXPECT_EQ((word & 0x20) != 0, rows.hi) << word;
    EXPECT_EQ((word & 0x40) != 0, columns.lo) << word;
    EXPECT_EQ((word & 0x80) != 0, columns.hi) << word;
  }
}

std::vector<int> mirrored(int first, int last, int n, bool lo = false, bool hi = false) {
  std::vector<int> indices;
  for (int i = first; i <= last; ++i) indices.push_back(orv::mapIndex(i, n, {orvBorderMirror, lo, hi}).index);
  return indices;
}

TEST(BorderMapping, MirrorByHand) {
  // The end pixels are not doubled, and reflection goes on past the far end.
  EXPECT_EQ((std::vector{0, 1, 2, 1, 0, 1, 2, 1, 0, 1, 2}), mirrored(-4, 6, 3));
  // An index that is reflected onto a side in memory is read there.
  EXPECT_EQ((std::vector{-3, -2, -1, 0, 1, 0, -1, -2}), mirrored(-3, 4, 2, true, false));
  EXPECT_EQ((std::vector{4, 3, 2, 1, 0, 1, 2, 3}), mirrored(-4, 3, 2, false, true));
}

TEST(BorderMapping, MirrorOfOnePixelByHand) {
  EXPECT_EQ((std::vector{0, 0, 0, 0, 0}), mirrored(-2, 2, 1));
  EXPECT_EQ((std::vector{-2, -1, 0, -1, -2}), mirrored(-2, 2, 1, true, false));
  EXPECT_EQ((std::vector{2, 1, 0, 1, 2}), mirrored(-2, 2, 1, false, true));
  EXPECT_EQ((std::vector{-2, -1, 0, 1, 2}), mirrored(-2, 2, 1, true, true));
}

TEST(BorderMapping, ConstantBesideASideInMemory) {
  const orv::AxisBorder rows = orv::verticalBorder(0x16);
  EXPECT_FALSE(orv::mapIndex(-1, 5, rows).isBorderValue);
  EXPECT_EQ(-1, orv::mapIndex(-1, 5, rows).index);
  EXPECT_TRUE(orv::mapIndex(5, 5, rows).isBorderValue);
  EXPECT_TRUE(orv::mapIndex(-1, 5, orv::horizontalBorder(0x16)).isBorderValue);
  EXPECT_TRUE(orv::mapIndex(5, 5, orv::horizontalBorder(0x16)).isBorderValue);
}

TEST(BorderMapping, MirrorHasThePeriodOfTheReflection) {
  for (int n = 2; n <= 9; ++n)
    for (int i = -60; i <= 60; ++i) {
      const int period = 2 * n - 2;
      const int phase = ((i % period) + period) % period;
      EXPECT_EQ(phase < n ? phase : period - phase, orv::mapIndex(i, n, {orvBorderMirror, false, false}).index);
    }
}

}  // namespace
}  // namespace orvtest
