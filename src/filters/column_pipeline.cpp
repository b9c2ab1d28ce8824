// Column pipelines: one-dimensional filters down an array of row pointers.
#include "filters/column_forms.h"
#include "filters/pipelines.h"

namespace orv {
namespace {

/// The 16-bit signed forms, which differ in the range of the result.
template <class Dst>
void filterSignedColumns(const int16_t* const* srcRows, View<Dst> dst, OrvSize samples, ColumnKernel<int16_t> kernel) {
  const FloatColumns<int16_t, Dst, int16_t, Factor::inCoefficients> columns{kernel, reciprocal(kernel.divisor)};
  filterColumnsWith(columns, kernel.size, srcRows, dst, samples);
}

bool isSmoothing(ColumnKernel<int16_t> kernel) {
  const auto tap = [&](int j) { return loadSample(kernel.taps + j); };
  return kernel.size == 5 && kernel.divisor == 16 && tap(0) == tap(4) && tap(1) == tap(3);
}

}  // namespace

void filterColumns(const int16_t* const* srcRows, View<int16_t> dst, OrvSize samples, ColumnKernel<int16_t> kernel) {
  filterSignedColumns(srcRows, dst, samples, kernel);
}
void filterColumns(const int16_t* const* srcRows, View<uint8_t> dst, OrvSize samples, ColumnKernel<int16_t> kernel) {
  filterSignedColumns(srcRows, dst, samples, kernel);
}
void filterColumns(const int16_t* const* srcRows, View<int8_t> dst, OrvSize samples, ColumnKernel<int16_t> kernel) {
  filterSignedColumns(srcRows, dst, samples, kernel);
}

void filterColumns(const uint16_t* const* srcRows, View<uint16_t> dst, OrvSize samples, ColumnKernel<uint16_t> kernel) {
  const FloatColumns<uint16_t, uint16_t, uint16_t, Factor::onSum> columns{kernel, reciprocal(kernel.divisor)};
  filterColumnsWith(columns, kernel.size, srcRows, dst, samples);
}

void filterColumns(const float* const* srcRows, View<float> dst, OrvSize samples, ColumnKernel<float> kernel) {
  filterColumnsWith(FloatColumns<float, float, float, Factor::none>{kernel, 1.0f}, kernel.size, srcRows, dst, samples);
}

/// A symmetric smoothing kernel makes its rows two by two, with one rule for blocks and tails; the last of an odd number
/// of rows follows the rules of all other kernels.
void filterColumnsLow(const int16_t* const* srcRows, View<int16_t> dst, OrvSize samples, ColumnKernel<int16_t> kernel) {
  constexpr int64_t streamedFrom = 262145;
  int y = 0;
  if (isSmoothing(kernel) && samples.height >= 3) {
    const bool aligned = ((reinterpret_cast<uintptr_t>(dst.first) | static_cast<uintptr_t>(dst.step)) & 15) == 0;
    const bool streamed = aligned && int64_t{samples.width} * samples.height >= streamedFrom;
    y = samples.height & ~1;
    filterColumnsWith(WrappingColumns{kernel, Sixteenth{streamed}}, kernel.size, srcRows, dst, {samples.width, y});
    if (streamed)
      _mm_sfence();
  }
  if (y < samples.height)
    filterColumnsWith(WrappingColumns{kernel, FixedPointScaled{fixedPointFactor(kernel.divisor)}}, kernel.size,
                      srcRows + y, View{dst.row(y), dst.step}, {samples.width, samples.height - y});
}

}  // namespace orv
