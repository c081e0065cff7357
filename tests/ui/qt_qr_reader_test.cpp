#include "ui/adapters/qt_qr_reader.h"

#include <gtest/gtest.h>

#include <QBackingStore>
#include <QClipboard>
#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QLoggingCategory>
#include <QPainter>
#include <QQmlComponent>
#include <QQuickItem>
#include <QQuickWindow>
#include <QRasterWindow>
#include <QVideoFrame>
#include <QVideoSink>
#include <QtEndian>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "platform/common/qrencode_encoder.h"
#include "testing/grey_canvas.h"
#include "testing/temporary_directory.h"
#include "testing/virtual_dispatch.h"
#include "tests/contracts/qr_reader_contract.h"
#include "tests/platform/private_bus.h"
#include "tests/ui/support/wait_until.h"
#include "ui/adapters/desktop_settings.h"
#include "ui/adapters/qt_camera.h"
#include "ui/adapters/qt_video_capture.h"
#include "ui/adapters/qt_window_style.h"
#include "ui/engine.h"

void qml_register_types_Quillmar();

namespace quillmar::ui {

// Answers every screenshot request in the same way, at once.
class FakePortal final : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Screenshot")

 public:
  explicit FakePortal(const QDBusConnection& bus) : bus_(bus) {
    bus_.registerObject(QStringLiteral("/org/freedesktop/portal/desktop"), this,
                        QDBusConnection::ExportAllSlots);
    bus_.registerService(QStringLiteral("org.freedesktop.portal.Desktop"));
  }

  uint response = 0;
  QString uri;
  bool answers = true;
  bool wasInteractive = false;

 public Q_SLOTS:
  QDBusObjectPath Screenshot(const QString& /*parent*/, const QVariantMap& options,
                             const QDBusMessage& call) {
    wasInteractive = options.value("interactive").toBool();
    const QString path = "/org/freedesktop/portal/desktop/request/" +
                         call.service().mid(1).replace('.', '_') + "/" +
                         options.value("handle_token").toString();
    if (answers) {
      auto signal = QDBusMessage::createSignal(path, "org.freedesktop.portal.Request", "Response");
      signal << response << QVariantMap{{"uri", uri}};
      bus_.send(signal);
    }
    return QDBusObjectPath(path);
  }

 private:
  QDBusConnection bus_;
};

namespace {

const std::string enrollment =
    R"({"enrollment_code":"ABC123","device_id":"5F0C","device_name":"Zoë’s 📱","device_type":"linux"})";

QImage imageOf(const GreyCanvas& canvas) {
  return QImage(canvas.pixels.data(), canvas.width, canvas.height, canvas.width, QImage::Format_Grayscale8)
      .copy();
}

QImage imageOf(const CodeTexts& codes) {
  constexpr int place = 150;
  GreyCanvas sheet(place * static_cast<int>(codes.size() + 1), place);
  for (int index = 0; index < static_cast<int>(codes.size()); ++index) {
    paste(sheet, codeOf(codes[static_cast<std::size_t>(index)]), index * place, 10);
  }
  return imageOf(sheet);
}

// A camera that delivers the pictures of a test.
class SteeredCamera final : public Camera {
 public:
  CameraState state() const override { return state_; }
  Subscription observe(std::function<void()> changed) override {
    return changed_.connect(std::move(changed));
  }
  void start(PictureHandler handler) override {
    handler_ = state_ == CameraState::available ? std::move(handler) : nullptr;
  }
  void stop() override { handler_ = nullptr; }

  bool isRunning() const { return handler_ != nullptr; }
  void setState(CameraState state) {
    state_ = state;
    changed_.emit();
  }
  void show(const QImage& picture) {
    if (handler_) {
      handler_(picture);
    }
  }
  PictureHandler handler() const { return handler_; }

