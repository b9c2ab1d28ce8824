// Sobel kernels of any odd size, by repeated sums and differences of neighbours.
#include "frame/checks.h"
#include "frame/declarations.h"
#include "simd/float.h"
#include "simd/integer.h"

namespace orv {
namespace {

template <class V>
struct Sum {
  V operator()(V a, V b) const { return a + b; }
};
template <class V>
struct Difference {
  V operator()(V a, V b) const { return a - b; }
};

/// Each entry from `first` to the last but one takes in its right neighbour, which has not changed yet.
template <class V, class Sample, class Operation>
void combineNeighbours(Sample* kernel, int first, int kernelSize, Operation operation) {
  for (int t = first; t <= kernelSize - 2; ++t)
    operation(V::load(kernel + t), V::load(kernel + t + 1)).store(kernel + t);
}

int16_t negated(int16_t value) { return static_cast<int16_t>(-value); }
float negated(float value) { return -value; }

template <class V, class Sample>
OrvStatus generateSobelKernel(Sample* kernel, int kernelSize, int dx, int sign) {
  if (OrvStatus status =
          firstFailure(nullPointer(kernel),
                       Check{kernelSize < 1 || kernelSize % 2 == 0 || dx < 0 || dx >= kernelSize, orvStsBadSize}))
    return status;
  for (int t = 0; t < kernelSize; ++t) V::broadcast(t == kernelSize - 1 ? 1 : 0).store(kernel + t);
  const int smoothings = kernelSize - 1 - dx;
  for (int p = 0; p < smoothings; ++p) combineNeighbours<V>(kernel, kernelSize - 2 - p, kernelSize, Sum<V>{});
  for (int q = dx; q >= 1; --q) combineNeighbours<V>(kernel, q - 1, kernelSize, Difference<V>{});
  if (sign < 0)
    for (int t = 0; t < kernelSize; ++t) V::broadcast(negated(V::load(kernel + t).value())).store(kernel + t);
  return orvStsOk;
}

}  // namespace

OrvStatus orviGenSobelKernel_16s(int16_t* kernel, int kernelSize, int dx, int sign) {
  return generateSobelKernel<S16x1>(kernel, kernelSize, dx, sign);
}

OrvStatus orviGenSobelKernel_32f(float* kernel, int kernelSize, int dx, int sign) {
  return generateSobelKernel<F32x1>(kernel, kernelSize, dx, sign);
}

}  // namespace orv
