#include "ui/notice_switch.h"

#include <QSettings>
#include <QString>

namespace quillmar::ui {
namespace {

const auto wantedKey = QStringLiteral("notices/wanted");

}  // namespace

bool wantsNotices(const QString& file) {
  return QSettings(file, QSettings::IniFormat).value(wantedKey, true).toBool();
}

void keepWishForNotices(const QString& file, bool wanted) {
  QSettings(file, QSettings::IniFormat).setValue(wantedKey, wanted);
}

}  // namespace quillmar::ui
