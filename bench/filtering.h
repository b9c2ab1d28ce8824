// What the benchmarks of filters share: the images and blocks of a case, kernels, and arguments by channels.
#pragma once

#include <cstdint>
#include <type_traits>
#include <vector>

#include "filters/gaussian_model.h"
#include "harness.h"
#include "support/data_types.h"

namespace bench {

namespace model = orvtest::model;
using orvtest::dataType;

constexpr OrvBorderMode border = orvBorderReplicate;

/// A source, a result and two blocks, prepared once per case and size.
template <class Source, class Result>
struct Filtering {
  OrvSize roi;
  int channels = 1;
  Image<Source> src = photograph<Source>(roi, channels);
  Image<Result> dst{roi.width, roi.height, channels};
  std::vector<uint8_t> spec = {}, buffer = {};
  Source borderValue[4] = {};
  std::vector<Result> modelResult =
      std::vector<Result>(static_cast<size_t>(roi.width) * static_cast<size_t>(roi.height * channels));

  OrvSizeL sizeL() const { return {roi.width, roi.height}; }
  model::ImageView<Source> view() const { return {src.data(), src.step(), roi.width, roi.height, channels}; }
};

inline size_t bytes(int count) { return static_cast<size_t>(count); }

/// Members of one channel take a sample, the others a pointer to one a channel.
template <int channels, class Sample>
auto borderArgument(const Sample* value) {
  if constexpr (channels == 1)
    return *value;
  else
    return value;
}

}  // namespace bench
