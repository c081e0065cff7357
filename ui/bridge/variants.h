#pragma once

#include <QVariant>

#include "foundation/value.h"

namespace quillmar::ui {

// Nil becomes null, so that QML can tell it from a name that does not exist.
QVariant toVariant(const Value& value);
// Numbers without a fraction become integers, as a spin box or a list's index means them.
Value fromVariant(const QVariant& variant);

}  // namespace quillmar::ui
