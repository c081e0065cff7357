#include "sandbox/dns/message.h"

#include <ldns/ldns.h>

#include <array>
#include <charconv>
#include <cstdlib>

#include "sandbox/text.h"

namespace quillmar::sandbox {
namespace {

constexpr std::size_t largestMessage = 65'535;

// ldns leaves these to the caller to free.
template <class T>
using Owned = std::unique_ptr<T, void (*)(void*)>;

struct FreeResolver {
  void operator()(ldns_resolver* resolver) const { ldns_resolver_deep_free(resolver); }
};
using Resolver = std::unique_ptr<ldns_resolver, FreeResolver>;

std::string textOf(char* given) {
  const Owned<char> text{given, &std::free};
  return text ? text.get() : std::string{};
}

std::string nameOf(const ldns_rdf* owner) {
  auto name = lowerCase(textOf(ldns_rdf2str(owner)));
  if (name.ends_with('.')) {
    name.pop_back();
  }
  return name;
}

// FNV-1a, to assign addresses to names; the same in every run.
std::uint64_t spread(std::string_view text) {
  std::uint64_t hash = 14695981039346656037U;
  for (const char c : text) {
    hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211U;
  }
  return hash;
}

std::array<std::uint8_t, 4> exampleAddress4(std::uint64_t hash) {
  static constexpr std::array<std::array<std::uint8_t, 3>, 3> ranges{
      {{192, 0, 2}, {198, 51, 100}, {203, 0, 113}}};
  const auto& range = ranges[hash % ranges.size()];
  return {range[0], range[1], range[2], static_cast<std::uint8_t>(1 + (hash >> 8) % 254)};
}

std::array<std::uint8_t, 16> exampleAddress6(std::uint64_t hash) {
  std::array<std::uint8_t, 16> address{0x20, 0x01, 0x0d, 0xb8};
  for (std::size_t i = 8; i < address.size(); ++i, hash >>= 8) {
    address[i] = static_cast<std::uint8_t>(hash);
  }
  return address;
}

template <std::size_t size>
void push(ldns_pkt* packet, const ldns_rr& question, ldns_rdf_type kind,
          const std::array<std::uint8_t, size>& bytes) {
  auto* const record = ldns_rr_new();
  ldns_rr_set_owner(record, ldns_rdf_clone(ldns_rr_owner(&question)));
  ldns_rr_set_type(record, ldns_rr_get_type(&question));
  ldns_rr_set_class(record, LDNS_RR_CLASS_IN);
  ldns_rr_set_ttl(record, secondsToLive);
  ldns_rr_push_rdf(record, ldns_rdf_new_frm_data(kind, bytes.size(), bytes.data()));
  ldns_pkt_push_rr(packet, LDNS_SECTION_ANSWER, record);
}

Resolver resolverFor(const std::string& server) {
  const auto colon = server.find(':');
  const bool withPort = colon != std::string::npos && server.find(':', colon + 1) == std::string::npos;
  std::uint16_t port = LDNS_PORT;
  if (withPort) {
    std::from_chars(server.data() + colon + 1, server.data() + server.size(), port);
  }
  const auto host = withPort ? server.substr(0, colon) : server;

  Resolver resolver{ldns_resolver_new()};
  auto* address = ldns_rdf_new_frm_str(
      host.find(':') == std::string::npos ? LDNS_RDF_TYPE_A : LDNS_RDF_TYPE_AAAA, host.c_str());
  if (!resolver || address == nullptr) {
    return nullptr;
  }
  ldns_resolver_push_nameserver(resolver.get(), address);
  ldns_rdf_deep_free(address);
  ldns_resolver_set_port(resolver.get(), port);
  ldns_resolver_set_retry(resolver.get(), 1);
  ldns_resolver_set_timeout(resolver.get(), {.tv_sec = 3, .tv_usec = 0});
  return resolver;
}

}  // namespace

void DnsQuery::Free::operator()(ldns_struct_pkt* packet) const { ldns_pkt_free(packet); }

std::optional<DnsQuery> DnsQuery::parse(std::string_view wire) {
  if (wire.size() > largestMessage) {
    return std::nullopt;
  }
  ldns_pkt* parsed = nullptr;
  const auto* const bytes = reinterpret_cast<const std::uint8_t*>(wire.data());
  if (ldns_wire2pkt(&parsed, bytes, wire.size()) != LDNS_STATUS_OK) {
    return std::nullopt;
  }
  Packet packet{parsed};
  if (ldns_pkt_qr(packet.get()) || ldns_rr_list_rr_count(ldns_pkt_question(packet.get())) == 0) {
    return std::nullopt;
  }
  return DnsQuery{std::move(packet)};
}

DnsQuery::DnsQuery(Packet packet) : packet_{std::move(packet)} {
  const auto& question = *ldns_rr_list_rr(ldns_pkt_question(packet_.get()), 0);
  name_ = nameOf(ldns_rr_owner(&question));
  type_ = textOf(ldns_rr_type2str(ldns_rr_get_type(&question)));
}

bool DnsQuery::isOrdinary() const {
  const auto* const questions = ldns_pkt_question(packet_.get());
  return ldns_pkt_get_opcode(packet_.get()) == LDNS_PACKET_QUERY && ldns_rr_list_rr_count(questions) == 1 &&
         ldns_rr_get_class(ldns_rr_list_rr(questions, 0)) == LDNS_RR_CLASS_IN;
}

DnsQuery::Packet DnsQuery::answer(int code) const {
  Packet packet{ldns_pkt_new()};
  ldns_pkt_set_id(packet.get(), ldns_pkt_id(packet_.get()));
  ldns_pkt_set_opcode(packet.get(), ldns_pkt_get_opcode(packet_.get()));
  ldns_pkt_set_qr(packet.get(), true);
  ldns_pkt_set_rd(packet.get(), ldns_pkt_rd(packet_.get()));
  ldns_pkt_set_ra(packet.get(), true);
  ldns_pkt_set_rcode(packet.get(), static_cast<std::uint8_t>(code));
  if (ldns_pkt_edns(packet_.get())) {
    ldns_pkt_set_edns_udp_size(packet.get(), 1232);
  }
  ldns_pkt_push_rr(packet.get(), LDNS_SECTION_QUESTION,
                   ldns_rr_clone(ldns_rr_list_rr(ldns_pkt_question(packet_.get()), 0)));
  return packet;
}

std::string DnsQuery::wire(const ldns_struct_pkt& packet) {
  std::uint8_t* bytes = nullptr;
  std::size_t size = 0;
  if (ldns_pkt2wire(&bytes, &packet, &size) != LDNS_STATUS_OK) {
    return {};
  }
  const Owned<std::uint8_t> owned{bytes, &std::free};
  return {reinterpret_cast<const char*>(bytes), size};
}

std::string DnsQuery::answerWith(int code) const { return wire(*answer(code)); }

std::string DnsQuery::exampleAnswer() const {
  const auto packet = answer(LDNS_RCODE_NOERROR);
  const auto& question = *ldns_rr_list_rr(ldns_pkt_question(packet_.get()), 0);
  const auto hash = spread(name_);
  if (ldns_rr_get_type(&question) == LDNS_RR_TYPE_A) {
    push(packet.get(), question, LDNS_RDF_TYPE_A, exampleAddress4(hash));
  } else if (ldns_rr_get_type(&question) == LDNS_RR_TYPE_AAAA) {
    push(packet.get(), question, LDNS_RDF_TYPE_AAAA, exampleAddress6(hash));
  }
  return wire(*packet);
}

std::string DnsQuery::noSuchName() const { return answerWith(LDNS_RCODE_NXDOMAIN); }
std::string DnsQuery::notImplemented() const { return answerWith(LDNS_RCODE_NOTIMPL); }
std::string DnsQuery::serverFailure() const { return answerWith(LDNS_RCODE_SERVFAIL); }

std::string DnsQuery::answerOf(const std::string& server) const {
  const auto resolver = resolverFor(server);
  if (!resolver) {
    return serverFailure();
  }
  // DNS over HTTPS uses the id 0, which is easy to spoof over UDP.
  const Packet question{ldns_pkt_clone(packet_.get())};
  ldns_pkt_set_random_id(question.get());
  ldns_pkt* received = nullptr;
  if (ldns_resolver_send_pkt(&received, resolver.get(), question.get()) != LDNS_STATUS_OK ||
      received == nullptr) {
    return serverFailure();
  }
  const Packet answer{received};
  ldns_pkt_set_id(answer.get(), ldns_pkt_id(packet_.get()));
  return wire(*answer);
}

}  // namespace quillmar::sandbox
