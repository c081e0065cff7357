#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sandbox/http/message.h"
#include "sandbox/misbehaviour.h"
#include "sandbox/outcome.h"
#include "sandbox/seed.h"
#include "sandbox/time.h"

namespace quillmar::sandbox {

struct Options {
  std::string address = "127.0.0.1";  // IPv4, of this computer
  int port = 0;                       // 0: any free port
  int tlsPort = 0;
  std::optional<std::filesystem::path> data{};  // database and certificates; nullopt: in memory
  Seed seed = Seed::empty;                      // the content of a new database
  bool traffic = false;                         // keep inventing DNS queries for online devices
  std::optional<std::string> upstream{};        // a DNS server that resolves allowed names
};

// The whole stand-in service on two ports, until it is destroyed. Thread-safe. Several can run in
// one process.
class Service {
 public:
  // `clock` decides what has expired and all stored times, but not simulated delays.
  static Outcome<std::unique_ptr<Service>> start(const Options& options, Clock clock = systemClock());
  ~Service();

  Service(const Service&) = delete;
  Service& operator=(const Service&) = delete;

  [[nodiscard]] int port() const;
  [[nodiscard]] int tlsPort() const;
  [[nodiscard]] std::string url() const;               // "http://127.0.0.1:8790"
  [[nodiscard]] std::string secureUrl() const;         // "https://127.0.0.1:8791"
  [[nodiscard]] std::filesystem::path caFile() const;  // PEM; verifies secureUrl()

  // Handles a request on this thread, without the network: it is not recorded and no fault is simulated.
  Answer ask(std::string_view method, std::string_view target, std::string_view body = {},
             std::string_view token = {});

  // Completes a pending enrollment as a parent would; creates a family and a child if there are none. False
  // if no pending enrollment has this code.
  bool approve(std::string_view code);

  [[nodiscard]] Misbehaviour misbehaviour() const;
  void misbehave(const Misbehaviour& misbehaviour);

  // Makes all tokens 24 hours old: only a refresh accepts them.
  void expireTokens();

  // Assigns the device this endpoint, or a new one of this service. False if there is no such device.
  bool moveEndpoint(std::string_view deviceId, const std::optional<std::string>& endpoint = std::nullopt);

  // The requests from the network, oldest first, without calls under /sandbox/.
  [[nodiscard]] std::vector<Request> requests() const;
  void clearRequests();

 private:
  class Implementation;
  explicit Service(std::unique_ptr<Implementation> implementation);

  std::unique_ptr<Implementation> implementation_;
};

}  // namespace quillmar::sandbox
