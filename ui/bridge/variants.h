#pragma once

#include <QString>
#include <QVariant>
#include <string_view>

#include "foundation/value.h"

namespace quillmar::ui {

// How a text is written for QML: `shownText`, `editedText` or, to the letter, `exactText`.
using TextForm = QString (*)(std::string_view utf8);

// Nil becomes null, so that QML can tell it from a name that does not exist.
QVariant toVariant(const Value& value, TextForm form);
// Numbers without a fraction become integers, as a spin box or a list's index means them.
Value fromVariant(const QVariant& variant);

}  // namespace quillmar::ui
