#include "sandbox/misbehaviour.h"

namespace quillmar::sandbox {
namespace {

Answer errorAnswer(int status, ErrorBody body) {
  if (body == ErrorBody::json) {
    return refusal(status, "Something went wrong on our side. Please try again later.");
  }
  return {
      .status = status,
      .contentType = "text/html",
      .body = "<html><head><title>Error</title></head><body><h1>Something went wrong</h1></body></html>\n"};
}

}  // namespace

Misbehaviour FaultInjector::present() const {
  const std::scoped_lock lock{mutex_};
  return present_;
}

void FaultInjector::set(Misbehaviour misbehaviour) {
  const std::scoped_lock lock{mutex_};
  present_ = std::move(misbehaviour);
}

bool FaultInjector::happens(int& count, double share) {
  if (count > 0) {
    --count;
    return true;
  }
  return share > 0 && std::uniform_real_distribution{}(dice_) < share;
}

FaultInjector::Plan FaultInjector::planFor(const Request& request) {
  const std::scoped_lock lock{mutex_};
  Plan plan;
  if (request.target.find(present_.onlyPath) == std::string::npos) {
    return plan;
  }
  plan.delivery = {.latency = present_.latency, .bodyTime = present_.bodyTime, .held = present_.hold};
  if (happens(present_.dropCount, present_.dropShare)) {
    plan.delivery.drop = present_.drop;
  }
  if (present_.failEverything || happens(present_.errorCount, present_.errorShare)) {
    plan.error = errorAnswer(present_.errorStatus, present_.errorBody);
  }
  return plan;
}

}  // namespace quillmar::sandbox
