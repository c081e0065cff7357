#pragma once

#include <QQmlAbstractUrlInterceptor>
#include <QString>
#include <QUrl>
#include <utility>

namespace quillmar::ui {

// Has an engine read the module's QML files from a folder instead of the program. Only in developers' builds
// with QUILLMAR_QML_FROM_SOURCE: a change is then seen at the next start, without a build.
class SourceFiles final : public QQmlAbstractUrlInterceptor {
 public:
  explicit SourceFiles(QString folder) : folder_(std::move(folder)) {}

  QUrl intercept(const QUrl& url, DataType type) override {
    const bool isOurs = type == QmlFile && url.scheme() == QLatin1StringView("qrc") &&
                        url.path().startsWith(QLatin1StringView("/Quillmar/"));
    return isOurs ? QUrl::fromLocalFile(folder_ + '/' + url.fileName()) : url;
  }

 private:
  const QString folder_;
};

}  // namespace quillmar::ui
