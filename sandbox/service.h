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
  int port = 0;  // 0: any free one
  int tlsPort = 0;
  std::optional<std::filesystem::path> data{};  // database and certificates; none: in memory, gone at the end
  Seed seed = Seed::empty;                      // what a new database starts with
  bool traffic = false;                         // go on inventing DNS queries for devices that are online
  std::optional<std::string> upstream{};        // a DNS server's address, asked for names that are allowed
};

// The whole stand-in service on two loopback ports, running until it is destroyed. All its members may be
// called on any thread. Several may run in one process.
class Service {
 public:
  // The clock decides about everything that expires or carries a time, but not about added delays.
  static Outcome<std::unique_ptr<Service>> start(const Options& options, Clock clock = systemClock());
  ~Service();

  Service(const Service&) = delete;
  Service& operator=(const Service&) = delete;

  [[nodiscard]] int port() const;
  [[nodiscard]] int tlsPort() const;
  [[nodiscard]] std::string url() const;               // "http://127.0.0.1:8790"
  [[nodiscard]] std::string secureUrl() const;         // "https://127.0.0.1:8791"
  [[nodiscard]] std::filesystem::path caFile() const;  // PEM; verifies secureUrl()

  // A request as if it had come from outside, carried out at once on this thread: neither recorded nor ill
  // served.
  Answer ask(std::string_view method, std::string_view target, std::string_view body = {},
             std::string_view token = {});

  // Completes a pending enrollment as a parent would; makes a family and a child if there are none. False if
  // no enrollment is waiting under this code.
  bool approve(std::string_view code);

  [[nodiscard]] Misbehaviour misbehaviour() const;
  void misbehave(const Misbehaviour& misbehaviour);

  // Makes all tokens look 24 hours old: good for nothing but a refresh.
  void expireTokens();

  // Another endpoint for the device: this one, or a fresh one of this service. False if there is no such
  // device.
  bool moveEndpoint(std::string_view deviceId, const std::optional<std::string>& endpoint = std::nullopt);

  // What came over the network so far, oldest first, the calls under /sandbox/ left out.
  [[nodiscard]] std::vector<Request> requests() const;
  void clearRequests();

 private:
  class Implementation;
  explicit Service(std::unique_ptr<Implementation> implementation);

  std::unique_ptr<Implementation> implementation_;
};

}  // namespace quillmar::sandbox