 private:
  CameraState state_ = CameraState::available;
  Signal<> changed_;
  PictureHandler handler_;
};

class PictureWindow final : public QRasterWindow {
 public:
  explicit PictureWindow(const QImage& picture) : picture_(picture) {
    setGeometry(QRect(QPoint(), picture.size()));
    show();
    EXPECT_TRUE(waitUntil([this] { return isPainted_; }));
  }

 private:
  void paintEvent(QPaintEvent* /*event*/) override {
    QPainter(this).drawImage(0, 0, picture_);
    isPainted_ = true;
  }

  const QImage picture_;
  bool isPainted_ = false;
};

class QtReaderHarness final : public QRReaderHarness {
 public:
  QRReader& reader() override { return reader_; }
  bool isMainThread() override { return dispatch_.isMainThread(); }
  void settle() override {
    constexpr int rounds = 5;
    for (int round = 0; round < rounds; ++round) {
      dispatch_.advance(Duration(300));
      QCoreApplication::processEvents();
    }
  }
  void setCamera(CameraState state) override { camera_.setState(state); }
  void show(const CodeTexts& codes) override { camera_.show(imageOf(codes)); }
  std::string picture(const CodeTexts& codes) override {
    const std::string path = directory_.path() / "picture.png";
    EXPECT_TRUE(imageOf(codes).save(QString::fromStdString(path)));
    return path;
  }
  std::string noPicture() override {
    const std::string path = directory_.path() / "text.png";
    std::ofstream(path) << "This is no picture.";
    return path;
  }
  void copy(const CodeTexts& codes) override { QGuiApplication::clipboard()->setImage(imageOf(codes)); }
  void display(const CodeTexts& codes) override { window_ = std::make_unique<PictureWindow>(imageOf(codes)); }

 private:
  TemporaryDirectory directory_;
  VirtualDispatch dispatch_;
  SteeredCamera camera_;
  QtQRReader reader_{dispatch_, camera_, QDBusConnection(QStringLiteral("no bus"))};
  std::unique_ptr<PictureWindow> window_;
};

// A QR reader on a desktop, and its result as one text for each code or as an error's sentence.
class Reading : public testing::Test {
 protected:
  QRReader::Reply note() {
    return [this](const Result<RecognisedObjects>& objects) {
      said_ = CodeTexts();
      if (!objects.ok()) {
        said_->push_back(objects.error().localizedDescription());
        return;
      }
      for (const auto& object : objects.value()) {
        said_->push_back(object.text.value_or("unreadable"));
      }
    };
  }
  CodeTexts read(const std::string& place) {
    said_.reset();
    reader().readPicture(place, note());
    dispatch.settle();
    return said_.value_or(CodeTexts{"no reply"});
  }
  std::string file(const std::string& name) const { return directory.path() / name; }
  std::string write(const std::string& name, const QByteArray& bytes) const {
    std::ofstream(file(name), std::ios::binary).write(bytes.data(), bytes.size());
    return file(name);
  }
  std::string save(const std::string& name, const QImage& image, int quality = -1) const {
    EXPECT_TRUE(image.save(QString::fromStdString(file(name)), nullptr, quality));
    return file(name);
  }
  QByteArray bytesOf(const std::string& path) const {
    QFile opened(QString::fromStdString(path));
    EXPECT_TRUE(opened.open(QIODevice::ReadOnly));
    return opened.readAll();
  }
  CodeTexts readScreen() {
    said_.reset();
    reader().readScreen(note());
    EXPECT_TRUE(waitUntil([&] {
      dispatch.advance(Duration(100));
      return said_.has_value();
    }));
    return said_.value_or(CodeTexts{"no reply"});
  }
  QtQRReader& reader() { return *reader_; }
  void useBus(const QDBusConnection& bus) { reader_ = std::make_unique<QtQRReader>(dispatch, camera, bus); }

  TemporaryDirectory directory;
  VirtualDispatch dispatch;
  SteeredCamera camera;

