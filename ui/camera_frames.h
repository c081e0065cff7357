#pragma once

#include <QImage>
#include <QObject>

namespace quillmar::ui {

// What the camera sees, for whoever draws it: the newest picture, none while it does not run. Main thread
// only.
class CameraFrames final : public QObject {
  Q_OBJECT

 public:
  const QImage& newest() const { return newest_; }
  void show(const QImage& picture) {
    newest_ = picture;
    Q_EMIT changed();
  }

 Q_SIGNALS:
  void changed();

 private:
  QImage newest_;
};

}  // namespace quillmar::ui
