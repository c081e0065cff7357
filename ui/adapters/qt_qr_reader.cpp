#include "ui/adapters/qt_qr_reader.h"

#include <QClipboard>
#include <QFile>
#include <QGuiApplication>
#include <QPainter>
#include <QPixmap>
#include <QPointer>
#include <QScreen>
#include <QUrl>
#include <QWindow>
#include <algorithm>
#include <mutex>
#include <utility>
#include <vector>

#include "platform/common/zxing_decoder.h"
#include "ui/adapters/picture_file.h"
#include "ui/adapters/screenshot_portal.h"
#include "ui/bridge/shown_text.h"

namespace quillmar::ui {
namespace {

// At most five camera pictures are searched per second.
constexpr Duration searchPause{200};
// The desktop needs a moment to redraw what was under our windows.
constexpr Duration redrawTime{250};

// Transparent pixels count as white, as on paper.
QImage onPaper(const QImage& picture) {
  if (!picture.hasAlphaChannel()) {
    return picture;
  }
  QImage paper(picture.size(), QImage::Format_RGB32);
  paper.fill(Qt::white);
  QPainter(&paper).drawImage(QRect(QPoint(), picture.size()), picture);
  return paper;
}

Result<RecognisedObjects> recognise(const QImage& picture) {
  if (qint64{picture.width()} * picture.height() >= tooManyPixels) {
    return Error(tooLargePicture());
  }
  const QImage grey = onPaper(picture).convertToFormat(QImage::Format_Grayscale8);
  return recogniseCodes({.width = grey.width(),
                         .height = grey.height(),
                         .bytesPerLine = static_cast<int>(grey.bytesPerLine()),
                         .bytes = {grey.constBits(), static_cast<std::size_t>(grey.sizeInBytes())}});
}

Result<RecognisedObjects> recogniseFile(const QString& place) {
  const auto picture = readPictureFile(place);
  return picture.ok() ? recognise(picture.value()) : Result<RecognisedObjects>(picture.error());
}

// Deletes the portal's file: it was made for this reading only and may show anything.
Result<RecognisedObjects> recogniseAndRemove(const QString& fileUrl) {
  auto objects = recogniseFile(fileUrl);
  if (const QString path = QUrl(fileUrl).toLocalFile(); !path.isEmpty()) {
    QFile::remove(path);
  }
  return objects;
}

// All codes found in any of the pictures.
Result<RecognisedObjects> recogniseAll(const std::vector<QImage>& pictures) {
  RecognisedObjects all;
  bool isAnyRead = false;
  for (const auto& picture : pictures) {
    if (const auto objects = recognise(picture); objects.ok()) {
      isAnyRead = true;
      std::ranges::copy(objects.value(), std::back_inserter(all));
    }
  }
  return isAnyRead ? Result(std::move(all)) : Error(QRReaderError{"The screen cannot be read."});
}

std::vector<QImage> picturesOfScreens() {
  std::vector<QImage> pictures;
  for (auto* const screen : QGuiApplication::screens()) {
    if (QImage picture = screen->grabWindow().toImage(); !picture.isNull()) {
      pictures.push_back(std::move(picture));
    }
  }
  return pictures;
}

// Keeps this program's windows below all others while it lives. Only X11 allows that; elsewhere the person
// chooses in the portal what is captured.
class WindowsAside {
 public:
  WindowsAside() {
    if (QGuiApplication::platformName() != QLatin1StringView("xcb")) {
      return;
    }
    for (auto* const window : QGuiApplication::topLevelWindows()) {
      if (window->isVisible()) {
        window->lower();
        windows_.emplace_back(window);
      }
    }
  }
  WindowsAside(const WindowsAside&) = delete;
  WindowsAside& operator=(const WindowsAside&) = delete;
  ~WindowsAside() {
    for (const auto& window : windows_) {
      if (window) {
        window->raise();
      }
    }
  }

