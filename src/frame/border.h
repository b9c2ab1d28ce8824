// The border word: which words a function accepts, and where a pixel outside the region comes from.
#pragma once

#include <cstdint>
#include <initializer_list>

#include "frame/checks.h"

namespace orv {

constexpr int borderKindBits = 0x00F;
constexpr int borderSideBits = 0x0F0;
constexpr int borderStageBits = 0xF00;

constexpr int borderKind(OrvBorderMode word) { return word & borderKindBits; }
constexpr bool allSidesInMemory(OrvBorderMode word) { return (word & borderSideBits) == orvBorderMemAll; }

/// Single-stage functions of the `_L` generation read real pixels where a two-stage function's first stage would.
constexpr OrvBorderMode foldStageSides(OrvBorderMode word) { return ((word & borderStageBits) >> 4) | (word & 0xFF); }

/// The words that a function accepts. Words count as unsigned numbers, so that a negative one is above every limit.
struct BorderRule {
  uint32_t limit;
  uint32_t kinds;             ///< bit k set: kind k is accepted
  bool kindFreeWithAllSides;  ///< with all four sides in memory any kind passes, else only the bare word 240
  bool foldsStageSides = false;
};

constexpr uint32_t kindSet(std::initializer_list<int> kinds) {
  uint32_t set = 0;
  for (int kind : kinds) set |= 1u << kind;
  return set;
}

constexpr uint32_t replicateOrConstant = kindSet({orvBorderReplicate, orvBorderConstant});
constexpr uint32_t filterKinds = kindSet({orvBorderReplicate, orvBorderMirror, orvBorderConstant});
constexpr uint32_t morphologyKinds =
    kindSet({orvBorderReplicate, orvBorderMirror, orvBorderNeutral, orvBorderConstant});
constexpr uint32_t bitMorphologyKinds = kindSet({orvBorderReplicate, orvBorderNeutral, orvBorderConstant});

// The rules in use, by family. Members on `1u` images refuse the mirror.
constexpr BorderRule filterBorders = {255, filterKinds, false};
constexpr BorderRule gaussianBordersL = {255, filterKinds, true};
constexpr BorderRule cannyBorders = {255, replicateOrConstant, false};
constexpr BorderRule morphologyGradientBorders = {255, filterKinds, false};
constexpr BorderRule bitMorphologyGradientBorders = {255, replicateOrConstant, false};
constexpr BorderRule erosionBorders = {4095, morphologyKinds, false};
constexpr BorderRule bitErosionBorders = {4095, bitMorphologyKinds, false};
constexpr BorderRule erosionBordersL = {0x7fffffff, morphologyKinds, false, true};
constexpr BorderRule bitErosionBordersL = {0x7fffffff, bitMorphologyKinds, false, true};
constexpr BorderRule compositeBorders = {4095, morphologyKinds, true};

constexpr Check badBorder(OrvBorderMode word, const BorderRule& rule) {
  if (static_cast<uint32_t>(word) > rule.limit)
    return {true, orvStsBadBorder};
  const OrvBorderMode effective = rule.foldsStageSides ? foldStageSides(word) : word;
  const bool needsNoKind = rule.kindFreeWithAllSides ? allSidesInMemory(effective) : effective == orvBorderMemAll;
  const bool kindAccepted = ((rule.kinds >> borderKind(effective)) & 1u) != 0;
  return {!needsNoKind && !kindAccepted, orvStsBadBorder};
}

/// Splits the word of a two-stage operation. A first-stage side that is in memory anyway is dropped; a word with all
/// sides in memory and no valid kind gets `defaultKind`.
constexpr OrvStatus CV_BORDER_CHECK_PARSE_FLAGS_NEW(OrvBorderMode word, int* kind, int* sides, int* stageSides,
                                                    int defaultKind) {
  if (static_cast<uint32_t>(word) > 4095)
    return orvStsBadBorder;
  const OrvBorderMode reduced = word & ~((word >> 4) << 8);
  const int readKind = reduced & borderKindBits;
  const int readSides = reduced & borderSideBits;
  const int readStageSides = reduced & borderStageBits;
  const bool valid = ((morphologyKinds >> readKind) & 1u) != 0;
  if (!valid && (readStageSides != 0 || readSides != orvBorderMemAll))
    return orvStsBadBorder;
  *kind = valid ? readKind : defaultKind;
  *sides = readSides;
  *stageSides = readStageSides;
  return orvStsOk;
}

/// The border of one axis: its kind, and whether the pixels before (lo) and after (hi) the region are in memory.
struct AxisBorder {
  int kind;
  bool lo, hi;
};

constexpr AxisBorder horizontalBorder(OrvBorderMode word) {
  return {borderKind(word), (word & orvBorderMemLeft) != 0, (word & orvBorderMemRight) != 0};
}
constexpr AxisBorder verticalBorder(OrvBorderMode word) {
  return {borderKind(word), (word & orvBorderMemTop) != 0, (word & orvBorderMemBottom) != 0};
}

/// Where the pixel wanted at some index of an axis is found. The index lies outside 0 .. n - 1 only on a side that is
/// in memory; it means nothing where the pixel is the border value.
struct SourceIndex {
  int index;
  bool isBorderValue = false;
};

/// Reflection about the end pixels, which are not repeated; a reflected index that falls on a side in memory is settled
/// there. An axis of one pixel reflects about that pixel as far as the other side is in memory.
constexpr int mirroredIndex(int i, int n, bool lo, bool hi) {
  if (n == 1) {
    if (i < 0)
      return lo ? i : hi ? -i : 0;
    return hi ? i : lo ? -i : 0;
  }
  while (i < 0 || i >= n) {
    if (i < 0) {
      if (lo)
        return i;
      i = -i;
    } else {
      if (hi)
        return i;
      i = n - 2 - (i - n);
    }
  }
  return i;
}

/// The mapping of an index outside 0 .. n - 1.
constexpr SourceIndex mapOutside(int i, int n, AxisBorder border) {
  const bool inMemory = i < 0 ? border.lo : border.hi;
  switch (border.kind) {
    case orvBorderConstant:
      return {i, !inMemory};
    case orvBorderReplicate:
      return {inMemory ? i : i < 0 ? 0 : n - 1};
    case orvBorderMirror:
      return {mirroredIndex(i, n, border.lo, border.hi)};
    default:  // the bare all-in-memory word
      return {i};
  }
}

/// The one mapping from a wanted index to its source, for an axis of n pixels. Rows and columns are mapped
/// independently; under a constant border a pixel is the border value as soon as either axis says so.
constexpr SourceIndex mapIndex(int i, int n, AxisBorder border) {
  return 0 <= i && i < n ? SourceIndex{i} : mapOutside(i, n, border);
}

}  // namespace orv
