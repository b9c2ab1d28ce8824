// Runs every case at three sizes and reports medians: ns per pixel, the ratio to memcpy of a 640x480 8-bit image and of
// the same bytes, and the naive model's time over the library's, all of one run. --table FILE writes them as Markdown.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <map>

#include "harness.h"

namespace bench {
namespace {

constexpr OrvSize sizes[] = {{16, 16}, {640, 480}, {1920, 1080}};
constexpr OrvSize budgetSize = sizes[1];
constexpr double budgetBytes = 307200;

std::vector<Case>& mutableCases() {
  static std::vector<Case> cases;
  return cases;
}

std::string label(OrvSize size) { return std::to_string(size.width) + "x" + std::to_string(size.height); }

/// Bytes that memcpy reads when it moves as many bytes, read and written, as the case does at this size.
int64_t copiedBytes(const Case& c, OrvSize size) {
  return static_cast<int64_t>(c.bytesPerPixel * size.width * size.height / 2);
}

void timeCopy(benchmark::State& state, int64_t bytes) {
  const auto count = static_cast<size_t>(bytes);
  std::vector<char> from(count, 1), to(count);
  for (auto _ : state) {
    std::memcpy(to.data(), from.data(), count);
    benchmark::DoNotOptimize(to.data());
    benchmark::ClobberMemory();
  }
}

/// Images are prepared when the benchmark starts, not for all cases at once.
void timeCall(benchmark::State& state, const Case& c, OrvSize size, std::function<void()> Calls::*which) {
  const Calls calls = c.prepare(size);
  const std::function<void()>& call = calls.*which;
  // The first call of a size also waits for the system to provide the pages of the result.
  calls.library();
  for (auto _ : state) {
    call();
    benchmark::ClobberMemory();
  }
}

/// Prints as usual and keeps the median of the repetitions of each benchmark, in nanoseconds.
class MedianReporter : public benchmark::ConsoleReporter {
public:
  MedianReporter() : ConsoleReporter(OO_None) {}

  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs)
      if (run.aggregate_name == "median")
        medians[run.run_name.function_name] = run.GetAdjustedCPUTime();
    ConsoleReporter::ReportRuns(runs);
  }

  /// 0 when it was filtered out.
  double median(const std::string& name) const {
    const auto found = medians.find(name);
    return found == medians.end() ? 0 : found->second;
  }

private:
  std::map<std::string, double> medians;
};

std::string copyName(int64_t bytes) { return "memcpy/" + std::to_string(bytes); }
std::string caseName(const Case& c, OrvSize size, const char* which) {
  return c.function + "/" + label(size) + "/" + which;
}

void registerAll() {
  std::vector<int64_t> copies = {static_cast<int64_t>(budgetBytes)};
  for (const Case& c : allCases())
    for (const OrvSize& size : sizes) copies.push_back(copiedBytes(c, size));
  std::sort(copies.begin(), copies.end());
  copies.erase(std::unique(copies.begin(), copies.end()), copies.end());
  for (int64_t bytes : copies) benchmark::RegisterBenchmark(copyName(bytes).c_str(), timeCopy, bytes);
  for (const Case& c : allCases())
    for (const OrvSize& size : sizes) {
      benchmark::RegisterBenchmark(caseName(c, size, "library").c_str(),
                                   [&c, size](benchmark::State& state) { timeCall(state, c, size, &Calls::library); });
      if (!(c.slowModel && &size == std::end(sizes) - 1) && c.prepare({16, 16}).model)
        benchmark::RegisterBenchmark(caseName(c, size, "model").c_str(),
                                     [&c, size](benchmark::State& state) { timeCall(state, c, size, &Calls::model); })
            ->Repetitions(3)
            ->ReportAggregatesOnly();
    }
}

std::string number(double value, const char* format = "%.2f") {
  char text[32];
  std::snprintf(text, sizeof text, format, value);
  return value > 0 ? text : "";
}

/// The rules on sizes: small calls within 3 times the pixel cost plus 100 ns, large ones within 1.5 times the pixel
/// cost unless memcpy of the same bytes grows as much.
std::string sizeVerdict(const Case& c, OrvSize size, const MedianReporter& results) {
  const double pixels = size.width * size.height;
  const double reference = results.median(caseName(c, budgetSize, "library")) / (budgetSize.width * budgetSize.height);
  const double here = results.median(caseName(c, size, "library"));
  if (here <= 0 || reference <= 0)
    return "";
  if (pixels < 1000)
    return here <= 3 * reference * pixels + 100 ? "small ok" : "SMALL SLOW";
  const double copyGrowth =
      results.median(copyName(copiedBytes(c, size))) / pixels /
      (results.median(copyName(copiedBytes(c, budgetSize))) / (budgetSize.width * budgetSize.height));
  const double growth = here / pixels / reference;
  if (growth <= 1.5)
    return "large ok";
  return growth <= 1.5 * copyGrowth ? "bandwidth" : "LARGE SLOW";
}