 private:
  std::vector<QPointer<QWindow>> windows_;
};

// Searches in the background and replies on the main queue.
void searchAndReply(Dispatch& dispatch, std::function<Result<RecognisedObjects>()> search,
                    QRReader::Reply reply) {
  dispatch.global(QualityOfService::userInitiated)
      .async([&dispatch, search = std::move(search), reply = std::move(reply)] {
        dispatch.main().async([reply, objects = search()] { reply(objects); });
      });
}

void readScreens(Dispatch& dispatch, QRReader::Reply reply) {
  searchAndReply(
      dispatch, [pictures = picturesOfScreens()] { return recogniseAll(pictures); }, std::move(reply));
}

void readScreenshot(Dispatch& dispatch, ScreenshotOutcome outcome, const QString& fileUrl,
                    QRReader::Reply reply) {
  switch (outcome) {
    case ScreenshotOutcome::taken:
      searchAndReply(
          dispatch, [fileUrl] { return recogniseAndRemove(fileUrl); }, std::move(reply));
      return;
    case ScreenshotOutcome::refused:
      reply(Error(QRReaderError{"No picture of the screen was taken."}));
      return;
    case ScreenshotOutcome::noPortal:
      readScreens(dispatch, std::move(reply));
  }
}

}  // namespace

// Lives from one start to its stop. Pictures arrive on any thread; all else runs on the main thread, and
// nothing runs after the session is destroyed.
class QtQRReader::Session final : public std::enable_shared_from_this<Session> {
 public:
  Session(Dispatch& dispatch, CameraFrames& frames, BatchHandler handler)
      : dispatch_(dispatch), frames_(frames), handler_(std::move(handler)) {}

  void take(const QImage& picture) {
    const std::scoped_lock lock(mutex_);
    const bool isAwaited = !newest_.isNull();
    newest_ = picture;
    if (!isAwaited) {
      dispatch_.main().async(unlessGone(&Session::show));
    }
  }

 private:
  Task unlessGone(void (Session::*step)()) {
    return [weak = weak_from_this(), step] {
      if (const auto self = weak.lock()) {
        ((*self).*step)();
      }
    };
  }

  void show() {
    {
      const std::scoped_lock lock(mutex_);
      unsearched_ = std::exchange(newest_, QImage());
    }
    frames_.show(unsearched_);
    searchNewest();
  }

  void searchNewest() {
    if (isSearching_ || unsearched_.isNull()) {
      return;
    }
    isSearching_ = true;
    searchAndReply(
        dispatch_, [picture = std::exchange(unsearched_, QImage())] { return recognise(picture); },
        [weak = weak_from_this()](const Result<RecognisedObjects>& objects) {
          if (const auto self = weak.lock()) {
            self->searched(objects);
          }
        });
  }

  void searched(const Result<RecognisedObjects>& objects) {
    dispatch_.main().asyncAfter(searchPause, unlessGone(&Session::goOn));
    if (objects.ok() && !objects.value().empty()) {
      handler_(objects.value());
    }
  }

  void goOn() {
    isSearching_ = false;
    searchNewest();
  }

  Dispatch& dispatch_;
  CameraFrames& frames_;
  const BatchHandler handler_;
  std::mutex mutex_;
  QImage newest_;
  QImage unsearched_;
  bool isSearching_ = false;
};

QtQRReader::~QtQRReader() { camera_.stop(); }

void QtQRReader::startRunning(BatchHandler handler) {
  session_ = std::make_shared<Session>(dispatch_, frames_, std::move(handler));
  camera_.start([weak = std::weak_ptr(session_)](const QImage& picture) {
    if (const auto session = weak.lock()) {
      session->take(picture);
    }
  });
}

void QtQRReader::stopRunning() {
  session_.reset();
  camera_.stop();
  frames_.show({});
}

void QtQRReader::readPicture(const std::string& path, Reply reply) {
  searchAndReply(
      dispatch_, [place = exactText(path)] { return recogniseFile(place); }, std::move(reply));
}

void QtQRReader::readClipboard(Reply reply) {
  const QImage picture = QGuiApplication::clipboard()->image();
  if (picture.isNull()) {
    dispatch_.main().async(
        [reply = std::move(reply)] { reply(Error(QRReaderError{"There is no picture on the clipboard."})); });
    return;
  }
  searchAndReply(
      dispatch_, [picture] { return recognise(picture); }, std::move(reply));
}

void QtQRReader::readScreen(Reply reply) {
  // The windows come back before the reply changes their content.
  auto replyAtEnd = [aside = std::make_shared<std::optional<WindowsAside>>(std::in_place),
                     reply = std::move(reply)](const Result<RecognisedObjects>& objects) {
    aside->reset();
    reply(objects);
  };
  dispatch_.main().asyncAfter(
      redrawTime, [&dispatch = dispatch_, owner = QPointer(&questions_), bus = bus_, replyAtEnd] {
        if (owner) {
          askForScreenshot(bus.value_or(QDBusConnection::sessionBus()), *owner,
                           [&dispatch, replyAtEnd](ScreenshotOutcome outcome, const QString& fileUrl) {
                             readScreenshot(dispatch, outcome, fileUrl, replyAtEnd);
                           });
        }
      });
}

}  // namespace quillmar::ui
