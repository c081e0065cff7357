#pragma once

#include <atomic>
#include <memory>
#include <utility>

#include "platform/http_session.h"
#include "testing/virtual_dispatch.h"

namespace quillmar {

// Passes requests to a real session and counts the pending ones, from `dataTask` to the return of the
// completion. With a virtual dispatch, `settle` and `advance` wait until there are none.
class SettlingHttpSession final : public HttpSession {
 public:
  explicit SettlingHttpSession(HttpSession& inner, VirtualDispatch* dispatch = nullptr)
      : inner_(inner), dispatch_(dispatch) {}

  void dataTask(HttpRequest request, Completion completion) override {
    auto token = dispatch_ ? dispatch_->beginExternalWork() : nullptr;
    ++*inFlight_;
    inner_.dataTask(std::move(request), [count = inFlight_, token = std::move(token),
                                         completion = std::move(completion)](DataTaskResult result) mutable {
      completion(std::move(result));
      completion = nullptr;
      --*count;
      token.reset();
    });
  }
  void beginBatch() override { inner_.beginBatch(); }
  void endBatch() override { inner_.endBatch(); }

  int inFlight() const { return *inFlight_; }

 private:
  HttpSession& inner_;
  VirtualDispatch* const dispatch_;
  const std::shared_ptr<std::atomic<int>> inFlight_ = std::make_shared<std::atomic<int>>(0);
};

}  // namespace quillmar