 private:
  std::unique_ptr<QtQRReader> reader_ =
      std::make_unique<QtQRReader>(dispatch, camera, QDBusConnection(QStringLiteral("no bus")));
  std::optional<CodeTexts> said_;
};

const CodeTexts notOpened{"This picture cannot be opened."};
const CodeTexts notAPicture{"This file is not a picture. Use a PNG, JPEG, WebP, GIF or BMP picture."};
const CodeTexts damaged{"This picture cannot be read. It may be damaged."};
const CodeTexts tooLarge{"This picture is too large. Use one of less than 100 megapixels."};

TEST_F(Reading, a_file_that_cannot_be_opened_is_an_error) {
  EXPECT_EQ(read(file("missing.png")), notOpened);
  EXPECT_EQ(read(directory.path()), notOpened);
  EXPECT_EQ(read(""), notOpened);
  EXPECT_EQ(read("/dev/zero"), notOpened);
  EXPECT_EQ(read("https://example.com/code.png"), notOpened);
}

TEST_F(Reading, a_file_that_is_no_picture_is_an_error_whatever_its_name) {
  EXPECT_EQ(read(write("text.png", "This is no picture.")), notAPicture);
  EXPECT_EQ(read(write("empty.png", "")), notAPicture);
  EXPECT_EQ(read(write("page.png", "<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'/>")),
            notAPicture);
  EXPECT_EQ(read(write("short.png", "B")), notAPicture);
}

TEST_F(Reading, a_damaged_picture_is_an_error) {
  // Qt's own image readers log it as well.
  QLoggingCategory::setFilterRules("qt.gui.imageio*=false");
  const QByteArray whole = bytesOf(save("whole.png", imageOf(codeOf(enrollment))));
  EXPECT_EQ(read(write("half.png", whole.first(whole.size() / 2))), damaged);
  EXPECT_EQ(read(write("head.png", whole.first(16))), damaged);
  EXPECT_EQ(read(write("head.jpg", "\xFF\xD8\xFF")), damaged);
  EXPECT_EQ(read(write("head.gif", "GIF89a")), damaged);
  QLoggingCategory::setFilterRules({});
}

// The checksum of a PNG chunk.
quint32 checksum(const QByteArray& bytes) {
  quint32 sum = 0xFFFFFFFF;
  for (const char byte : bytes) {
    sum ^= static_cast<quint8>(byte);
    for (int bit = 0; bit < 8; ++bit) {
      sum = (sum >> 1) ^ ((sum & 1) != 0 ? 0xEDB88320 : 0);
    }
  }
  return ~sum;
}

// A small PNG whose header claims this size.
QByteArray claiming(QByteArray png, quint32 width, quint32 height) {
  constexpr qsizetype header = 12;
  constexpr qsizetype headerLength = 17;
  qToBigEndian(width, png.data() + header + 4);
  qToBigEndian(height, png.data() + header + 8);
  qToBigEndian(checksum(png.sliced(header, headerLength)), png.data() + header + headerLength);
  return png;
}

TEST_F(Reading, a_picture_that_claims_100_megapixels_is_not_decoded) {
  const QByteArray small = bytesOf(save("small.png", imageOf(codeOf("small"))));
  EXPECT_EQ(read(write("100.png", claiming(small, 10000, 10000))), tooLarge);
  EXPECT_EQ(read(write("wide.png", claiming(small, 1'000'000, 100))), tooLarge);
  EXPECT_EQ(read(write("vast.png", claiming(small, 0x7FFFFFFF, 0x7FFFFFFF))).size(), 1u);
  // With its true size the picture is read.
  const auto side = static_cast<quint32>(codeOf("small").width);
  EXPECT_EQ(read(write("small.png", claiming(small, side, side))), CodeTexts{"small"});
}

TEST_F(Reading, the_smallest_picture_contains_no_code) {
  EXPECT_EQ(read(save("one.png", QImage(1, 1, QImage::Format_RGB32))), CodeTexts());
}

TEST_F(Reading, a_picture_is_found_by_its_path_and_by_its_url) {
  const std::string path = save("a code & more.png", imageOf(codeOf(enrollment)));
  EXPECT_EQ(read(path), CodeTexts{enrollment});
  EXPECT_EQ(
      read(QUrl::fromLocalFile(QString::fromStdString(path)).toString(QUrl::FullyEncoded).toStdString()),
      CodeTexts{enrollment});
}

TEST_F(Reading, the_content_of_a_picture_decides_its_format) {
  const std::string png = save("code.png", imageOf(codeOf(enrollment)));
  std::filesystem::rename(png, file("code.jpg"));
  EXPECT_EQ(read(file("code.jpg")), CodeTexts{enrollment});
}

TEST_F(Reading, reads_every_common_format) {
  for (const auto* const name : {"code.png", "code.jpg", "code.bmp"}) {
    EXPECT_EQ(read(save(name, imageOf(codeOf(enrollment)))), CodeTexts{enrollment}) << name;
  }
}

TEST_F(Reading, transparent_pixels_count_as_paper) {
  QImage image = imageOf(codeOf(enrollment)).convertToFormat(QImage::Format_ARGB32);
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) {
      if (image.pixelColor(x, y) == Qt::white) {
        image.setPixelColor(x, y, Qt::transparent);
      }
    }
  }
  EXPECT_EQ(read(save("clear.png", image)), CodeTexts{enrollment});
}

