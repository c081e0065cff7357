#pragma once

#include <QObject>
#include <QString>
#include <functional>
#include <vector>

namespace quillmar::ui {

// Stands in for the system's permission prompt for a tunnel, if the tunnel is simulated. The window draws it
// and says that it is a simulation.
class PermissionPrompt final : public QObject {
  Q_OBJECT
  Q_PROPERTY(bool shown READ shown NOTIFY shownChanged)
  Q_PROPERTY(QString label READ label CONSTANT)
  Q_PROPERTY(QString title READ title CONSTANT)
  Q_PROPERTY(QString message READ message CONSTANT)
  Q_PROPERTY(QString allowTitle READ allowTitle CONSTANT)
  Q_PROPERTY(QString refuseTitle READ refuseTitle CONSTANT)

 public:
  using Answer = std::function<void(bool allowed)>;

  // A question asked while another is open gets the same answer.
  void ask(Answer answer);

  bool shown() const { return !waiting_.empty(); }
  QString label() const { return QStringLiteral("Simulation"); }
  QString title() const { return QStringLiteral("“Quillmar” Would Like to Add VPN Configurations"); }
  QString message() const {
    return QStringLiteral(
        "On a real device the system asks this question. Nothing on this computer is changed.");
  }
  QString allowTitle() const { return QStringLiteral("Allow"); }
  QString refuseTitle() const { return QStringLiteral("Don't Allow"); }

  Q_INVOKABLE void answer(bool allowed);

 Q_SIGNALS:
  void shownChanged();

 private:
  std::vector<Answer> waiting_;
};

}  // namespace quillmar::ui
