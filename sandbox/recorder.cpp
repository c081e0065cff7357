#include "sandbox/recorder.h"

namespace quillmar::sandbox {

void Recorder::add(Request request) {
  const std::scoped_lock lock{mutex_};
  requests_.push_back(std::move(request));
  if (requests_.size() > most) {
    requests_.pop_front();
  }
}

std::vector<Request> Recorder::all() const {
  const std::scoped_lock lock{mutex_};
  return {requests_.begin(), requests_.end()};
}

void Recorder::clear() {
  const std::scoped_lock lock{mutex_};
  requests_.clear();
}

}  // namespace quillmar::sandbox
