// Samples at any address: reference models and test images read and write through these, so that no misaligned
// pointer is ever dereferenced. No dependency on the test framework.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace orvtest {

template <size_t bytes>
struct UnsignedOfSize;
template <>
struct UnsignedOfSize<1> {
  using Type = uint8_t;
};
template <>
struct UnsignedOfSize<2> {
  using Type = uint16_t;
};
template <>
struct UnsignedOfSize<4> {
  using Type = uint32_t;
};
template <>
struct UnsignedOfSize<8> {
  using Type = uint64_t;
};

/// The unsigned integer that holds a sample's bits. A float that a function returns passes through the x87 stack, which
/// quiets signalling NaNs; its bits do not.
template <class Sample>
using BitsOf = typename UnsignedOfSize<sizeof(Sample)>::Type;

/// Sample i of the row y that starts at first + y * step bytes.
template <class Sample>
[[gnu::always_inline]] inline Sample* addressOf(Sample* first, int step, int i, int y) {
  using Byte = std::conditional_t<std::is_const_v<Sample>, const uint8_t, uint8_t>;
  // Bytes first: a typed pointer may not be formed by arithmetic on a misaligned one.
  Byte* base = reinterpret_cast<Byte*>(first);
  return reinterpret_cast<Sample*>(base + static_cast<ptrdiff_t>(y) * step +
                                   static_cast<ptrdiff_t>(i) * static_cast<ptrdiff_t>(sizeof(Sample)));
}

template <class Sample>
[[gnu::always_inline]] inline Sample load(const Sample* address) {
  Sample value;
  std::memcpy(&value, static_cast<const void*>(address), sizeof value);
  return value;
}

template <class Sample>
[[gnu::always_inline]] inline Sample load(const Sample* first, int step, int i, int y) {
  return load(addressOf(first, step, i, y));
}

template <class Sample>
[[gnu::always_inline]] inline void store(Sample* address, std::type_identity_t<Sample> value) {
  std::memcpy(static_cast<void*>(address), &value, sizeof value);
}

template <class Sample>
[[gnu::always_inline]] inline void store(Sample* first, int step, int i, int y, std::type_identity_t<Sample> value) {
  store(addressOf(first, step, i, y), value);
}

}  // namespace orvtest
