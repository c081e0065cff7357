#pragma once

#include <QObject>
#include <QString>
#include <functional>
#include <optional>
#include <string>

namespace quillmar::ui {

// The prompt in the window while the fingerprint reader waits for a finger, and the person's answers.
class BiometricPrompt final : public QObject {
  Q_OBJECT
  Q_PROPERTY(bool shown READ shown NOTIFY shownChanged)
  Q_PROPERTY(QString reason READ reason NOTIFY shownChanged)
  Q_PROPERTY(QString cancelTitle READ cancelTitle CONSTANT)
  Q_PROPERTY(QString passwordTitle READ passwordTitle CONSTANT)

 public:
  struct Answers {
    std::function<void()> cancel;
    std::function<void()> enterPassword;
  };

  explicit BiometricPrompt(Answers answers);

  // The prompt is shown while there is a reason. An answer does not hide it; the reader does, when it stops.
  void setReason(const std::optional<std::string>& reason);

  bool shown() const { return shown_; }
  // Keeps its last value while the prompt fades out.
  const QString& reason() const { return reason_; }
  QString cancelTitle() const { return QStringLiteral("Cancel"); }
  QString passwordTitle() const { return QStringLiteral("Enter Password"); }

  Q_INVOKABLE void cancel() { answers_.cancel(); }
  Q_INVOKABLE void enterPassword() { answers_.enterPassword(); }

 Q_SIGNALS:
  void shownChanged();

 private:
  const Answers answers_;
  bool shown_ = false;
  QString reason_;
};

}  // namespace quillmar::ui
