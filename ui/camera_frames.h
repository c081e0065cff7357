#pragma once

#include <QImage>
#include <QObject>

namespace quillmar::ui {

// The newest picture of the camera, for the items that draw it; none while the camera is off. Main thread
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
