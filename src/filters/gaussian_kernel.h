// Gaussian taps, and the arguments that the Init functions and size queries of both Gaussian engines check alike.
#pragma once

#include "frame/checks.h"

namespace orv {

/// The taps of an odd kernel whose centre is 1, before they are divided by their sum.
class GaussianTaps {
public:
  explicit GaussianTaps(float sigma) : doubledVariance_((sigma + sigma) * sigma) {}

  /// The tap at some distance from the centre. The centre is exact for a sigma whose square vanishes, too.
  float at(int distance) const;

private:
  float doubledVariance_;
};

/// A symmetric kernel with a centre has an odd number of taps, 3 or more.
constexpr Check badTapCount(int kernelSize) { return {kernelSize < 3 || kernelSize % 2 == 0, orvStsBadArg}; }

/// The sample type and channel count of an image that the Gaussian filters take.
constexpr OrvStatus badImageKind(OrvDataType dataType, int numChannels) {
  return firstFailure(
      notAmong(dataType, {orvDataType8u, orvDataType16u, orvDataType16s, orvDataType32f}, orvStsBadAlgorithm),
      notAmong(numChannels, {1, 3}, orvStsBadChannels));
}

}  // namespace orv
