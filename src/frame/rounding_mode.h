// The vector unit's rounding mode, for the functions that change it. Files that use it are compiled -frounding-math.
#pragma once

#include <immintrin.h>

namespace orv {

/// Sets the rounding mode for its own lifetime and puts the control word back on every way out. Exceptions that were
/// flagged meanwhile are forgotten with it.
class RoundingMode {
public:
  /// `mode`: _MM_ROUND_TOWARD_ZERO and the like.
  explicit RoundingMode(unsigned mode) : saved_(_mm_getcsr()) {
    _mm_setcsr((saved_ & ~static_cast<unsigned>(_MM_ROUND_MASK)) | mode);
  }
  ~RoundingMode() { _mm_setcsr(saved_); }
  RoundingMode(const RoundingMode&) = delete;
  RoundingMode& operator=(const RoundingMode&) = delete;

private:
  unsigned saved_;
};

}  // namespace orv
