// Filling stretches of memory with one pixel of 1 to 16 bytes.
#pragma once

#include <immintrin.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace orv {

/// One pixel repeated over three vectors: every size from 1 to 4 samples of 1, 2 or 4 bytes divides them.
class FillPattern {
public:
  FillPattern(const void* pixel, size_t pixelBytes);

  /// Starts with a whole pixel at `first`.
  void fill(void* first, size_t length) const;

private:
  __m128i vectors_[3];
};

/// Repeats the pixel at `pixel` `count` times. Short stretches, the usual border, are not worth a pattern.
template <size_t pixelBytes>
void fillPixels(uint8_t* first, int count, const uint8_t* pixel) {
  uint8_t value[pixelBytes];
  std::memcpy(value, pixel, pixelBytes);
  if (count > 6)
    return FillPattern(value, pixelBytes).fill(first, static_cast<size_t>(count) * pixelBytes);
  for (int x = 0; x < count; ++x, first += pixelBytes) std::memcpy(first, value, pixelBytes);
}

}  // namespace orv
