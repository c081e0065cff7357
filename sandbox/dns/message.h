#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

struct ldns_struct_pkt;

namespace quillmar::sandbox {

// A DNS query and the answers to it, in wire format.
class DnsQuery {
 public:
  // nullopt if the bytes are not a DNS message or contain no question.
  static std::optional<DnsQuery> parse(std::string_view wire);

  // The queried name in lower case, without the trailing dot; empty for the root.
  const std::string& name() const { return name_; }

  // "A", "AAAA", "HTTPS", …
  const std::string& type() const { return type_; }

  // Whether it is a standard query for one name.
  bool isOrdinary() const;

  // An address of the documentation ranges, always the same for a name. No records for types other than
  // addresses.
  std::string exampleAnswer() const;
  std::string noSuchName() const;
  std::string notImplemented() const;
  std::string serverFailure() const;

  // The answer of the DNS server at this address ("192.0.2.1", or with a port "192.0.2.1:5353"). Blocks.
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
