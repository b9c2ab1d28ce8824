// Means over a rectangular window.
#include "filters/box.h"

#include "frame/blocks.h"
#include "frame/border.h"
#include "frame/checks.h"
#include "frame/views.h"
#include "simd/vectors.h"

namespace orv {
namespace {

constexpr int64_t blockAlignment = 32;

/// Column sums of one output row, with those of the columns outside the region that the window reaches.
constexpr int64_t columnCount(OrvSize roi, OrvSize maskSize) { return int64_t{roi.width} + maskSize.width - 1; }

constexpr int64_t boxBufferSize(OrvSize roi, OrvSize maskSize) {
  const int64_t sums = columnCount(roi, maskSize) * int64_t{sizeof(float)};
  const int64_t constants = sums;
  const int64_t rowPointers = maskSize.height * int64_t{sizeof(float*)};
  return sums + constants + rowPointers + 3 * blockAlignment;
}

/// The sums over maskSize.height rows, wherever the border takes them from.
class ColumnSums {
public:
  ColumnSums(View<const float> src, OrvSize roi, OrvSize maskSize, OrvBorderMode borderMode, float borderValue,
             Carver& scratch)
      : src_(src),
        roi_(roi),
        mask_(maskSize),
        horizontal_(horizontalBorder(borderMode)),
        vertical_(verticalBorder(borderMode)),
        anchor_(maskSize.width / 2),
        sums_(scratch.take<float>(static_cast<size_t>(columnCount(roi, maskSize)))),
        constants_(scratch.take<float>(static_cast<size_t>(columnCount(roi, maskSize)))),
        rows_(scratch.take<const float*>(static_cast<size_t>(maskSize.height))) {
    for (int i = 0; i < columnCount(roi, maskSize); ++i) constants_[i] = borderValue;
  }

  /// The sums around output row y; entry x is that of the window's first column for output x.
  const float* around(int y) {
    const int top = y - mask_.height / 2;
    for (int j = 0; j < mask_.height; ++j) rows_[j] = row(top + j);
    const int before = anchor_, after = mask_.width - 1 - anchor_;
    const int begin = horizontal_.lo ? -before : 0;
    const int end = horizontal_.hi ? roi_.width + after : roi_.width;
    float* const centre = sums_ + anchor_;
    forEachVector<float>(end - begin, [&]<class V>(V, int i) { sum<V>(begin + i).store(centre + begin + i); });
    for (int x = -before; x < begin; ++x) centre[x] = outside(x).value();
    for (int x = end; x < roi_.width + after; ++x) centre[x] = outside(x).value();
    return sums_;
  }

private:
  template <class V>
  V sum(int x) const {
    V total = V::load(rows_[0] + x);
    for (int j = 1; j < mask_.height; ++j) total = total + V::load(rows_[j] + x);
    return total;
  }

  F32x1 outside(int x) const {
    const SourceIndex source = mapIndex(x, roi_.width, horizontal_);
    if (!source.isBorderValue)
      return sum<F32x1>(source.index);
    F32x1 total = F32x1::load(constants_);
    for (int j = 1; j < mask_.height; ++j) total = total + F32x1::load(constants_);
    return total;
  }

  const float* row(int y) const {
    const SourceIndex source = mapIndex(y, roi_.height, vertical_);
    return source.isBorderValue ? constants_ + anchor_ : src_.row(source.index);
  }

  View<const float> src_;
  OrvSize roi_, mask_;
  AxisBorder horizontal_, vertical_;
  int anchor_;
  float *sums_, *constants_;
  const float** rows_;
};

}  // namespace

OrvStatus orviFilterBoxBorderGetBufferSize(OrvSize roi, OrvSize maskSize, OrvDataType dataType, int numChannels,
                                           int* bufferSize) {
  if (OrvStatus status = firstFailure(nullPointer(bufferSize), badSize(roi), badSize(maskSize),
                                      notAmong(dataType, {orvDataType32f}, orvStsBadAlgorithm),
                                      Check{numChannels != 1, orvStsBadDataType},
                                      Check{boxBufferSize(roi, maskSize) > 0x7fffffff, orvStsTooLarge}))
    return status;
  *bufferSize = static_cast<int>(boxBufferSize(roi, maskSize));
  return orvStsOk;
}

OrvStatus orviFilterBoxBorder_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, OrvSize roi,
                                      OrvSize maskSize, OrvBorderMode borderMode, float borderValue, void* buffer) {
  if (OrvStatus status = firstFailure(nullPointer(src, dst, buffer), badSize(roi), badSize(maskSize),
                                      badStep<float>(srcStep, roi.width), badStep<float>(dstStep, roi.width),
                                      stepNotAligned<float>(srcStep, dstStep), badBorder(borderMode, filterBorders)))
    return status;
  const float reciprocal = 1.0f / (static_cast<float>(maskSize.width) * static_cast<float>(maskSize.height));
  Carver scratch{buffer};
  ColumnSums columns{View{src, srcStep}, roi, maskSize, borderMode, borderValue, scratch};
  const View<float> out{dst, dstStep};
  for (int y = 0; y < roi.height; ++y) {
    const float* const sums = columns.around(y);
    float* const d = out.row(y);
    forEachVector<float>(roi.width, [&]<class V>(V, int x) {
      V total = V::load(sums + x);
      for (int i = 1; i < maskSize.width; ++i) total = total + V::load(sums + x + i);
      (total * V::broadcast(reciprocal)).store(d + x);
    });
  }
  return orvStsOk;
}

}  // namespace orv
