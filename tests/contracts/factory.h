#pragma once

#include <memory>
#include <ostream>

namespace quillmar {

// Makes what a contract is checked on, under a name that a test report can show.
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
