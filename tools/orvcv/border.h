// The option that says what lies beyond the edges of a picture.
#pragma once

#include <array>

#include "arguments.h"
#include "image_io.h"

namespace tool {

struct Border {
  OrvBorderMode mode;
  std::array<uint8_t, 3> value;  // of a constant border, one a channel
};

inline constexpr Option borderOption{"border", "KIND",
                                     "beyond the edges: replicate (default), mirror, constant[:0-255]", 'b'};

/// The border that the option names.
Border readBorder(const Arguments& arguments);

}  // namespace tool
