// Row sums of float samples with taps of their own for each interleaved channel.
#pragma once

#include <cstddef>

#include "filters/filter_vectors.h"

namespace orv {

/// Products and sums of 8 samples in single precision.
struct FloatSum {
  F32x8 sum;

  void start(F32x8 coefficients, auto samples) { sum = coefficients * samples; }
  void add(F32x8 coefficients, auto samples) { sum = sum + coefficients * samples; }
  F32x8 result() const { return sum; }
};

/// The same in double precision, in which sums of integer products are exact, rounded once at the end.
struct DoubleSum {
  __m256d low, high;

  void start(F32x8 coefficients, F32x8InMemory samples) { start(coefficients, F32x8::load(samples.p)); }
  void start(F32x8 coefficients, F32x8 samples) {
    low = _mm256_mul_pd(lowHalf(coefficients), lowHalf(samples));
    high = _mm256_mul_pd(highHalf(coefficients), highHalf(samples));
  }
  void add(F32x8 coefficients, F32x8InMemory samples) { add(coefficients, F32x8::load(samples.p)); }
  void add(F32x8 coefficients, F32x8 samples) {
    low = _mm256_add_pd(low, _mm256_mul_pd(lowHalf(coefficients), lowHalf(samples)));
    high = _mm256_add_pd(high, _mm256_mul_pd(highHalf(coefficients), highHalf(samples)));
  }
  F32x8 result() const { return F32x8::fromHalves(_mm256_cvtpd_ps(low), _mm256_cvtpd_ps(high)); }

private:
  static __m256d lowHalf(F32x8 a) { return _mm256_cvtps_pd(_mm256_castps256_ps128(a.v)); }
  static __m256d highHalf(F32x8 a) { return _mm256_cvtps_pd(_mm256_extractf128_ps(a.v, 1)); }
};

/// Sums over the pixels from each position on. The vectors of coefficients repeat with a period of one vector, or three
/// of three-channel pixels.
template <int channels>
struct ChannelSums {
  float* table;  ///< `period` vectors a tap, aligned to 32 bytes
  int count;

  static constexpr int lanes = F32x8::lanes;
  static constexpr int period = channels == 3 ? 3 : 1;
  static constexpr int blockVectors = channels == 3 ? 3 : 4;
  static constexpr int blockLanes = blockVectors * lanes;

  static constexpr std::ptrdiff_t tableFloats(int taps) { return std::ptrdiff_t{taps} * (period * lanes); }

  template <class Coefficient>
  void expand(const Coefficient* kernel) const {
    for (int j = 0; j < count; ++j) {
      const auto* const tap = kernel + j * channels;
      float* const vectors = table + j * period * lanes;
      if constexpr (channels == 1)
        F32x8::broadcast(static_cast<float>(*tap)).store(vectors);
      else
        for (int i = 0; i < period * lanes; ++i) vectors[i] = static_cast<float>(tap[i % channels]);
    }
  }

  /// Writes the sums of src[0 .. samples - 1], which has (count - 1) * channels samples more, times the factor. Both may
  /// start at the same sample: blocks from the left read none that an earlier one has replaced. Bound by loads.
  template <class Sum>
  void filter(const float* src, float* dst, int samples, auto factor) const {
    const auto inMemory = [](const float* p) __attribute__((always_inline)) { return F32x8InMemory{p}; };
    int i = 0;
    const auto blocks = [&](auto vectors) __attribute__((always_inline)) {
      for (; i <= samples - lanes * vectors; i += lanes * vectors) {
        Sum sums[vectors];
        sumBlock(src + i, 0, sums, inMemory);
        unrolled<vectors>([&](auto v)
                              __attribute__((always_inline)) { factor(sums[v].result()).store(dst + i + lanes * v); });
      }
    };
    blocks(std::integral_constant<int, blockVectors>{});
    if constexpr (period == 1)
      blocks(std::integral_constant<int, 2>{});
    for (int phase = 0; i < samples; i += lanes, phase = (phase + 1) % period) {
      const int rest = std::min(samples - i, lanes);
      Sum sums[1];
      if (rest == lanes) {
        sumBlock(src + i, phase, sums, inMemory);
        factor(sums[0].result()).store(dst + i);
      } else {
        const __m256i selected = firstLanes(rest);
        sumBlock(src + i, phase, sums, [&](const float* p) { return F32x8{_mm256_maskload_ps(p, selected)}; });
        _mm256_maskstore_ps(dst + i, selected, factor(sums[0].result()).v);
      }
    }
  }

private:
  static __m256i firstLanes(int n) {
    const __m128i limit = _mm_set1_epi32(n);
    const __m128i low = _mm_cmplt_epi32(_mm_setr_epi32(0, 1, 2, 3), limit);
    const __m128i high = _mm_cmplt_epi32(_mm_setr_epi32(4, 5, 6, 7), limit);
    return _mm256_insertf128_si256(_mm256_castsi128_si256(low), high, 1);
  }

  template <class Sum, int vectors>
  [[gnu::always_inline]] void sumBlock(const float* s, int phase, Sum (&sums)[vectors], auto load) const {
    const auto forVectors = [&](int j, auto step) __attribute__((always_inline)) {
      unrolled<vectors>([&](auto v) __attribute__((always_inline)) {
        const float* const coefficients = table + (j * period + (phase + v) % period) * lanes;
        step(sums[v], F32x8::load(coefficients), load(s + j * channels + lanes * v));
      });
    };
    forVectors(
        0, [](Sum & sum, F32x8 k, auto samples) __attribute__((always_inline)) { sum.start(k, samples); });
    for (int j = 1; j < count; ++j)
      forVectors(
          j, [](Sum & sum, F32x8 k, auto samples) __attribute__((always_inline)) { sum.add(k, samples); });
  }
};

}  // namespace orv
