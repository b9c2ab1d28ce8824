// orvcv info: what the library and what an image file is.
#include <cstdio>

#include "commands.h"
#include "image_io.h"

namespace tool {
namespace {

void printLibrary() {
  const OrvLibraryVersion* library = orvcvGetLibVersion();
  std::printf("library    %s\n", library->name);
  std::printf("version    %s\n", library->version);
  std::printf("numbers    %d.%d.%d build %d\n", library->major, library->minor, library->majorBuild, library->build);
  std::printf("processor  %s\n", library->targetCpu);
  std::printf("built      %s\n", library->buildDate);
}

void printImage(const std::string& path) {
  const Picture picture = readPicture(path);
  std::printf("%s: %d x %d pixels, %s\n", path.c_str(), picture.width, picture.height,
              picture.channels == 1 ? "gray" : "colour (3 channels)");
}

}  // namespace

const Command infoCommand = {
    .name = "info",
    .operands = "[IMAGES...]",
    .summary = "Tell about the library, or about image files",
    .details =
        "Without an image: the version record of the library. With images: their sizes and channels.\n"
        "An alpha channel is dropped, and samples of 16 bits are cut to 8, by this and every other command.\n",
    .fewestOperands = 0,
    .mostOperands = SIZE_MAX,
    .options = {},
    .run =
        [](const Arguments& arguments, LibraryCalls&) {
          if (arguments.operands().empty())
            printLibrary();
          for (const std::string& path : arguments.operands()) printImage(path);
        },
};

}  // namespace tool
