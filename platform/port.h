#pragma once

namespace quillmar {

// The base of what a platform provides: one object, never copied, that may be deleted by this type.
class Port {
 public:
  Port() = default;
  Port(const Port&) = delete;
  Port& operator=(const Port&) = delete;
  virtual ~Port() = default;
};

}  // namespace quillmar
