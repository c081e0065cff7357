#include "foundation/wipe.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "foundation/convert.h"
#include "foundation/json.h"
#include "foundation/observable.h"
#include "foundation/secret.h"
#include "platform/http_session.h"
#include "testing/freed_memory.h"

namespace quillmar {
namespace {

constexpr std::string_view secret = "correct-horse-battery-staple";
// Fits into a std::string itself, which then allocates nothing.
constexpr std::string_view shortSecret = "hunter2";

int secretsFreedBy(const std::function<void()>& work) { return freedBlocksWith(secret, work); }

struct SignIn {
  std::string name;
  Secret password;
};

}  // namespace

template <>
inline constexpr auto wire<SignIn> = record(required("name", &SignIn::name),
                                            required("password", &SignIn::password));

namespace {

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

TEST(Wipe, of_a_secret_that_is_copied_moved_replaced_and_destroyed) {
  EXPECT_EQ(secretsFreedBy([] {
              Secret one{std::string(secret)};
              Secret other = one;
              one = Secret("another");
              one = std::move(other);
              std::vector<Secret> some(3, one);
              some.resize(100);
              one = Secret("something that is longer than the secret that it replaces");
              other = some.front();
            }),
            0);
}

TEST(Wipe, of_a_short_secret_covers_the_object_that_holds_it) {
  const auto freeOne = [](auto make) { return freedBlocksWith(shortSecret, [&] { make(); }); };
  EXPECT_EQ(freeOne([] { return std::make_unique<std::string>(shortSecret); }), 1)
      << "otherwise nothing is looked for";
  EXPECT_EQ(freeOne([] { return std::make_unique<Secret>(std::string(shortSecret)); }), 0);
  EXPECT_EQ(freeOne([] {
              const auto moved = std::make_unique<Secret>(std::string(shortSecret));
              return std::make_unique<Secret>(std::move(*moved));
            }),
            0);
}

TEST(Wipe, of_a_typed_text_covers_each_value_on_its_way) {
  struct Form : ObservableObject {
    Form() : ObservableObject("Form") {}
    Input<Secret> password{*this, "password"};
  };
  const std::vector<std::string> typed{std::string(secret), std::string(secret) + "!"};
  EXPECT_EQ(secretsFreedBy([&] {
              const auto form = std::make_shared<Form>();
              Value shown;
              for (const std::string& text : typed) {
                EXPECT_TRUE(form->password.input(text));
                shown = form->password.value();
              }
              shown = Value::List{shown, "beside"};
            }),
            0);
}

TEST(Wipe, of_a_record_covers_the_json_that_is_written_of_it) {
  std::string document;
  EXPECT_EQ(secretsFreedBy([&] {
              document = encodeJson(SignIn{std::string(500, 'x'), std::string(secret)}).value();
            }),
            0);
  EXPECT_NE(document.find(secret), std::string::npos);
}

}  // namespace
}  // namespace quillmar
