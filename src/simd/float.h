// Single- and double-precision vectors: one sample, 8 samples, 4 doubles.
//
// F32x1 and F32x8 have the same operations, so that a formula written once for either type gives the same bits in the
// body of a row and at its ends. When both operands of an operation are NaN the result is the first operand, quieted;
// compilers commute additions and multiplications freely, so these are pinned to the order in which they are written. The
// assembly takes variables of its own: a structure with an operand in it would stay in memory.
#pragma once

#include <immintrin.h>

#include <cstdint>
#include <cstring>

namespace orv {

struct F32x1 {
  static constexpr int lanes = 1;
  __m128 v;

  static F32x1 broadcast(float value) { return {_mm_set_ss(value)}; }
  static F32x1 zero() { return {_mm_setzero_ps()}; }
  static F32x1 load(const float* p) {
    int32_t bits;
    std::memcpy(&bits, p, sizeof bits);
    return {_mm_castsi128_ps(_mm_cvtsi32_si128(bits))};
  }
  static F32x1 load(const uint8_t* p) { return {_mm_cvtsi32_ss(_mm_setzero_ps(), *p)}; }
  static F32x1 load(const uint16_t* p) {
    uint16_t sample;
    std::memcpy(&sample, p, sizeof sample);
    return {_mm_cvtsi32_ss(_mm_setzero_ps(), sample)};
  }
  static F32x1 load(const int16_t* p) {
    int16_t sample;
    std::memcpy(&sample, p, sizeof sample);
    return {_mm_cvtsi32_ss(_mm_setzero_ps(), sample)};
  }
  void store(float* p) const {
    const int32_t bits = _mm_cvtsi128_si32(_mm_castps_si128(v));
    std::memcpy(p, &bits, sizeof bits);
  }
  float value() const { return _mm_cvtss_f32(v); }
};

inline F32x1 operator+(F32x1 a, F32x1 b) {
  const __m128 x = a.v, y = b.v;
  __m128 r;
  asm("vaddss %2, %1, %0" : "=x"(r) : "x"(x), "x"(y));
  return {r};
}
inline F32x1 operator-(F32x1 a, F32x1 b) { return {_mm_sub_ss(a.v, b.v)}; }
inline F32x1 operator*(F32x1 a, F32x1 b) {
  const __m128 x = a.v, y = b.v;
  __m128 r;
  asm("vmulss %2, %1, %0" : "=x"(r) : "x"(x), "x"(y));
  return {r};
}
inline F32x1 abs(F32x1 a) { return {_mm_andnot_ps(_mm_set_ss(-0.0f), a.v)}; }

struct F32x8 {
  static constexpr int lanes = 8;
  __m256 v;

