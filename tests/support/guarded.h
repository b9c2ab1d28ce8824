// Memory between fences: an inaccessible page on either side, canaries in what the data leaves of its own pages.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "support/random.h"

namespace orvtest {

/// Where data lies in its pages. At distance 0 the first byte beyond it is inaccessible.
struct Placement {
  enum class Fence { before, after };
  Fence fence = Fence::after;
  int distance = 0;  ///< bytes between the data and the fence
};

/// Mostly against one of the fences, else at any distance below 64 from one.
Placement drawPlacement(Random& random);

class GuardedMemory {
public:
  GuardedMemory(std::string name, size_t size, Placement placement = {});
  /// A twin: the same bytes, canaries included, at the same offset in pages of its own, writable.
  GuardedMemory(const GuardedMemory& other);
  GuardedMemory(GuardedMemory&& other) noexcept;
  GuardedMemory& operator=(const GuardedMemory&) = delete;
  ~GuardedMemory();

  uint8_t* data() const { return data_; }
  size_t size() const { return size_; }
  const std::string& name() const { return name_; }

  /// The accessible pages, which hold the data and the canaries.
  uint8_t* pages() const { return pages_; }
  size_t pagesSize() const { return pagesSize_; }

  void protectReadOnly() const;
  void protectWritable() const;

  /// Fails the test when a byte of the pages outside the data has changed.
  void expectCanariesIntact() const;

  /// "5 bytes past the end of dst" for an address in or near a live region, "" for any other.
  static std::string describe(const void* address);

private:
  void map();
  static uint8_t canary(size_t offset) { return static_cast<uint8_t>(0xc5u ^ (offset * 29)); }

  std::string name_;
  size_t size_;
  size_t offset_;  // of the data in the pages
  size_t pagesSize_;
  uint8_t* pages_ = nullptr;
  uint8_t* data_ = nullptr;
};

/// A block of exactly the size that a query returned, at any address residue; for specs, buffers and result values.
/// What lies around it is checked when it goes out of scope.
class GuardedBlock {
public:
  GuardedBlock(std::string name, size_t size, int residueMod64 = 0);
  GuardedBlock(std::string name, int size, int residueMod64 = 0);
  GuardedBlock(std::string name, int size, Random& random) : GuardedBlock(std::move(name), size, random.below(64)) {}
  GuardedBlock(GuardedBlock&&) noexcept = default;
  ~GuardedBlock();

  uint8_t* data() const { return memory_.data(); }
  size_t size() const { return memory_.size(); }
  template <class Type>
  Type* as() const {
    return reinterpret_cast<Type*>(memory_.data());
  }
  const GuardedMemory& memory() const { return memory_; }
  void protectReadOnly() const { memory_.protectReadOnly(); }
  void protectWritable() const { memory_.protectWritable(); }
  void fill(uint8_t byte) const;
  /// Contents that must not matter: random bytes.
  void fill(Random& random) const;
  std::vector<uint8_t> bytes() const { return {data(), data() + size()}; }

private:
  GuardedMemory memory_;
};

}  // namespace orvtest
