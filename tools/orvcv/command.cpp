#include "command.h"

#include <unistd.h>

#include <cstdio>

namespace tool {

void LibraryCalls::printTime() const {
  if (megapixels_ > 0)
    std::fprintf(stderr, "%.3f megapixels in %.3f ms: %.0f megapixels per second\n", megapixels_, seconds_ * 1e3,
                 megapixels_ / seconds_);
}

void LibraryCalls::refused(std::string_view function, OrvStatus status) {
  throw UserError("the library refused the call: " + std::string(function) + " answered status " +
                  std::to_string(status));
}

Progress::Progress(std::string_view label, size_t total)
    : label_(label), total_(total), onTerminal_(isatty(STDERR_FILENO) != 0) {}

Progress::~Progress() {
  if (onTerminal_)
    std::fputs("\r\033[K", stderr);
}

void Progress::advance() {
  ++done_;
  if (onTerminal_)
    std::fprintf(stderr, "\r%.*s %zu/%zu", static_cast<int>(label_.size()), label_.data(), done_, total_);
}

}  // namespace tool