TEST_F(Reading, reads_a_poor_photograph) {
  GreyCanvas room = busyBackground(1280, 720);
  paste(room, rotated(scaled(codeOf(enrollment), 1.3), 15), 400, 60);
  const QImage photograph = imageOf(darkened(blurred(room, 1), 0.4));
  EXPECT_EQ(read(save("photograph.jpg", photograph, 60)), CodeTexts{enrollment});
}

TEST_F(Reading, an_empty_clipboard_is_an_error) {
  QGuiApplication::clipboard()->setText("no picture");
  CodeTexts said;
  reader().readClipboard([&](const Result<RecognisedObjects>& objects) {
    said.push_back(objects.ok() ? "objects" : objects.error().localizedDescription());
  });
  dispatch.settle();
  EXPECT_EQ(said, CodeTexts{"There is no picture on the clipboard."});
}

class Filming : public Reading {
 protected:
  void start() {
    reader().startRunning(
        [this](const RecognisedObjects& objects) { heard.push_back(*objects.front().text); });
  }
  void show(const std::string& code) { camera.show(imageOf(codeOf(code))); }

  CodeTexts heard;
};

TEST_F(Filming, the_newest_picture_wins) {
  start();
  show("one");
  show("two");
  show("three");
  dispatch.advance(Duration(1000));
  EXPECT_EQ(heard, CodeTexts{"three"});
}

TEST_F(Filming, searches_five_pictures_per_second_and_shows_all) {
  start();
  int shown = 0;
  QObject::connect(&reader().frames(), &CameraFrames::changed, [&] { ++shown; });
  constexpr int pictures = 49;
  for (int picture = 0; picture < pictures; ++picture) {
    show("code");
    dispatch.advance(Duration(20));
  }
  EXPECT_EQ(shown, pictures);
  EXPECT_EQ(heard.size(), 5u);
}

TEST_F(Filming, a_picture_from_a_pause_is_searched_after_it) {
  start();
  show("one");
  dispatch.settle();
  show("two");
  dispatch.advance(Duration(199));
  EXPECT_EQ(heard, CodeTexts{"one"});
  dispatch.advance(Duration(1));
  EXPECT_EQ(heard, (CodeTexts{"one", "two"}));
}

