#pragma once

#include <QDBusAbstractAdaptor>
#include <QObject>
#include <QStringList>
#include <QVariantMap>
#include <functional>
#include <string>

namespace quillmar {

using ShowWindow = std::function<void(const std::string& activationToken)>;

// The methods of org.freedesktop.Application.
class ApplicationAdaptor final : public QDBusAbstractAdaptor {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

 public:
  ApplicationAdaptor(QObject* parent, ShowWindow show)
      : QDBusAbstractAdaptor(parent), show_(std::move(show)) {}

 public Q_SLOTS:
  void Activate(const QVariantMap& platformData) { show(platformData); }
  // The application opens no files.
  void Open(const QStringList& /*uris*/, const QVariantMap& platformData) { show(platformData); }
  void ActivateAction(const QString& /*name*/, const QVariantList& /*parameters*/,
                      const QVariantMap& platformData) {
    show(platformData);
  }

 private:
  void show(const QVariantMap& platformData);

  const ShowWindow show_;
};

// The application's D-Bus name, by which desktops start it; the bus starts the program if it does not run.
// Each request brings the window to the front.
class ApplicationBus final : public QObject {
 public:
  // Does nothing if there is no bus or the name is taken.
  explicit ApplicationBus(ShowWindow show);

 private:
  ApplicationAdaptor adaptor_;
};

}  // namespace quillmar
