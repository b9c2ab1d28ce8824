// Unaligned loads and stores of 128 bits of whatever type.
#pragma once

#include <immintrin.h>

namespace orv {

inline __m128i loadBits(const void* p) { return _mm_loadu_si128(static_cast<const __m128i*>(p)); }
inline void storeBits(void* p, __m128i v) { _mm_storeu_si128(static_cast<__m128i*>(p), v); }

}  // namespace orv
