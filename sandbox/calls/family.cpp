#include "sandbox/calls/calls.h"
#include "sandbox/calls/common.h"
#include "sandbox/calls/invitations.h"
#include "sandbox/input.h"
#include "sandbox/records.h"
#include "sandbox/secrets.h"
#include "sandbox/store/families.h"

namespace quillmar::sandbox::calls {
namespace {

struct Member {
  std::string parentId;
  bool primary;
};

std::optional<Member> findMember(Call& call, std::string_view id) {
  return call.database.first(
      "SELECT parent_id, role = 'primary' FROM members WHERE id = ? AND family_id = ?",
      [](Row row) {
        return Member{row.text(0), row.boolean(1)};
      },
      id, call.caller.familyId);
}

Json members(Call& call) {
  return records(call.database, memberFields,
                 "FROM members JOIN accounts ON accounts.id = parent_id WHERE family_id = ? "
                 "ORDER BY role = 'primary' DESC, members.created_at, members.rowid",
                 call.caller.familyId);
}

Json openInvitations(Call& call) {
  return records(call.database, invitationFields,
                 "FROM invitations WHERE family_id = ? AND status = 'pending' AND expires_at > ? "
                 "ORDER BY created_at, rowid",
                 call.caller.familyId, call.now);
}

}  // namespace

std::optional<Invitation> findInvitation(Call& call, std::string_view code) {
  return call.database.first(
      "SELECT invitations.id, family_id, families.name, invited_by, accounts.name, status, expires_at FROM "
      "invitations "
      "JOIN families ON families.id = family_id JOIN accounts ON accounts.id = invited_by WHERE invite_code "
      "= ?",
      [](Row row) {
        return Invitation{row.text(0), row.text(1), row.text(2), row.text(3),
                          row.text(4), row.text(5), row.time(6)};
      },
      code);
}

std::optional<std::string> faultOf(const Invitation& invitation, Time now) {
  if (invitation.status == "accepted") {
    return "This invitation was used already.";
  }
  if (invitation.status == "revoked") {
    return "This invitation was taken back.";
  }
  if (invitation.expiresAt <= now) {
    return "This invitation has expired. Ask for a new one.";
  }
  return std::nullopt;
}

Answer showFamily(Call& call) {
  const auto family = call.database.first(
      "SELECT " + columns(familyFields) + " FROM families WHERE id = ?",
      [](Row row) { return record(row, familyFields); }, call.caller.familyId);
  return json(200, {{"family", orNull(family)},
                    {"members", members(call)},
                    {"pending_invitations", openInvitations(call)},
                    {"is_primary", call.caller.primary}});
}

Answer createInvitation(Call& call) {
  Input input{call.body};
  const auto invitee = input.optionalText("invitee_name");
  if (auto refused = input.refusal()) {
    return *refused;
  }

  const auto code = unusedCode(call, 6, "SELECT 1 FROM invitations WHERE invite_code = ?");
  const auto expiresAt = call.now + invitationLifetime;
  call.database.run(
      "INSERT INTO invitations(id, family_id, invite_code, invited_by, invitee_name, status, created_at, "
      "expires_at) "
      "VALUES (?, ?, ?, ?, ?, 'pending', ?, ?)",
      newId(), ownFamily(call), code, call.caller.parentId, invitee, call.now, expiresAt);
  return json(201, {{"invite_code", code},
                    {"expires_at", iso8601(expiresAt)},
                    {"qr_data", call.world.addresses.rootOf(call.request) + "/join?code=" + code}});
}

// Accepts the code or the id.
Answer revokeInvitation(Call& call) {
  const int revoked = call.database.run(
      "UPDATE invitations SET status = 'revoked' WHERE family_id = ? AND status = 'pending' AND "
      "(id = ? OR invite_code = ?)",
      call.caller.familyId, call.path[0], upperCase(call.path[0]));
  return revoked > 0 ? nothing() : notFound("open invitation with this code");
}

Answer validateInvitation(Call& call) {
  const auto invitation = findInvitation(call, upperCase(call.path[0]));
  const auto fault = invitation ? faultOf(*invitation, call.now) : "There is no invitation with this code.";
  Json body{{"valid", !fault},
            {"family_name", nullptr},
            {"invited_by_name", nullptr},
            {"expires_at", nullptr},
            {"error", nullptr}};
  if (fault) {
    body["error"] = *fault;
  } else {
    body["family_name"] = invitation->familyName;
    body["invited_by_name"] = invitation->invitedByName;
    body["expires_at"] = iso8601(invitation->expiresAt);
  }
  return json(invitation ? 200 : 404, body);
}

Answer updateMember(Call& call) {
  Input input{call.body};
  const auto devices = input.optionalFlag("can_manage_devices");
  const auto policies = input.optionalFlag("can_manage_policies");
  const auto active = input.optionalFlag("is_active");
  if (auto refused = input.refusal()) {
    return *refused;
  }

  const auto member = findMember(call, call.path[0]);
  if (!member) {
    return notFound("member of your family with this id");
  }
  if (member->primary) {
    return refusal(422, "The rights of the primary parent can't be changed.");
  }
  call.database.run(
      "UPDATE members SET can_manage_devices = coalesce(?, can_manage_devices), "
      "can_manage_policies = coalesce(?, can_manage_policies), is_active = coalesce(?, is_active) WHERE id = "
      "?",
      devices, policies, active, call.path[0]);
  return nothing();
}

// The account stays, without a family.
Answer removeMember(Call& call) {
  const auto member = findMember(call, call.path[0]);
  if (!member) {
    return notFound("member of your family with this id");
  }
  if (member->primary) {
    return refusal(422, "The primary parent can't be removed from the family.");
  }
  handOver(call, member->parentId);
  call.database.run("DELETE FROM members WHERE id = ?", call.path[0]);
  return nothing();
}

}  // namespace quillmar::sandbox::calls
