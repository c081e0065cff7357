#include "foundation/wipe.h"

#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <new>
#include <span>
#include <string>
#include <string_view>

#include "platform/http_session.h"

namespace {

constexpr std::string_view secret = "correct-horse-battery-staple";
bool isWatching = false;
int secretsFreed = 0;

void look(void* block) {
  const std::string_view bytes(static_cast<const char*>(block), malloc_usable_size(block));
  secretsFreed += bytes.find(secret) != std::string_view::npos ? 1 : 0;
}

void release(void* block) {
  if (isWatching && block) {
    look(block);
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
namespace {

int secretsFreedBy(const auto& work) {
  secretsFreed = 0;
  isWatching = true;
  work();
  isWatching = false;
  return secretsFreed;
}

TEST(Wipe, overwrites_a_text_up_to_the_end_of_its_buffer) {
  std::string text(secret);
  text.reserve(100);
  text.resize(5);  // the buffer still holds the rest
  const std::span buffer(text.data(), text.capacity());
  wipe(text);
  EXPECT_EQ(text, "");
  EXPECT_EQ(std::span(text.data(), text.capacity()).data(), buffer.data());
  text.resize(buffer.size());
  EXPECT_TRUE(std::ranges::all_of(text, [](char byte) { return byte == 0; }));
}

TEST(Wipe, leaves_nothing_in_freed_memory) {
  EXPECT_EQ(secretsFreedBy([] { const std::string kept(secret); }), 1) << "otherwise nothing is looked for";
  EXPECT_EQ(secretsFreedBy([] {
              std::string wiped(secret);
              wipe(wiped);
            }),
            0);
}

TEST(Wipe, of_a_request_covers_headers_and_body) {
  EXPECT_EQ(secretsFreedBy([] {
              HttpRequest request;
              request.headers.emplace_back("Authorization", secret);
              request.body.emplace(secret);
              request.setHeader("Authorization", "another");
              request.setHeader("Cookie", std::string(secret));
              request.wipeSecrets();
            }),
            0);
}

}  // namespace
}  // namespace quillmar
