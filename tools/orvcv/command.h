// What a subcommand is, and what all of them use while they run.
#pragma once

#include <orvcv.h>

#include <chrono>
#include <string_view>

#include "arguments.h"

namespace tool {

class LibraryCalls;

struct Command {
  std::string_view name;
  std::string_view operands;  // as the usage line shows them
  std::string_view summary;   // one line
  std::string_view details;   // paragraphs of the command's own help, lines broken
  size_t fewestOperands, mostOperands;
  std::vector<Option> options;
  void (*run)(const Arguments& arguments, LibraryCalls& library);
};

/// Calls of the library: failures become messages, time and pixels are kept for --time.
class LibraryCalls {
public:
  /// Runs a lambda that makes the call and returns its status. Warnings are handed back.
  template <class Call>
  OrvStatus run(std::string_view function, OrvSize pixels, Call call) {
    const auto start = std::chrono::steady_clock::now();
    const OrvStatus status = call();
    seconds_ += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    megapixels_ += 1e-6 * pixels.width * pixels.height;
    if (status < 0)
      refused(function, status);
    return status;
  }

  void printTime() const;

private:
  [[noreturn]] static void refused(std::string_view function, OrvStatus status);

  double seconds_ = 0, megapixels_ = 0;
};

/// "label 3/10" on a terminal while long work goes on; nothing elsewhere.
class Progress {
public:
  Progress(std::string_view label, size_t total);
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress();
  void advance();

private:
  std::string_view label_;
  size_t done_ = 0, total_;
  bool onTerminal_;
};

}  // namespace tool
