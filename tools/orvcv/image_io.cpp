#include "image_io.h"

#define STBI_NO_STDIO
#include <fcntl.h>
#include <stb/stb_image.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <utility>

#define STBI_WRITE_NO_STDIO
#include <stb/stb_image_write.h>

namespace tool {
namespace {

[[noreturn]] void failed(const std::string& action, const std::string& path, int error) {
  throw UserError("cannot " + action + " '" + path + "': " + std::strerror(error));
}

std::vector<char> readBytes(const std::string& path) {
  errno = 0;
  std::ifstream file(path, std::ios::binary);
  std::vector<char> bytes;
  if (file) {
    struct stat state = {};
    if (stat(path.c_str(), &state) == 0 && S_ISDIR(state.st_mode))
      failed("read", path, EISDIR);
    bytes.assign(std::istreambuf_iterator<char>(file), {});
  }
  if (!file)
    failed("read", path, errno != 0 ? errno : EIO);
  return bytes;
}

/// A file that takes its name when it is complete, and is removed otherwise.
class PendingFile {
public:
  explicit PendingFile(const std::string& path) : path_(path), temporary_(path + ".XXXXXX") {
    descriptor_ = mkstemp(temporary_.data());
    if (descriptor_ < 0)
      failed("write", path_, errno);
  }
  PendingFile(const PendingFile&) = delete;
  PendingFile& operator=(const PendingFile&) = delete;
  ~PendingFile() {
    if (descriptor_ >= 0)
      close(descriptor_);
    if (!temporary_.empty())
      unlink(temporary_.c_str());
  }

  void write(const char* bytes, size_t count) {
    while (count > 0) {
      const ssize_t written = ::write(descriptor_, bytes, count);
      if (written < 0 && errno == EINTR)
        continue;
      if (written <= 0)
        failed("write", path_, errno);
      bytes += written;
      count -= static_cast<size_t>(written);
    }
  }

  void finish() {
    // mkstemp keeps others out; an ordinary file has the rights that the user's mask leaves.
    const mode_t mask = umask(0);
    umask(mask);
    if (fchmod(descriptor_, 0666 & ~mask) != 0 || close(std::exchange(descriptor_, -1)) != 0 ||
        rename(temporary_.c_str(), path_.c_str()) != 0)
      failed("write", path_, errno);
    temporary_.clear();
  }

private:
  std::string path_, temporary_;
  int descriptor_ = -1;
};

}  // namespace

Picture readPicture(const std::string& path, Channels channels) {
  const std::vector<char> bytes = readBytes(path);
  const auto* encoded = reinterpret_cast<const stbi_uc*>(bytes.data());
  const int length = static_cast<int>(bytes.size());

  int width = 0, height = 0, channelsInFile = 0;
  if (stbi_info_from_memory(encoded, length, &width, &height, &channelsInFile) == 0)
    throw UserError("'" + path + "' is not a PNG, JPEG or PNM image");
  const int wanted = channels != Channels::asInFile ? static_cast<int>(channels) : channelsInFile < 3 ? 1 : 3;

  const std::unique_ptr<stbi_uc, decltype(&stbi_image_free)> decoded(
      stbi_load_from_memory(encoded, length, &width, &height, &channelsInFile, wanted), &stbi_image_free);
  if (!decoded)
    throw UserError("'" + path + "' is damaged: " + stbi_failure_reason());
  Picture picture({width, height}, wanted);
  std::copy_n(decoded.get(), picture.samples.size(), picture.data());
  return picture;
}

std::vector<Picture> readAlike(const std::vector<std::string>& paths) {
  std::vector<Picture> pictures;
  for (const std::string& path : paths) {
    pictures.push_back(readPicture(path));
    const OrvSize first = pictures.front().size(), size = pictures.back().size();
    if (size.width != first.width || size.height != first.height)
      throw UserError("sizes differ: '" + paths.front() + "' is " + shownSize(first) + ", '" + path + "' is " +
                      shownSize(size));
  }
  const auto isColour = [](const Picture& picture) { return picture.channels == 3; };
  if (std::any_of(pictures.begin(), pictures.end(), isColour))
    for (size_t i = 0; i < paths.size(); ++i)
      if (!isColour(pictures[i]))
        pictures[i] = readPicture(paths[i], Channels::colour);
  return pictures;
}

Picture readMask(const Arguments& arguments, OrvSize size) {
  if (!arguments.has("mask")) {
    Picture everything(size, 1);
    std::fill(everything.samples.begin(), everything.samples.end(), uint8_t{255});
    return everything;
  }
  const std::string& path = arguments.required("mask");
  Picture mask = readPicture(path, Channels::gray);
  if (mask.width != size.width || mask.height != size.height)
    throw UserError("sizes differ: the mask '" + path + "' is " + shownSize(mask.size()) + ", the images are " +
                    shownSize(size));
  return mask;
}

std::string outputPath(const Arguments& arguments) {
  std::string path = arguments.required("output");
  if (!path.ends_with(".png"))
    throw UserError("'" + path + "' does not end in .png, the format that is written");
  return path;
}

void writePng(const std::string& path, const Picture& picture) {
  std::vector<char> encoded;
  const auto append = [](void* context, void* bytes, int count) {
    auto& target = *static_cast<std::vector<char>*>(context);
    const char* first = static_cast<const char*>(bytes);
    target.insert(target.end(), first, first + count);
  };
  if (stbi_write_png_to_func(append, &encoded, picture.width, picture.height, picture.channels, picture.data(),
                             picture.step()) == 0)
    failed("encode", path, ENOMEM);
  PendingFile file(path);
  file.write(encoded.data(), encoded.size());
  file.finish();
}

Picture toPicture(const FloatImage& image, float scale, float offset) {
  Picture picture(image.size(), image.channels);
  std::transform(image.samples.begin(), image.samples.end(), picture.samples.begin(), [=](float sample) {
    return static_cast<uint8_t>(std::clamp(std::nearbyint(sample * scale + offset), 0.0f, 255.0f));
  });
  return picture;
}

std::string shownSize(OrvSize size) { return std::to_string(size.width) + "x" + std::to_string(size.height); }

}  // namespace tool
