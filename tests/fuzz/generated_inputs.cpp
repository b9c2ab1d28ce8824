// Stands in for libFuzzer where a compiler has none: feeds a fuzz target a fixed number of generated inputs, the same on
// every machine.
// usage: program COUNT
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int main(int argc, char** argv) {
  const long count = argc == 2 ? std::strtol(argv[1], nullptr, 10) : 0;
  if (count < 1) {
    std::fprintf(stderr, "usage: %s COUNT\n", argv[0]);
    return 2;
  }
  uint64_t state = 0x9e3779b97f4a7c15u;
  const auto random = [&state] {
    state ^= state << 13;
    state ^= state >> 7;
    state ^= state << 17;
    return state;
  };
  for (long i = 0; i < count; ++i) {
    std::vector<uint8_t> input(random() % 64);
    for (uint8_t& byte : input) byte = static_cast<uint8_t>(random() >> 32);
    LLVMFuzzerTestOneInput(input.data(), input.size());
  }
  std::printf("%ld inputs without a fault\n", count);
}
