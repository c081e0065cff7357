#pragma once

// What every QRReader promises. An adapter's test writes a harness and instantiates the suite once:
//   INSTANTIATE_TEST_SUITE_P(Qt, QRReaderContract, testing::Values(factory<QRReaderHarness,
//   QtReaderHarness>("Qt")));

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/qr_reader.h"
#include "tests/contracts/factory.h"

namespace quillmar {

using CodeTexts = std::vector<std::string>;

// A reader and its surroundings, at first with a working camera. All codes are QR codes.
class QRReaderHarness : public Harness {
 public:
  virtual QRReader& reader() = 0;
  virtual bool isMainThread() = 0;
  // Runs everything that is pending.
  virtual void settle() = 0;

  virtual void setCamera(CameraState state) = 0;
  // What the camera sees from the next `settle` on.
  virtual void show(const CodeTexts& codes) = 0;

  // The path of a picture with these codes; `noPicture` is a file of another kind.
  virtual std::string picture(const CodeTexts& codes) = 0;
  virtual std::string noPicture() = 0;
  // Puts a picture with these codes on the clipboard or on the screen.
  virtual void copy(const CodeTexts& codes) = 0;
  virtual void display(const CodeTexts& codes) = 0;
};

class QRReaderContract : public testing::TestWithParam<Factory<QRReaderHarness>> {
 protected:
  QRReader& reader() { return harness_->reader(); }
  QRReaderHarness& world() { return *harness_; }

  void start() {
    reader().startRunning(hearInto(batches_));
    world().settle();
  }
  QRReader::BatchHandler hearInto(std::vector<CodeTexts>& batches) {
    return [this, &batches](const RecognisedObjects& objects) {
      EXPECT_TRUE(harness_->isMainThread());
      batches.push_back(textsOf(objects));
    };
  }
  void show(const CodeTexts& codes) {
    world().show(codes);
    world().settle();
  }

  QRReader::Reply noteReply() {
    return [this](const Result<RecognisedObjects>& objects) {
      EXPECT_TRUE(harness_->isMainThread());
      ++replies_;
      read_ = objects.ok() ? textsOf(objects.value()) : CodeTexts{"error"};
      if (!objects.ok()) {
        EXPECT_TRUE(objects.error().localizedDescription().ends_with('.')) << "a sentence";
      }
    };
  }
  // The result of a read; checks that it replies once, and not inside the call.
  template <class Read>
  CodeTexts replyOf(const Read& read) {
    replies_ = 0;
    read(noteReply());
    EXPECT_EQ(replies_, 0) << "a reply never comes inside the call";
    world().settle();
    EXPECT_EQ(replies_, 1);
    return read_;
  }
  CodeTexts pictureReply(const std::string& path) {
    return replyOf([&](QRReader::Reply reply) { reader().readPicture(path, std::move(reply)); });
  }
  CodeTexts clipboardReply() {
    return replyOf([&](QRReader::Reply reply) { reader().readClipboard(std::move(reply)); });
  }
  CodeTexts screenReply() {
    return replyOf([&](QRReader::Reply reply) { reader().readScreen(std::move(reply)); });
  }

  std::vector<CodeTexts> batches_;

 private:
  static CodeTexts textsOf(const RecognisedObjects& objects) {
    CodeTexts texts;
    for (const auto& object : objects) {
      EXPECT_TRUE(object.isQRCode);
      texts.push_back(object.text.value_or("unreadable"));
    }
    return texts;
  }

