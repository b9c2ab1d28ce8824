// 128-bit integer vectors, and single samples with the same operations.
#pragma once

#include <immintrin.h>

#include <cstdint>
#include <cstring>

namespace orv {

inline __m128i loadBytes(const void* p) { return _mm_loadu_si128(static_cast<const __m128i*>(p)); }

struct U8x16 {
  static constexpr int lanes = 16;
  __m128i v;

  static U8x16 broadcast(uint8_t value) { return {_mm_set1_epi8(static_cast<char>(value))}; }
  static U8x16 load(const uint8_t* p) { return {_mm_loadu_si128(reinterpret_cast<const __m128i*>(p))}; }
  void store(uint8_t* p) const { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }
};

/// One of the two saturated differences is zero, the other the magnitude.
inline U8x16 absDiff(U8x16 a, U8x16 b) { return {_mm_or_si128(_mm_subs_epu8(a.v, b.v), _mm_subs_epu8(b.v, a.v))}; }

struct U16x8 {
  static constexpr int lanes = 8;
  __m128i v;

  static U16x8 broadcast(uint16_t value) { return {_mm_set1_epi16(static_cast<short>(value))}; }
  static U16x8 load(const uint16_t* p) { return {_mm_loadu_si128(reinterpret_cast<const __m128i*>(p))}; }
  void store(uint16_t* p) const { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }
};

inline U16x8 absDiff(U16x8 a, U16x8 b) { return {_mm_or_si128(_mm_subs_epu16(a.v, b.v), _mm_subs_epu16(b.v, a.v))}; }

/// One integer sample at any address.
template <class Sample>
struct IntegerX1 {
  static constexpr int lanes = 1;
  Sample v;

  static IntegerX1 broadcast(Sample value) { return {value}; }
  static IntegerX1 load(const Sample* p) {
    IntegerX1 r;
    std::memcpy(&r.v, p, sizeof r.v);
    return r;
  }
  void store(Sample* p) const { std::memcpy(p, &v, sizeof v); }
  Sample value() const { return v; }
};

template <class Sample>
IntegerX1<Sample> absDiff(IntegerX1<Sample> a, IntegerX1<Sample> b) {
  return {static_cast<Sample>(a.v > b.v ? a.v - b.v : b.v - a.v)};
}

}  // namespace orv
