#include "tunnel/resolver/failure.h"

#include <algorithm>
#include <array>

#include "tunnel/dns/reply.h"

namespace quillmar::tunnel {
namespace {

constexpr std::uint16_t notReady = 14;
constexpr std::uint16_t noReachableAuthority = 22;
constexpr std::uint16_t networkError = 23;

struct Description {
  Cause cause;
  std::uint16_t code;
  std::string_view text;
};

constexpr auto descriptions = std::to_array<Description>({
    {Cause::noEndpoint, notReady, "No endpoint is configured"},
    {Cause::tooMany, notReady, "Too many queries are waiting for an answer"},
    {Cause::late, noReachableAuthority, "The endpoint did not answer in time"},
    {Cause::unreachable, networkError, "The endpoint can't be reached"},
    {Cause::unknownAddress, networkError, "The endpoint's address can't be found"},
    {Cause::untrusted, networkError, "The endpoint's certificate can't be verified"},
    {Cause::noHttp2, networkError, "The endpoint does not speak HTTP/2"},
    {Cause::broken, networkError, "The connection to the endpoint broke"},
    {Cause::askedToWait, notReady, "The endpoint asked for a pause"},
    {Cause::refused, otherError, "The endpoint answered with an HTTP error"},
    {Cause::redirected, otherError, "The endpoint redirects elsewhere"},
    {Cause::notDns, otherError, "The endpoint's answer is not a DNS message"},
    {Cause::tooLong, otherError, "The endpoint's answer is too long"},
    {Cause::malformed, otherError, "The endpoint's answer is malformed"},
    {Cause::cutShort, otherError, "The endpoint's answer is truncated"},
    {Cause::ofAnotherQuestion, otherError, "The endpoint answered another question"},
});

const Description& described(Cause cause) {
  return *std::ranges::find(descriptions, cause, &Description::cause);
}

}  // namespace

std::string sentence(const Failure& failure) {
  std::string text(described(failure.cause).text);
  return failure.detail.empty() ? text + '.' : text + ": " + failure.detail + '.';
}

std::uint16_t extendedErrorCode(Cause cause) { return described(cause).code; }

}  // namespace quillmar::tunnel
