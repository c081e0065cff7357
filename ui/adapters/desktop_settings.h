#pragma once

#include <QObject>
#include <optional>

namespace quillmar::ui {

// What the desktop says about its look. Until something is known of dark or light, the palette that the
// platform theme gives decides, and is followed.
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
