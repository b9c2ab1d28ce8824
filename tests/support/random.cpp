#include "support/random.h"

#include <algorithm>

namespace orvtest {

Random::Random(std::string_view name, uint32_t caseNumber) : state_(0xcbf29ce484222325u) {
  const auto mix = [this](uint8_t byte) { state_ = (state_ ^ byte) * 0x100000001b3u; };
  for (char character : name) mix(static_cast<uint8_t>(character));
  for (int shift = 0; shift < 32; shift += 8) mix(static_cast<uint8_t>(caseNumber >> shift));
}

OrvSize drawSize(Random& random, OrvSize minimum) {
  const auto width = [&] {
    if (random.oneIn(32))
      return random.between(71, 300);
    if (random.oneIn(2))
      return random.pick({1, 2, 3, 4, 5, 7, 8, 9, 12, 15, 16, 17, 23, 24, 25, 31, 32, 33, 39, 47, 48, 49, 63, 64, 65});
    return random.between(1, 70);
  };
  const auto height = [&] {
    if (random.oneIn(32))
      return random.between(13, 70);
    return random.oneIn(2) ? random.between(1, 4) : random.between(1, 12);
  };
  const OrvSize size{width(), height()};
  return {std::max(size.width, minimum.width), std::max(size.height, minimum.height)};
}

int drawStepPadding(Random& random, int rowBytes, int sampleBytes) {
  const auto upTo = [&](int multiple) { return (multiple - rowBytes % multiple) % multiple; };
  // 32 and 64 are multiples of every sample, so rows of whole samples reach them by whole samples.
  switch (random.below(8)) {
    case 0:
    case 1:
      return 0;
    case 2:
      return sampleBytes;
    case 3:
    case 4:
      return sampleBytes * (2 * random.between(1, 20) + 1);
    case 5:
      return upTo(32);
    case 6:
      return upTo(64);
    default:
      return sampleBytes * random.between(100, 500);
  }
}

MaskKind drawMaskKind(Random& random) {
  return random.pick({MaskKind::none, MaskKind::all, MaskKind::any, MaskKind::any, MaskKind::sparse, MaskKind::dense,
                      MaskKind::dense, MaskKind::runs, MaskKind::runs});
}

uint8_t MaskBytes::next() {
  const auto byteThat = [this](bool selects) { return static_cast<uint8_t>(selects ? random_.between(1, 255) : 0); };
  switch (kind_) {
    case MaskKind::none:
      return 0;
    case MaskKind::all:
      return 255;
    case MaskKind::any:
      return byteThat(random_.oneIn(2));
    case MaskKind::sparse:
      return byteThat(random_.oneIn(16));
    case MaskKind::dense:
      return byteThat(!random_.oneIn(16));
    case MaskKind::runs:
      break;
  }
  if (runLeft_-- == 0) {
    runLeft_ = random_.between(0, 40);
    runSelects_ = !runSelects_;
  }
  return byteThat(runSelects_);
}

}  // namespace orvtest
