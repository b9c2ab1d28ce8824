// The images that a benchmark works on: photograph content in every sample type, masks, and room for results.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>

#include "orvcv.h"

namespace bench {

struct AlignedFree {
  void operator()(void* memory) const { std::free(memory); }
};

/// An image whose rows start on 64-byte boundaries.
template <class Sample>
class Image {
public:
  Image(int width, int height, int channels)
      : channels_(channels),
        step_((width * channels * static_cast<int>(sizeof(Sample)) + 63) / 64 * 64),
        memory_(
            static_cast<Sample*>(std::aligned_alloc(64, static_cast<size_t>(step_) * static_cast<size_t>(height)))) {}

  Sample* data() const { return memory_.get(); }
  int step() const { return step_; }
  Sample& at(int x, int y, int channel = 0) const {
    return memory_.get()[static_cast<size_t>(y) * (static_cast<size_t>(step_) / sizeof(Sample)) +
                         static_cast<size_t>(x * channels_ + channel)];
  }

private:
  int channels_;
  int step_;
  std::unique_ptr<Sample, AlignedFree> memory_;
};

/// A photograph in `channels` channels, mirrored into the size that is asked for; `shift` moves it, for a second frame.
/// 8-bit content; 16-bit samples are scaled by 257 (`int16_t`: 128 below that), floats keep the 8-bit values.
template <class Sample>
Image<Sample> photograph(OrvSize size, int channels = 1, int shift = 0);

/// Nonzero over the brighter half of the photograph: long runs of both kinds, as real masks have.
Image<uint8_t> photographMask(OrvSize size);

}  // namespace bench
