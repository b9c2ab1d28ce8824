// Command lines: what a command accepts is described as data, and values are read together with their checks.
#pragma once

#include <limits>
#include <map>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

/// Something that the user can put right: the message says what.
struct UserError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct Option {
  std::string_view name;         // without the dashes
  std::string_view placeholder;  // of the value, for the help; empty where the option is a switch
  std::string_view help;
  char letter = 0;  // short form
};

/// An interval of numbers, both ends included.
struct Range {
  double low = -std::numeric_limits<double>::infinity();
  double high = std::numeric_limits<double>::infinity();
};

class Arguments {
public:
  /// Throws UserError on an option that is not among `known`, or a value that is missing or not wanted.
  Arguments(std::span<const Option> known, std::span<const std::string> words);

  /// The words that are neither options nor their values.
  const std::vector<std::string>& operands() const { return operands_; }

  bool has(std::string_view option) const { return values_.contains(option); }
  const std::string& required(std::string_view option) const;
  std::string text(std::string_view option, std::string_view otherwise) const;
  double number(std::string_view option, double otherwise, Range range = {}) const;
  int integer(std::string_view option, int otherwise, Range range) const;

private:
  std::map<std::string, std::string, std::less<>> values_;
  std::vector<std::string> operands_;
};

/// Reads a whole word as a finite number within the range; `what` names it in the message.
double parseNumber(std::string_view word, std::string_view what, Range range = {});

/// Reads numbers separated by commas.
std::vector<double> parseNumbers(std::string_view words, std::string_view what, Range range = {});

/// ", did you mean 'x'?" for the nearest of the candidates, empty if none is near.
std::string suggestion(std::string_view word, std::span<const std::string_view> candidates);

}  // namespace tool
