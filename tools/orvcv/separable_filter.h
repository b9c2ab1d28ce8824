// One call of the separable filter with its queries and blocks.
#pragma once

#include "border.h"
#include "command.h"

namespace tool {

struct SeparableKernel {
  std::vector<float> row, column;
};

/// Every channel is filtered with the same kernel.
FloatImage filterSeparable(const Picture& picture, const SeparableKernel& kernel, const Border& border,
                           LibraryCalls& library);

}  // namespace tool
