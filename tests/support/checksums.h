// Recorded checksums: the results of an export on deterministic cases, the same with every compiler, optimisation level
// and sanitizer.
//
//   Checksum checksum;
//   checksum.add(status);
//   checksum.add(dst);
//   expectRecorded("orviAdd_8u32f_C1IR", checksum);
//
// The records are lines `name hash` of tests/checksums.txt, sorted. ORV_RECORD_CHECKSUMS=1 writes them anew instead of
// comparing: to be used on purpose, when results are meant to change or a test is new.
#pragma once

#include <cstdint>
#include <string>
#include <type_traits>

#include "support/image.h"

namespace orvtest {

/// FNV-1a over 64 bits.
class Checksum {
public:
  void addBytes(const void* bytes, size_t count);

  /// Numbers, and structures without padding.
  template <class Value>
  requires std::is_trivially_copyable_v<Value>
  void add(const Value& value) { addBytes(&value, sizeof value); }

  /// The pixels of the region.
  template <class Sample>
  void add(const TestImage<Sample>& image) {
    const auto rowBytes = sizeof(Sample) * static_cast<size_t>(image.width() * image.channels());
    for (int y = 0; y < image.height(); ++y) addBytes(addressOf(image.data(), image.step(), 0, y), rowBytes);
  }

  void add(const GuardedBlock& block) { addBytes(block.data(), block.size()); }

  uint64_t value() const { return hash_; }

private:
  uint64_t hash_ = 0xcbf29ce484222325u;
};

void expectRecorded(const std::string& name, const Checksum& checksum);

/// The same with a file of records of one's own and an explicit choice.
void expectRecorded(const std::string& name, const Checksum& checksum, const std::string& file, bool record);

}  // namespace orvtest
