#include "tools/driver/describe.h"

#include <utility>

#include "foundation/date_format.h"

namespace quillmar::driver {
namespace {

Value describeRows(const Member& member) {
  Value::List rows;
  for (const auto& [key, object] : member.nested()) {
    rows.push_back(describe(*object, "key", key));
  }
  return rows;
}

Value typed(std::string_view type, Value value) {
  return Value::Map{{"type", type}, {"value", std::move(value)}};
}

struct SettingWriter {
  Value operator()(const std::string& value) const { return typed("string", value); }
  Value operator()(bool value) const { return typed("bool", value); }
  Value operator()(std::int64_t value) const { return typed("int", value); }
  Value operator()(Date value) const { return typed("date", formatISO8601(value)); }
};

}  // namespace

Value describe(const ObservableObject& object, std::string_view nameKey, std::string name) {
  Value::Map state;
  Value::Map derived;
  Value::Map texts;
  Value::List actions;
  Value::Map rows;
  for (const Member* member : object.members()) {
    const std::string key(member->name());
    switch (member->kind()) {
      case Member::Kind::state:
        state.emplace_back(key, member->value());
        break;
      case Member::Kind::derived:
        derived.emplace_back(key, member->value());
        break;
      case Member::Kind::text:
        texts.emplace_back(key, member->value());
        break;
      case Member::Kind::action:
        actions.emplace_back(Value::Map{{"name", key}, {"enabled", member->isEnabled()}});
        break;
      case Member::Kind::part:
      case Member::Kind::rows:
        rows.emplace_back(key, describeRows(*member));
        break;
      case Member::Kind::sheet:
        if (member->isInput()) {
          state.emplace_back(key, member->value());
        }
        break;
    }
  }
  Value::Map all{{std::string(nameKey), std::move(name)},
                 {"state", std::move(state)},
                 {"derived", std::move(derived)},
                 {"texts", std::move(texts)},
                 {"actions", std::move(actions)}};
  if (!rows.empty()) {
    all.emplace_back("rows", std::move(rows));
  }
  return all;
}

Value describe(const std::map<std::string, SettingValue>& settings) {
  Value::Map all;
  for (const auto& [key, value] : settings) {
    all.emplace_back(key, std::visit(SettingWriter(), value));
  }
  return all;
}

std::optional<SettingValue> settingFrom(const Value& value) {
  if (const auto* flag = value.boolean()) {
    return *flag;
  }
  if (const auto* number = value.integer()) {
    return *number;
  }
  if (const auto* text = value.string()) {
    return *text;
  }
  const Value* type = value.find("type");
  const Value* inner = value.find("value");
  if (!type || !type->string() || !inner) {
    return std::nullopt;
  }
  if (*type->string() != "date") {
    return settingFrom(*inner);
  }
  const auto date = inner->string() ? parseISO8601(*inner->string()) : std::nullopt;
  return date ? std::optional<SettingValue>(*date) : std::nullopt;
}

Value describe(const SavedTunnel& configuration) {
  Value::Map all{{"localizedDescription", configuration.localizedDescription},
                 {"isEnabled", configuration.isEnabled},
                 {"isOnDemandEnabled", configuration.isOnDemandEnabled}};
  Value::List rules;
  for (const auto& rule : configuration.onDemandRules) {
    rules.emplace_back(Value::Map{{"interfaceTypeMatch", static_cast<int>(rule.interfaceTypeMatch)}});
  }
  all.emplace_back("onDemandRules", std::move(rules));
  if (const auto& protocol = configuration.protocolConfiguration) {
    Value::Map entries;
    for (const auto& [key, value] : protocol->providerConfiguration) {
      entries.emplace_back(key, value);
    }
    all.emplace_back("protocolConfiguration",
                     Value::Map{{"providerBundleIdentifier", protocol->providerBundleIdentifier},
                                {"serverAddress", protocol->serverAddress},
                                {"providerConfiguration", std::move(entries)}});
  }
  return all;
}

}  // namespace quillmar::driver
