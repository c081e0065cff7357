#pragma once

#include "foundation/observable.h"
#include "foundation/value.h"
#include "platform/settings_store.h"
#include "platform/simulated/simulated_tunnel.h"

// An application's objects as the driver's answers contain them.
namespace quillmar::driver {

// `{"state":{…},"derived":{…},"texts":{…},"actions":[…],"rows":{…}}`, with the given entry in front.
Value describe(const ObservableObject& object, std::string_view nameKey, std::string name);

// Each value with its type: `{"key":{"type":"date","value":"2016-10-08T22:31:00Z"}}`.
Value describe(const std::map<std::string, SettingValue>& settings);
// Accepts a plain JSON value, or one with its type as above.
std::optional<SettingValue> settingFrom(const Value& value);

Value describe(const SavedTunnel& configuration);

}  // namespace quillmar::driver
