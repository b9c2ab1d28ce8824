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

/// 16-bit arithmetic wraps around.
struct S16x8 {
  static constexpr int lanes = 8;
  __m128i v;

  static S16x8 broadcast(int16_t value) { return {_mm_set1_epi16(value)}; }
  static S16x8 load(const int16_t* p) { return {_mm_loadu_si128(reinterpret_cast<const __m128i*>(p))}; }
  static S16x8 load(const uint8_t* p) {
    return {_mm_cvtepu8_epi16(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)))};
  }
  void store(int16_t* p) const { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }
  /// Saturates to 0 .. 255.
  void store(uint8_t* p) const { _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_packus_epi16(v, v)); }
};

inline S16x8 operator+(S16x8 a, S16x8 b) { return {_mm_add_epi16(a.v, b.v)}; }
inline S16x8 operator-(S16x8 a, S16x8 b) { return {_mm_sub_epi16(a.v, b.v)}; }
template <int bits>
S16x8 shiftLeft(S16x8 a) {
  return {_mm_slli_epi16(a.v, bits)};
}
/// a * factor / 32768, rounded to nearest.
inline S16x8 roundedProduct(S16x8 a, int16_t factor) { return {_mm_mulhrs_epi16(a.v, _mm_set1_epi16(factor))}; }
/// The upper 16 bits of the product of two unsigned numbers.
inline S16x8 upperProduct(S16x8 a, uint16_t factor) {
  return {_mm_mulhi_epu16(a.v, _mm_set1_epi16(static_cast<short>(factor)))};
}
inline S16x8 abs(S16x8 a) { return {_mm_abs_epi16(a.v)}; }

/// One sample with the operations of S16x8.
struct S16x1 {
  static constexpr int lanes = 1;
  int16_t v;

  static S16x1 broadcast(int16_t value) { return {value}; }
  static S16x1 load(const int16_t* p) {
    S16x1 r;
    std::memcpy(&r.v, p, sizeof r.v);
    return r;
  }
  static S16x1 load(const uint8_t* p) { return {*p}; }
  void store(int16_t* p) const { std::memcpy(p, &v, sizeof v); }
  int16_t value() const { return v; }
  void store(uint8_t* p) const { *p = static_cast<uint8_t>(v < 0 ? 0 : v > 255 ? 255 : v); }
};

inline S16x1 operator+(S16x1 a, S16x1 b) { return {static_cast<int16_t>(a.v + b.v)}; }
inline S16x1 operator-(S16x1 a, S16x1 b) { return {static_cast<int16_t>(a.v - b.v)}; }
template <int bits>
S16x1 shiftLeft(S16x1 a) {
  return {static_cast<int16_t>(static_cast<uint16_t>(a.v) << bits)};
}
inline S16x1 roundedProduct(S16x1 a, int16_t factor) { return {static_cast<int16_t>((a.v * factor + 0x4000) >> 15)}; }
inline S16x1 upperProduct(S16x1 a, uint16_t factor) {
  return {static_cast<int16_t>(static_cast<uint32_t>(static_cast<uint16_t>(a.v)) * factor >> 16)};
}
inline S16x1 abs(S16x1 a) { return {static_cast<int16_t>(a.v < 0 ? -a.v : a.v)}; }

}  // namespace orv
