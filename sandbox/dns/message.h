#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

struct ldns_struct_pkt;

namespace quillmar::sandbox {

// A DNS query as it came over the wire, and the answers that can be given to it.
class DnsQuery {
 public:
  // Nothing for bytes that aren't a DNS message, or one that asks nothing.
  static std::optional<DnsQuery> parse(std::string_view wire);

  // The name asked for, in lower case and without the root's dot; empty for the root.
  const std::string& name() const { return name_; }

  // "A", "AAAA", "HTTPS", …
  const std::string& type() const { return type_; }

  // Whether it is an ordinary question for one name.
  bool isOrdinary() const;

  // An address of the ranges set aside for documentation, the same for the same name at every time; no
  // records for types that have no address.
  std::string exampleAnswer() const;
  std::string noSuchName() const;
  std::string notImplemented() const;
  std::string serverFailure() const;

  // What the DNS server at this address says ("192.0.2.1", or with a port: "192.0.2.1:5353"). Waits for it.
  std::string answerOf(const std::string& server) const;

 private:
  struct Free {
    void operator()(ldns_struct_pkt* packet) const;
  };
  using Packet = std::unique_ptr<ldns_struct_pkt, Free>;

  explicit DnsQuery(Packet packet);
  Packet answer(int code) const;
  std::string answerWith(int code) const;
  static std::string wire(const ldns_struct_pkt& packet);

  Packet packet_;
  std::string name_;
  std::string type_;
};

inline constexpr std::uint32_t secondsToLive = 60;

}  // namespace quillmar::sandbox