std::string table(const MedianReporter& results) {
  const double copy = results.median(copyName(static_cast<int64_t>(budgetBytes)));
  std::string text =
      "| function | size | ns/pixel | x memcpy of 640x480 | x memcpy of same bytes | model / library | budget | limit "
      "| "
      "verdict |\n|---|---|---|---|---|---|---|---|---|\n";
  for (const Case& c : allCases())
    for (const OrvSize& size : sizes) {
      const double time = results.median(caseName(c, size, "library"));
      if (time <= 0)
        continue;
      const double pixels = size.width * size.height;
      const bool budgeted = size.width == budgetSize.width && c.budget > 0;
      const double sameBytes = results.median(copyName(copiedBytes(c, size)));
      std::string verdict = sizeVerdict(c, size, results);
      if (size.width == budgetSize.width)
        verdict = !budgeted                 ? ""
                  : time / copy <= c.limit  ? "limit met"
                  : time / copy <= c.budget ? "budget met"
                                            : "OVER";
      text += "| " + c.function + (budgeted && !c.work.empty() ? " (" + c.work + ")" : "") + " | " + label(size) +
              " | " + number(time / pixels, "%.3f") + " | " + number(copy > 0 ? time / copy : 0) + " | " +
              number(sameBytes > 0 ? time / sameBytes : 0) + " | " +
              number(results.median(caseName(c, size, "model")) / time) + " | " +
              number(budgeted ? c.budget : 0, "%.1f") + " | " + number(budgeted ? c.limit : 0, "%.1f") + " | " +
              verdict + " |\n";
    }
  return text;
}

std::string processorName() {
  std::ifstream info("/proc/cpuinfo");
  for (std::string line; std::getline(info, line);)
    if (line.rfind("model name", 0) == 0)
      return line.substr(line.find(':') + 2);
  return "an unknown processor";
}

/// What the table's columns mean, for the file.
std::string preface() {
  return "# Performance\n\nWritten by `scripts/bench.sh` on " + processorName() +
         ": one thread, photograph content, medians of one run.\n\n"
         "- *x memcpy of 640x480*: time over that of `memcpy` of a 640x480 8-bit image (307,200 bytes); budget and "
         "limit "
         "are in this unit, for 640x480.\n"
         "- *x memcpy of same bytes*: time over that of `memcpy` moving as many bytes as the call reads and writes.\n"
         "- *model / library*: time of the naive reference model, compiled at -O2, over the library's.\n"
         "- *verdict*: at 640x480 against budget and limit; a 16x16 call should take at most 3 times the pixel cost "
         "plus "
         "100 ns; 1920x1080 at most 1.5 times the time per pixel, unless memory bandwidth bounds it.\n\n";
}

}  // namespace

bool addCases(std::vector<Case> cases) {
  for (Case& c : cases) mutableCases().push_back(std::move(c));
  return true;
}

const std::vector<Case>& allCases() {
  static const bool sorted = [] {
    std::stable_sort(mutableCases().begin(), mutableCases().end(),
                     [](const Case& a, const Case& b) { return a.function < b.function; });
    return true;
  }();
  static_cast<void>(sorted);
  return mutableCases();
}

}  // namespace bench

int main(int argc, char** argv) {
  // Our defaults come first, so that the caller's own flags win. Interleaving spreads a machine's noise over all cases.
  std::string defaults[] = {"--benchmark_repetitions=9", "--benchmark_min_time=0.01",
                            "--benchmark_enable_random_interleaving=true", "--benchmark_report_aggregates_only=true"};
  std::string tableFile;
  std::vector<char*> arguments = {argv[0]};
  for (std::string& flag : defaults) arguments.push_back(flag.data());
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--help") == 0)
      std::puts(
          "orvcv_bench [--table FILE] [Google Benchmark flags]\n"
          "  --table FILE  write the table of ratios to FILE as Markdown (it is always printed)\n"
          "  --benchmark_filter=memcpy|NAME  run some cases; keep memcpy in the filter, ratios need it\n");
    if (std::strcmp(argv[i], "--table") == 0 && i + 1 < argc)
      tableFile = argv[++i];
    else
      arguments.push_back(argv[i]);
  }
  int count = static_cast<int>(arguments.size());
  benchmark::Initialize(&count, arguments.data());
  if (benchmark::ReportUnrecognizedArguments(count, arguments.data()))
    return 2;
  bench::registerAll();
  bench::MedianReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  const std::string table = bench::table(reporter);
  std::printf("\n%s", table.c_str());
  if (!tableFile.empty() && !(std::ofstream(tableFile) << bench::preface() << table)) {
    std::fprintf(stderr, "can't write %s\n", tableFile.c_str());
    return 2;
  }
  return 0;
}
