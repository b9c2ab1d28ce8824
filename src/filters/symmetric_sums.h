// Weighted sums of a symmetric kernel over rows of floats, in one formula for both passes of a separable filter: tap j
// of the kernel reads row j, and for a pass along a row these are the row itself, shifted by a pixel a tap.
//
//   out[x] = h[0] * (row[0][x] + row[2r][x]) + h[1] * (row[1][x] + row[2r - 1][x]) + ... + h[r] * row[r][x]
//
// The terms are added in this order, whatever the kernel size and the number of samples at a time.
#pragma once

#include <cstddef>
#include <utility>

#include "simd/rounding.h"

namespace orv {

template <int value>
using Constant = std::integral_constant<int, value>;

/// Where two rows under taps of equal weight start.
struct RowPair {
  const float *before, *after;
};

[[gnu::always_inline]] inline RowPair from(RowPair rows, int x) { return {rows.before + x, rows.after + x}; }

/// tap * (before + after).
[[gnu::always_inline]] inline F32x8 pairTerm(F32x8 tap, RowPair rows) {
  return tap * (F32x8::load(rows.before) + F32x8InMemory{rows.after});
}

/// The terms of a large block, one vector after the other: 32 sums, a tap and a term just fit the registers.
template <class V>
[[gnu::always_inline]] inline V pairTerms(F32x8 tap, RowPair rows) {
  if constexpr (V::lanes == F32x8::lanes)
    return pairTerm(tap, rows);
  else
    return {pairTerms<decltype(V::low)>(tap, rows), pairTerms<decltype(V::low)>(tap, from(rows, V::lanes / 2))};
}
[[gnu::always_inline]] inline void addPair(F32x8& sum, F32x8 tap, RowPair rows) { sum = sum + pairTerm(tap, rows); }
[[gnu::always_inline]] inline void addCentre(F32x8& sum, F32x8 tap, const float* row) {
  sum = sum + tap * F32x8InMemory{row};
}
template <class V>
[[gnu::always_inline]] inline void addPair(Twice<V>& sum, F32x8 tap, RowPair rows) {
  addPair(sum.low, tap, rows);
  addPair(sum.high, tap, from(rows, V::lanes));
}
template <class V>
[[gnu::always_inline]] inline void addCentre(Twice<V>& sum, F32x8 tap, const float* row) {
  addCentre(sum.low, tap, row);
  addCentre(sum.high, tap, row + V::lanes);
}

/// The taps of a pass along a line: tap j reads from line + j * step on.
template <class Radius>
struct LineTaps {
  const float* line;
  Radius radius;
  int step;

  RowPair pair(int i) const { return {line + i * step, line + (2 * radius - i) * step}; }
  const float* centre() const { return line + radius * step; }
  LineTaps from(int x) const { return {line + x, radius, step}; }

  struct Cursor {
    const float* p;
    int step;

    const float* operator*() const { return p; }
    void operator++() { p += step; }
    void operator--() { p -= step; }
    bool operator!=(const Cursor& other) const { return p != other.p; }
  };
  Cursor first() const { return {line, step}; }
  Cursor last() const { return {line + 2 * radius * step, step}; }
};

/// The rows of a pass down, from their first samples on: tap j reads from rows[j], and on from there as the column moves.
template <class Radius>
class Column;

template <>
class Column<int> {
public:
  Column(int radius, const float* const* rows) : rows_(rows), radius_(radius) {}

  struct Taps {
    const float* const* rows;
    int radius, x;

    struct Cursor {
      const float* const* row;
      int x;

      const float* operator*() const { return *row + x; }
      void operator++() { ++row; }
      void operator--() { --row; }
      bool operator!=(const Cursor& other) const { return row != other.row; }
    };
    Cursor first() const { return {rows, x}; }
    Cursor last() const { return {rows + 2 * radius, x}; }
  };
  Taps taps() const { return {rows_, radius_, x_}; }
  void move(int samples) { x_ += samples; }

private:
  const float* const* rows_;
  int radius_, x_ = 0;
};

/// Few rows are held as distances from the centre's: a load adds up centre and distance at no cost, so that a single pointer
/// moves along all of them.
template <int radius>
class Column<Constant<radius>> {
public:
  Column(Constant<radius>, const float* const* rows)
      : Column(rows, std::make_integer_sequence<int, 2 * radius + 1>{}) {}

