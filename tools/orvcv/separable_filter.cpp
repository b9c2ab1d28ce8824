#include "separable_filter.h"

#include <algorithm>

namespace tool {

FloatImage filterSeparable(const Picture& picture, const SeparableKernel& kernel, const Border& border,
                           LibraryCalls& library) {
  const int channels = picture.channels;
  const OrvSizeL size = {picture.width, picture.height};
  const OrvSize kernelSize = {static_cast<int>(kernel.row.size()), static_cast<int>(kernel.column.size())};

  int specSize = 0, bufferSize = 0;
  library.run("orviFilterSeparableGetSpecSize_L", {},
              [&] { return orviFilterSeparableGetSpecSize_L(kernelSize, orvDataType32f, channels, &specSize); });
  library.run("orviFilterSeparableGetBufferSize_L", {}, [&] {
    return orviFilterSeparableGetBufferSize_L(size, kernelSize, orvDataType32f, orvDataType32f, channels, &bufferSize);
  });
  std::vector<uint8_t> spec(static_cast<size_t>(specSize)), buffer(static_cast<size_t>(bufferSize));

  std::vector<float> interleavedRow;
  for (const float coefficient : kernel.row)
    interleavedRow.insert(interleavedRow.end(), static_cast<size_t>(channels), coefficient);
  library.run("orviFilterSeparableInit_32f_L", {}, [&] {
    return orviFilterSeparableInit_32f_L(interleavedRow.data(), kernel.column.data(), kernelSize, orvDataType32f,
                                         channels, spec.data());
  });

  FloatImage src(picture.size(), channels), dst(picture.size(), channels);
  std::copy(picture.samples.begin(), picture.samples.end(), src.samples.begin());
  std::array<float, 3> outside;
  std::copy(border.value.begin(), border.value.end(), outside.begin());
  library.run("orviFilterSeparable_32f_L", picture.size(), [&] {
    return channels == 1 ? orviFilterSeparable_32f_C1R_L(src.data(), src.step(), dst.data(), dst.step(), size,
                                                         border.mode, outside[0], spec.data(), buffer.data())
                         : orviFilterSeparable_32f_C3R_L(src.data(), src.step(), dst.data(), dst.step(), size,
                                                         border.mode, outside.data(), spec.data(), buffer.data());
  });
  return dst;
}

}  // namespace tool
