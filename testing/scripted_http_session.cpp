#include "testing/scripted_http_session.h"

#include <strings.h>

#include <algorithm>
#include <utility>

namespace quillmar {
namespace {

constexpr std::string_view serviceRoot = "/api/v1";

std::string_view withoutQuery(std::string_view target) { return target.substr(0, target.find('?')); }

// The URL without scheme, authority and fragment.
std::string_view target(std::string_view url) {
  url = url.substr(0, url.find('#'));
  if (const auto scheme = url.find("://"); scheme != std::string_view::npos) {
    url.remove_prefix(scheme + 3);
    const auto path = url.find_first_of("/?");
    url = path == std::string_view::npos ? std::string_view() : url.substr(path);
  }
  const auto root = withoutQuery(url).find(serviceRoot);
  return root == std::string_view::npos ? url : url.substr(root + serviceRoot.size());
}

bool matches(const HttpRequest& request, std::string_view method, std::string_view path) {
  const std::string_view sent = target(request.url);
  return request.method == method && (sent == path || withoutQuery(sent) == path);
}

bool sameHeaderName(std::string_view one, std::string_view other) {
  return one.size() == other.size() && strncasecmp(one.data(), other.data(), one.size()) == 0;
}

}  // namespace

std::optional<std::string> header(const HttpRequest& request, std::string_view name) {
  const auto found = std::ranges::find_if(
      request.headers, [&](const auto& entry) { return sameHeaderName(entry.first, name); });
  return found == request.headers.end() ? std::nullopt : std::optional(found->second);
}

DataTaskResult httpAnswer(int status, std::string body) {
  return {.data = std::move(body), .response = Response{status}, .error = std::nullopt};
}

DataTaskResult transportFailure(TransportError::Kind kind, std::string host) {
  return {.data = std::nullopt, .response = std::nullopt, .error = TransportError{kind, std::move(host)}};
}

DataTaskResult answerWithoutData(int status) {
  return {.data = std::nullopt, .response = Response{status}, .error = std::nullopt};
}

DataTaskResult answerWithoutResponse(std::string body) {
  return {.data = std::move(body), .response = std::nullopt, .error = std::nullopt};
}

DataTaskResult answerThatIsNotHttp(std::string body) {
  return {.data = std::move(body), .response = Response{std::nullopt}, .error = std::nullopt};
}

struct ScriptedHttpSession::State : std::enable_shared_from_this<ScriptedHttpSession::State> {
  explicit State(Dispatch& dispatch) : queue(dispatch.makeSerialQueue("http-session")) {}

  void schedule(Pending pending, std::optional<DataTaskResult> result);
  Duration answerTime() const;
  void run(Pending pending, std::optional<DataTaskResult> result);
  DataTaskResult scriptedAnswer(const HttpRequest& request);
  Script& script(std::string_view method, std::string_view path);
  Pending takeHeld(std::size_t index);

