// Row pipelines: one-dimensional filters along the rows of an image.
#include "filters/row_forms.h"

namespace orv {
namespace {

template <class Source, class Result, class Coefficient>
void filterChannels(View<const Source> src, Result* const* dstRows, OrvSize roi, int channels,
                    RowKernel<Coefficient> kernel, RowBorder<Source> border, uint8_t* buffer) {
  if (channels == 1)
    RowFilter<Source, 1, Result>{{roi.width, kernel, border, buffer}}(src, dstRows, roi.height);
  else
    RowFilter<Source, 3, Result>{{roi.width, kernel, border, buffer}}(src, dstRows, roi.height);
}

template <int channels>
void filterLow(View<const int16_t> src, int16_t* const* dstRows, OrvSize roi, RowKernel<int16_t> kernel,
               RowBorder<int16_t> border, uint8_t* buffer) {
  RowParts<int16_t, channels> parts{RowTask<int16_t, int16_t>{roi.width, kernel, border, buffer}};
  auto* const coefficients = parts.carver.template take<WordPair>(static_cast<size_t>(kernel.size));
  for (int j = 0; j < kernel.size; ++j) coefficients[j] = WordPair{loadSample(kernel.taps + j)};
  const WrappingTaps<channels> taps{coefficients, kernel.size};
  const bool smoothing = kernel.size == 5 && kernel.anchor == 2 && kernel.divisor == 16 && isSymmetric(kernel) &&
                         border.mode == orvBorderReplicate && roi.width > 10;
  constexpr int64_t streamedFrom = 524289;
  const bool streamed = int64_t{roi.width} * roi.height >= streamedFrom;
  if (smoothing) {
    parts.filter(src, dstRows, roi.height, taps, Sixteenth{streamed}, taps);
    if (streamed)
      _mm_sfence();
  } else {
    parts.filter(src, dstRows, roi.height, taps, FixedPointScaled{fixedPointFactor(kernel.divisor)}, taps);
  }
}

}  // namespace

#define ORV_ROW_PASS(Source, Result, Coefficient)                                             \
  void filterRows(View<const Source> src, Result* const* dstRows, OrvSize roi, int channels,  \
                  RowKernel<Coefficient> kernel, RowBorder<Source> border, uint8_t* buffer) { \
    filterChannels(src, dstRows, roi, channels, kernel, border, buffer);                      \
  }
ORV_ROW_PASS(uint8_t, int16_t, int16_t)
ORV_ROW_PASS(int16_t, int16_t, int16_t)
ORV_ROW_PASS(uint16_t, uint16_t, uint16_t)
ORV_ROW_PASS(float, float, float)

void filterRowsLow(View<const int16_t> src, int16_t* const* dstRows, OrvSize roi, int channels,
                   RowKernel<int16_t> kernel, RowBorder<int16_t> border, uint8_t* buffer) {
  if (channels == 1)
    filterLow<1>(src, dstRows, roi, kernel, border, buffer);
  else
    filterLow<3>(src, dstRows, roi, kernel, border, buffer);
}

}  // namespace orv
