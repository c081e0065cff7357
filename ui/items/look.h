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

// What the theme starts from: the look in force, the desktop's wishes, and every colour and measure by name.
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
  // Of the look in force.
  QVariantMap schemeColors() const;
  static QVariantMap measures();
  // Of navigation bars' controls.
  QColor tint() const;
  // What text is written in that names no font.
  QFont bodyFont() const;
  // At most how wide a page's content is in a window of this width.
  Q_INVOKABLE static double widthLimit(double windowWidth, double maxWidth);
  // Of what surrounds the dot of a device that is online.
  Q_INVOKABLE static double haloDiameter(double dotSize);
  // For text, for large headings, and for codes.
  Q_INVOKABLE QFont textFont(int pixelSize, int weight) const;
  Q_INVOKABLE QFont displayFont(int pixelSize, int weight, double letterSpacing) const;
  Q_INVOKABLE QFont codeFont(int pixelSize, int weight, double letterSpacing) const;

 Q_SIGNALS:
  void changed();

 private:
  QtWindowStyle& style_;
};

}  // namespace quillmar::ui
