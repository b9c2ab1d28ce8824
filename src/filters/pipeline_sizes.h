// Scratch sizes of the row and column pipelines, in bytes. Arithmetic is unsigned: sizes wrap around for widths beyond
// all memory.
#pragma once

#include <cstdint>

namespace orv {

constexpr uint32_t rowPipelineSize_8u16s_C1(uint32_t taps) { return 36 * taps + 144; }
constexpr uint32_t rowPipelineSize_32f_C1(uint32_t taps) { return 48 * taps + 96; }
constexpr uint32_t columnPipelineSize_16s_C1(uint32_t width) { return 12 * ((width + 3) & ~3u) + 64; }
constexpr uint32_t columnPipelineSize_32f(uint32_t taps) { return 32 * taps + 32; }

}  // namespace orv
