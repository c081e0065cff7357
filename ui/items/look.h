#pragma once

#include <QtQml/qqmlregistration.h>

#include <QColor>
#include <QFont>
#include <QObject>
#include <QVariantMap>

class QJSEngine;
class QQmlEngine;

namespace quillmar::ui {

class QtWindowStyle;

// The values behind Theme.qml: the look in force, the desktop's settings, and every colour and measure by
// name.
class Look final : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_SINGLETON
  Q_PROPERTY(bool dark READ dark NOTIFY changed)
  Q_PROPERTY(double textScale READ textScale NOTIFY changed)
  Q_PROPERTY(bool reducedMotion READ reducedMotion NOTIFY changed)
  Q_PROPERTY(QVariantMap semanticColors READ semanticColors CONSTANT)
  Q_PROPERTY(QVariantMap schemeColors READ schemeColors NOTIFY changed)
  Q_PROPERTY(QVariantMap measures READ measures CONSTANT)
  Q_PROPERTY(QColor tint READ tint NOTIFY changed)

 public:
  explicit Look(QtWindowStyle& style);
  static Look* create(QQmlEngine* engine, QJSEngine* script);

  bool dark() const;
  double textScale() const;
  bool reducedMotion() const;
  static QVariantMap semanticColors();
  // The colours of the look in force.
  QVariantMap schemeColors() const;
  static QVariantMap measures();
  // The colour of controls in navigation bars.
  QColor tint() const;
  // The font of text that names none.
  QFont bodyFont() const;
  // The greatest width of a page's content in a window of this width.
  Q_INVOKABLE static double widthLimit(double windowWidth, double maxWidth);
  // The diameter of the halo around the dot of an online device.
  Q_INVOKABLE static double haloDiameter(double dotSize);
  // The fonts of text, of large headings and of codes.
  Q_INVOKABLE QFont textFont(int pixelSize, int weight) const;
  Q_INVOKABLE QFont displayFont(int pixelSize, int weight, double letterSpacing) const;
  Q_INVOKABLE QFont codeFont(int pixelSize, int weight, double letterSpacing) const;

 Q_SIGNALS:
  void changed();

 private:
  QtWindowStyle& style_;
};

}  // namespace quillmar::ui
