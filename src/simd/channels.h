// Gathering one channel of three interleaved ones into a vector.
#pragma once

#include <array>

#include "simd/vectors.h"

namespace orv {

/// The only channel of a one-channel image.
template <class Sample>
struct OnlyChannel {
  static constexpr int channels = 1;
  using Vector = typename VectorsOf<Sample>::Body;
  using Single = typename VectorsOf<Sample>::Single;

  template <class V = Vector>
  V load(const Sample* pixel) const {
    return V::load(pixel);
  }
};

/// For each channel and each of the three vectors that a vector's worth of pixels spans: where its bytes go. The high
/// bit makes the shuffle write zero.
using ByteShuffles = std::array<std::array<std::array<uint8_t, 16>, 3>, 3>;
constexpr ByteShuffles channelShuffles(int sampleSize) {
  ByteShuffles shuffles{};
  for (int channel = 0; channel < 3; ++channel)
    for (int byte = 0; byte < 16; ++byte) {
      const int source = (byte / sampleSize * 3 + channel) * sampleSize + byte % sampleSize;
      for (int part = 0; part < 3; ++part)
        shuffles[static_cast<size_t>(channel)][static_cast<size_t>(part)][static_cast<size_t>(byte)] =
            static_cast<uint8_t>(source / 16 == part ? source % 16 : 0x80);
    }
  return shuffles;
}
inline constexpr ByteShuffles shufflesOfBytes = channelShuffles(1);
inline constexpr ByteShuffles shufflesOfWords = channelShuffles(2);

template <class Sample>
class OneOfThree {
public:
  static constexpr int channels = 3;
  using Vector = typename VectorsOf<Sample>::Body;
  using Single = typename VectorsOf<Sample>::Single;

  /// @param coi counted from 1
  explicit OneOfThree(int coi)
      : channel_(coi - 1),
        shuffles_(&(sizeof(Sample) == 1 ? shufflesOfBytes : shufflesOfWords)[static_cast<size_t>(channel_)]) {}

  template <class V = Vector>
  V load(const Sample* pixel) const {
    if constexpr (V::lanes == 1)
      return V::load(pixel + channel_);
    else
      return {_mm_or_si128(_mm_or_si128(part<0>(pixel), part<1>(pixel)), part<2>(pixel))};
  }

private:
  template <size_t index>
  __m128i part(const Sample* pixel) const {
    constexpr int samplesPerPart = 16 / sizeof(Sample);
    return _mm_shuffle_epi8(loadBytes(pixel + static_cast<int>(index) * samplesPerPart),
                            loadBytes((*shuffles_)[index].data()));
  }

  int channel_;
  const std::array<std::array<uint8_t, 16>, 3>* shuffles_;
};

/// 4 pixels span three 4-lane vectors, and each lane holds the wanted channel in exactly one of them: masks pick the
/// lanes, a permutation sorts them, both for twice 4 pixels at once.
struct LanePicks {
  std::array<std::array<int32_t, 8>, 3> from;
  std::array<int32_t, 8> order;
};
constexpr std::array<LanePicks, 3> channelPicks() {
  std::array<LanePicks, 3> picks{};
  for (size_t channel = 0; channel < 3; ++channel)
    for (size_t pixel = 0; pixel < 8; ++pixel) {
      const size_t half = pixel / 4 * 4;
      const size_t source = 3 * (pixel % 4) + channel;
      picks[channel].from[source / 4][half + source % 4] = -1;
      picks[channel].order[pixel] = static_cast<int32_t>(source % 4);
    }
  return picks;
}
inline constexpr std::array<LanePicks, 3> picksOf = channelPicks();

template <>
class OneOfThree<float> {
public:
  static constexpr int channels = 3;
  using Vector = F32x8;
  using Single = F32x1;

  /// @param coi counted from 1
  explicit OneOfThree(int coi) : channel_(coi - 1), picks_(&picksOf[static_cast<size_t>(channel_)]) {}

  template <class V = Vector>
  V load(const float* pixel) const {
    if constexpr (V::lanes == 1) {
      return V::load(pixel + channel_);
    } else {
      const __m256 picked = _mm256_or_ps(_mm256_or_ps(part<0>(pixel), part<1>(pixel)), part<2>(pixel));
      return {_mm256_permutevar_ps(picked, lanes(picks_->order))};
    }
  }

private:
  static __m256i lanes(const std::array<int32_t, 8>& values) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(values.data()));
  }
  template <size_t index>
  __m256 part(const float* pixel) const {
    const float* p = pixel + static_cast<int>(index) * 4;
    const F32x8 halves = F32x8::fromHalves(_mm_loadu_ps(p), _mm_loadu_ps(p + 12));
    return _mm256_and_ps(halves.v, _mm256_castsi256_ps(lanes(picks_->from[index])));
  }

  int channel_;
  const LanePicks* picks_;
};

}  // namespace orv