TEST_F(Filming, a_picture_of_a_stopped_camera_is_neither_shown_nor_searched) {
  start();
  const auto late = camera.handler();
  reader().stopRunning();
  EXPECT_FALSE(camera.isRunning());
  start();
  late(imageOf(codeOf("late")));
  dispatch.advance(Duration(1000));
  EXPECT_TRUE(heard.empty());
  EXPECT_TRUE(reader().frames().newest().isNull());
}

TEST_F(Filming, nothing_is_shown_after_the_camera_stopped) {
  start();
  show("one");
  dispatch.settle();
  EXPECT_EQ(reader().frames().newest(), imageOf(codeOf("one")));
  reader().stopRunning();
  EXPECT_TRUE(reader().frames().newest().isNull());
}

TEST_F(Filming, pictures_may_arrive_on_any_thread) {
  start();
  std::thread([this] { show("one"); }).join();
  EXPECT_TRUE(heard.empty());
  dispatch.settle();
  EXPECT_EQ(heard, CodeTexts{"one"});
}

QVideoFrame frameOf(const std::string& text) {
  const QImage picture = imageOf(codeOf(text)).convertToFormat(QImage::Format_RGB32);
  QVideoFrame frame(QVideoFrameFormat(picture.size(), QVideoFrameFormat::Format_BGRX8888));
  EXPECT_TRUE(frame.map(QVideoFrame::WriteOnly));
  for (int y = 0; y < picture.height(); ++y) {
    std::copy_n(picture.constScanLine(y), picture.width() * 4, frame.bits(0) + y * frame.bytesPerLine(0));
  }
  frame.unmap();
  return frame;
}

class Video : public testing::Test {
 protected:
  // Without a graphics card Qt prints a warning once; this triggers it before the tests.
  static void SetUpTestSuite() { EXPECT_FALSE(frameOf("first").toImage().isNull()); }
};

TEST_F(Video, frames_become_pictures_and_the_newest_wins) {
  QVideoSink sink;
  std::vector<QImage> pictures;
  const SinkPictures taking(sink, [&](const QImage& picture) {
    pictures.push_back(picture.convertToFormat(QImage::Format_Grayscale8));
  });
  sink.setVideoFrame(frameOf("one"));
  sink.setVideoFrame(frameOf("two"));
  EXPECT_TRUE(pictures.empty());
  ASSERT_TRUE(waitUntil([&] { return !pictures.empty(); }));
  sink.setVideoFrame(frameOf("three"));
  ASSERT_TRUE(waitUntil([&] { return pictures.size() == 2; }));
  EXPECT_EQ(pictures, (std::vector{imageOf(codeOf("two")), imageOf(codeOf("three"))}));
}

// A camera whose device files belong to the test.
class Devices : public testing::Test {
 protected:
  void plugIn(const std::string& name) { std::ofstream(directory_.path() / name) << "device"; }
  // A device that nobody can open, not even root.
  void plugInRefused(const std::string& name) {
    std::filesystem::create_symlink("/nowhere/at/all", directory_.path() / name);
  }
  void unplug(const std::string& name) { std::filesystem::remove(directory_.path() / name); }
  QtCamera::Options options(const QString& module = QStringLiteral("/nowhere/module.so")) const {
    return {.deviceDirectory = QString::fromStdString(directory_.path()), .module = module};
  }

 private:
  TemporaryDirectory directory_;
};

TEST_F(Devices, without_a_device_there_is_no_camera) {
  plugIn("video");
  plugIn("media0");
  QtCamera camera(options());
  EXPECT_EQ(camera.state(), CameraState::absent);
  camera.start([](const QImage&) { FAIL(); });
  camera.stop();
}

TEST_F(Devices, a_device_that_can_not_be_opened_is_refused) {
  plugInRefused("video0");
  const QtCamera camera(options());
  EXPECT_EQ(camera.state(), CameraState::refused);
  plugIn("video1");
  EXPECT_EQ(camera.state(), CameraState::available);
}

