#pragma once

// What every Clipboard promises:
//   INSTANTIATE_TEST_SUITE_P(Qt, ClipboardContract, testing::Values(factory<Clipboard, QtClipboard>("Qt")));

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "platform/clipboard.h"
#include "tests/contracts/factory.h"

namespace quillmar {

class ClipboardContract : public testing::TestWithParam<Factory<Clipboard>> {
 protected:
  std::unique_ptr<Clipboard> clipboard = GetParam()();
};

TEST_P(ClipboardContract, gives_back_what_was_put_there_last) {
  clipboard->setString("first");
  clipboard->setString("second");
  EXPECT_EQ(clipboard->string(), "second");
}

TEST_P(ClipboardContract, keeps_text_as_it_is) {
  for (const std::string text :
       {" ABC123 ", "a\nb", "zwölf 👨‍👩‍👧", "%s %n", "<b>no markup</b>", "{\"a\":1}"}) {
    clipboard->setString(text);
    EXPECT_EQ(clipboard->string(), text);
  }
}

TEST_P(ClipboardContract, an_empty_text_leaves_nothing_of_the_old_one) {
  clipboard->setString("old");
  clipboard->setString("");
  EXPECT_EQ(clipboard->string(), "");
}

}  // namespace quillmar