  const std::unique_ptr<QRReaderHarness> harness_ = GetParam()();
  int replies_ = 0;
  CodeTexts read_;
};

TEST_P(QRReaderContract, a_camera_that_was_not_started_delivers_nothing) {
  show({"one"});
  start();
  reader().stopRunning();
  show({"two"});
  EXPECT_THAT(batches_, testing::IsEmpty());
}

TEST_P(QRReaderContract, nothing_comes_inside_a_call) {
  start();
  world().show({"one"});
  EXPECT_THAT(batches_, testing::IsEmpty());
}

TEST_P(QRReaderContract, a_camera_that_sees_no_code_delivers_nothing) {
  start();
  show({});
  EXPECT_THAT(batches_, testing::IsEmpty());
}

TEST_P(QRReaderContract, a_stop_overrides_a_pending_start) {
  reader().startRunning(hearInto(batches_));
  reader().stopRunning();
  world().settle();
  show({"one"});
  EXPECT_THAT(batches_, testing::IsEmpty());
}

TEST_P(QRReaderContract, a_stop_drops_a_pending_batch) {
  start();
  world().show({"one"});
  reader().stopRunning();
  world().settle();
  EXPECT_THAT(batches_, testing::IsEmpty());
}

TEST_P(QRReaderContract, a_stop_without_a_start_is_ignored) {
  reader().stopRunning();
  start();
  reader().stopRunning();
  reader().stopRunning();
  world().settle();
}

TEST_P(QRReaderContract, codes_seen_at_once_come_in_one_batch) {
  start();
  show({"one", "two"});
  ASSERT_FALSE(batches_.empty());
  EXPECT_THAT(batches_.front(), testing::UnorderedElementsAre("one", "two"));
}

TEST_P(QRReaderContract, the_camera_goes_on_after_a_batch) {
  start();
  show({"one"});
  show({"two"});
  EXPECT_EQ(batches_, (std::vector<CodeTexts>{{"one"}, {"two"}}));
}

TEST_P(QRReaderContract, a_start_ends_the_one_before) {
  start();
  std::vector<CodeTexts> heard;
  reader().startRunning(hearInto(heard));
  world().settle();
  show({"one"});
  EXPECT_THAT(batches_, testing::IsEmpty());
  EXPECT_EQ(heard, std::vector<CodeTexts>{{"one"}});
}

TEST_P(QRReaderContract, a_handler_may_stop_the_camera_and_start_it_again) {
  reader().startRunning([&](const RecognisedObjects&) {
    reader().stopRunning();
    reader().startRunning(hearInto(batches_));
  });
  world().settle();
  show({"one"});
  EXPECT_THAT(batches_, testing::IsEmpty());
  show({"two"});
  EXPECT_EQ(batches_, std::vector<CodeTexts>{{"two"}});
}

TEST_P(QRReaderContract, a_camera_that_may_not_be_used_delivers_nothing) {
  for (const auto state : {CameraState::refused, CameraState::absent}) {
    world().setCamera(state);
    start();
    show({"one"});
    EXPECT_THAT(batches_, testing::IsEmpty()) << rawValue(state);
  }
}

TEST_P(QRReaderContract, tells_of_each_change_of_the_camera) {
  std::vector<CameraState> heard;
  auto subscription = reader().observeCamera([&] { heard.push_back(reader().camera()); });
  world().settle();
  EXPECT_TRUE(reader().canCapture());
  EXPECT_THAT(heard, testing::IsEmpty());
  for (const auto state : {CameraState::absent, CameraState::refused, CameraState::available}) {
    world().setCamera(state);
    world().settle();
    EXPECT_EQ(reader().canCapture(), state == CameraState::available);
  }
  EXPECT_EQ(heard, (std::vector{CameraState::absent, CameraState::refused, CameraState::available}));
  subscription.cancel();
  world().setCamera(CameraState::absent);
  world().settle();
  EXPECT_EQ(heard.size(), 3u);
}

TEST_P(QRReaderContract, a_picture_gives_the_codes_in_it) {
  EXPECT_EQ(pictureReply(world().noPicture()), CodeTexts{"error"});
  EXPECT_EQ(pictureReply(world().picture({})), CodeTexts());
  EXPECT_EQ(pictureReply(world().picture({"one"})), CodeTexts{"one"});
  EXPECT_THAT(pictureReply(world().picture({"one", "two"})), testing::UnorderedElementsAre("one", "two"));
}

TEST_P(QRReaderContract, the_clipboard_gives_the_codes_on_it) {
  world().copy({});
  EXPECT_EQ(clipboardReply(), CodeTexts());
  world().copy({"one", "two"});
  EXPECT_THAT(clipboardReply(), testing::UnorderedElementsAre("one", "two"));
}

TEST_P(QRReaderContract, the_screen_gives_the_codes_on_it) {
  world().display({"one", "two"});
  EXPECT_THAT(screenReply(), testing::UnorderedElementsAre("one", "two"));
}

TEST_P(QRReaderContract, a_picture_is_read_while_the_camera_runs) {
  start();
  EXPECT_EQ(pictureReply(world().picture({"still"})), CodeTexts{"still"});
  EXPECT_THAT(batches_, testing::IsEmpty());
}

}  // namespace quillmar
