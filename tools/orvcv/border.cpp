#include "border.h"

namespace tool {

Border readBorder(const Arguments& arguments) {
  const std::string word = arguments.text("border", "replicate");
  if (word == "replicate")
    return {orvBorderReplicate, {}};
  if (word == "mirror")
    return {orvBorderMirror, {}};

  constexpr std::string_view constant = "constant";
  if (!word.starts_with(constant) || (word.size() > constant.size() && word[constant.size()] != ':'))
    throw UserError("--border: '" + word + "' is not replicate, mirror, or constant with an optional :value");
  uint8_t value = 0;
  if (word.size() > constant.size())
    value = static_cast<uint8_t>(parseNumber(word.substr(constant.size() + 1), "--border", {0, 255}));
  return {orvBorderConstant, {value, value, value}};
}

}  // namespace tool
