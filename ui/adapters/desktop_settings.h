#pragma once

#include <QObject>
#include <optional>

namespace quillmar::ui {

// The desktop's look settings. While the desktop names neither dark nor light, the platform theme's palette
// decides, and its changes are followed.
class DesktopSettings final : public QObject {
  Q_OBJECT

 public:
  struct Wishes {
    std::optional<bool> dark{};
    // 1 unless the person has asked for larger or smaller text.
    double textScale = 1;
    bool reducedMotion = false;
  };

  DesktopSettings();

  bool isDark() const;
  double textScale() const { return wishes_.textScale; }
  bool reducedMotion() const { return wishes_.reducedMotion; }

  const Wishes& wishes() const { return wishes_; }
  void setWishes(const Wishes& wishes);

 Q_SIGNALS:
  void changed();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  Wishes wishes_;
};

}  // namespace quillmar::ui
