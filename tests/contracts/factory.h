#pragma once

#include <memory>
#include <ostream>

namespace quillmar {

// The base of what an adapter's test provides to a suite.
class Harness {
 public:
  Harness() = default;
  Harness(const Harness&) = delete;
  Harness& operator=(const Harness&) = delete;
  virtual ~Harness() = default;
};

// Creates the object under test; `name` appears in test reports.
template <class Product>
struct Factory {
  const char* name;
  std::unique_ptr<Product> (*make)();

  std::unique_ptr<Product> operator()() const { return make(); }
  friend std::ostream& operator<<(std::ostream& out, const Factory& factory) { return out << factory.name; }
};

template <class Product, class Concrete>
constexpr Factory<Product> factory(const char* name) {
  return {name, []() -> std::unique_ptr<Product> { return std::make_unique<Concrete>(); }};
}

}  // namespace quillmar
