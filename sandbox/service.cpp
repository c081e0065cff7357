#include "sandbox/service.h"

#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <random>
#include <thread>

#include "sandbox/http/server.h"
#include "sandbox/json.h"
#include "sandbox/recorder.h"
#include "sandbox/router.h"
#include "sandbox/traffic.h"
#include "sandbox/world.h"

namespace quillmar::sandbox {
namespace {

// A directory that is deleted with its object.
class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    std::error_code error;
    auto pattern = (std::filesystem::temp_directory_path(error) / "quillmar-sandbox-XXXXXX").string();
    if (mkdtemp(pattern.data()) != nullptr) {
      path_ = pattern;
    }
  }
  ~TemporaryDirectory() {
    std::error_code ignored;
    if (!path_.empty()) {
      std::filesystem::remove_all(path_, ignored);
    }
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

std::string rootAt(std::string_view scheme, const std::string& address, int port) {
  return std::string{scheme} + address + ":" + std::to_string(port);
}

// Adds queries for the online devices until it is destroyed.
class TrafficThread {
 public:
  explicit TrafficThread(World& world) : world_{world}, thread_{[this] { run(); }} {}
  ~TrafficThread() {
    {
      const std::scoped_lock lock{mutex_};
      ending_ = true;
    }
    ended_.notify_all();
    thread_.join();
  }
  TrafficThread(const TrafficThread&) = delete;
  TrafficThread& operator=(const TrafficThread&) = delete;

 private:
  static constexpr std::chrono::seconds pause{2};

  void run() {
    Dice dice{std::random_device{}()};
    std::unique_lock lock{mutex_};
    while (!ended_.wait_for(lock, pause, [this] { return ending_; })) {
      Transaction transaction{world_.database};
      browse(world_.database, world_.now(), dice);
      static_cast<void>(transaction.commit());  // lost queries don't matter
    }
  }

  World& world_;
  std::mutex mutex_;
  std::condition_variable ended_;
  bool ending_ = false;
  std::thread thread_;
};

bool steers(const Request& request) { return request.target.starts_with("/sandbox/"); }

}  // namespace

class Service::Implementation {
 public:
  static Outcome<std::unique_ptr<Implementation>> start(const Options& options, Clock clock) {
    auto made = std::make_unique<Implementation>();
    if (auto failure = made->prepare(options)) {
      return *failure;
    }
    if (auto failure = made->connect(options, std::move(clock))) {
      return *failure;
    }
    return made;
  }

  Answer handle(const Request& request) {
    auto answer = steers(request) ? control(request) : serve(request);
    answer.headers.emplace_back("Date", httpDate(world_->now()));
    return answer;
  }

  World& world() { return *world_; }
  HttpServer& server() { return *server_; }
  FaultInjector& faultInjector() { return faultInjector_; }
  Recorder& recorder() { return recorder_; }
  const Certificates& certificates() const { return certificates_; }

 private:
  // Any website in a browser of this machine can send requests here too.
  Answer control(const Request& request) {
    const auto origin = header(request.headers, "origin");
    return origin.empty() || world_->addresses.isOwn(origin)
               ? answerTo(request, *world_)
               : refusal(403, "Pages of other sites may not steer this service.");
  }

  Answer serve(const Request& request) {
    recorder_.add(request);
    auto plan = faultInjector_.planFor(request);
    auto answer = plan.error ? std::move(*plan.error) : answerTo(request, *world_);
    answer.delivery = plan.delivery;
    return answer;
  }

  std::optional<Failure> prepare(const Options& options) {
    if (!options.data) {
      temporary_.emplace();
    }
    const auto& directory = options.data ? *options.data : temporary_->path();
    std::error_code error;
    std::filesystem::create_directories(directory, error);
    if (directory.empty() || error) {
      return Failure{"The directory " + directory.string() + " can't be made."};
    }

    auto certificates = certificatesIn(directory, options.address);
    if (!certificates) {
      return Failure{certificates.failure()};
    }
    certificates_ = *certificates;

    auto database = Database::open(options.data ? std::optional{directory / "sandbox.sqlite"} : std::nullopt);
    if (!database) {
      return Failure{database.failure()};
    }
    database_ = std::move(*database);
    return std::nullopt;
  }

