// Row and column pipelines, apart from each other.
#include <algorithm>
#include <string>
#include <type_traits>

#include "filtering.h"
#include "filters/pipeline_model.h"

namespace bench {
namespace {

enum class Arithmetic { ordinary, low };

/// A binomial kernel, whose sum is the divisor, or 1 for floats.
template <class Tap>
struct Binomial {
  std::vector<Tap> taps;
  int divisor;

  explicit Binomial(int count) : divisor(1 << (count - 1)) {
    for (int j = 0, coefficient = 1; j < count; coefficient = coefficient * (count - 1 - j) / (j + 1), ++j) {
      const auto tap = static_cast<float>(coefficient);
      taps.push_back(static_cast<Tap>(std::is_same_v<Tap, float> ? tap / static_cast<float>(divisor) : tap));
    }
  }

  int count() const { return static_cast<int>(taps.size()); }
};

template <class Source, class Result, class Tap>
struct Pipeline : Filtering<Source, Result> {
  Binomial<Tap> kernel;

  Pipeline(OrvSize size, int channelCount, int taps, OrvStatus (*query)(OrvSize, int, int32_t*))
      : Filtering<Source, Result>{size, channelCount}, kernel(taps) {
    int32_t bufferSize = 0;
    query(size, taps, &bufferSize);
    this->buffer.resize(bytes(bufferSize));
  }
};

/// `count` rows of an image from row `first` on; beyond its top and bottom the outermost are repeated.
template <class Row, class Sample>
std::vector<Row*> rowsOf(const Image<Sample>& image, int height, int first, int count) {
  std::vector<Row*> rows;
  for (int y = first; y < first + count; ++y) rows.push_back(&image.at(0, std::clamp(y, 0, height - 1)));
  return rows;
}

/// What the prototypes tell about a member. Those of floats take no divisor before the buffer.
template <class Function>
struct RowMember;
template <class S, class R, class Border, class... DivisorAndBuffer>
struct RowMember<OrvStatus (*)(const S*, int, R* const*, OrvSize, const R*, int, int, OrvBorderMode, Border,
                               DivisorAndBuffer...)> {
  using Source = S;
  using Result = R;
  static constexpr int channels = std::is_pointer_v<Border> ? 3 : 1;
};

template <class Function>
struct ColumnMember;
template <class S, class R, class... DivisorAndBuffer>
struct ColumnMember<OrvStatus (*)(const S* const*, R*, int, OrvSize, const S*, int, DivisorAndBuffer...)> {
  using Source = S;
  using Result = R;
};

template <class Source>
Calls callsOf(auto runLibrary, int divisor, auto runModel) {
  if constexpr (std::is_same_v<Source, float>)
    return {runLibrary, runModel};
  else
    return {[runLibrary, divisor] { runLibrary(divisor); }, runModel};
}

Case caseOf(const char* member, int taps, double bytesPerPixel, std::function<Calls(OrvSize)> prepare) {
  return {.function = std::string(member) + " [" + std::to_string(taps) + " taps]",
          .bytesPerPixel = bytesPerPixel,
          .slowModel = true,
          .prepare = std::move(prepare)};
}

template <auto function, auto query, Arithmetic arithmetic>
Case rowCase(const char* member, int taps) {
  using Member = RowMember<decltype(function)>;
  using Source = typename Member::Source;
  using Result = typename Member::Result;
  constexpr int channels = Member::channels;

  const auto prepare = [taps](OrvSize size) -> Calls {
    auto p = shared(Pipeline<Source, Result, Result>(size, channels, taps, query));
    const auto runLibrary = [p, rows = rowsOf<Result>(p->dst, size.height, 0, size.height)](auto... divisor) {
      function(p->src.data(), p->src.step(), rows.data(), p->roi, p->kernel.taps.data(), p->kernel.count(),
               p->kernel.count() / 2, border, borderArgument<channels>(p->borderValue), divisor..., p->buffer.data());
    };
    const auto runModel = [p] {
      const Result* const kernel = p->kernel.taps.data();
      const int count = p->kernel.count(), divisor = p->kernel.divisor;
      for (int y = 0; y < p->roi.height; ++y) {
        const model::ExtendedRow<Source> in{p->view().row(y), p->roi.width, channels, border, p->borderValue};
        Result* const out = p->modelResult.data() + y * p->roi.width * channels;
        if constexpr (arithmetic == Arithmetic::low)
          model::filterRowLow(in, out, kernel, count, count / 2, divisor);
        else
          model::filterRow(in, out, kernel, count, count / 2, divisor);
      }
    };
    return callsOf<Source>(runLibrary, p->kernel.divisor, runModel);
  };
  return caseOf(member, taps, channels * (sizeof(Source) + sizeof(Result)), prepare);
}

template <auto function, auto query, Arithmetic arithmetic>
Case columnCase(const char* member, int taps) {
  using Member = ColumnMember<decltype(function)>;
  using Source = typename Member::Source;
  using Result = typename Member::Result;

  const auto prepare = [taps](OrvSize size) -> Calls {
    auto p = shared(Pipeline<Source, Result, Source>(size, 1, taps, query));
    const auto rows = rowsOf<const Source>(p->src, size.height, -(taps / 2), size.height + taps - 1);
    const auto runLibrary = [p, rows](auto... divisor) {
      function(rows.data(), p->dst.data(), p->dst.step(), p->roi, p->kernel.taps.data(), p->kernel.count(), divisor...,
               p->buffer.data());
    };
    const auto runModel = [p, rows] {
      const Source* const kernel = p->kernel.taps.data();
      const int width = p->roi.width, count = p->kernel.count(), divisor = p->kernel.divisor;
      for (int y = 0; y < p->roi.height; ++y) {
        Result* const out = p->modelResult.data() + y * width;
        if constexpr (arithmetic == Arithmetic::low)
          model::filterColumnLow(rows.data() + y, out, width, kernel, count, divisor, y, p->roi.height);
        else
          model::filterColumn(rows.data() + y, out, width, kernel, count, divisor);
      }
    };
    return callsOf<Source>(runLibrary, p->kernel.divisor, runModel);
  };
  return caseOf(member, taps, sizeof(Source) + sizeof(Result), prepare);
}

#define ORV_ROWS(member, taps, arithmetic)                                                                      \
  rowCase<orviFilterRowBorderPipeline_##member, orviFilterRowBorderPipelineGetBufferSize_##member, arithmetic>( \
      "orviFilterRowBorderPipeline_" #member, taps)
#define ORV_COLUMNS(member, taps, arithmetic)                                                                \
  columnCase<orviFilterColumnPipeline_##member, orviFilterColumnPipelineGetBufferSize_##member, arithmetic>( \
      "orviFilterColumnPipeline_" #member, taps)

using enum Arithmetic;

/// With 5 taps the reduced-precision kernel is the one that divides by 16 without a factor.
const bool registered = addCases({
    ORV_ROWS(8u16s_C1R, 3, ordinary),    ORV_ROWS(8u16s_C1R, 5, ordinary),    ORV_ROWS(8u16s_C1R, 15, ordinary),
    ORV_ROWS(8u16s_C3R, 5, ordinary),    ORV_ROWS(16s_C1R, 5, ordinary),      ORV_ROWS(16u_C1R, 5, ordinary),
    ORV_ROWS(32f_C1R, 3, ordinary),      ORV_ROWS(32f_C1R, 5, ordinary),      ORV_ROWS(32f_C1R, 15, ordinary),
    ORV_ROWS(32f_C3R, 5, ordinary),      ORV_ROWS(Low_16s_C1R, 3, low),       ORV_ROWS(Low_16s_C1R, 5, low),

    ORV_COLUMNS(16s8u_C1R, 3, ordinary), ORV_COLUMNS(16s8u_C1R, 5, ordinary), ORV_COLUMNS(16s8u_C1R, 15, ordinary),
    ORV_COLUMNS(16s_C1R, 5, ordinary),   ORV_COLUMNS(16u_C1R, 5, ordinary),   ORV_COLUMNS(32f_C1R, 3, ordinary),
    ORV_COLUMNS(32f_C1R, 5, ordinary),   ORV_COLUMNS(32f_C1R, 15, ordinary),  ORV_COLUMNS(Low_16s_C1R, 3, low),
    ORV_COLUMNS(Low_16s_C1R, 5, low),
});

}  // namespace
}  // namespace bench
