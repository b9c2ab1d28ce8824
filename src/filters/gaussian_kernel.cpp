#include "filters/gaussian_kernel.h"

#include "frame/scalar_functions.h"

namespace orv {

float GaussianTaps::at(int distance) const {
  if (distance == 0)
    return 1.0f;
  const auto d = static_cast<float>(distance);
  return orvsExpOneF(-(d * d) / doubledVariance_);
}

}  // namespace orv
