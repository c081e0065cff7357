#pragma once

#include <QObject>
#include <QThread>
#include <QThreadPool>
#include <memory>

#include "platform/dispatch.h"

namespace quillmar::ui {

// Queues over Qt's event loop: the main queue is the loop of the thread that creates this, the background
// queues share a thread pool. The destructor drops queued tasks and waits for running ones.
class QtDispatch final : public Dispatch {
 public:
  QtDispatch();
  ~QtDispatch() override;

  Date now() const override;
  bool isMainThread() const override;
  DispatchQueue& main() override;
  DispatchQueue& global(QualityOfService quality) override;
  std::shared_ptr<DispatchQueue> makeSerialQueue(std::string_view label) override;
  std::unique_ptr<Timer> scheduleRepeating(Duration period, Task task) override;

 private:
  // Posts tasks to the thread of a QObject.
  class LoopQueue;
  class PoolQueue;
  class SerialQueue;

  QObject mainLoop_;
  // Counts the delays of background tasks, so that a busy main thread does not hold them up.
  QThread clockThread_;
  std::unique_ptr<QObject> clockLoop_;
  QThreadPool pool_;
  std::unique_ptr<DispatchQueue> main_;
  std::unique_ptr<DispatchQueue> userInitiated_;
  std::unique_ptr<DispatchQueue> background_;
};

}  // namespace quillmar::ui
