// Integer sums over rows of samples. Lanes of 32 bits take the samples and are emptied into lanes of 64 bits by flush,
// which must be called after at most longestRun pixels: then no sum can overflow, whatever the size of the image.
#pragma once

#include "simd/integer.h"

namespace orv {

constexpr int longestRun = 1 << 17;

/// The low and the high half of an unsigned product or sum, in as many lanes.
inline __m128i widenLow16(__m128i words) { return _mm_unpacklo_epi16(words, _mm_setzero_si128()); }
inline __m128i widenHigh16(__m128i words) { return _mm_unpackhi_epi16(words, _mm_setzero_si128()); }

class LaneSums64 {
public:
  void add(__m128i pairOf64) { lanes_ = _mm_add_epi64(lanes_, pairOf64); }
  uint64_t total() const {
    const __m128i joined = _mm_add_epi64(lanes_, _mm_unpackhi_epi64(lanes_, lanes_));
    uint64_t sum;
    _mm_storel_epi64(reinterpret_cast<__m128i*>(&sum), joined);
    return sum;
  }

private:
  __m128i lanes_ = _mm_setzero_si128();
};

/// Sums of unsigned 32-bit numbers.
class LaneSums32 {
public:
  void add(__m128i fourOf32) { lanes_ = _mm_add_epi32(lanes_, fourOf32); }
  void addWords(__m128i words) { add(_mm_add_epi32(widenLow16(words), widenHigh16(words))); }
  void flush() {
    wide_.add(_mm_unpacklo_epi32(lanes_, _mm_setzero_si128()));
    wide_.add(_mm_unpackhi_epi32(lanes_, _mm_setzero_si128()));
    lanes_ = _mm_setzero_si128();
  }
  uint64_t total() const { return wide_.total(); }

private:
  __m128i lanes_ = _mm_setzero_si128();
  LaneSums64 wide_;
};

template <class Sample>
class SampleSum;

/// 16 pixels a turn; the instruction's sums are 64 bits wide from the start.
template <>
class SampleSum<uint8_t> {
public:
  void add(U8x16 a) { sum_.add(_mm_sad_epu8(a.v, _mm_setzero_si128())); }
  void flush() {}
  uint64_t total() const { return sum_.total(); }

private:
  LaneSums64 sum_;
};

template <>
class SampleSum<uint16_t> {
public:
  void add(U16x8 a) { sum_.addWords(a.v); }
  void flush() { sum_.flush(); }
  uint64_t total() const { return sum_.total(); }

private:
  LaneSums32 sum_;
};

template <class Sample>
class SquareSum;

template <>
class SquareSum<uint8_t> {
public:
  void add(U8x16 a) {
    const __m128i low = _mm_unpacklo_epi8(a.v, _mm_setzero_si128());
    const __m128i high = _mm_unpackhi_epi8(a.v, _mm_setzero_si128());
    sum_.add(_mm_add_epi32(_mm_madd_epi16(low, low), _mm_madd_epi16(high, high)));
  }
  void flush() { sum_.flush(); }
  uint64_t total() const { return sum_.total(); }

private:
  LaneSums32 sum_;
};

/// The two halves of the 32-bit squares are summed apart.
template <>
class SquareSum<uint16_t> {
public:
  void add(U16x8 a) {
    low_.addWords(_mm_mullo_epi16(a.v, a.v));
    high_.addWords(_mm_mulhi_epu16(a.v, a.v));
  }
  void flush() {
    low_.flush();
    high_.flush();
  }
  uint64_t total() const { return low_.total() + (high_.total() << 16); }

private:
  LaneSums32 low_, high_;
};

}  // namespace orv
