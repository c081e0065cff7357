#include "ui/adapters/qt_camera.h"

#include <unistd.h>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QPluginLoader>
#include <algorithm>
#include <utility>

namespace quillmar::ui {
namespace {

bool mayUse(const QString& device) {
  return ::access(QFile::encodeName(device).constData(), R_OK | W_OK) == 0;
}

CameraState stateOf(const QDir& directory) {
  const auto names = directory.entryList({"video[0-9]*"}, QDir::Files | QDir::System);
  if (names.isEmpty()) {
    return CameraState::absent;
  }
  const bool isUsable =
      std::ranges::any_of(names, [&](const QString& name) { return mayUse(directory.filePath(name)); });
  return isUsable ? CameraState::available : CameraState::refused;
}

CameraState stateAfter(VideoCapture::Failure failure) {
  return failure == VideoCapture::Failure::noCamera ? CameraState::absent : CameraState::refused;
}

}  // namespace

// Looks in the install folder, then in the build tree.
QString cameraModule() {
  const QDir here(QCoreApplication::applicationDirPath());
  const QStringList places{QUILLMAR_CAMERA_FOLDER "/quillmar-camera.so", "../../ui/quillmar-camera.so"};
  const auto found = std::ranges::find_if(places, [&](const QString& place) { return here.exists(place); });
  return found == places.end() ? QString() : QDir::cleanPath(here.filePath(*found));
}

class QtCamera::Worker final : public QObject {
 public:
  explicit Worker(const QString& module) : loader_(module) {}

  void start(VideoCapture::Listener listener) {
    if (!capture_) {
      auto* const module = qobject_cast<VideoCaptureModule*>(loader_.instance());
      capture_ = module ? module->make() : nullptr;
    }
    if (capture_) {
      capture_->start(std::move(listener));
    } else {
      listener.failed(VideoCapture::Failure::noCamera);
    }
  }
  void stop() {
    if (capture_) {
      capture_->stop();
    }
  }

 private:
  QPluginLoader loader_;
  std::unique_ptr<VideoCapture> capture_;
};

QtCamera::QtCamera(Options options) : options_(std::move(options)) {}

QtCamera::~QtCamera() {
  stop();
  thread_.quit();
  thread_.wait();
}

CameraState QtCamera::state() const { return failure_.value_or(stateOf(QDir(options_.deviceDirectory))); }

Subscription QtCamera::observe(std::function<void()> changed) {
  auto subscription = changed_.connect(std::move(changed));
  watch();
  QMetaObject::invokeMethod(
      this, [this] { reconsider(); }, Qt::QueuedConnection);
  return subscription;
}

void QtCamera::watch() {
  if (!watcher_) {
    announced_ = state();
    watcher_ = std::make_unique<QFileSystemWatcher>(QStringList{options_.deviceDirectory});
    connect(watcher_.get(), &QFileSystemWatcher::directoryChanged, this, [this] { reconsider(); });
  }
}

void QtCamera::reconsider() {
  failure_.reset();
  announce();
}

void QtCamera::fail(VideoCapture::Failure failure) {
  failure_ = stateAfter(failure);
  announce();
}

void QtCamera::announce() {
  const CameraState present = state();
  if (std::exchange(announced_, present) != present) {
    changed_.emit();
  }
}

VideoCapture::Listener QtCamera::listenerFor(const Wanted& wanted, PictureHandler handler) {
  return {.pictured =
              [wanted, handler = std::move(handler)](const QImage& picture) {
                if (*wanted) {
                  handler(picture);
                }
              },
          .failed =
              [this, wanted](VideoCapture::Failure failure) {
                QMetaObject::invokeMethod(
                    this,
                    [this, wanted, failure] {
                      if (*wanted) {
                        fail(failure);
                      }
                    },
                    Qt::QueuedConnection);
              }};
}

void QtCamera::start(PictureHandler handler) {
  stop();
  if (state() != CameraState::available) {
    return;
  }
  if (!worker_) {
    worker_ = new Worker(options_.module.isEmpty() ? cameraModule() : options_.module);
    worker_->moveToThread(&thread_);
    connect(&thread_, &QThread::finished, worker_, &QObject::deleteLater);
    thread_.start();
  }
  wanted_ = std::make_shared<std::atomic<bool>>(true);
  QMetaObject::invokeMethod(
      worker_,
      [worker = worker_, wanted = wanted_, listener = listenerFor(wanted_, std::move(handler))] {
        if (*wanted) {
          worker->start(listener);
        }
      },
      Qt::QueuedConnection);
}

void QtCamera::stop() {
  if (const auto wanted = std::exchange(wanted_, nullptr)) {
    *wanted = false;
    QMetaObject::invokeMethod(
        worker_, [worker = worker_] { worker->stop(); }, Qt::QueuedConnection);
  }
}

}  // namespace quillmar::ui
