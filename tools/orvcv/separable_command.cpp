// orvcv filter: any separable kernel.
#include "commands.h"
#include "separable_filter.h"

namespace tool {
namespace {

std::vector<float> readKernel(const Arguments& arguments, std::string_view option) {
  const std::vector<double> numbers = parseNumbers(arguments.text(option, "1"), "--" + std::string(option));
  return {numbers.begin(), numbers.end()};
}

void runFilter(const Arguments& arguments, LibraryCalls& library) {
  const std::string output = outputPath(arguments);
  const SeparableKernel kernel = {readKernel(arguments, "row"), readKernel(arguments, "column")};
  const double divisor = arguments.number("divisor", 1);
  if (divisor == 0)
    throw UserError("--divisor must not be 0");
  const double offset = arguments.number("offset", 0, {-255, 255});
  const Border border = readBorder(arguments);
  const Picture picture = readPicture(arguments.operands().front());
  const FloatImage filtered = filterSeparable(picture, kernel, border, library);
  writePng(output, toPicture(filtered, static_cast<float>(1 / divisor), static_cast<float>(offset)));
}

}  // namespace

const Command filterCommand = {
    .name = "filter",
    .operands = "IMAGE",
    .summary = "Filter an image with a row kernel and a column kernel",
    .details =
        "Kernels are numbers separated by commas and are applied as written, not reversed. A kernel that is left\n"
        "out is 1. Results are divided, moved by the offset, rounded and cut to 0 to 255.\n"
        "Example, vertical edges on gray: --row -1,0,1 --column 1,2,1 --divisor 8 --offset 128\n",
    .fewestOperands = 1,
    .mostOperands = 1,
    .options = {outputOption,
                {"row", "A,B,...", "the kernel along rows", 'r'},
                {"column", "A,B,...", "the kernel down columns", 'c'},
                {"divisor", "D", "divide the results by this", 'd'},
                {"offset", "V", "added to the results, to show negative ones"},
                borderOption},
    .run = runFilter,
};

}  // namespace tool
