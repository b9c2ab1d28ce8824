// Norms under masks as plain loops.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>
#include <vector>

#include "support/samples.h"

namespace orvtest::model {

/// One or two images, of which one channel counts, and a mask. Without a second image src2 is null; without a mask every
/// pixel is selected.
template <class Sample>
struct MaskedImages {
  const Sample* src1;
  int src1Step;
  const Sample* src2;
  int src2Step;
  const uint8_t* mask;
  int maskStep;
  int width, height, channels, channel;

  Sample first(int x, int y) const { return load(src1, src1Step, x * channels + channel, y); }
  Sample second(int x, int y) const { return load(src2, src2Step, x * channels + channel, y); }
  bool selected(int x, int y) const { return mask == nullptr || mask[static_cast<intptr_t>(y) * maskStep + x] != 0; }
  float factor(int x, int y) const { return selected(x, y) ? 1.0f : 0.0f; }
};

enum class Norm { inf, l1, l2 };

/// What is measured: src1, src1 - src2, or src2 (the denominator of a relative norm).
enum class Term { first, difference, second };

// ---------------------------------------------------------------------------------------------------------- integers

/// Before the root of L2, which a relative norm takes of the quotient.
template <class Sample>
double integerSum(Norm norm, Term term, const MaskedImages<Sample>& in) {
  int64_t largest = 0, sum = 0;
  double floatSquares = 0;
  for (int y = 0; y < in.height; ++y) {
    std::vector<float> squares;
    for (int x = 0; x < in.width; ++x) {
      int64_t d = 0;
      if (in.selected(x, y)) {
        d = term == Term::second ? in.second(x, y) : in.first(x, y);
        if (term == Term::difference)
          d -= in.second(x, y);
        d = d < 0 ? -d : d;
      }
      largest = d > largest ? d : largest;
      sum += norm == Norm::l2 ? d * d : d;
      squares.push_back(static_cast<float>(d) * static_cast<float>(d));
    }
    // 16-bit squares are floats, added four to a lane in blocks of 16, then two in one of 8, then one in one of 4.
    size_t x = 0;
    for (size_t block : {size_t{16}, size_t{8}, size_t{4}, size_t{1}})
      while (x + block <= squares.size()) {
        for (size_t lane = 0; lane < 4 && lane < block; ++lane) {
          float total = squares[x + lane];
          for (size_t i = lane + 4; i < block; i += 4) total = total + squares[x + i];
          floatSquares += static_cast<double>(total);
        }
        x += block;
      }
  }
  if (norm == Norm::inf)
    return static_cast<double>(largest);
  if (norm == Norm::l2 && std::is_same_v<Sample, uint16_t>)
    return floatSquares;
  return static_cast<double>(sum);
}

// ------------------------------------------------------------------------------------------------------------- floats

/// Two accumulators of 4 doubles for groups of 8 pixels and one for single pixels, kept across rows.
struct DoubleSums {
  double a[4] = {}, b[4] = {}, single = 0;

  void addToGroup(int i, double value) {
    if (i < 4)
      a[i] = a[i] + value;
    else
      b[i - 4] = b[i - 4] + value;
  }
  double joined() const {
    double c[4];
    for (int i = 0; i < 4; ++i) c[i] = a[i] + b[i];
    const double low = c[0] + c[2], high = c[1] + c[3];
    return (low + high) + single;
  }
};

/// Single pixels before the groups of 8 of row y; the width where there are no groups.
inline int headLength(const MaskedImages<float>& in, int y) {
  if (in.width < 8)
    return in.width;
  if (in.channels != 1)
    return 0;
  const uintptr_t address =
      reinterpret_cast<uintptr_t>(in.src1) + static_cast<uintptr_t>(static_cast<intptr_t>(y) * in.src1Step);
  if (address % 4 != 0)
    return in.width;
  const int head = static_cast<int>((32 - address % 32) % 32 / 4);
  return head + 8 <= in.width ? head : in.width;
}

inline float factored(Term term, const MaskedImages<float>& in, int x, int y) {
  const float f = in.factor(x, y);
  if (term == Term::first)
    return f * in.first(x, y);
  if (term == Term::second)
    return f * in.second(x, y);
  return f * (in.first(x, y) - in.second(x, y));
}

inline double floatSum(Norm norm, Term term, const MaskedImages<float>& in, bool relative) {
  float largest = 0;
  DoubleSums sums;
  double rowTotals = 0;
  for (int y = 0; y < in.height; ++y) {
    const int head = headLength(in, y);
    const int groupsEnd = head + (in.width - head) / 8 * 8;
    float lanes[8] = {};
    std::vector<float> tail;
    for (int x = 0; x < in.width; ++x) {
      const bool single = x < head || x >= groupsEnd;
      const float t = factored(term, in, x, y);
      largest = largest > std::fabs(t) ? largest : std::fabs(t);
      double value = static_cast<double>(norm == Norm::l2 ? t * t : std::fabs(t));
      if (norm == Norm::l1 && term == Term::difference && relative && in.channels == 1 && single)
        value = std::fabs(static_cast<double>(in.factor(x, y)) *
                          (static_cast<double>(in.first(x, y)) - static_cast<double>(in.second(x, y))));
      if (single) {
        sums.single = sums.single + value;
        tail.push_back(t * t);
      } else {
        sums.addToGroup((x - head) % 8, value);
        lanes[(x - head) % 8] = lanes[(x - head) % 8] + t * t;
      }
    }
    float c[4];
    for (int i = 0; i < 4; ++i) c[i] = lanes[i] + lanes[i + 4];
    float total = (c[0] + c[2]) + (c[1] + c[3]);
    for (float square : tail) total = total + square;
    rowTotals = rowTotals + static_cast<double>(total);
  }
  if (norm == Norm::inf)
    return static_cast<double>(largest);
  return norm == Norm::l2 && in.channels != 1 ? rowTotals : sums.joined();
}

// ------------------------------------------------------------------------------------------------------------ families

template <class Sample>
double unrooted(Norm norm, Term term, const MaskedImages<Sample>& in, bool relative = false) {
  if constexpr (std::is_same_v<Sample, float>)
    return floatSum(norm, term, in, relative);
  else
    return integerSum(norm, term, in);
}

/// orviNorm where src2 is null, else orviNormDiff.
template <class Sample>
double norm(Norm norm, const MaskedImages<Sample>& in) {
  const double sum = unrooted(norm, in.src2 == nullptr ? Term::first : Term::difference, in);
  return norm == Norm::l2 ? std::sqrt(sum) : sum;
}

struct RelativeNorm {
  int status;
  double value;
};

template <class Sample>
RelativeNorm relativeNorm(Norm norm, const MaskedImages<Sample>& in) {
  const double numerator = unrooted(norm, Term::difference, in, true);
  const double denominator = unrooted(norm, Term::second, in, true);
  if (denominator == 0) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    if (numerator == 0) {
      const uint64_t bits = 0xFFF8000000000000;
      double value;
      std::memcpy(&value, &bits, sizeof value);
      return {2, value};
    }
    return {2, numerator > 0 ? infinity : -infinity};
  }
  const double quotient = numerator / denominator;
  return {0, norm == Norm::l2 ? std::sqrt(quotient) : quotient};
}

}  // namespace orvtest::model
