// Arguments made from bytes for functions of the shape (images with steps ..., size, scalars ...). Memory is exactly as
// large as valid arguments vouch for, and empty when the arguments are not valid: whatever the address sanitizer reports
// is a real fault.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>
#include <tuple>
#include <type_traits>

#include "orvcv.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

/// Reads the input from its front; zeros once it is used up.
class Bytes {
public:
  Bytes(const uint8_t* data, size_t size) : data_(data), size_(size) {}

  template <class Value>
  Value take() {
    Value value{};
    const size_t count = size_ < sizeof value ? size_ : sizeof value;
    if (count > 0)
      std::memcpy(&value, data_, count);
    data_ += count;
    size_ -= count;
    return value;
  }

  /// Mostly small numbers, now and then any number at all.
  int32_t takeLength(int limit) {
    const auto selector = take<uint8_t>();
    return selector < 12 ? take<int32_t>() : take<uint16_t>() % (limit + 1);
  }

private:
  const uint8_t* data_;
  size_t size_;
};

constexpr int64_t largestImage = int64_t{1} << 20;

/// One call: hands out the arguments in order and knows afterwards what the call must answer.
class Call {
public:
  Call(Bytes& bytes, int channels) : bytes_(bytes), channels_(channels) {
    roi_ = {bytes.takeLength(80), bytes.takeLength(12)};
    valid_ = roi_.width >= 1 && roi_.height >= 1;
  }

  template <class Argument>
  Argument next() {
    if constexpr (std::is_pointer_v<Argument>) {
      return reinterpret_cast<Argument>(nextImage(sizeof(std::remove_pointer_t<Argument>)));
    } else if constexpr (std::is_same_v<Argument, OrvSize>) {
      return roi_;
    } else if constexpr (std::is_same_v<Argument, int>) {
      if (!stepIsNext_)
        return bytes_.take<int>();
      stepIsNext_ = false;
      return step_;
    } else {
      return bytes_.take<Argument>();
    }
  }

  bool valid() const { return valid_; }
  bool affordable() const { return affordable_; }

private:
  /// Decides on the step that follows and on the memory that both vouch for.
  void* nextImage(int sampleBytes) {
    const int64_t rowBytes = int64_t{roi_.width} * channels_ * sampleBytes;
    const auto slack = bytes_.take<uint8_t>();
    const int64_t wanted = rowBytes + (slack < 16 ? slack - 8 : slack % 5 * sampleBytes);
    step_ = wanted >= INT32_MIN && wanted <= INT32_MAX ? static_cast<int>(wanted) : INT32_MAX;
    stepIsNext_ = true;
    const auto residue = bytes_.take<uint8_t>();
    if (residue == 255) {
      valid_ = false;
      return nullptr;
    }
    valid_ = valid_ && step_ >= rowBytes && step_ % sampleBytes == 0;
    int64_t bytes = 0;
    if (valid_) {
      bytes = int64_t{roi_.height - 1} * step_ + rowBytes;
      affordable_ = affordable_ && bytes <= largestImage;
    }
    if (!affordable_)
      bytes = 0;
    // Samples of any address: the block starts up to 15 bytes before the image.
    const size_t offset = residue % 16;
    std::unique_ptr<uint8_t[]>& block = blocks_[count_++];
    block.reset(new uint8_t[offset + static_cast<size_t>(bytes)]);
    std::memset(block.get(), bytes_.take<uint8_t>(), offset + static_cast<size_t>(bytes));
    return block.get() + offset;
  }

  Bytes& bytes_;
  int channels_;
  OrvSize roi_{};
  bool valid_ = true, affordable_ = true, stepIsNext_ = false;
  int step_ = 0, count_ = 0;
  std::unique_ptr<uint8_t[]> blocks_[4];
};

template <class... Arguments>
void run(OrvStatus (*function)(Arguments...), std::string_view name, Bytes& bytes) {
  Call call(bytes, name.find("_C3") != name.npos ? 3 : 1);
  // Braces: the arguments are made from left to right.
  const std::tuple<Arguments...> arguments{call.next<Arguments>()...};
  // An image that turned out to be invalid late has made earlier ones too large at most, never too small.
  if (!call.affordable())
    return;
  const OrvStatus status = std::apply(function, arguments);
  if (call.valid() ? status != orvStsOk : status >= orvStsOk)
    std::abort();
}

using Target = void (*)(Bytes&);

#define ORV_TARGET(name) [](Bytes& bytes) { run(name, #name, bytes); },
constexpr Target targets[] = {
    // clang-format off
    ORV_TARGET(orviAdd_8u32f_C1IR)          ORV_TARGET(orviAdd_16u32f_C1IR)
    ORV_TARGET(orviAdd_8u32f_C1IMR)         ORV_TARGET(orviAdd_16u32f_C1IMR)
    ORV_TARGET(orviAdd_32f_C1IMR)
    ORV_TARGET(orviAddSquare_8u32f_C1IR)    ORV_TARGET(orviAddSquare_16u32f_C1IR)
    ORV_TARGET(orviAddSquare_32f_C1IR)
    ORV_TARGET(orviAddSquare_8u32f_C1IMR)   ORV_TARGET(orviAddSquare_16u32f_C1IMR)
    ORV_TARGET(orviAddSquare_32f_C1IMR)
    ORV_TARGET(orviAddProduct_8u32f_C1IR)   ORV_TARGET(orviAddProduct_16u32f_C1IR)
    ORV_TARGET(orviAddProduct_32f_C1IR)
    ORV_TARGET(orviAddProduct_8u32f_C1IMR)  ORV_TARGET(orviAddProduct_16u32f_C1IMR)
    ORV_TARGET(orviAddProduct_32f_C1IMR)
    ORV_TARGET(orviAddWeighted_8u32f_C1IR)  ORV_TARGET(orviAddWeighted_16u32f_C1IR)
    ORV_TARGET(orviAddWeighted_32f_C1IR)
    ORV_TARGET(orviAddWeighted_8u32f_C1IMR) ORV_TARGET(orviAddWeighted_16u32f_C1IMR)
    ORV_TARGET(orviAddWeighted_32f_C1IMR)   ORV_TARGET(orviAddWeighted_32f_C1R)
    ORV_TARGET(orviAbsDiff_8u_C1R)          ORV_TARGET(orviAbsDiff_8u_C3R)
    ORV_TARGET(orviAbsDiff_16u_C1R)         ORV_TARGET(orviAbsDiff_32f_C1R)
    ORV_TARGET(orviAbsDiffC_8u_C1R)         ORV_TARGET(orviAbsDiffC_16u_C1R)
    ORV_TARGET(orviAbsDiffC_32f_C1R)
    // clang-format on
};

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Bytes bytes(data, size);
  targets[bytes.take<uint8_t>() % std::size(targets)](bytes);
  return 0;
}
