#pragma once

#include <QString>
#include <QVariant>
#include <string_view>

#include "foundation/value.h"

namespace quillmar::ui {

// How a text is converted for QML: `shownText`, `editedText` or, unchanged, `exactText`.
using TextForm = QString (*)(std::string_view utf8);

// Nil becomes null, because QML reads an unknown name as undefined.
QVariant toVariant(const Value& value, TextForm form);
// Whole numbers become integers, as the models expect from a spin box or a list's index.
Value fromVariant(const QVariant& variant);

}  // namespace quillmar::ui
