#include "testing/freed_memory.h"

#include <malloc.h>

#include <cstdlib>
#include <new>
#include <string_view>

namespace {

thread_local std::string_view wanted;
thread_local int found = 0;

void look(const void* block, std::size_t size) {
  const std::string_view bytes(static_cast<const char*>(block), size);
  found += bytes.find(wanted) != std::string_view::npos ? 1 : 0;
}

void release(void* block) {
  if (!wanted.empty() && block) {
    look(block, malloc_usable_size(block));
  }
  std::free(block);
}

}  // namespace

// All of the forms that end in the two deletes below, because sanitizers define each one.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return std::malloc(size); }
void* operator new(std::size_t size) {
  if (void* block = std::malloc(size)) {
    return block;
  }
  throw std::bad_alloc();
}
void operator delete(void* block) noexcept { release(block); }
void operator delete(void* block, std::size_t /*size*/) noexcept { release(block); }

namespace quillmar {

int freedBlocksWith(std::string_view text, const std::function<void()>& work) {
  found = 0;
  wanted = text;
  work();
  wanted = {};
  return found;
}

}  // namespace quillmar
