// The engine of the filters with fixed small kernels: a row stage and a column stage in one walk over the image.
//
// A filter names its radius, the row stages, each of which makes one plane of intermediate values, and the column
// stage, which makes the results of a row from 2 * radius + 1 rows of each plane:
//
//   struct Laplacian3 {
//     static constexpr int radius = 1;
//     using RowStages = Stages<Neighbours3>;
//     static auto column(auto centre, auto p) { return results(times<2>(p(-1) + p(1)) - times<8>(centre)); }
//   };
//
// where p is a window down the first plane and `centre` is the source sample under the window's centre.
//
// Each source row passes the row stage once. Its values go straight from the registers to the column stage of the
// output row that they complete, and to a ring of 2 * radius + 1 rows in scratch, where the next output rows find them.
#pragma once

#include <algorithm>
#include <array>
#include <tuple>
#include <utility>

#include "filters/pipeline_checks.h"
#include "filters/row_groups.h"
#include "filters/taps.h"
#include "frame/blocks.h"
#include "frame/border.h"
#include "frame/checks.h"
#include "frame/declarations.h"
#include "frame/views.h"

namespace orv {

/// Intermediate values of a source type: exact 16-bit integers of 8-bit samples, floats of floats.
template <class Source>
struct StageOf;
template <>
struct StageOf<uint8_t> {
  using Sample = int16_t;
  using Body = Pair<S16x8>;
  using Single = S16x1;
};
template <>
struct StageOf<float> {
  using Sample = float;
  using Body = Pair<F32x8>;
  using Single = F32x1;
};

/// The vectors of a filter. One that makes bytes of bytes may choose AlternateBytes.
template <class Filter, class Source>
struct BodyOf {
  using Vector = typename StageOf<Source>::Body;
};
template <class Filter>
requires requires { typename Filter::ByteVector; }
struct BodyOf<Filter, uint8_t> {
  using Vector = typename Filter::ByteVector;
};

template <class... Stage>
struct Stages {
  static constexpr int count = sizeof...(Stage);
  static auto apply(auto s) { return std::array{Stage::apply(s)...}; }
};

/// What a column stage returns: one vector for each result image.
template <class... V>
auto results(V... values) {
  return std::array{values...};
}

template <int kernelRadius, class Row, class Column>
struct Separable {
  static constexpr int radius = kernelRadius;
  using RowStages = Stages<Row>;
  static auto column(auto, auto p) { return results(Column::apply(p)); }
};

/// The newest value is still in a register.
template <class V, class Stage, int radius>
struct ColumnWindow {
  const std::array<Stage*, 2 * radius + 1>& rows;
  ptrdiff_t position;
  V newest;
  V operator()(int offset) const {
    return offset == radius ? newest : V::load(rows[static_cast<size_t>(offset + radius)] + position);
  }
};

/// The sizes of the row and the column pipeline whose work the two stages do.
inline uint32_t pipelineSizes(uint8_t, OrvSize roi, int taps) {
  int row = 0, column = 0;
  orviFilterRowBorderPipelineGetBufferSize_8u16s_C1R(roi, taps, &row);
  orviFilterColumnPipelineGetBufferSize_16s_C1R(roi, taps, &column);
  return static_cast<uint32_t>(row) + static_cast<uint32_t>(column);
}
inline uint32_t pipelineSizes(float, OrvSize roi, int taps) {
  int row = 0, column = 0;
  orviFilterRowBorderPipelineGetBufferSize_32f_C1R(roi, taps, &row);
  orviFilterColumnPipelineGetBufferSize_32f_C1R(roi, taps, &column);
  return static_cast<uint32_t>(row) + static_cast<uint32_t>(column);
}

/// Scratch of a filter with the given number of planes. The contract grants each plane a band of 21 or 25 rows; the ring,
/// the row of constants and the rows of the gradient vectors take 17 of them at most.
template <class Source>
OrvStatus twoStageBufferSizeQuery(int planes, OrvSize roi, OrvMaskCode mask, int* bufferSize) {
  if (OrvStatus status = firstFailure(nullPointer(bufferSize), badSize(roi), badMaskCode(mask)))
    return status;
  const uint32_t taps = mask == orvMask3x3 ? 3 : 5;
  const uint32_t bandRows = mask == orvMask3x3 ? 21 : 25;
  const uint32_t rowBytes =
      (static_cast<uint32_t>(roi.width) + 15) / 16 * 16 * sizeof(typename StageOf<Source>::Sample);
  const uint32_t bands = static_cast<uint32_t>(planes) * (rowBytes * bandRows + 12 * taps + 88) + 160;
  *bufferSize = static_cast<int>(bands + pipelineSizes(Source{}, roi, static_cast<int>(taps)));
  return orvStsOk;
}

/// A source image with its border.
template <class Source>
struct BorderedImage {
  View<const Source> view;
  OrvSize roi;
  OrvBorderMode borderMode;
  Source borderValue;
};

/// The check list that the filters with one result image share. Only 16-bit results must lie on whole samples: rows of
/// floats may start at any address.
template <class Source, class Result>
OrvStatus badFilterArguments(const BorderedImage<Source>& src, View<Result> dst, OrvMaskCode mask, const void* buffer) {
  return firstFailure(nullPointer(src.view.first, dst.first, buffer), badSize(src.roi),
                      badStep<Source>(src.view.step, src.roi.width), badStep<Result>(dst.step, src.roi.width),
                      checkedIf(sizeof(Result) == 2, stepNotAligned<Result>(dst.step)),
                      badBorder(src.borderMode, filterBorders), badMaskCode(mask));
}

/// The walk over an image, in vectors or single values V. `rowDone(y)` is called after each finished row of results.
/// Flattened, and with the row stage's values handed on by value, so that these stay in registers.
template <class Filter, class V, class Source, class RowDone, class... Results>
[[gnu::flatten]] void walkTwoStage(const BorderedImage<Source>& src, Carver scratch, RowDone rowDone,
                                   View<Results>... dst) {
  using Stage = typename StageOf<Source>::Sample;
  constexpr int radius = Filter::radius;
  constexpr int taps = 2 * radius + 1;
  constexpr size_t planes = Filter::RowStages::count;
  const int width = src.roi.width, height = src.roi.height;

  std::array<std::array<Stage*, taps>, planes> ring;
  for (auto& plane : ring)
    for (Stage*& row : plane) row = scratch.take<Stage>(static_cast<size_t>(roundUp(width, V::lanes)));
  const auto rotate = [&] {
    for (auto& plane : ring) {
      Stage* const oldest = plane[0];
      for (size_t i = 1; i < taps; ++i) plane[i - 1] = plane[i];
      plane[taps - 1] = oldest;
    }
  };

  // A row outside the region under a constant border is a row of constants.
  const AxisBorder vertical = verticalBorder(src.borderMode);
  Source* constantRow = nullptr;
  if (vertical.kind == orvBorderConstant) {
    constantRow = scratch.take<Source>(static_cast<size_t>(width + 2 * radius)) + radius;
    std::fill(constantRow - radius, constantRow + width + radius, src.borderValue);
  }
  const auto sourceRow = [&](int y) -> const Source* {
    const SourceIndex source = mapIndex(y, height, vertical);
    return source.isBorderValue ? constantRow : src.view.row(source.index);
  };

  const RowGroups<V, Source, radius> groups{width, horizontalBorder(src.borderMode), src.borderValue};
  const auto rowStages = [&](auto window, int slot) {
    const auto values = Filter::RowStages::apply(window);
    for (size_t plane = 0; plane < planes; ++plane) values[plane].store(ring[plane][taps - 1] + slot);
    return values;
  };
  for (int y = -radius; y < radius; ++y, rotate()) {
    groups.forEach(sourceRow(y), [&](int, int slot, auto window) { rowStages(window, slot); });
  }
  for (int y = 0; y < height; ++y, rotate()) {
    const std::tuple<Results*...> dstRows{dst.row(y)...};
    const Source* const sourceCentre = src.view.row(y);
    groups.forEach(sourceRow(y + radius), [&](int x, int slot, auto window) {
      [&]<size_t... plane, size_t... image>(const auto values, std::index_sequence<plane...>,
                                            std::index_sequence<image...>) {
        const V centre = V::load(sourceCentre + x);
        const auto out = Filter::column(centre, ColumnWindow<V, Stage, radius>{ring[plane], slot, values[plane]}...);
        (out[image].store(std::get<image>(dstRows) + x), ...);
      }
      (rowStages(window, slot), std::make_index_sequence<planes>{}, std::index_sequence_for<Results...>{});
    });
    rowDone(y);
  }
}

/// Runs a filter over an image whose arguments are checked.
template <class Filter, class Source, class RowDone, class... Results>
void filterTwoStage(const BorderedImage<Source>& src, Carver scratch, RowDone rowDone, View<Results>... dst) {
  using Body = typename BodyOf<Filter, Source>::Vector;
  if (src.roi.width >= Body::lanes)
    walkTwoStage<Filter, Body>(src, scratch, rowDone, dst...);
  else
    walkTwoStage<Filter, typename StageOf<Source>::Single>(src, scratch, rowDone, dst...);
}

template <class Filter, class Source, class Result>
void runTwoStage(const BorderedImage<Source>& src, View<Result> dst, void* buffer) {
  filterTwoStage<Filter>(
      src, Carver{buffer}, [](int) {}, dst);
}

}  // namespace orv
