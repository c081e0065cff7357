#include <QObject>

#include "ui/adapters/qt_video_capture.h"

namespace quillmar::ui {

class QtVideoCaptureModule final : public QObject, public VideoCaptureModule {
  Q_OBJECT
  Q_PLUGIN_METADATA(IID "live.quillmar.VideoCaptureModule/1")
  Q_INTERFACES(quillmar::ui::VideoCaptureModule)

 public:
  std::unique_ptr<VideoCapture> make() override { return std::make_unique<QtVideoCapture>(); }
};

}  // namespace quillmar::ui

#include <camera_module.moc>
