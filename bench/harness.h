// One benchmark case an export: the library's call, the naive model's call on the same images, and what the budget
// says.
//
//   const bool registered = addCases({
//       {.function = "orviAbsDiff_8u_C1R", .work = "absolute difference 8u", .budget = 1.9, .limit = 1.3,
//        .bytesPerPixel = 3,
//        .prepare = [](OrvSize roi) -> Calls { ...images...; return {library call, model call}; }}});
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "scene.h"

namespace bench {

/// What is timed. The images live in what the two functions capture (shared pointers).
struct Calls {
  std::function<void()> library;
  std::function<void()> model;  ///< may be empty where a case only varies another one's arguments
};

struct Case {
  std::string function;   ///< the export's name, with a note in brackets where one export has several cases
  std::string work = "";  ///< the line of the budget table that this case answers
  double budget = 0;      ///< median time at 640x480 over memcpy of 307,200 bytes; 0: none
  double limit = 0;
  double bytesPerPixel;    ///< read and written, for the memcpy of the same bytes
  bool slowModel = false;  ///< not timed at the largest size, where a call would take about a second
  std::function<Calls(OrvSize)> prepare;
};

bool addCases(std::vector<Case> cases);
const std::vector<Case>& allCases();

template <class T>
std::shared_ptr<T> shared(T value) {
  return std::make_shared<T>(std::move(value));
}

}  // namespace bench
