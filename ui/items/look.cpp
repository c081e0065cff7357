#include "ui/items/look.h"

#include <QFontDatabase>
#include <QQmlEngine>

#include "presentation/colors.h"
#include "ui/adapters/desktop_settings.h"
#include "ui/adapters/qt_window_style.h"
#include "ui/engine.h"

namespace quillmar::ui {
namespace {

QColor toQColor(const Color& color) {
  return QColor::fromRgbF(static_cast<float>(color.red), static_cast<float>(color.green),
                          static_cast<float>(color.blue), static_cast<float>(color.alpha));
}

QString firstInstalled(const QStringList& families, QFontDatabase::SystemFont otherwise) {
  for (const auto& family : families) {
    if (QFontDatabase::hasFamily(family)) {
      return family;
    }
  }
  return QFontDatabase::systemFont(otherwise).family();
}

}  // namespace

Look::Look(QtWindowStyle& style) : style_(style) {
  connect(&style, &QtWindowStyle::changed, this, &Look::changed);
}

Look* Look::create(QQmlEngine* engine, QJSEngine* /*script*/) {
  return new Look(qobject_cast<Engine*>(engine)->windowStyle());
}

bool Look::dark() const { return style_.isDark(); }

double Look::textScale() const { return style_.desktop().textScale(); }

bool Look::reducedMotion() const { return style_.desktop().reducedMotion(); }

QVariantMap Look::colors() const {
  QVariantMap byName;
  for (const auto& [name, text] : rawNames<SemanticColor>) {
    const Color& color = quillmar::color(name);
    byName.insert(QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())), toQColor(color));
  }
  return byName;
}

QColor Look::tint() const {
  const auto& tint = style_.barAppearance().tint;
  return toQColor({tint.red, tint.green, tint.blue, tint.alpha});
}

QString Look::face() const { return firstInstalled({QStringLiteral("Inter")}, QFontDatabase::GeneralFont); }

QString Look::displayFace() const {
  return firstInstalled({QStringLiteral("Inter Display"), QStringLiteral("Inter")},
                        QFontDatabase::GeneralFont);
}

QString Look::fixedFace() const { return firstInstalled({}, QFontDatabase::FixedFont); }

}  // namespace quillmar::ui
