// Copies with a border, pixel by pixel: pixels are blocks of bytes.
#pragma once

#include <cstdint>
#include <cstring>
#include <vector>

#include "frame/border_model.h"
#include "orvcv.h"

namespace orvtest::model {

struct BorderCopy {
  int kind;  ///< 1 replicate, 3 mirror, 6 constant
  int pixelBytes;
  OrvSize srcSize, dstSize;
  int top, left;
};

/// `value` is one pixel; it is read by the constant kind only.
inline void copyWithBorder(const BorderCopy& c, const uint8_t* src, int srcStep, uint8_t* dst, int dstStep,
                           const void* value) {
  const auto bytes = static_cast<size_t>(c.pixelBytes);
  for (int y = 0; y < c.dstSize.height; ++y)
    for (int x = 0; x < c.dstSize.width; ++x) {
      const AxisIndex row = mapAxis(y - c.top, c.srcSize.height, c.kind, false, false);
      const AxisIndex column = mapAxis(x - c.left, c.srcSize.width, c.kind, false, false);
      const void* from =
          row.constant || column.constant ? value : src + row.index * srcStep + column.index * c.pixelBytes;
      std::memcpy(dst + y * dstStep + x * c.pixelBytes, from, bytes);
    }
}

/// `srcDst` is the first pixel of the source inside the result.
inline void borderInPlace(const BorderCopy& c, uint8_t* srcDst, int step) {
  const int rowBytes = c.srcSize.width * c.pixelBytes;
  std::vector<uint8_t> source(static_cast<size_t>(rowBytes * c.srcSize.height));
  for (int y = 0; y < c.srcSize.height; ++y)
    std::memcpy(source.data() + y * rowBytes, srcDst + y * step, static_cast<size_t>(rowBytes));
  copyWithBorder(c, source.data(), rowBytes, srcDst - c.top * step - c.left * c.pixelBytes, step, nullptr);
}

}  // namespace orvtest::model
