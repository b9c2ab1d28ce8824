// Row and column pipelines as plain loops over single samples.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "frame/border_model.h"
#include "support/arithmetic.h"
#include "support/samples.h"

namespace orvtest::model {

inline int16_t low16(int64_t value) { return static_cast<int16_t>(static_cast<uint16_t>(value & 0xFFFF)); }
inline int32_t low32(int64_t value) { return static_cast<int32_t>(static_cast<uint32_t>(value & 0xFFFFFFFF)); }

inline float clampFloat(float value, float low, float high) { return value < low ? low : value > high ? high : value; }

/// The two ways in which a float becomes an integer sample of the range low .. high.
inline int rounded(float value, float low, float high) {
  return static_cast<int>(std::nearbyint(clampFloat(value, low, high)));
}
inline int truncated(float value, float low, float high) { return static_cast<int>(clampFloat(value, low, high)); }

inline float reciprocal(int divisor) { return 1.0f / static_cast<float>(divisor); }

/// scale of the 16-bit fixed-point forms.
inline int lowScale(int divisor) {
  return low16(static_cast<int32_t>(std::trunc(16384.0f / static_cast<float>(divisor))));
}

template <class Kernel>
double magnitudeSum(const Kernel* kernel, int taps) {
  double sum = 0;
  for (int j = 0; j < taps; ++j) sum += std::abs(static_cast<double>(kernel[j]));
  return sum;
}

// ---------------------------------------------------------------------------------------------------------------- rows

/// A row of `width` pixels, its border word and border value; sample(x, c) reads the extended row.
template <class Sample>
struct ExtendedRow {
  const Sample* row;
  int width, channels, word;
  const Sample* borderValue;  ///< one sample a channel

