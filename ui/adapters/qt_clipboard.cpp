#include "ui/adapters/qt_clipboard.h"

#include <QClipboard>
#include <QGuiApplication>

#include "ui/bridge/shown_text.h"

namespace quillmar::ui {

void QtClipboard::setString(std::string_view text) { QGuiApplication::clipboard()->setText(exactText(text)); }

std::string QtClipboard::string() const { return QGuiApplication::clipboard()->text().toStdString(); }

}  // namespace quillmar::ui