  const std::shared_ptr<DispatchQueue> queue;
  mutable std::mutex mutex;
  Duration latency{0};
  bool holdAll = false;
  std::function<std::string(const std::string&)> alter;
  std::map<Name, Script> scripts;
  DataTaskResult everythingElse = transportFailure(TransportError::Kind::cannotConnectToHost);
  std::vector<HttpRequest> requests;
  std::vector<Pending> held;
  int openBatches = 0;
  std::vector<Pending> batch;
  std::vector<std::size_t> batches;
};

void ScriptedHttpSession::State::schedule(Pending pending, std::optional<DataTaskResult> result) {
  queue->asyncAfter(answerTime(), [self = shared_from_this(), pending = std::move(pending),
                                   result = std::move(result)]() mutable {
    self->run(std::move(pending), std::move(result));
  });
}

Duration ScriptedHttpSession::State::answerTime() const {
  const std::scoped_lock lock(mutex);
  return latency;
}

void ScriptedHttpSession::State::run(Pending pending, std::optional<DataTaskResult> result) {
  if (!result) {
    const std::scoped_lock lock(mutex);
    const bool isHeld =
        holdAll || std::ranges::any_of(scripts, [&](const auto& entry) {
          return entry.second.hold && matches(pending.request, entry.first.first, entry.first.second);
        });
    if (isHeld) {
      held.push_back(std::move(pending));
      return;
    }
    result = scriptedAnswer(pending.request);
  }
  if (alter && result->data) {
    result->data = alter(*result->data);
  }
  pending.request.wipeSecrets();
  pending.completion(std::move(*result));
}

// A script whose path has a query takes precedence.
DataTaskResult ScriptedHttpSession::State::scriptedAnswer(const HttpRequest& request) {
  const std::string_view sent = target(request.url);
  for (const auto path : {sent, withoutQuery(sent)}) {
    const auto known = scripts.find({request.method, std::string(path)});
    if (known == scripts.end()) {
      continue;
    }
    auto& [next, always, hold] = known->second;
    if (!next.empty()) {
      DataTaskResult result = std::move(next.front());
      next.pop_front();
      return result;
    }
    if (always) {
      return *always;
    }
  }
  return everythingElse;
}

ScriptedHttpSession::Script& ScriptedHttpSession::State::script(std::string_view method,
                                                                std::string_view path) {
  return scripts[{std::string(method), std::string(path)}];
}

ScriptedHttpSession::Pending ScriptedHttpSession::State::takeHeld(std::size_t index) {
  const std::scoped_lock lock(mutex);
  Pending pending = std::move(held.at(index));
  held.erase(held.begin() + static_cast<std::ptrdiff_t>(index));
  return pending;
}

ScriptedHttpSession::ScriptedHttpSession(Dispatch& dispatch) : state_(std::make_shared<State>(dispatch)) {}

ScriptedHttpSession::~ScriptedHttpSession() = default;

void ScriptedHttpSession::dataTask(HttpRequest request, Completion completion) {
  {
    const std::scoped_lock lock(state_->mutex);
    state_->requests.push_back(request);
    if (state_->openBatches > 0) {
      state_->batch.push_back({std::move(request), std::move(completion)});
      return;
    }
  }
  state_->schedule({std::move(request), std::move(completion)}, std::nullopt);
}

void ScriptedHttpSession::beginBatch() {
  const std::scoped_lock lock(state_->mutex);
  ++state_->openBatches;
}

void ScriptedHttpSession::endBatch() {
  std::vector<Pending> ended;
  {
    const std::scoped_lock lock(state_->mutex);
    if (--state_->openBatches > 0) {
      return;
    }
    ended.swap(state_->batch);
    state_->batches.push_back(ended.size());
  }
  for (auto& pending : ended) {
    state_->schedule(std::move(pending), std::nullopt);
  }
}

std::vector<std::size_t> ScriptedHttpSession::batches() const {
  const std::scoped_lock lock(state_->mutex);
  return state_->batches;
}

void ScriptedHttpSession::answer(std::string_view method, std::string_view path, int status,
                                 std::string body) {
  answer(method, path, httpAnswer(status, std::move(body)));
}

void ScriptedHttpSession::answer(std::string_view method, std::string_view path, DataTaskResult result) {
  const std::scoped_lock lock(state_->mutex);
  state_->script(method, path).next.push_back(std::move(result));
}

void ScriptedHttpSession::fail(std::string_view method, std::string_view path, TransportError::Kind kind) {
  answer(method, path, transportFailure(kind));
}

void ScriptedHttpSession::answerAlways(std::string_view method, std::string_view path, int status,
                                       std::string body) {
  answerAlways(method, path, httpAnswer(status, std::move(body)));
}

void ScriptedHttpSession::answerAlways(std::string_view method, std::string_view path,
                                       DataTaskResult result) {
  const std::scoped_lock lock(state_->mutex);
  state_->script(method, path).always = std::move(result);
}

void ScriptedHttpSession::failAlways(std::string_view method, std::string_view path,
                                     TransportError::Kind kind) {
  answerAlways(method, path, transportFailure(kind));
}

void ScriptedHttpSession::answerEverythingElse(DataTaskResult result) {
  const std::scoped_lock lock(state_->mutex);
  state_->everythingElse = std::move(result);
}

void ScriptedHttpSession::forgetScript() {
  const std::scoped_lock lock(state_->mutex);
  state_->scripts.clear();
}

std::vector<HttpRequest> ScriptedHttpSession::requests() const {
  const std::scoped_lock lock(state_->mutex);
  return state_->requests;
}

std::vector<HttpRequest> ScriptedHttpSession::requests(std::string_view method, std::string_view path) const {
  std::vector<HttpRequest> sent = requests();
  std::erase_if(sent, [&](const HttpRequest& request) { return !matches(request, method, path); });
  return sent;
}

std::size_t ScriptedHttpSession::count(std::string_view method, std::string_view path) const {
  return requests(method, path).size();
}

std::vector<std::string> ScriptedHttpSession::calls() const {
  std::vector<std::string> calls;
  for (const HttpRequest& request : requests()) {
    calls.push_back(request.method + ' ' + std::string(target(request.url)));
  }
  return calls;
}

std::vector<std::string> ScriptedHttpSession::changes() const {
  auto changes = calls();
  std::erase_if(changes, [](const std::string& call) { return call.starts_with("GET "); });
  return changes;
}

void ScriptedHttpSession::forgetRequests() {
  const std::scoped_lock lock(state_->mutex);
  state_->requests.clear();
  state_->batches.clear();
}

void ScriptedHttpSession::hold() {
  const std::scoped_lock lock(state_->mutex);
  state_->holdAll = true;
}

void ScriptedHttpSession::hold(std::string_view method, std::string_view path) {
  const std::scoped_lock lock(state_->mutex);
  state_->script(method, path).hold = true;
}

std::vector<HttpRequest> ScriptedHttpSession::held() const {
  const std::scoped_lock lock(state_->mutex);
  std::vector<HttpRequest> requests;
  for (const Pending& pending : state_->held) {
    requests.push_back(pending.request);
  }
  return requests;
}

void ScriptedHttpSession::release(std::size_t index) {
  Pending pending = state_->takeHeld(index);
  std::optional<DataTaskResult> result;
  {
    const std::scoped_lock lock(state_->mutex);
    result = state_->scriptedAnswer(pending.request);
  }
  state_->schedule(std::move(pending), std::move(result));
}

void ScriptedHttpSession::complete(std::size_t index, DataTaskResult result) {
  state_->schedule(state_->takeHeld(index), std::move(result));
}

void ScriptedHttpSession::releaseAll() {
  std::vector<Pending> held;
  {
    const std::scoped_lock lock(state_->mutex);
    state_->holdAll = false;
    for (auto& [name, script] : state_->scripts) {
      script.hold = false;
    }
    held.swap(state_->held);
  }
  for (Pending& pending : held) {
    state_->schedule(std::move(pending), std::nullopt);
  }
}

void ScriptedHttpSession::alterBodies(std::function<std::string(const std::string&)> alter) {
  const std::scoped_lock lock(state_->mutex);
  state_->alter = std::move(alter);
}

void ScriptedHttpSession::setLatency(Duration latency) {
  const std::scoped_lock lock(state_->mutex);
  state_->latency = latency;
}

}  // namespace quillmar