TEST_F(Devices, follows_devices_that_are_plugged_in_and_out) {
  QtCamera camera(options());
  std::vector<CameraState> heard;
  const auto subscription = camera.observe([&] { heard.push_back(camera.state()); });
  plugIn("video0");
  EXPECT_TRUE(waitUntil([&] { return heard.size() == 1; }));
  unplug("video0");
  EXPECT_TRUE(waitUntil([&] { return heard.size() == 2; }));
  EXPECT_EQ(heard, (std::vector{CameraState::available, CameraState::absent}));
}

// A camera whose changes are counted, and which must deliver no picture.
struct FailingCamera {
  explicit FailingCamera(const QtCamera::Options& options) : camera(options) {}

  void start() {
    camera.start([](const QImage&) { FAIL(); });
  }
  bool waitForChanges(int count) {
    return waitUntil([&] { return changes == count; });
  }

  QtCamera camera;
  int changes = 0;
  const Subscription subscription = camera.observe([this] { ++changes; });
};

TEST_F(Devices, without_the_module_there_is_no_camera) {
  plugIn("video0");
  FailingCamera failing(options());
  failing.start();
  ASSERT_TRUE(failing.waitForChanges(1));
  EXPECT_EQ(failing.camera.state(), CameraState::absent);
}

TEST_F(Devices, the_module_reports_a_missing_camera) {
  if (!QDir("/dev").entryList({"video*"}, QDir::System).isEmpty()) {
    GTEST_SKIP() << "this machine has a camera";
  }
  ASSERT_TRUE(QFile::exists(QUILLMAR_CAMERA_MODULE));
  plugIn("video0");
  FailingCamera failing(options(QUILLMAR_CAMERA_MODULE));
  failing.start();
  ASSERT_TRUE(failing.waitForChanges(1));
  EXPECT_EQ(failing.camera.state(), CameraState::absent);
}

TEST_F(Devices, a_failed_camera_may_be_tried_again_by_the_next_observer) {
  plugIn("video0");
  FailingCamera failing(options());
  failing.start();
  ASSERT_TRUE(failing.waitForChanges(1));
  const auto another = failing.camera.observe([] {});
  ASSERT_TRUE(failing.waitForChanges(2));
  EXPECT_EQ(failing.camera.state(), CameraState::available);
}

TEST_F(Devices, a_stop_overrides_a_start_that_would_fail) {
  plugIn("video0");
  FailingCamera failing(options());
  failing.start();
  failing.camera.stop();
  // Once this second start has failed, the first failure would have arrived too.
  failing.start();
  ASSERT_TRUE(waitUntil([&] { return failing.changes > 0; }));
  EXPECT_EQ(failing.changes, 1);
}

class WithPortal : public Reading {
 protected:
  void SetUp() override {
    ASSERT_TRUE(bus_.running());
    useBus(connect("program"));
    portal = std::make_unique<FakePortal>(connect("portal"));
    portal->uri = QUrl::fromLocalFile(QString::fromStdString(save("screen.png", imageOf(codeOf(enrollment)))))
                      .toString(QUrl::FullyEncoded);
  }
  void TearDown() override {
    QDBusConnection::disconnectFromBus("portal");
    QDBusConnection::disconnectFromBus("program");
  }
  QDBusConnection connect(const QString& name) {
    return QDBusConnection::connectToBus(QString::fromStdString(bus_.address()), name);
  }

  std::unique_ptr<FakePortal> portal;

 private:
  TemporaryDirectory busDirectory_;
  PrivateBus bus_{busDirectory_.path()};
};

TEST_F(WithPortal, a_screenshot_by_the_person_is_read_and_deleted) {
  EXPECT_EQ(readScreen(), CodeTexts{enrollment});
  EXPECT_TRUE(portal->wasInteractive);
  EXPECT_FALSE(std::filesystem::exists(file("screen.png")));
}

