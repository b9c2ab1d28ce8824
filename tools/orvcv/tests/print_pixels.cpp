// Prints an image file as text for the test script: width, height, channels, then every sample.
#include <cstdio>

#include "image_io.h"

int main(int argc, char** argv) {
  if (argc != 2)
    return 2;
  try {
    const tool::Picture picture = tool::readPicture(argv[1]);
    std::printf("%d %d %d:", picture.width, picture.height, picture.channels);
    for (const uint8_t sample : picture.samples) std::printf(" %d", sample);
    std::puts("");
    return 0;
  } catch (const tool::UserError& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 2;
  }
}