  std::optional<Failure> connect(const Options& options, Clock clock) {
    auto server = HttpServer::bind(
        {.address = options.address, .port = options.port, .tlsPort = options.tlsPort}, certificates_);
    if (!server) {
      return Failure{server.failure()};
    }
    server_ = std::move(*server);

    world_.emplace(*database_, faultInjector_, recorder_,
                   Addresses{rootAt("http://", options.address, server_->port()),
                             rootAt("https://", options.address, server_->tlsPort())},
                   std::move(clock));
    world_->upstream = options.upstream;
    world_->seed = options.seed;
    world_->hold = [this](bool holding) { server_->hold(holding); };
    if (auto failure = plantIfNew()) {
      return failure;
    }
    server_->open([this](const Request& request) { return handle(request); });
    if (options.traffic) {
      traffic_.emplace(*world_);
    }
    return std::nullopt;
  }

  std::optional<Failure> plantIfNew() {
    Transaction transaction{*database_};
    if (!database_->any("SELECT 1 FROM accounts")) {
      plant(world_->seed, *database_, world_->now());
    }
    if (!transaction.commit()) {
      return Failure{"The first data could not be written."};
    }
    return std::nullopt;
  }

  std::optional<TemporaryDirectory> temporary_;
  Certificates certificates_;
  std::unique_ptr<Database> database_;
  FaultInjector faultInjector_;
  Recorder recorder_;
  std::optional<World> world_;
  std::unique_ptr<HttpServer> server_;
  std::optional<TrafficThread> traffic_;
};

Service::Service(std::unique_ptr<Implementation> implementation)
    : implementation_{std::move(implementation)} {}
Service::~Service() = default;

Outcome<std::unique_ptr<Service>> Service::start(const Options& options, Clock clock) {
  auto implementation = Implementation::start(options, std::move(clock));
  if (!implementation) {
    return Failure{implementation.failure()};
  }
  return std::unique_ptr<Service>{new Service{std::move(*implementation)}};
}

int Service::port() const { return implementation_->server().port(); }
int Service::tlsPort() const { return implementation_->server().tlsPort(); }
std::string Service::url() const { return implementation_->world().addresses.plain; }
std::string Service::secureUrl() const { return implementation_->world().addresses.secure; }
std::filesystem::path Service::caFile() const { return implementation_->certificates().authority; }

Answer Service::ask(std::string_view method, std::string_view target, std::string_view body,
                    std::string_view token) {
  Request request{.method = std::string{method}, .target = std::string{target}, .body = std::string{body}};
  if (!token.empty()) {
    request.headers.emplace_back("Authorization", "Bearer " + std::string{token});
  }
  return answerTo(request, implementation_->world());
}

bool Service::approve(std::string_view code) {
  return ask("POST", "/sandbox/approve", Json{{"enrollment_code", code}}.dump()).status < 400;
}

Misbehaviour Service::misbehaviour() const { return implementation_->faultInjector().present(); }

void Service::misbehave(const Misbehaviour& misbehaviour) {
  implementation_->faultInjector().set(misbehaviour);
  implementation_->server().hold(misbehaviour.hold);
}

void Service::expireTokens() { ask("POST", "/sandbox/expire-tokens"); }

bool Service::moveEndpoint(std::string_view deviceId, const std::optional<std::string>& endpoint) {
  Json body{{"device_id", deviceId}};
  if (endpoint) {
    body["doh_endpoint"] = *endpoint;
  }
  return ask("POST", "/sandbox/endpoint", body.dump()).status < 400;
}

std::vector<Request> Service::requests() const { return implementation_->recorder().all(); }
void Service::clearRequests() { implementation_->recorder().clear(); }

}  // namespace quillmar::sandbox
