#include "ui/bridge/variants.h"

#include <cmath>

#include "ui/bridge/shown_text.h"

namespace quillmar::ui {
namespace {

struct ToVariant {
  TextForm form;

  QVariant operator()(std::monostate /*nil*/) const { return QVariant::fromValue(nullptr); }
  QVariant operator()(bool value) const { return value; }
  QVariant operator()(std::int64_t value) const { return QVariant::fromValue<qlonglong>(value); }
  QVariant operator()(double value) const { return value; }
  QVariant operator()(const std::string& value) const { return form(value); }
  QVariant operator()(const Value::List& list) const {
    QVariantList converted;
    for (const auto& element : list) {
      converted.append(toVariant(element, form));
    }
    return converted;
  }
  QVariant operator()(const Value::Map& map) const {
    QVariantMap converted;
    for (const auto& [key, value] : map) {
      converted.insert(exactText(key), toVariant(value, form));
    }
    return converted;
  }
};

Value fromNumber(double number) {
  constexpr double exactIntegers = 9007199254740992.0;
  if (std::trunc(number) == number && std::abs(number) <= exactIntegers) {
    return static_cast<std::int64_t>(number);
  }
  return number;
}

Value fromList(const QVariantList& list) {
  Value::List converted;
  for (const auto& element : list) {
    converted.push_back(fromVariant(element));
  }
  return converted;
}

}  // namespace

QVariant toVariant(const Value& value, TextForm form) { return value.visit(ToVariant{form}); }

Value fromVariant(const QVariant& variant) {
  switch (variant.typeId()) {
    case QMetaType::Bool:
      return variant.toBool();
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
      return variant.toLongLong();
    case QMetaType::Double:
    case QMetaType::Float:
      return fromNumber(variant.toDouble());
    case QMetaType::QString:
      return variant.toString().toStdString();
    case QMetaType::QVariantList:
    case QMetaType::QStringList:
      return fromList(variant.toList());
    default:
      return {};
  }
}

}  // namespace quillmar::ui
