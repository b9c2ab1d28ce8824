// The row and column passes without their argument checks, for the filters that are built on them. Formulas, rounding
// rules and buffer sizes are those of the exported pipelines in orvcv.h.
//
// Callers size `buffer` by the exported queries of the same form.
#pragma once

#include <cstdint>

#include "frame/declarations.h"
#include "frame/views.h"

namespace orv {

template <class Coefficient>
struct RowKernel {
  const Coefficient* taps;  ///< at any address
  int size;
  int anchor;       ///< 0 .. size - 1
  int divisor = 1;  ///< not 0; without meaning for float rows
};

template <class Coefficient>
RowKernel(const Coefficient*, int, int, int = 1) -> RowKernel<Coefficient>;

/// How divisors are applied.
inline float reciprocal(int divisor) { return 1.0f / static_cast<float>(divisor); }

template <class Coefficient>
struct ColumnKernel {
  const Coefficient* taps;  ///< at any address
  int size;
  int divisor = 1;  ///< not 0; without meaning for float rows
};

template <class Coefficient>
ColumnKernel(const Coefficient*, int, int = 1) -> ColumnKernel<Coefficient>;

template <class Sample>
struct RowBorder {
  OrvBorderMode mode;   ///< replicate, mirror or constant, with any sides in memory, or all sides in memory
  const Sample* value;  ///< a sample per channel; read under a constant border only
};

template <class Sample>
RowBorder(OrvBorderMode, const Sample*) -> RowBorder<Sample>;

/// Filters roi.height rows of src into dstRows[0 .. roi.height - 1]; 1 or 3 channels.
void filterRows(View<const uint8_t> src, int16_t* const* dstRows, OrvSize roi, int channels, RowKernel<int16_t> kernel,
                RowBorder<uint8_t> border, uint8_t* buffer);
void filterRows(View<const int16_t> src, int16_t* const* dstRows, OrvSize roi, int channels, RowKernel<int16_t> kernel,
                RowBorder<int16_t> border, uint8_t* buffer);
void filterRows(View<const uint16_t> src, uint16_t* const* dstRows, OrvSize roi, int channels,
                RowKernel<uint16_t> kernel, RowBorder<uint16_t> border, uint8_t* buffer);
void filterRows(View<const float> src, float* const* dstRows, OrvSize roi, int channels, RowKernel<float> kernel,
                RowBorder<float> border, uint8_t* buffer);

/// The 16-bit fixed-point form.
void filterRowsLow(View<const int16_t> src, int16_t* const* dstRows, OrvSize roi, int channels,
                   RowKernel<int16_t> kernel, RowBorder<int16_t> border, uint8_t* buffer);

/// Filters down srcRows[0 .. samples.height + kernel.size - 2]; samples.width counts samples: pixels times channels.
void filterColumns(const int16_t* const* srcRows, View<int16_t> dst, OrvSize samples, ColumnKernel<int16_t> kernel);
void filterColumns(const int16_t* const* srcRows, View<uint8_t> dst, OrvSize samples, ColumnKernel<int16_t> kernel);
void filterColumns(const int16_t* const* srcRows, View<int8_t> dst, OrvSize samples, ColumnKernel<int16_t> kernel);
void filterColumns(const uint16_t* const* srcRows, View<uint16_t> dst, OrvSize samples, ColumnKernel<uint16_t> kernel);
void filterColumns(const float* const* srcRows, View<float> dst, OrvSize samples, ColumnKernel<float> kernel);
void filterColumnsLow(const int16_t* const* srcRows, View<int16_t> dst, OrvSize samples, ColumnKernel<int16_t> kernel);

}  // namespace orv
