#include "sandbox/records.h"

namespace quillmar::sandbox {
namespace {

constexpr Field device[] = {
    {"id", Kind::text, "devices.id"},
    {"parent_id", Kind::text, "devices.parent_id"},
    {"child_id"},
    {"device_name"},
    {"device_type"},
    {"doh_endpoint", Kind::text, "coalesce(doh_override, ?1 || '/' || doh_token)"},
    {"is_active", Kind::boolean, "devices.is_active"},
    {"created_at", Kind::time, "devices.created_at"},
    {"updated_at", Kind::time, "devices.updated_at"},
    {"friendly_name"},
    {"is_online", Kind::boolean, "coalesce(last_seen_at >= ?2, 0)"},
    {"last_seen_at", Kind::time},
};

constexpr Field devicePolicy[] = {
    {"id", Kind::text, "policies.id"},
    {"device_id", Kind::text, "policies.device_id"},
    {"parent_id", Kind::text, "devices.parent_id"},
    {"is_blocked", Kind::boolean},
    {"block_mode"},
    {"created_at", Kind::time, "policies.created_at"},
    {"updated_at", Kind::time, "policies.updated_at"},
};

constexpr Field childPolicy[] = {
    {"id", Kind::text, "policies.id"},
    {"child_id", Kind::text, "policies.child_id"},
    {"family_id", Kind::text, "children.family_id"},
    {"is_blocked", Kind::boolean},
    {"block_mode"},
    {"created_at", Kind::time, "policies.created_at"},
    {"updated_at", Kind::time, "policies.updated_at"},
};

constexpr Field homeNetworkPolicy[] = {
    {"id", Kind::text, "policies.id"},
    {"home_network_id"},
    {"parent_id", Kind::text, "home_networks.parent_id"},
    {"is_blocked", Kind::boolean},
    {"block_mode"},
    {"created_at", Kind::time, "policies.created_at"},
    {"updated_at", Kind::time, "policies.updated_at"},
};

constexpr Field log[] = {
    {"id", Kind::integer},
    {"device_id"},
    {"parent_id"},
    {"domain"},
    {"query_type"},
    {"was_blocked", Kind::boolean},
    {"timestamp", Kind::time},
};

constexpr Field child[] = {
    {"id"},
    {"family_id"},
    {"name"},
    {"photo_url"},
    {"birth_year", Kind::integer},
    {"display_order", Kind::integer},
    {"is_active", Kind::boolean},
    {"created_at", Kind::time},
    {"updated_at", Kind::time},
};

constexpr Field family[] = {
    {"id"}, {"name"}, {"primary_parent_id"}, {"created_at", Kind::time}, {"updated_at", Kind::time},
};

constexpr Field member[] = {
    {"id", Kind::text, "members.id"},
    {"family_id"},
    {"parent_id"},
    {"role"},
    {"display_name"},
    {"can_manage_devices", Kind::boolean},
    {"can_manage_policies", Kind::boolean},
    {"is_active", Kind::boolean},
    {"invited_by"},
    {"joined_at", Kind::time},
    {"created_at", Kind::time, "members.created_at"},
    {"email"},
};

constexpr Field invitation[] = {
    {"id"},
    {"family_id"},
    {"invite_code"},
    {"invited_by"},
    {"invitee_name"},
    {"status"},
    {"created_at", Kind::time},
    {"expires_at", Kind::time},
};

constexpr Field homeNetwork[] = {
    {"id"},
    {"parent_id"},
    {"name"},
    {"public_ip"},
    {"is_active", Kind::boolean},
    {"created_at", Kind::time},
    {"updated_at", Kind::time},
};

Json value(Row row, int column, Kind kind) {
  if (row.isNull(column)) {
    return nullptr;
  }
  switch (kind) {
    case Kind::integer:
      return row.integer(column);
    case Kind::boolean:
      return row.boolean(column);
    case Kind::time:
      return iso8601(row.time(column));
    case Kind::text:
      break;
  }
  return row.text(column);
}

}  // namespace

const Fields deviceFields{device};
const Fields devicePolicyFields{devicePolicy};
const Fields childPolicyFields{childPolicy};
const Fields homeNetworkPolicyFields{homeNetworkPolicy};
const Fields logFields{log};
const Fields childFields{child};
const Fields familyFields{family};
const Fields memberFields{member};
const Fields invitationFields{invitation};
const Fields homeNetworkFields{homeNetwork};

std::string columns(Fields fields) {
  std::string list;
  for (const auto& field : fields) {
    if (!list.empty()) {
      list += ", ";
    }
    list += field.column == nullptr ? field.key : field.column;
  }
  return list;
}

Json record(Row row, Fields fields) {
  auto json = Json::object();
  int column = 0;
  for (const auto& field : fields) {
    json[field.key] = value(row, column++, field.kind);
  }
  return json;
}

}  // namespace quillmar::sandbox
