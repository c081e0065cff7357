#pragma once

#include <string>

#include "platform/port.h"

namespace quillmar {

// A message that the desktop shows outside the window. The texts are the program's own, because a desktop may
// interpret them as markup.
struct Notification {
  // A later notification with the same id replaces this one.
  std::string id;
  std::string title;
  std::string body;

  friend bool operator==(const Notification&, const Notification&) = default;
};

// The desktop's notifications. Main thread only.
class Notifications : public Port {
 public:
  // Returns at once, whether the desktop is absent, slow or dead; the notification is then lost. It is never
  // shown twice.
  virtual void show(const Notification& notification) = 0;
};

}  // namespace quillmar
