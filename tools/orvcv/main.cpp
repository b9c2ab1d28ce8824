// orvcv: a command line over the public interface of the library.
#include <algorithm>
#include <cstdio>
#include <new>

#include "commands.h"

namespace tool {
namespace {

constexpr int exitRefused = 2;

const Command* const commands[] = {
    &infoCommand, &diffCommand,   &compareCommand,   &statsCommand,   &averageCommand,
    &blurCommand, &filterCommand, &laplacianCommand, &lowpassCommand, &gradientCommand,
};

const Option commonOptions[] = {
    {"time", "", "print the megapixels per second of the library's work"},
    {"help", "", "show this text", 'h'},
};

void print(std::FILE* stream, std::string_view text) { std::fwrite(text.data(), 1, text.size(), stream); }

void printHelp(std::FILE* stream) {
  print(stream,
        "Usage: orvcv COMMAND [OPTIONS] ...\n"
        "Computer vision on image files: reads PNG, JPEG and PNM, writes PNG.\n\nCommands:\n");
  for (const Command* command : commands)
    std::fprintf(stream, "  %-12s %s\n", command->name.data(), command->summary.data());
  print(stream,
        "\n'orvcv COMMAND --help' tells more about a command, 'orvcv --version' what is installed.\n"
        "The exit status is 0 on success and 2 when something was wrong; then no file was written.\n");
}

void printHelp(const Command& command) {
  std::printf("Usage: orvcv %s [OPTIONS] %s\n%s.\n\n", command.name.data(), command.operands.data(),
              command.summary.data());
  std::printf("%s\nOptions:\n", command.details.data());
  const auto printOption = [](const Option& option) {
    std::string spelled = option.letter == 0 ? "    --" : std::string("-") + option.letter + ", --";
    spelled += option.name;
    if (!option.placeholder.empty())
      spelled += " " + std::string(option.placeholder);
    std::printf("  %-28s %s\n", spelled.c_str(), option.help.data());
  };
  std::for_each(command.options.begin(), command.options.end(), printOption);
  std::for_each(std::begin(commonOptions), std::end(commonOptions), printOption);
}

const Command& findCommand(const std::string& name) {
  std::vector<std::string_view> names;
  for (const Command* command : commands) {
    if (command->name == name)
      return *command;
    names.push_back(command->name);
  }
  throw UserError("unknown command '" + name + "'" + suggestion(name, names));
}

void runCommand(const Command& command, std::span<const std::string> words) {
  std::vector<Option> options = command.options;
  options.insert(options.end(), std::begin(commonOptions), std::end(commonOptions));
  if (std::any_of(words.begin(), words.end(), [](const std::string& w) { return w == "--help" || w == "-h"; })) {
    printHelp(command);
    return;
  }
  const Arguments arguments(options, words);
  const size_t count = arguments.operands().size();
  if (count < command.fewestOperands || count > command.mostOperands)
    throw UserError("expected " + std::string(command.operands) + ", got " + std::to_string(count) +
                    (count == 1 ? " file name" : " file names"));
  LibraryCalls library;
  command.run(arguments, library);
  if (arguments.has("time"))
    library.printTime();
}

void runTool(std::span<const std::string> words) {
  const std::string& first = words.front();
  if (first == "--help" || first == "-h" || first == "help")
    printHelp(stdout);
  else if (first == "--version")
    std::printf("orvcv %s, library %s\n", ORVCV_TOOL_VERSION, orvcvGetLibVersion()->version);
  else
    runCommand(findCommand(first), words.subspan(1));
  if (std::fflush(stdout) != 0)
    throw UserError("cannot write the results to the standard output");
}

}  // namespace
}  // namespace tool

int main(int argc, char** argv) {
  const std::vector<std::string> words(argv + 1, argv + std::max(argc, 1));
  if (words.empty()) {
    tool::printHelp(stderr);
    return tool::exitRefused;
  }
  try {
    tool::runTool(words);
    return 0;
  } catch (const tool::UserError& error) {
    std::fprintf(stderr, "orvcv: %s\n", error.what());
  } catch (const std::bad_alloc&) {
    std::fputs("orvcv: not enough memory for these images\n", stderr);
  }
  std::fputs("Try 'orvcv --help' or 'orvcv COMMAND --help'.\n", stderr);
  return tool::exitRefused;
}
