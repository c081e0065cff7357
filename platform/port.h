#pragma once

namespace quillmar {

// The base of the platform's interfaces: not copyable, deleted through this type.
class Port {
 public:
  Port() = default;
  Port(const Port&) = delete;
  Port& operator=(const Port&) = delete;
  virtual ~Port() = default;
};

}  // namespace quillmar
