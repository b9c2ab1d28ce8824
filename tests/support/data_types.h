// The library's names for sample types. No dependency on the test framework.
#pragma once

#include <cstdint>
#include <type_traits>

#include "orvcv.h"

namespace orvtest {

template <class Sample>
inline constexpr OrvDataType dataType = std::is_same_v<Sample, uint8_t>    ? orvDataType8u
                                        : std::is_same_v<Sample, uint16_t> ? orvDataType16u
                                        : std::is_same_v<Sample, int16_t>  ? orvDataType16s
                                                                           : orvDataType32f;

}  // namespace orvtest