  Sample sample(int x, int c) const {
    const AxisIndex source = mapColumn(x, width, word);
    return source.constant ? borderValue[c] : load(row + source.index * channels + c);
  }
};

enum class Zone { left, centre, right };

inline Zone zoneOf(int x, int width, int taps, int anchor) {
  if (width < taps || x < anchor)
    return Zone::left;
  return x < anchor + width - taps + 1 ? Zone::centre : Zone::right;
}

/// What every formula below gets: the window's samples in order and where the output lies.
template <class Sample>
struct Window {
  std::vector<Sample> s;
  bool centre;
  int width;  ///< of the row, in pixels
};

template <class Sample, class Kernel>
int64_t integerSum(const std::vector<Sample>& s, const Kernel* kernel) {
  int64_t sum = 0;
  for (size_t j = 0; j < s.size(); ++j) sum += int64_t{kernel[j]} * s[j];
  return sum;
}

/// An integer sum, scaled by the float reciprocal: rounded in the centre, truncated at the edges.
inline int16_t scaledSum(int32_t sum, int taps, int divisor, bool centre) {
  if (divisor == 1 && taps == 3)
    return static_cast<int16_t>(std::clamp(sum, -32768, 32767));
  const float value = static_cast<float>(sum) * reciprocal(divisor);
  return static_cast<int16_t>(centre ? rounded(value, -32768.0f, 32767.0f) : truncated(value, -32768.0f, 32767.0f));
}

inline int16_t rowFormula(const Window<uint8_t>& w, const int16_t* kernel, int taps, int divisor) {
  return scaledSum(low32(integerSum(w.s, kernel)), taps, divisor, w.centre);
}

/// The float sum of samples times coefficients that hold the reciprocal already. Symmetric kernels of 3 and 5 taps add
/// mirrored samples first, in the centre.
inline float premultipliedSum(const Window<int16_t>& w, const int16_t* kernel, int taps, int divisor) {
  std::vector<float> c(static_cast<size_t>(taps)), s(static_cast<size_t>(taps));
  for (size_t j = 0; j < c.size(); ++j) {
    c[j] = static_cast<float>(kernel[j]) * reciprocal(divisor);
    s[j] = static_cast<float>(w.s[j]);
  }
  if (w.centre && taps == 3 && kernel[0] == kernel[2])
    return c[0] * (s[0] + s[2]) + c[1] * s[1];
  if (w.centre && taps == 5 && kernel[0] == kernel[4] && kernel[1] == kernel[3])
    return (c[0] * (s[0] + s[4]) + c[1] * (s[1] + s[3])) + c[2] * s[2];
  float sum = c[0] * s[0];
  for (size_t j = 1; j < c.size(); ++j) sum = sum + c[j] * s[j];
  return sum;
}

inline int16_t rowFormula(const Window<int16_t>& w, const int16_t* kernel, int taps, int divisor) {
  const bool general = taps != 3 && taps != 5;
  const bool hasLowest = std::any_of(kernel, kernel + taps, [](int16_t k) { return k == -32768; });
  const bool large = magnitudeSum(kernel, taps) >= 65535.0;
  if (general) {
    if (!w.centre)
      return scaledSum(low32(integerSum(w.s, kernel)), taps, divisor, false);
    const float value = premultipliedSum(w, kernel, taps, divisor);
    if (w.width - taps <= 15)
      return static_cast<int16_t>(truncated(value, -32768.0f, 32767.0f));
    if (large || hasLowest)
      return static_cast<int16_t>(rounded(value, -32768.0f, 32767.0f));
  } else if (large) {
    const float value = premultipliedSum(w, kernel, taps, divisor);
    return static_cast<int16_t>(w.centre ? rounded(value, -32768.0f, 32767.0f) : truncated(value, -32768.0f, 32767.0f));
  }
  return scaledSum(low32(integerSum(w.s, kernel)), taps, divisor, w.centre);
}

inline float floatSum(const auto& s, const auto* kernel) {
  const auto product = [&](size_t j) { return multiply(static_cast<float>(kernel[j]), static_cast<float>(s[j])); };
  float sum = product(0);
  for (size_t j = 1; j < s.size(); ++j) sum = add(sum, product(j));
  return sum;
}

inline uint16_t rowFormula(const Window<uint16_t>& w, const uint16_t* kernel, int, int divisor) {
  const float value = floatSum(w.s, kernel) * reciprocal(divisor);
  return static_cast<uint16_t>(w.centre ? rounded(value, 0.0f, 65535.0f) : truncated(value, 0.0f, 65535.0f));
}

inline float rowFormula(const Window<float>& w, const float* kernel, int, int) { return floatSum(w.s, kernel); }

/// 16-bit fixed point: the centre wraps and saturates, the edges keep 32 bits and store the low 16.
inline int16_t rowFormulaLow(const Window<int16_t>& w, const int16_t* kernel, int taps, int divisor) {
  const int64_t sum = integerSum(w.s, kernel);
  if (taps == 3 && divisor == 1)
    return low16(sum);
  if (w.centre)
    return static_cast<int16_t>(std::clamp((low16(sum) * lowScale(divisor)) >> 14, -32768, 32767));
  return low16(low32(int64_t{low32(sum)} * lowScale(divisor)) >> 14);
}

template <class Sample, class Result, class Kernel, class Formula>
void filterRowWith(Formula formula, const ExtendedRow<Sample>& in, Result* out, const Kernel* kernel, int taps,
                   int anchor, int divisor) {
  for (int x = 0; x < in.width; ++x)
    for (int c = 0; c < in.channels; ++c) {
      Window<Sample> window;
      for (int j = 0; j < taps; ++j) window.s.push_back(in.sample(x - anchor + j, c));
      window.centre = zoneOf(x, in.width, taps, anchor) == Zone::centre;
      window.width = in.width;
      out[x * in.channels + c] = formula(window, kernel, taps, divisor);
    }
}

template <class Sample, class Result, class Kernel>
void filterRow(const ExtendedRow<Sample>& in, Result* out, const Kernel* kernel, int taps, int anchor, int divisor) {
  filterRowWith([](const auto&... arguments) { return rowFormula(arguments...); }, in, out, kernel, taps, anchor,
                divisor);
}

inline void filterRowLow(const ExtendedRow<int16_t>& in, int16_t* out, const int16_t* kernel, int taps, int anchor,
                         int divisor) {
  const bool replicatePath = taps == 5 && in.word == 1 && anchor == 2 && kernel[0] == kernel[4] &&
                             kernel[1] == kernel[3] && in.width - 2 > 8 && divisor == 16;
  if (replicatePath)
    filterRowWith([](const Window<int16_t>& w, const int16_t* k, int,
                     int) { return static_cast<int16_t>(low16(integerSum(w.s, k)) >> 4); },
                  in, out, kernel, taps, anchor, divisor);
  else
    filterRowWith(rowFormulaLow, in, out, kernel, taps, anchor, divisor);
}

// ------------------------------------------------------------------------------------------------------------- columns

/// The samples of one column of a window of rows.
template <class Sample>
std::vector<Sample> columnSamples(const Sample* const* rows, int taps, int x) {
  std::vector<Sample> s;
  for (int j = 0; j < taps; ++j) s.push_back(load(rows[j] + x));
  return s;
}

/// Blocks of 16 samples from the left round, the tail truncates.
inline bool inBlock(int x, int samples) { return x < samples / 16 * 16; }

inline int columnFormula16s(const std::vector<int16_t>& s, const int16_t* kernel, int divisor, bool block, float low,
                            float high) {
  const int taps = static_cast<int>(s.size());
  std::vector<float> c, v;
  for (size_t j = 0; j < s.size(); ++j) {
    c.push_back(static_cast<float>(kernel[j]) * reciprocal(divisor));
    v.push_back(static_cast<float>(s[j]));
  }
  if (block && taps == 3 && kernel[0] == kernel[2])
    return rounded(c[0] * (v[0] + v[2]) + c[1] * v[1], low, high);
  if (block)
    return rounded(floatSum(v, c.data()), low, high);
  return truncated(floatSum(v, kernel) * reciprocal(divisor), low, high);
}

/// One row of the result from `taps` rows; `samples` is width times channels.
template <class Result>
void filterColumn16s(const int16_t* const* rows, Result* out, int samples, const int16_t* kernel, int taps, int divisor,
                     float low, float high) {
  for (int x = 0; x < samples; ++x)
    out[x] = static_cast<Result>(
        columnFormula16s(columnSamples(rows, taps, x), kernel, divisor, inBlock(x, samples), low, high));
}

inline void filterColumn(const int16_t* const* rows, int16_t* out, int samples, const int16_t* kernel, int taps,
                         int divisor) {
  filterColumn16s(rows, out, samples, kernel, taps, divisor, -32768.0f, 32767.0f);
}
inline void filterColumn(const int16_t* const* rows, uint8_t* out, int samples, const int16_t* kernel, int taps,
                         int divisor) {
  filterColumn16s(rows, out, samples, kernel, taps, divisor, 0.0f, 255.0f);
}
inline void filterColumn(const int16_t* const* rows, int8_t* out, int samples, const int16_t* kernel, int taps,
                         int divisor) {
  filterColumn16s(rows, out, samples, kernel, taps, divisor, -128.0f, 127.0f);
}
inline void filterColumn(const uint16_t* const* rows, uint16_t* out, int samples, const uint16_t* kernel, int taps,
                         int divisor) {
  for (int x = 0; x < samples; ++x) {
    const float value = floatSum(columnSamples(rows, taps, x), kernel) * reciprocal(divisor);
    out[x] =
        static_cast<uint16_t>(inBlock(x, samples) ? rounded(value, 0.0f, 65535.0f) : truncated(value, 0.0f, 65535.0f));
  }
}
inline void filterColumn(const float* const* rows, float* out, int samples, const float* kernel, int taps, int) {
  for (int x = 0; x < samples; ++x) out[x] = floatSum(columnSamples(rows, taps, x), kernel);
}

/// Row `row` of `height`: with a symmetric kernel of 5 taps and divisor 16 rows are made in pairs whose whole width
/// wraps; an odd last row comes from the general form.
inline void filterColumnLow(const int16_t* const* rows, int16_t* out, int samples, const int16_t* kernel, int taps,
                            int divisor, int row, int height) {
  const bool paired = taps == 5 && kernel[0] == kernel[4] && kernel[1] == kernel[3] && divisor == 16 && height >= 3 &&
                      row < height / 2 * 2;
  const int scale = divisor == 1 ? 16384 : lowScale(divisor);
  for (int x = 0; x < samples; ++x) {
    const int64_t sum = integerSum(columnSamples(rows, taps, x), kernel);
    if (paired)
      out[x] = static_cast<int16_t>(low16(sum) >> 4);
    else if (!inBlock(x, samples))
      out[x] = low16(static_cast<uint32_t>(low32(int64_t{low32(sum)} * scale)) >> 14);
    else if (divisor == 1)
      out[x] = low16(sum);
    else
      out[x] = static_cast<int16_t>(std::clamp((low16(sum) * scale) >> 14, -32768, 32767));
  }
}

}  // namespace orvtest::model
