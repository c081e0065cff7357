#include "programs/quillmar/single_instance.h"

#include <QLocalSocket>
#include <QString>
#include <memory>
#include <utility>

namespace quillmar {
namespace {

constexpr int knockMilliseconds = 2000;

bool knock(const QString& socketPath) {
  QLocalSocket socket;
  socket.connectToServer(socketPath);
  return socket.waitForConnected(knockMilliseconds);
}

}  // namespace

SingleInstance::Place SingleInstance::take(const std::filesystem::path& directory) {
  const QString socketPath = QString::fromStdString((directory / "window.socket").string());
  const bool isUsable = createPrivateDirectory(directory);
  lock_ = isUsable ? InstanceLock::acquire(directory) : std::nullopt;
  if (isUsable && !lock_ && knock(socketPath)) {
    return Place::second;
  }
  if (lock_) {
    // A killed process leaves its socket behind; whoever holds the lock may take its place.
    QLocalServer::removeServer(socketPath);
    server_.setSocketOptions(QLocalServer::UserAccessOption);
    server_.listen(socketPath);
  }
  return Place::first;
}

void SingleInstance::onKnock(std::function<void()> reaction) {
  QObject::connect(&server_, &QLocalServer::newConnection, &server_, [this, reaction = std::move(reaction)] {
    // The knock is all there is: nothing is read from whoever knocks.
    while (const std::unique_ptr<QLocalSocket> guest{server_.nextPendingConnection()}) {
      guest->abort();
    }
    reaction();
  });
}

}  // namespace quillmar