  struct Taps {
    Column& column;
    const char* centreRow;

    [[gnu::always_inline]] RowPair pair(int i) const { return {row(i), row(2 * radius - i)}; }
    [[gnu::always_inline]] const float* centre() const { return reinterpret_cast<const float*>(centreRow); }
    [[gnu::always_inline]] Taps from(int x) const {
      return {column, centreRow + static_cast<std::ptrdiff_t>(sizeof(float)) * x};
    }

  private:
    [[gnu::always_inline]] const float* row(int tap) const {
      return reinterpret_cast<const float*>(centreRow + column.distance(tap));
    }
  };
  [[gnu::always_inline]] Taps taps() { return {*this, centre_}; }
  void move(int samples) { centre_ += samples * static_cast<std::ptrdiff_t>(sizeof(float)); }

private:
  template <int... i>
  Column(const float* const* rows, std::integer_sequence<int, i...>)
      : centre_(reinterpret_cast<const char*>(rows[radius])),
        distances_{(reinterpret_cast<const char*>(rows[i]) - centre_)...} {}

  /// A compiler that knew a distance to be the one before would add it to the centre once for several loads, into a register
  /// too many.
  [[gnu::always_inline]] std::ptrdiff_t distance(int tap) {
    std::ptrdiff_t distance = distances_[tap];
    if constexpr (radius <= 2)
      asm("" : "+r"(distance));
    distances_[tap] = distance;
    return distance;
  }

  const char* centre_;
  std::ptrdiff_t distances_[2 * radius + 1];
};

/// The sums of blocks of samples from the first that `at` says for each row on.
template <class Radius>
class SymmetricKernel;

/// Any number of taps: the sums of a large block are held in registers while the taps go by.
template <>
class SymmetricKernel<int> {
public:
  SymmetricKernel(const float* half, int) : half_(half) {}

  template <class V>
  [[gnu::always_inline]] V sum(auto at) const {
    auto before = at.first(), after = at.last();
    const float* tap = half_;
    V sum = pairTerms<V>(F32x8::broadcast(tap), {*before, *after});
    for (++before, --after, ++tap; before != after; ++before, --after, ++tap)
      addPair(sum, F32x8::broadcast(tap), {*before, *after});
    addCentre(sum, F32x8::broadcast(tap), *before);
    return sum;
  }

private:
  const float* half_;
};

/// Few taps are held in registers themselves. Samples come straight from memory: loads that straddle cache lines cost less
/// than the shuffles that would do without them.
template <int radius>
class SymmetricKernel<Constant<radius>> {
public:
  SymmetricKernel(const float* half, Constant<radius>)
      : SymmetricKernel(half, std::make_integer_sequence<int, radius + 1>{}) {}

  template <class V>
  [[gnu::always_inline]] V sum(auto at) const {
    if constexpr (V::lanes > F32x8::lanes) {
      using Half = decltype(V::low);
      return {sum<Half>(at), sum<Half>(at.from(Half::lanes))};
    } else {
      V sum = outerTerms(at, std::make_integer_sequence<int, radius - 1>{});
      addCentre(sum, half_[radius], at.centre());
      return sum;
    }
  }

private:
  template <int... i>
  SymmetricKernel(const float* half, std::integer_sequence<int, i...>) : half_{F32x8::broadcast(half + i)...} {}

  template <int... i>
  [[gnu::always_inline]] F32x8 outerTerms(auto at, std::integer_sequence<int, i...>) const {
    F32x8 sum = pairTerm(half_[0], at.pair(0));
    (addPair(sum, half_[i + 1], at.pair(i + 1)), ...);
    return sum;
  }

  F32x8 half_[radius + 1];
};

}  // namespace orv
