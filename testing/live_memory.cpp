#include "testing/live_memory.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::size_t> live = 0;
std::atomic<std::size_t> count = 0;

// Each block begins with its size, in as much room as keeps the rest aligned.
constexpr std::size_t roomFor(std::size_t alignment) {
  return std::max(alignment, std::size_t{__STDCPP_DEFAULT_NEW_ALIGNMENT__});
}

// Null where there is no memory.
void* find(std::size_t size, std::size_t alignment) noexcept {
  const std::size_t room = roomFor(alignment);
  const std::size_t whole = (room + size + room - 1) / room * room;
  auto* const block = static_cast<std::byte*>(std::aligned_alloc(room, whole));
  if (!block) {
    return nullptr;
  }
  new (block) std::size_t(size);
  live += size;
  ++count;
  return block + room;
}

void* allocate(std::size_t size, std::size_t alignment) {
  if (void* const memory = find(size, alignment)) {
    return memory;
  }
  throw std::bad_alloc();
}

void release(void* memory, std::size_t alignment) noexcept {
  if (memory) {
    auto* const block = static_cast<std::byte*>(memory) - roomFor(alignment);
    live -= *std::launder(reinterpret_cast<std::size_t*>(block));
    std::free(block);
  }
}

}  // namespace

// All that are given back in the ways below, since a sanitizer has each of its own. Arrays come and go in
// ways of theirs, which use these where there is no sanitizer.
void* operator new(std::size_t size) { return allocate(size, 1); }
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept { return find(size, 1); }
void* operator new(std::size_t size, std::align_val_t alignment) {
  return allocate(size, static_cast<std::size_t>(alignment));
}
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t& /*tag*/) noexcept {
  return find(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* memory) noexcept { release(memory, 1); }
void operator delete(void* memory, std::size_t /*size*/) noexcept { release(memory, 1); }
void operator delete(void* memory, std::align_val_t alignment) noexcept {
  release(memory, static_cast<std::size_t>(alignment));
}
void operator delete(void* memory, std::size_t /*size*/, std::align_val_t alignment) noexcept {
  release(memory, static_cast<std::size_t>(alignment));
}

namespace quillmar {

std::size_t liveBytes() { return live; }
std::size_t allocations() { return count; }

}  // namespace quillmar
