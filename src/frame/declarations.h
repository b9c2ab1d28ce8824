// The public prototypes inside the library's namespace: implementations bear the names of their exports.
#pragma once

#ifndef ORVCV_TYPES
#define ORV_TYPES_ONLY
#include "orvcv.h"
#undef ORV_TYPES_ONLY
#endif

namespace orv {
#define ORV_DECLARATIONS_ONLY
#include "orvcv.h"
#undef ORV_DECLARATIONS_ONLY
}  // namespace orv
