#include "ui/window.h"

#include <QFontDatabase>
#include <QGuiApplication>
#include <QQmlComponent>
#include <QQuickWindow>
#include <QRect>
#include <QScreen>
#include <QSettings>
#include <thread>
#include <utility>

#include "ui/accessibility.h"
#include "ui/adapters/qt_window_style.h"
#include "ui/biometric_prompt.h"
#include "ui/bridge/model_bridge.h"
#include "ui/engine.h"
#include "ui/items/look.h"
#include "ui/permission_prompt.h"

// Made by Qt's build tools. Without this call the linker would leave the registration out.
void qml_register_types_Quillmar();

namespace quillmar::ui {
namespace {

constexpr QSize firstSize(460, 860);
const auto sizeKey = QStringLiteral("window/size");
const auto maximizedKey = QStringLiteral("window/maximized");

QSize rememberedSize(const QString& file, const QScreen* screen) {
  const QSize size =
      file.isEmpty() ? firstSize : QSettings(file, QSettings::IniFormat).value(sizeKey, firstSize).toSize();
  return screen ? size.boundedTo(screen->availableSize()) : size;
}

bool wasMaximized(const QString& file) {
  return !file.isEmpty() && QSettings(file, QSettings::IniFormat).value(maximizedKey).toBool();
}

void rememberSize(const QString& file, const QWindow& window) {
  if (file.isEmpty()) {
    return;
  }
  QSettings settings(file, QSettings::IniFormat);
  const bool maximized = window.visibility() == QWindow::Maximized;
  settings.setValue(maximizedKey, maximized);
  if (!maximized) {
    settings.setValue(sizeKey, window.size());
  }
}

}  // namespace

struct Window::Parts {
  Parts(ObservableObject& root, const QREncoder& qrEncoder, QtWindowStyle& style, Options givenOptions)
      : options(std::move(givenOptions)),
        engine(qrEncoder, style),
        // The root is borrowed, so this pointer does not own it.
        bridge(std::shared_ptr<ObservableObject>(std::shared_ptr<void>(), &root)) {}

  Options options;
  // Reading which fonts there are takes about as long as loading the QML modules; the two go side by side.
  std::jthread fonts{[] { QFontDatabase::hasFamily(QStringLiteral("Inter")); }};
  Engine engine;
  ModelBridge bridge;
  std::unique_ptr<QObject> window;
};

Window::Window(ObservableObject& root, const QREncoder& qrEncoder, QtWindowStyle& style, Options options) {
  // Before anything asks for the platform's own, which nothing is written in and which costs a look-up.
  QGuiApplication::setFont(Look(style).bodyFont());
  qml_register_types_Quillmar();
  installAccessibility();
  parts_ = std::make_unique<Parts>(root, qrEncoder, style, std::move(options));
  auto& engine = parts_->engine;
  engine.setCameraFrames(parts_->options.cameraFrames);
  engine.addImportPath(QStringLiteral("qrc:/"));
  QQmlComponent component(&engine, QUrl(QStringLiteral("qrc:/Quillmar/Main.qml")));
  parts_->window.reset(component.createWithInitialProperties(
      {{QStringLiteral("content"), QVariant::fromValue<QObject*>(&parts_->bridge)},
       {QStringLiteral("permissionPrompt"), QVariant::fromValue<QObject*>(parts_->options.permissionPrompt)},
       {QStringLiteral("biometricPrompt"), QVariant::fromValue<QObject*>(parts_->options.biometricPrompt)}}));
  window_ = qobject_cast<QQuickWindow*>(parts_->window.get());
  if (!window_) {
    qFatal("the window's own files are damaged: %s", qUtf8Printable(component.errorString()));
  }
  window_->resize(rememberedSize(parts_->options.geometryFile, window_->screen()));
  QObject::connect(window_, &QWindow::visibilityChanged, window_, [this](QWindow::Visibility visibility) {
    if (visibility == QWindow::Hidden) {
      rememberSize(parts_->options.geometryFile, *window_);
    }
  });
}

Window::~Window() {
  if (window_->isVisible()) {
    rememberSize(parts_->options.geometryFile, *window_);
  }
}

void Window::show() {
  if (wasMaximized(parts_->options.geometryFile)) {
    window_->showMaximized();
  } else {
    window_->show();
  }
}

void Window::raise() {
  if (window_->visibility() == QWindow::Minimized || !window_->isVisible()) {
    window_->showNormal();
  }
  window_->raise();
  window_->requestActivate();
}

}  // namespace quillmar::ui
