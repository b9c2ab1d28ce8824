// 16-bit fixed-point arithmetic of the reduced-precision pipelines: sums that wrap, and their scaling.
#pragma once

#include <bit>

#include "filters/filter_vectors.h"

namespace orv {

/// A 16-bit coefficient twice, as one load spreads it over a vector.
struct WordPair {
  float bits;

  explicit WordPair(int16_t word) : bits(std::bit_cast<float>(uint32_t{static_cast<uint16_t>(word)} * 0x00010001u)) {}
  WordPair() = default;
};

/// Coefficients made at each use.
struct WordCoefficients {
  const int16_t* kernel;
  WordPair operator[](int j) const { return WordPair{loadSample(kernel + j)}; }
};

/// 8 or one 16-bit integers whose sums and products wrap.
struct Wrapping16x8 {
  static constexpr int lanes = 8;
  __m128i v;

  static Wrapping16x8 broadcast(WordPair pair) { return {_mm_castps_si128(_mm_set1_ps(pair.bits))}; }
  static Wrapping16x8 load(const int16_t* p) { return {load128(p)}; }
};
inline Wrapping16x8 operator+(Wrapping16x8 a, Wrapping16x8 b) { return {_mm_add_epi16(a.v, b.v)}; }
inline Wrapping16x8 operator*(Wrapping16x8 a, Wrapping16x8 b) { return {_mm_mullo_epi16(a.v, b.v)}; }

/// One 32-bit integer whose sums and products wrap; its low half is what 16-bit sums hold.
struct Wrapping32x1 {
  static constexpr int lanes = 1;
  uint32_t v;

  static Wrapping32x1 of(int value) { return {static_cast<uint32_t>(value)}; }
  static Wrapping32x1 broadcast(WordPair pair) { return of(static_cast<int16_t>(std::bit_cast<uint32_t>(pair.bits))); }
  static Wrapping32x1 load(const int16_t* p) { return of(loadSample(p)); }
};
inline Wrapping32x1 operator+(Wrapping32x1 a, Wrapping32x1 b) { return {a.v + b.v}; }
inline Wrapping32x1 operator*(Wrapping32x1 a, Wrapping32x1 b) { return {a.v * b.v}; }

/// A fixed-point factor of 14 fractional bits. The centre multiplies the sum's low 16 bits and saturates; the edges
/// multiply the whole sum and keep the product's low bits: the two differ, by design, when the sum leaves 16 bits.
struct FixedPointScaled {
  int16_t factor;

  template <int vectors>
  [[gnu::always_inline]] void store(const Wrapping16x8 (&sums)[vectors], int16_t* d) const {
    const __m128i factors = _mm_set1_epi16(factor);
    unrolled<vectors>([&](auto i) __attribute__((always_inline)) {
      const __m128i low = _mm_mullo_epi16(sums[i].v, factors), high = _mm_mulhi_epi16(sums[i].v, factors);
      store128(d + 8 * i, _mm_packs_epi32(_mm_srai_epi32(_mm_unpacklo_epi16(low, high), 14),
                                          _mm_srai_epi32(_mm_unpackhi_epi16(low, high), 14)));
    });
  }
  int16_t centre(Wrapping32x1 sum) const {
    const int scaled = (static_cast<int16_t>(sum.v) * factor) >> 14;
    return static_cast<int16_t>(std::min(scaled, 32767));
  }
  int16_t edge(Wrapping32x1 sum) const {
    return static_cast<int16_t>((sum.v * static_cast<uint32_t>(int32_t{factor})) >> 14);
  }
};

/// 16384.0f / divisor, truncated: at most 16384 in magnitude.
inline int16_t fixedPointFactor(int divisor) { return static_cast<int16_t>(16384.0f / static_cast<float>(divisor)); }

/// Division by 16 of the wrapped sum, edges like the centre. Large results bypass the cache where they are aligned.
struct Sixteenth {
  bool streamed;

  template <int vectors>
  [[gnu::always_inline]] void store(const Wrapping16x8 (&sums)[vectors], int16_t* d) const {
    unrolled<vectors>([&](auto i) __attribute__((always_inline)) {
      const __m128i scaled = _mm_srai_epi16(sums[i].v, 4);
      if (streamed && (reinterpret_cast<uintptr_t>(d) & 15) == 0)
        _mm_stream_si128(reinterpret_cast<__m128i*>(d + 8 * i), scaled);
      else
        store128(d + 8 * i, scaled);
    });
  }
  int16_t centre(Wrapping32x1 sum) const { return static_cast<int16_t>(static_cast<int16_t>(sum.v) >> 4); }
  int16_t edge(Wrapping32x1 sum) const { return centre(sum); }
};

}  // namespace orv
