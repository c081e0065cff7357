#include "tunnel/resolver/local_names.h"

#include <array>
#include <functional>
#include <string_view>
#include <unordered_map>

#include "tunnel/dns/reply.h"

namespace quillmar::tunnel {
namespace {

constexpr std::uint32_t lifeOfAddress = 60;
constexpr std::uint32_t lifeOfAbsence = 10;
// Caches must not keep this answer, because it is wrong once the tunnel is gone.
constexpr std::uint32_t lifeOfOwn = 0;

enum class Kind {
  loopback,  // this machine
  absent,    // the name and all names below it do not exist
  empty,     // exists without records
  bare,      // the name and all names below it exist without records
  own,       // this program
};

struct Zone {
  std::string_view name;
  Kind kind;
};

constexpr auto zones = std::to_array<Zone>({
    {"localhost", Kind::loopback},
    {"invalid", Kind::absent},
    {"onion", Kind::absent},
    {"local", Kind::absent},
    // Browsers look this name up before they use DNS over HTTPS of their own. NXDOMAIN prevents that.
    {"use-application-dns.net", Kind::absent},
    // Only this program answers for this name, so `quillmar doctor` can check who was asked.
    {"tunnel.quillmar.live", Kind::own},
    {"home.arpa", Kind::empty},
    {"resolver.arpa", Kind::bare},
    {"10.in-addr.arpa", Kind::empty},
    {"168.192.in-addr.arpa", Kind::empty},
    {"0.in-addr.arpa", Kind::empty},
    {"127.in-addr.arpa", Kind::empty},
    {"254.169.in-addr.arpa", Kind::empty},
    {"2.0.192.in-addr.arpa", Kind::empty},
    {"100.51.198.in-addr.arpa", Kind::empty},
    {"113.0.203.in-addr.arpa", Kind::empty},
    {"255.255.255.255.in-addr.arpa", Kind::empty},
    {"0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.ip6.arpa", Kind::empty},
    {"1.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.ip6.arpa", Kind::empty},
    {"d.f.ip6.arpa", Kind::empty},
    {"8.e.f.ip6.arpa", Kind::empty},
    {"9.e.f.ip6.arpa", Kind::empty},
    {"a.e.f.ip6.arpa", Kind::empty},
    {"b.e.f.ip6.arpa", Kind::empty},
    {"8.b.d.0.1.0.0.2.ip6.arpa", Kind::empty},
});

// Zones for a range of numbers: 16 to 31 in 172, 64 to 127 in 100.
struct Run {
  int first;
  int last;
  std::string_view below;
};
constexpr auto runs = std::to_array<Run>({{16, 31, ".172.in-addr.arpa"}, {64, 127, ".100.in-addr.arpa"}});

struct TextHash : std::hash<std::string_view> {
  using is_transparent = void;
};
using Zones = std::unordered_map<std::string, Kind, TextHash, std::equal_to<>>;

const Zones& zonesByName() {
  static const Zones all = [] {
    Zones made;
    for (const auto& [name, kind] : zones) {
      made.emplace(wireName(name), kind);
    }
    for (const auto& [first, last, below] : runs) {
      for (int number = first; number <= last; ++number) {
        made.emplace(wireName(std::to_string(number).append(below)), Kind::empty);
      }
    }
    return made;
  }();
  return all;
}

struct Place {
  std::string_view zone;
  Kind kind;
  bool isApex;
};

std::optional<Place> placeOf(std::string_view name) {
  for (std::string_view zone = name; zone.size() > 1; zone.remove_prefix(1 + std::size_t(zone.front()))) {
    if (const auto known = zonesByName().find(zone); known != zonesByName().end()) {
      return Place{zone, known->second, zone.size() == name.size()};
    }
  }
  return std::nullopt;
}

void appendRecord(std::string& message, std::string_view owner, std::uint16_t recordType, std::uint32_t life,
                  std::string_view data) {
  message += owner;
  append16(message, recordType);
  append16(message, internetClass);
  append32(message, life);
  append16(message, static_cast<std::uint16_t>(data.size()));
  message += data;
}

std::string addressReply(const Query& query, std::string_view address, std::uint32_t life) {
  constexpr std::size_t answersAt = 6;
  auto reply = emptyReply(query, rcode::noError);
  appendRecord(reply, query.question.name, query.question.type, life, address);
  put16(reply, answersAt, 1);
  return reply;
}

// Contains the zone's SOA record, whose TTL limits how long the absence is cached.
std::string absenceReply(const Query& query, std::uint16_t code, std::string_view zone) {
  constexpr std::size_t authoritiesAt = 8;
  static const std::string nobody = wireName("nobody.invalid");
  std::string soa = std::string(zone) + nobody;
  for (const std::uint32_t number : {1U, 3600U, 1200U, 604800U, lifeOfAbsence}) {
    append32(soa, number);
  }
  auto reply = emptyReply(query, code);
  appendRecord(reply, zone, type::soa, lifeOfAbsence, soa);
  put16(reply, authoritiesAt, 1);
  return reply;
}

std::string replyIn(const Place& place, const Query& query) {
  using namespace std::string_view_literals;
  constexpr auto loopback4 = "\x7f\0\0\1"sv;
  constexpr auto tunnelAddress = "\xc6\x12\x35\x35"sv;
  constexpr auto loopback6 = "\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\1"sv;
  if (place.kind == Kind::loopback && query.question.type == type::a) {
    return addressReply(query, loopback4, lifeOfAddress);
  }
  if (place.kind == Kind::loopback && query.question.type == type::aaaa) {
    return addressReply(query, loopback6, lifeOfAddress);
  }
  if (place.kind == Kind::own && place.isApex && query.question.type == type::a) {
    return addressReply(query, tunnelAddress, lifeOfOwn);
  }
  const bool exists = place.kind == Kind::loopback || place.kind == Kind::bare ||
                      (place.isApex && (place.kind == Kind::empty || place.kind == Kind::own));
  return absenceReply(query, exists ? rcode::noError : rcode::nxDomain, place.zone);
}

// A DS query for such a zone belongs to its parent zone, which is public and says that the zone is not
// signed.
bool isForZoneAbove(const Place& place, const Query& query) {
  return query.question.type == type::ds && place.isApex && place.kind == Kind::empty;
}

}  // namespace

std::optional<std::string> localReply(const Query& query, std::string_view name) {
  const auto place = query.question.klass == internetClass ? placeOf(name) : std::nullopt;
  if (!place || isForZoneAbove(*place, query)) {
    return std::nullopt;
  }
  auto reply = replyIn(*place, query);
  appendOpt(reply, query);
  return reply;
}

}  // namespace quillmar::tunnel