  static F32x8 broadcast(float value) { return {_mm256_set1_ps(value)}; }
  static F32x8 broadcast(const float* p) { return {_mm256_broadcast_ss(p)}; }
  static F32x8 zero() { return {_mm256_setzero_ps()}; }
  static F32x8 fromHalves(__m128 low, __m128 high) {
    return {_mm256_insertf128_ps(_mm256_castps128_ps256(low), high, 1)};
  }
  static F32x8 fromInts(__m128i low, __m128i high) {
    return {_mm256_cvtepi32_ps(_mm256_insertf128_si256(_mm256_castsi128_si256(low), high, 1))};
  }
  static F32x8 load(const float* p) { return {_mm256_loadu_ps(p)}; }
  static F32x8 load(const uint8_t* p) {
    return fromInts(_mm_cvtepu8_epi32(_mm_loadu_si32(p)), _mm_cvtepu8_epi32(_mm_loadu_si32(p + 4)));
  }
  static F32x8 load(const uint16_t* p) {
    const __m128i words = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    return fromInts(_mm_cvtepu16_epi32(words), _mm_unpackhi_epi16(words, _mm_setzero_si128()));
  }
  static F32x8 load(const int16_t* p) {
    const __m128i words = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    return fromInts(_mm_cvtepi16_epi32(words), _mm_cvtepi16_epi32(_mm_srli_si128(words, 8)));
  }
  void store(float* p) const { _mm256_storeu_ps(p, v); }
};

inline F32x8 operator+(F32x8 a, F32x8 b) {
  const __m256 x = a.v, y = b.v;
  __m256 r;
  asm("vaddps %2, %1, %0" : "=x"(r) : "x"(x), "x"(y));
  return {r};
}
inline F32x8 operator-(F32x8 a, F32x8 b) { return {_mm256_sub_ps(a.v, b.v)}; }
inline F32x8 operator*(F32x8 a, F32x8 b) {
  const __m256 x = a.v, y = b.v;
  __m256 r;
  asm("vmulps %2, %1, %0" : "=x"(r) : "x"(x), "x"(y));
  return {r};
}
/// 8 samples that the operation takes straight from memory.
struct F32x8InMemory {
  const float* p;
};
inline F32x8 operator+(F32x8 a, F32x8InMemory b) {
  const __m256 x = a.v;
  __m256 r;
  asm("vaddps %2, %1, %0" : "=x"(r) : "x"(x), "m"(*reinterpret_cast<const __m256_u*>(b.p)));
  return {r};
}
inline F32x8 operator*(F32x8 a, F32x8InMemory b) {
  const __m256 x = a.v;
  __m256 r;
  asm("vmulps %2, %1, %0" : "=x"(r) : "x"(x), "m"(*reinterpret_cast<const __m256_u*>(b.p)));
  return {r};
}
inline F32x8 abs(F32x8 a) { return {_mm256_andnot_ps(_mm256_set1_ps(-0.0f), a.v)}; }

/// |a - b| with the sign bit cleared, of a NaN too.
inline F32x1 absDiff(F32x1 a, F32x1 b) { return abs(a - b); }
inline F32x8 absDiff(F32x8 a, F32x8 b) { return abs(a - b); }

/// All bits set under zero mask bytes.
inline F32x8 unselectedLanes(const uint8_t* mask) {
  const auto unselected = [](const uint8_t* four) {
    const __m128i bytes = _mm_cvtepi8_epi32(_mm_loadu_si32(four));
    return _mm_castsi128_ps(_mm_cmpeq_epi32(bytes, _mm_setzero_si128()));
  };
  return F32x8::fromHalves(unselected(mask), unselected(mask + 4));
}

/// Integer samples as floats, 0 under zero mask bytes.
template <class Sample>
F32x1 loadSelected(F32x1, const Sample* p, const uint8_t* mask) {
  return *mask != 0 ? F32x1::load(p) : F32x1::zero();
}
inline F32x8 loadSelected(F32x8, const uint8_t* p, const uint8_t* mask) {
  const __m128i unselected = _mm_cmpeq_epi8(_mm_loadu_si64(mask), _mm_setzero_si128());
  const __m128i bytes = _mm_andnot_si128(unselected, _mm_loadu_si64(p));
  return F32x8::fromInts(_mm_cvtepu8_epi32(bytes), _mm_cvtepu8_epi32(_mm_srli_si128(bytes, 4)));
}
inline F32x8 loadSelected(F32x8, const uint16_t* p, const uint8_t* mask) {
  const __m128i unselected = _mm_cmpeq_epi8(_mm_loadu_si64(mask), _mm_setzero_si128());
  const __m128i samples = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
  const __m128i words = _mm_andnot_si128(_mm_cvtepi8_epi16(unselected), samples);
  return F32x8::fromInts(_mm_cvtepu16_epi32(words), _mm_unpackhi_epi16(words, _mm_setzero_si128()));
}

/// `weight` under nonzero mask bytes, +0.0 under zero bytes.
inline F32x1 selectedWeight(const uint8_t* mask, F32x1 weight) { return *mask != 0 ? weight : F32x1::zero(); }
inline F32x8 selectedWeight(const uint8_t* mask, F32x8 weight) {
  return {_mm256_andnot_ps(unselectedLanes(mask).v, weight.v)};
}

}  // namespace orv
