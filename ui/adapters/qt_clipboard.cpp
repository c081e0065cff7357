#include "ui/adapters/qt_clipboard.h"

#include <QClipboard>
#include <QGuiApplication>

namespace quillmar::ui {

void QtClipboard::setString(std::string_view text) {
  QGuiApplication::clipboard()->setText(QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())));
}

std::string QtClipboard::string() const { return QGuiApplication::clipboard()->text().toStdString(); }

}  // namespace quillmar::ui
