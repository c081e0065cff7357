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

// What the theme starts from: the look in force, the desktop's wishes, and the brand's colours by name.
class Look final : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_SINGLETON
  Q_PROPERTY(bool dark READ dark NOTIFY changed)
  Q_PROPERTY(double textScale READ textScale NOTIFY changed)
  Q_PROPERTY(bool reducedMotion READ reducedMotion NOTIFY changed)
  Q_PROPERTY(QVariantMap colors READ colors CONSTANT)
  Q_PROPERTY(QColor tint READ tint NOTIFY changed)

 public:
  explicit Look(QtWindowStyle& style);
  static Look* create(QQmlEngine* engine, QJSEngine* script);

  bool dark() const;
  double textScale() const;
  bool reducedMotion() const;
  QVariantMap colors() const;
  // Of navigation bars' controls.
  QColor tint() const;
  // What text is written in that names no font.
  QFont bodyFont() const;
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
