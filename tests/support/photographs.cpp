#include "support/photographs.h"

#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <mutex>

#include "stb/stb_image.h"

namespace orvtest {
namespace {

Photograph loadPhotograph(const std::string& file) {
  const std::string path = std::string(ORV_PHOTOS_DIR "/") + file;
  int width = 0, height = 0, channelsInFile = 0;
  const std::unique_ptr<stbi_uc, void (*)(void*)> pixels(stbi_load(path.c_str(), &width, &height, &channelsInFile, 3),
                                                         stbi_image_free);
  if (!pixels) {
    std::fprintf(stderr, "can't read %s: %s\n", path.c_str(), stbi_failure_reason());
    std::abort();
  }
  const auto count = static_cast<size_t>(width * height);
  Photograph photo{width, height, {pixels.get(), pixels.get() + 3 * count}, {}};
  for (size_t i = 0; i < count; ++i) {
    const uint8_t* rgb = &photo.colour[3 * i];
    photo.grey.push_back(static_cast<uint8_t>((77 * rgb[0] + 150 * rgb[1] + 29 * rgb[2] + 128) / 256));
  }
  return photo;
}

}  // namespace

const Photograph& photograph(const std::string& file) {
  static std::mutex mutex;
  static std::map<std::string, Photograph> photographs;
  std::lock_guard lock(mutex);
  const auto found = photographs.find(file);
  return found != photographs.end() ? found->second : photographs.emplace(file, loadPhotograph(file)).first->second;
}

}  // namespace orvtest