TEST_F(WithPortal, the_person_may_refuse) {
  const CodeTexts refused{"No picture of the screen was taken."};
  portal->response = 1;
  EXPECT_EQ(readScreen(), refused);
  portal->response = 2;
  EXPECT_EQ(readScreen(), refused);
  portal->response = 0;
  portal->uri.clear();
  EXPECT_EQ(readScreen(), refused);
  EXPECT_TRUE(std::filesystem::exists(file("screen.png")));
}

TEST_F(WithPortal, an_answer_without_a_file_is_an_error) {
  portal->uri = "https://example.com/screen.png";
  EXPECT_EQ(readScreen(), notOpened);
}

TEST_F(WithPortal, a_portal_that_disappears_counts_as_a_refusal) {
  portal->answers = false;
  bool replied = false;
  reader().readScreen([&](const Result<RecognisedObjects>& objects) { replied = !objects.ok(); });
  ASSERT_TRUE(waitUntil([&] {
    dispatch.advance(Duration(100));
    return portal->wasInteractive;
  }));
  EXPECT_FALSE(replied);
  QDBusConnection::disconnectFromBus("portal");
  portal.reset();
  EXPECT_TRUE(waitUntil([&] {
    dispatch.settle();
    return replied;
  }));
}

TEST_F(WithPortal, without_a_portal_the_window_system_is_used) {
  QDBusConnection("portal").unregisterService("org.freedesktop.portal.Desktop");
  const PictureWindow window(imageOf(codeOf("on the screen")));
  EXPECT_EQ(readScreen(), CodeTexts{"on the screen"});
}

TEST(CameraPreview, fills_its_area_with_the_mirrored_picture_of_the_camera) {
  qml_register_types_Quillmar();
  const QrencodeEncoder encoder;
  DesktopSettings desktop;
  QtWindowStyle style(desktop);
  Engine engine(encoder, style);
  engine.addImportPath(QStringLiteral("qrc:/"));
  CameraFrames frames;
  engine.setCameraFrames(&frames);
  QQmlComponent component(&engine, QUrl(QStringLiteral("qrc:/Quillmar/CameraPreview.qml")));
  const std::unique_ptr<QObject> made(component.create());
  auto* const preview = qobject_cast<QQuickItem*>(made.get());
  ASSERT_TRUE(preview) << component.errorString().toStdString();
  QQuickWindow window;
  window.setColor(Qt::green);
  window.resize(200, 200);
  preview->setParentItem(window.contentItem());
  preview->setSize(QSizeF(200, 200));
  window.show();
  const auto colours = [&] {
    const QImage picture = window.grabWindow();
    return std::vector{picture.pixelColor(50, 100), picture.pixelColor(150, 100), picture.pixelColor(0, 0)};
  };
  EXPECT_EQ(colours(), (std::vector<QColor>{Qt::green, Qt::green, Qt::green}));

  // The picture is twice as wide as the square item, so its outer quarters are cropped.
  QImage seen(400, 200, QImage::Format_RGB32);
  const std::vector<QColor> quarters{Qt::black, Qt::red, Qt::blue, Qt::white};
  for (int x = 0; x < seen.width(); ++x) {
    for (int y = 0; y < seen.height(); ++y) {
      seen.setPixelColor(x, y, quarters[static_cast<std::size_t>(x / 100)]);
    }
  }
  frames.show(seen);
  EXPECT_EQ(colours(), (std::vector<QColor>{Qt::blue, Qt::red, Qt::green}));
  frames.show({});
  EXPECT_EQ(colours(), (std::vector<QColor>{Qt::green, Qt::green, Qt::green}));
}

}  // namespace
}  // namespace quillmar::ui

namespace quillmar {
namespace {

INSTANTIATE_TEST_SUITE_P(Qt, QRReaderContract,
                         testing::Values(factory<QRReaderHarness, ui::QtReaderHarness>("Qt")));

}  // namespace
}  // namespace quillmar

#include "qt_qr_reader_test.moc"
