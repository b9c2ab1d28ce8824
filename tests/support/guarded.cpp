#include "support/guarded.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <mutex>
#include <utility>

namespace orvtest {
namespace {

size_t pageSize() {
  static const auto size = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  return size;
}

struct LiveRegions {
  std::mutex mutex;
  std::vector<const GuardedMemory*> regions;
};

LiveRegions& live() {
  static LiveRegions regions;
  return regions;
}

}  // namespace

Placement drawPlacement(Random& random) {
  const auto fence = random.oneIn(3) ? Placement::Fence::before : Placement::Fence::after;
  return {fence, random.oneIn(2) ? 0 : random.below(64)};
}

GuardedMemory::GuardedMemory(std::string name, size_t size, Placement placement) : name_(std::move(name)), size_(size) {
  const auto distance = static_cast<size_t>(placement.distance);
  pagesSize_ = std::max<size_t>(1, (size + distance + pageSize() - 1) / pageSize()) * pageSize();
  offset_ = placement.fence == Placement::Fence::before ? distance : pagesSize_ - size - distance;
  map();
  for (size_t i = 0; i < pagesSize_; ++i) pages_[i] = canary(i);
}

GuardedMemory::GuardedMemory(const GuardedMemory& other)
    : name_(other.name_), size_(other.size_), offset_(other.offset_), pagesSize_(other.pagesSize_) {
  map();
  std::memcpy(pages_, other.pages_, pagesSize_);
}

GuardedMemory::GuardedMemory(GuardedMemory&& other) noexcept
    : name_(std::move(other.name_)), size_(other.size_), offset_(other.offset_), pagesSize_(other.pagesSize_) {
  std::lock_guard lock(live().mutex);
  pages_ = std::exchange(other.pages_, nullptr);
  data_ = std::exchange(other.data_, nullptr);
  std::replace(live().regions.begin(), live().regions.end(), static_cast<const GuardedMemory*>(&other),
               static_cast<const GuardedMemory*>(this));
}

GuardedMemory::~GuardedMemory() {
  if (!pages_)
    return;
  {
    std::lock_guard lock(live().mutex);
    std::erase(live().regions, this);
  }
  munmap(pages_ - pageSize(), pagesSize_ + 2 * pageSize());
}

void GuardedMemory::map() {
  void* base = mmap(nullptr, pagesSize_ + 2 * pageSize(), PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (base == MAP_FAILED) {
    std::perror("mmap of guarded memory");
    std::abort();
  }
  pages_ = static_cast<uint8_t*>(base) + pageSize();
  data_ = pages_ + offset_;
  protectWritable();
  std::lock_guard lock(live().mutex);
  live().regions.push_back(this);
}

void GuardedMemory::protectReadOnly() const { mprotect(pages_, pagesSize_, PROT_READ); }
void GuardedMemory::protectWritable() const { mprotect(pages_, pagesSize_, PROT_READ | PROT_WRITE); }

void GuardedMemory::expectCanariesIntact() const {
  for (size_t i = 0; i < pagesSize_; ++i) {
    if (i == offset_)
      i += size_;
    if (i < pagesSize_ && pages_[i] != canary(i)) {
      ADD_FAILURE() << "a byte outside was written, " << describe(pages_ + i);
      return;
    }
  }
}

std::string GuardedMemory::describe(const void* address) {
  const auto* byte = static_cast<const uint8_t*>(address);
  std::lock_guard lock(live().mutex);
  for (const GuardedMemory* region : live().regions) {
    if (byte < region->pages_ - pageSize() || byte >= region->pages_ + region->pagesSize_ + pageSize())
      continue;
    const ptrdiff_t offset = byte - region->data_;
    const auto size = static_cast<ptrdiff_t>(region->size_);
    if (offset < 0)
      return std::to_string(-offset) + " bytes before the start of " + region->name_;
    if (offset >= size)
      return std::to_string(offset - size + 1) + " bytes past the last of " + region->name_;
    return "at byte " + std::to_string(offset) + " of " + region->name_;
  }
  return "";
}

GuardedBlock::GuardedBlock(std::string name, size_t size, int residueMod64)
    : memory_(std::move(name), size,
              {Placement::Fence::after, static_cast<int>((0u - size - static_cast<unsigned>(residueMod64)) % 64)}) {}

GuardedBlock::GuardedBlock(std::string name, int size, int residueMod64)
    : GuardedBlock(std::move(name), static_cast<size_t>(size), residueMod64) {}

GuardedBlock::~GuardedBlock() {
  if (memory_.data())
    memory_.expectCanariesIntact();
}

void GuardedBlock::fill(uint8_t byte) const { std::memset(data(), byte, size()); }

void GuardedBlock::fill(Random& random) const {
  for (size_t i = 0; i < size(); ++i) data()[i] = static_cast<uint8_t>(random.bits());
}

}  // namespace orvtest
