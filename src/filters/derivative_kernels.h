// The derivative filters as row and column stages.
#pragma once

#include "filters/two_stage.h"

namespace orv {

using SobelVert3 = Separable<1, NegatedDifference3, Smooth3>;
using SobelVert5 = Separable<2, NegatedDifference5, Smooth5>;
using SobelNegVert3 = Separable<1, Difference3, Smooth3>;
using SobelNegVert5 = Separable<2, Difference5, Smooth5>;
using SobelHoriz3 = Separable<1, Smooth3, Difference3>;
using SobelHoriz5 = Separable<2, Smooth5, Difference5>;
using SobelVertSecond3 = Separable<1, SecondDifference3, Smooth3>;
using SobelVertSecond5 = Separable<2, SecondDifference5, Smooth5>;
using SobelHorizSecond3 = Separable<1, Smooth3, SecondDifference3>;
using SobelHorizSecond5 = Separable<2, Smooth5, SecondDifference5>;
using ScharrVert3 = Separable<1, Difference3, SmoothScharr>;
using ScharrHoriz3 = Separable<1, SmoothScharr, Difference3>;
using PrewittVert3 = Separable<1, NegatedDifference3, Sum3>;
using PrewittHoriz3 = Separable<1, Sum3, Difference3>;

struct RobertsDown3 {
  static constexpr int radius = 1;
  using RowStages = Stages<After>;
  static auto column(auto centre, auto after) { return results(centre - after(1)); }
};
struct RobertsUp3 {
  static constexpr int radius = 1;
  using RowStages = Stages<Centre, After>;
  static auto column(auto, auto here, auto after) { return results(after(0) - here(1)); }
};

/// Both first derivatives at once.
template <class Vertical, class Horizontal>
struct Gradient;
template <int kernelRadius, class Across, class SmoothDown, class SmoothAcross, class Down>
struct Gradient<Separable<kernelRadius, Across, SmoothDown>, Separable<kernelRadius, SmoothAcross, Down>> {
  static constexpr int radius = kernelRadius;
  using RowStages = Stages<Across, SmoothAcross>;
  static auto column(auto, auto derivative, auto smoothed) {
    return results(SmoothDown::apply(derivative), Down::apply(smoothed));
  }
};

}  // namespace orv
