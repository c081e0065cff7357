#pragma once

#include <tuple>
#include <utility>

#include "platform/dispatch.h"

namespace quillmar {

// Returns a completion for any thread that runs `function` with its arguments on the main queue.
template <class Function>
auto hoppingToMain(Dispatch& dispatch, Function function) {
  return [&dispatch, function = std::move(function)](auto... arguments) {
    dispatch.main().async([function, arguments = std::make_tuple(std::move(arguments)...)]() mutable {
      std::apply(function, std::move(arguments));
    });
  };
}

}  // namespace quillmar
