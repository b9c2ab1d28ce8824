#include "arguments.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <numeric>
#include <sstream>

namespace tool {
namespace {

const Option* find(std::span<const Option> known, auto matches) {
  const auto found = std::find_if(known.begin(), known.end(), matches);
  return found == known.end() ? nullptr : &*found;
}

/// Insertions, deletions and replacements that turn one word into the other.
size_t editDistance(std::string_view a, std::string_view b) {
  std::vector<size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), size_t{0});
  for (size_t i = 0; i < a.size(); ++i) {
    size_t diagonal = row[0]++;
    for (size_t j = 0; j < b.size(); ++j) {
      const size_t replaced = diagonal + (a[i] == b[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, diagonal + 1, row[j] + 1});
    }
  }
  return row.back();
}

std::string shown(double value) {
  std::ostringstream out;
  out << value;
  return out.str();
}

}  // namespace

std::string suggestion(std::string_view word, std::span<const std::string_view> candidates) {
  constexpr size_t near = 2;
  size_t best = near + 1;
  std::string_view closest;
  for (std::string_view candidate : candidates)
    if (const size_t distance = editDistance(word, candidate); distance < best) {
      best = distance;
      closest = candidate;
    }
  return best > near ? "" : ", did you mean '" + std::string(closest) + "'?";
}

Arguments::Arguments(std::span<const Option> known, std::span<const std::string> words) {
  bool optionsEnded = false;
  for (size_t i = 0; i < words.size(); ++i) {
    const std::string& word = words[i];
    if (optionsEnded || word.size() < 2 || word[0] != '-') {
      operands_.push_back(word);
      continue;
    }
    if (word == "--") {
      optionsEnded = true;
      continue;
    }

    const bool isLong = word[1] == '-';
    const size_t equals = isLong ? word.find('=') : std::string::npos;
    const std::string spelled = word.substr(0, equals);
    const Option* option =
        isLong ? find(known, [name = std::string_view(spelled).substr(2)](const Option& o) { return o.name == name; })
               : find(known, [&](const Option& o) { return word.size() == 2 && o.letter == word[1]; });
    if (option == nullptr) {
      std::vector<std::string> names;
      for (const Option& candidate : known) names.push_back("--" + std::string(candidate.name));
      const std::vector<std::string_view> candidates(names.begin(), names.end());
      throw UserError("unknown option '" + spelled + "'" + suggestion(spelled, candidates));
    }
    if (has(option->name))
      throw UserError("option '" + spelled + "' is given twice");

    std::string value;
    if (option->placeholder.empty()) {
      if (equals != std::string::npos)
        throw UserError("option '" + spelled + "' takes no value");
    } else if (equals != std::string::npos) {
      value = word.substr(equals + 1);
    } else if (i + 1 < words.size()) {
      value = words[++i];
    } else {
      throw UserError("option '" + spelled + "' needs a value: " + std::string(option->placeholder));
    }
    values_.emplace(option->name, std::move(value));
  }
}

const std::string& Arguments::required(std::string_view option) const {
  const auto found = values_.find(option);
  if (found == values_.end())
    throw UserError("option '--" + std::string(option) + "' is missing");
  return found->second;
}

std::string Arguments::text(std::string_view option, std::string_view otherwise) const {
  return has(option) ? required(option) : std::string(otherwise);
}

double Arguments::number(std::string_view option, double otherwise, Range range) const {
  return has(option) ? parseNumber(required(option), "--" + std::string(option), range) : otherwise;
}

int Arguments::integer(std::string_view option, int otherwise, Range range) const {
  const double value = number(option, otherwise, range);
  if (value != std::floor(value))
    throw UserError("--" + std::string(option) + " takes whole numbers, not '" + required(option) + "'");
  return static_cast<int>(value);
}

double parseNumber(std::string_view word, std::string_view what, Range range) {
  double value = 0;
  const char* end = word.data() + word.size();
  const auto [stopped, error] = std::from_chars(word.data(), end, value);
  if (error != std::errc() || stopped != end || !std::isfinite(value))
    throw UserError(std::string(what) + ": '" + std::string(word) + "' is not a number");
  if (value < range.low || value > range.high)
    throw UserError(std::string(what) + ": " + std::string(word) + " is outside " + shown(range.low) + " to " +
                    shown(range.high));
  return value;
}

std::vector<double> parseNumbers(std::string_view words, std::string_view what, Range range) {
  std::vector<double> values;
  for (size_t start = 0; start <= words.size();) {
    const size_t comma = std::min(words.find(',', start), words.size());
    values.push_back(parseNumber(words.substr(start, comma - start), what, range));
    start = comma + 1;
  }
  return values;
}

}  // namespace tool
