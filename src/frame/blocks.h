// Carving of the caller's blocks. A block comes at any address and carries no length; its areas are laid out by one
// description, which the tests hold against the size that the query returned.
#pragma once

#include <cstddef>
#include <cstdint>

namespace orv {

template <class T>
T* roundUp(T* pointer, size_t alignment) {
  return reinterpret_cast<T*>((reinterpret_cast<uintptr_t>(pointer) + alignment - 1) & ~uintptr_t{alignment - 1});
}

constexpr int roundUp(int value, int multiple) { return (value + multiple - 1) / multiple * multiple; }

/// Hands out typed areas of a block one after the other, each rounded up to the alignment.
class Carver {
public:
  explicit Carver(void* block, size_t alignment = 32) : next_(static_cast<char*>(block)), alignment_(alignment) {}

  template <class T>
  T* take(size_t count) {
    char* const area = roundUp(next_, alignment_);
    next_ = area + count * sizeof(T);
    return reinterpret_cast<T*>(area);
  }

  /// One past the last byte handed out.
  const char* end() const { return next_; }

private:
  char* next_;
  size_t alignment_;
};

}  // namespace orv
