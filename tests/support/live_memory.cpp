#include "tests/support/live_memory.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::size_t> live = 0;

// Each block begins with its size, in as much room as keeps the rest aligned.
constexpr std::size_t roomFor(std::size_t alignment) {
  return std::max(alignment, std::size_t{__STDCPP_DEFAULT_NEW_ALIGNMENT__});
}

void* allocate(std::size_t size, std::size_t alignment) {
  const std::size_t room = roomFor(alignment);
  const std::size_t whole = (room + size + room - 1) / room * room;
  auto* const block = static_cast<std::byte*>(std::aligned_alloc(room, whole));
  if (!block) {
    throw std::bad_alloc();
  }
  new (block) std::size_t(size);
  live += size;
  return block + room;
}

void release(void* memory, std::size_t alignment) noexcept {
  if (memory) {
    auto* const block = static_cast<std::byte*>(memory) - roomFor(alignment);
    live -= *std::launder(reinterpret_cast<std::size_t*>(block));
    std::free(block);
  }
}

}  // namespace

// Those of arrays and those that do not throw use these.
void* operator new(std::size_t size) { return allocate(size, 1); }
void* operator new(std::size_t size, std::align_val_t alignment) {
  return allocate(size, static_cast<std::size_t>(alignment));
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

}  // namespace quillmar
