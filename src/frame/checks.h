// Argument checks. A function's check list is one call of firstFailure whose lines are its checks in order:
//
//   if (OrvStatus status = firstFailure(nullPointer(src, dst),
//                                       badSize(roi),
//                                       badStep<float>(srcStep, roi.width), badStep<float>(dstStep, roi.width),
//                                       stepNotAligned<float>(srcStep, dstStep)))
//     return status;
//
// A check that may only be evaluated once its predecessors have passed, because it reads through a pointer, is written
// as a lambda that returns the check: [&] { return badBorder(spec->borderMode, filterBorders); }. A list that several
// functions share is the result of a firstFailure of its own and stands in one line of the longer list.
#pragma once

#include <concepts>
#include <initializer_list>

#include "frame/declarations.h"

namespace orv {

struct Check {
  bool failed;
  OrvStatus status;
};

constexpr OrvStatus outcome(Check check) { return check.failed ? check.status : orvStsOk; }
constexpr OrvStatus outcome(OrvStatus sublist) { return sublist; }
template <std::invocable Deferred>
constexpr OrvStatus outcome(Deferred deferred) {
  return outcome(deferred());
}

/// The status of the first check that fails, orvStsOk when all pass.
template <class... Checks>
[[nodiscard]] constexpr OrvStatus firstFailure(Checks... checks) {
  OrvStatus status = orvStsOk;
  static_cast<void>(((status = outcome(checks), status != orvStsOk) || ...));
  return status;
}

template <class... Pointers>
constexpr Check nullPointer(Pointers... pointers) {
  return {((pointers == nullptr) || ...), orvStsNullPointer};
}

/// For a pointer that only some modes need.
constexpr Check nullPointerIf(bool needed, const void* pointer) {
  return {needed && pointer == nullptr, orvStsNullPointer};
}

/// OrvSize or OrvSizeL.
template <class Size>
constexpr Check badSize(Size size) {
  return {size.width < 1 || size.height < 1, orvStsBadSize};
}

/// Bytes of one row, without wrap-around: widths up to the top of the range make rows longer than any step.
template <class Sample>
constexpr int64_t rowBytes(int width, int channels = 1) {
  return int64_t{width} * (channels * static_cast<int>(sizeof(Sample)));
}

template <class Sample>
constexpr Check badStep(int step, int width, int channels = 1) {
  return {step < rowBytes<Sample>(width, channels), orvStsBadStep};
}

template <class Sample, class... Steps>
constexpr Check stepNotAligned(Steps... steps) {
  return {((steps | ...) & static_cast<int>(sizeof(Sample) - 1)) != 0, orvStsStepNotAligned};
}

/// The rules of the `_L` generation: the top of the range counts as too large, with a status that differs by member.
constexpr bool atTopOfRange(OrvLength length) { return length == 0x7fffffff; }

constexpr Check notAmong(int value, std::initializer_list<int> accepted, OrvStatus status) {
  for (int candidate : accepted)
    if (value == candidate)
      return {false, status};
  return {true, status};
}

constexpr Check badChannelOfInterest(int coi) { return {coi < 1 || coi > 3, orvStsBadChannelOfInterest}; }

constexpr Check badMaskCode(OrvMaskCode mask) { return notAmong(mask, {orvMask3x3, orvMask5x5}, orvStsBadMaskCode); }

constexpr Check sameAddress(const void* src, const void* dst) { return {src == dst, orvStsInPlaceNotAllowed}; }

}  // namespace orv
