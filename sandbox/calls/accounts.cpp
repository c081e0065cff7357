#include <algorithm>
#include <array>
#include <chrono>

#include "sandbox/calls/calls.h"
#include "sandbox/calls/common.h"
#include "sandbox/calls/invitations.h"
#include "sandbox/input.h"
#include "sandbox/secrets.h"
#include "sandbox/store/families.h"

namespace quillmar::sandbox::calls {
namespace {

constexpr std::array regions{"australia", "newzealand", "singapore"};

bool isRegion(std::string_view text) { return std::ranges::find(regions, text) != regions.end(); }

// Verified for unknown addresses, so that the answer's time doesn't reveal which addresses have an account.
const std::string& dummyHash() {
  static const std::string hash = hashPassword(newToken());
  return hash;
}

Answer refusalOfGuessing(std::chrono::seconds pause) {
  auto answer = refusal(429, "There were too many wrong passwords. Please wait a moment and try again.");
  answer.headers.emplace_back("Retry-After", std::to_string(pause.count()));
  return answer;
}

struct Account {
  std::string id;
  std::string email;
  std::string passwordHash;
};

// The account with this text in a column that no two accounts share.
std::optional<Account> findAccount(Call& call, const std::string& column, std::string_view text) {
  return call.database.first(
      "SELECT id, email, password_hash FROM accounts WHERE " + column + " = ?",
      [](Row row) {
        return Account{row.text(0), row.text(1), row.text(2)};
      },
      text);
}

// Compares a password with the account of this address, as often as the limit against guessing allows.
// nullopt if it fits.
std::optional<Answer> refusalOfPassword(Call& call, const std::string& email, const std::string& password,
                                        const std::string& hash, std::string_view sentence) {
  const auto address = upperCase(email);
  auto& guesses = call.world.guesses;
  if (const auto pause = guesses.pauseFor(address, call.now)) {
    return refusalOfGuessing(*pause);
  }
  if (!passwordFits(password, hash)) {
    guesses.wrong(address, call.now);
    return refusal(401, sentence);
  }
  guesses.right(address);
  return std::nullopt;
}

Answer refusalOfMissingAccount() { return refusal(401, "This account does not exist any more."); }

Answer refusalOfTakenEmail() { return refusal(409, "There is an account with this e-mail address already."); }

// The account of an authenticated parent and a new token.
Answer signedIn(Call& call, int status, std::string_view parentId) {
  const auto token = issueToken(call, parentId);
  const auto body = call.database.first(
      "SELECT id, email, phone, name, region FROM accounts WHERE id = ?",
      [&](Row row) {
        return Json{{"token", token},
                    {"parent_id", row.text(0)},
                    {"email", row.text(1)},
                    {"phone", orNull(row.optionalText(2))},
                    {"name", row.text(3)},
                    {"region", orNull(row.optionalText(4))},
                    {"doh_server_id", "sandbox"},
                    {"doh_base_url", call.world.addresses.dohBase()}};
      },
      parentId);
  return body ? json(status, *body) : refusalOfMissingAccount();
}

}  // namespace

Answer registerAccount(Call& call) {
  Input input{call.body};
  const auto email = input.text("email");
  const auto password = input.text("password");
  const auto phone = input.text("phone");
  const auto name = input.text("name");
  const auto region = input.optionalText("region");
  requireAccountFields(input, email, password, name);
  input.require(isFilled(phone), "Please enter your phone number.");
  input.require(!region || isRegion(*region), "This region is not known.");
  if (auto refused = input.refusal()) {
    return *refused;
  }
  if (emailIsTaken(call, email)) {
    return refusalOfTakenEmail();
  }

  const auto parentId = addAccount(
      call.database, {.email = email, .password = password, .name = name, .phone = phone, .region = region},
      call.now);
  addFamily(call.database, parentId, call.now);
  return signedIn(call, 201, parentId);
}

Answer login(Call& call) {
  Input input{call.body};
  const auto email = input.text("email");
  const auto password = input.text("password");
  if (auto refused = input.refusal()) {
    return *refused;
  }

  const auto known = findAccount(call, "email", email);
  const auto& dummy = dummyHash();
  if (auto refused = refusalOfPassword(call, email, password, known ? known->passwordHash : dummy,
                                       "The e-mail address or the password is not right.")) {
    return *refused;
  }
  return signedIn(call, 200, known->id);
}

// The old token stays valid until it expires, so that requests in flight don't fail.
Answer refreshToken(Call& call) {
  if (call.world.faultInjector.present().refuseRefresh) {
    return refusal(401, "Your session has ended. Please log in again.");
  }
  return signedIn(call, 200, call.caller.parentId);
}

Answer deleteAccount(Call& call) {
  Input input{call.body};
  const auto password = input.text("password");
  if (auto refused = input.refusal()) {
    return *refused;
  }

  const auto known = findAccount(call, "id", call.caller.parentId);
  if (!known) {
    return refusalOfMissingAccount();
  }
  if (auto refused = refusalOfPassword(call, known->email, password, known->passwordHash,
                                       "The password is not right.")) {
    return *refused;
  }
  if (!call.caller.primary) {
    handOver(call, call.caller.parentId);
  }
  call.database.run("DELETE FROM accounts WHERE id = ?", call.caller.parentId);
  return nothing();
}

Answer joinFamily(Call& call) {
  Input input{call.body};
  const auto code = upperCase(input.text("invite_code"));
  const auto email = input.text("email");
  const auto password = input.text("password");
  const auto name = input.text("display_name");
  requireAccountFields(input, email, password, name);
  if (auto refused = input.refusal()) {
    return *refused;
  }

  const auto invitation = findInvitation(call, code);
  if (!invitation) {
    return refusal(404, "There is no invitation with this code.");
  }
  if (const auto fault = faultOf(*invitation, call.now)) {
    return refusal(422, *fault);
  }
  if (emailIsTaken(call, email)) {
    return refusalOfTakenEmail();
  }

  const auto parentId =
      addAccount(call.database, {.email = email, .password = password, .name = name}, call.now);
  addMember(call.database,
            {.familyId = invitation->familyId,
             .parentId = parentId,
             .displayName = name,
             .invitedBy = invitation->invitedBy},
            call.now);
  call.database.run("UPDATE invitations SET status = 'accepted' WHERE id = ?", invitation->id);
  return json(201, {{"message", "Welcome to " + invitation->familyName + "."},
                    {"token", issueToken(call, parentId)},
                    {"parent_id", parentId},
                    {"family_id", invitation->familyId},
                    {"family_name", invitation->familyName},
                    {"role", "member"}});
}

}  // namespace quillmar::sandbox::calls
