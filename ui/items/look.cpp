#include "ui/items/look.h"

#include <QQmlEngine>
#include <algorithm>
#include <cmath>
#include <limits>

#include "presentation/adaptive_content.h"
#include "presentation/colors.h"
#include "presentation/indicators.h"
#include "presentation/measures.h"
#include "ui/adapters/desktop_settings.h"
#include "ui/adapters/qt_window_style.h"
#include "ui/bridge/shown_text.h"
#include "ui/engine.h"

namespace quillmar::ui {
namespace {

QColor toQColor(const Color& color) {
  return QColor::fromRgbF(static_cast<float>(color.red), static_cast<float>(color.green),
                          static_cast<float>(color.blue), static_cast<float>(color.alpha));
}

template <RawEnum E, class ColorOf>
QVariantMap byName(ColorOf colorOf) {
  QVariantMap colors;
  for (const auto& [name, text] : rawNames<E>) {
    colors.insert(exactText(text), toQColor(colorOf(name)));
  }
  return colors;
}

// If none of the families is installed, the font system chooses one by the hint.
QFont fontOf(const QStringList& families, QFont::StyleHint hint, int pixelSize, int weight) {
  QFont font;
  font.setFamilies(families);
  font.setStyleHint(hint);
  font.setPixelSize(std::max(pixelSize, 1));
  font.setWeight(static_cast<QFont::Weight>(weight));
  return font;
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

QVariantMap Look::semanticColors() {
  return byName<SemanticColor>([](SemanticColor name) { return color(name); });
}

QVariantMap Look::schemeColors() const {
  static const QVariantMap byNight = byName<SchemeColor>([](SchemeColor name) { return colors(name).dark; });
  static const QVariantMap byDay = byName<SchemeColor>([](SchemeColor name) { return colors(name).light; });
  return dark() ? byNight : byDay;
}

QVariantMap Look::measures() {
  QVariantMap measures;
  forEachField<Measures>(
      [&](const auto& field) { measures.insert(exactText(field.key), quillmar::measures.*field.member); });
  return measures;
}

double Look::widthLimit(double windowWidth, double maxWidth) {
  const AdaptiveContentModifier content{.horizontalSizeClass = horizontalSizeClass(windowWidth),
                                        .maxWidth = maxWidth};
  return content.widthLimit().value_or(std::numeric_limits<double>::infinity());
}

double Look::haloDiameter(double dotSize) {
  return OnlineStatusIndicator{.isOnline = true, .size = dotSize}.haloDiameter().value_or(0);
}

QColor Look::tint() const {
  const auto& tint = style_.barAppearance().tint;
  return toQColor({tint.red, tint.green, tint.blue, tint.alpha});
}

QFont Look::textFont(int pixelSize, int weight) const {
  return fontOf({QStringLiteral("Inter")}, QFont::SansSerif, pixelSize, weight);
}

QFont Look::bodyFont() const {
  return textFont(static_cast<int>(std::lround(quillmar::measures.bodySize * textScale())), QFont::Normal);
}

QFont Look::displayFont(int pixelSize, int weight, double letterSpacing) const {
  QFont font =
      fontOf({QStringLiteral("Inter Display"), QStringLiteral("Inter")}, QFont::SansSerif, pixelSize, weight);
  font.setLetterSpacing(QFont::AbsoluteSpacing, letterSpacing);
  return font;
}

QFont Look::codeFont(int pixelSize, int weight, double letterSpacing) const {
  QFont font = fontOf({QStringLiteral("monospace")}, QFont::Monospace, pixelSize, weight);
  font.setLetterSpacing(QFont::AbsoluteSpacing, letterSpacing);
  return font;
}

}  // namespace quillmar::ui
