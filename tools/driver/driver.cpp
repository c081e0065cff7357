#include "tools/driver/driver.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <utility>

#include "app/session/appearance_manager.h"
#include "app/session/role_manager.h"
#include "child/background_service.h"
#include "child/child_app_state.h"
#include "child/vpn_dns_manager.h"
#include "foundation/convert.h"
#include "foundation/json.h"
#include "identity/auth_state.h"
#include "tools/driver/describe.h"

namespace quillmar::driver {
namespace {

constexpr std::array hapticNames = {"light", "medium", "heavy", "success", "warning", "error", "selection"};
constexpr auto tunnelOperations = std::to_array<SimulatedTunnel::Operation>(
    {SimulatedTunnel::Operation::load, SimulatedTunnel::Operation::save, SimulatedTunnel::Operation::reload,
     SimulatedTunnel::Operation::start});
constexpr auto tunnelStatuses = std::to_array<std::pair<std::string_view, TunnelStatus>>(
    {{"invalid", TunnelStatus::invalid},
     {"disconnected", TunnelStatus::disconnected},
     {"connecting", TunnelStatus::connecting},
     {"connected", TunnelStatus::connected},
     {"reasserting", TunnelStatus::reasserting},
     {"disconnecting", TunnelStatus::disconnecting}});
constexpr auto biometryTypes =
    std::to_array<std::pair<std::string_view, int>>({{"none", 0}, {"touchID", 1}, {"faceID", 2}});

const std::string& text(const Value& request, std::string_view key) {
  static const std::string none;
  const Value* value = request.find(key);
  return value && value->string() ? *value->string() : none;
}

std::optional<double> number(const Value& request, std::string_view key) {
  const Value* value = request.find(key);
  return value ? fromValue<double>(*value) : std::nullopt;
}

Duration seconds(double count) {
  return std::chrono::duration_cast<Duration>(std::chrono::duration<double>(count));
}

// Looks a name up in the table; a number is taken as it is.
template <class Table, class Result = typename Table::value_type::second_type>
std::optional<Result> lookUp(const Table& table, const Value& value) {
  if (const auto* plain = value.integer()) {
    return static_cast<Result>(*plain);
  }
  const auto known = std::ranges::find_if(
      table, [&](const auto& entry) { return value.string() && entry.first == *value.string(); });
  return known == table.end() ? std::nullopt : std::optional(known->second);
}

}  // namespace

struct Driver::Operation {
  std::string_view name;
  std::string_view fields;
  std::string_view help;
  Answer (Driver::*run)(const Value& request);
};

const std::vector<Driver::Operation>& Driver::operations() {
  static const std::vector<Operation> all{
      {"screens", "", "List the screens that are up, the topmost last, with their members",
       &Driver::listScreens},
      {"objects", "", "List the shared objects: role, session, child, tunnel", &Driver::listObjects},
      {"set", "screen row field value", "Enter a value in a field", &Driver::set},
      {"act", "screen row action args", "Tap a control", &Driver::act},
      {"advance", "seconds", "Let virtual time pass", &Driver::advance},
      {"settle", "timeout", "Wait until nothing is under way, 20 seconds at most", &Driver::settle},
      {"phase", "value", "The window is active, inactive or in the background", &Driver::phase},
      {"activate", "", "The application has become active", &Driver::activate},
      {"settings", "set remove", "Change and list the settings", &Driver::settings},
      {"secure", "", "List the secret store", &Driver::secure},
      {"tunnel", "status fail", "Steer the tunnel, list its configurations and calls", &Driver::tunnel},
      {"biometrics", "type available answer", "Steer the fingerprint reader", &Driver::biometrics},
      {"clipboard", "", "Show the copied text", &Driver::clipboard},
      {"haptics", "", "Show the haptic feedback so far", &Driver::haptics},
  };
  return all;
}

command_line::Glossary Driver::requests() {
  command_line::Glossary list{.title = "Requests (\"op\"), and their fields"};
  for (const Operation& each : operations()) {
    const std::string fields = each.fields.empty() ? "" : ' ' + std::string(each.fields);
    list.entries.push_back({std::string(each.name) + fields, each.help});
  }
  return list;
}

Driver::Driver(const Options& options, Write write)
    : write_(std::move(write)),
      machine_(options,
               [this](std::string_view sink, std::string_view line) {
                 writeEvent({{"event", "log"}, {"sink", sink}, {"line", line}});
               }),
      events_(options.events) {
  const auto deployments = options.service ? Deployments::all(*options.service) : Deployments::builtIn();
  app_ = std::make_unique<QuillmarApp>(machine_.ports(), deployments);
  app_->launch();
  watch();
}

Driver::~Driver() = default;

void Driver::handle(std::string_view line) {
  const auto request = parseJson(line);
  if (!request.ok() || !request.value().map()) {
    reply(Value(), Refusal{"a request is one JSON object"});
    return;
  }
  const std::string& name = text(request.value(), "op");
  const auto known = std::ranges::find(operations(), name, &Operation::name);
  reply(request.value(),
        known == operations().end() ? Refusal{"no such op: " + name} : (this->*known->run)(request.value()));
}

void Driver::reply(const Value& request, Answer answer) {
  watch();
  if (std::holds_alternative<Later>(answer)) {
    return;
  }
  const Value* id = request.find("id");
  Value::Map line{{"id", id ? *id : Value()}};
  if (auto* fields = std::get_if<Value::Map>(&answer)) {
    std::ranges::move(*fields, std::back_inserter(line));
  } else {
    line.emplace_back("error", std::get<Refusal>(answer).words);
  }
  writeEvent(std::move(line));
}

void Driver::writeEvent(Value::Map event) {
  const std::scoped_lock lock(writeMutex_);
  write_(writeJson(std::move(event)));
}

void Driver::watch() {
  if (!events_) {
    return;
  }
  std::erase_if(watched_, [](const auto& known) { return known.first.expired(); });
  auto objects = app_->contentView().screens();
  std::ranges::move(app_->environment().madeObjects(), std::back_inserter(objects));
  for (const auto& object : objects) {
    const bool isKnown =
        std::ranges::any_of(watched_, [&](const auto& known) { return known.first.lock() == object; });
    if (!isKnown) {
      watched_.emplace_back(object, object->observe([this, name = object->typeName()](const Member& member) {
        writeEvent({{"event", "changed"}, {"object", name}, {"field", member.name()}});
      }));
    }
  }
}

std::vector<std::shared_ptr<ObservableObject>> Driver::sharedObjects() {
  Environment& environment = app_->environment();
  return {environment.roleManager(),       environment.authState(),  environment.childAppState(),
          environment.appearanceManager(), environment.vpnManager(), environment.backgroundService()};
}

std::shared_ptr<ObservableObject> Driver::findScreen(std::string_view name) {
  const auto screens = app_->contentView().screens();
  const auto found = std::ranges::find(screens.rbegin(), screens.rend(), name,
                                       [](const auto& screen) { return screen->typeName(); });
  return found == screens.rend() ? nullptr : *found;
}

std::shared_ptr<ObservableObject> Driver::findTarget(const Value& request) {
  auto screen = findScreen(text(request, "screen"));
  const std::string& row = text(request, "row");
  if (!screen || row.empty()) {
    return screen;
  }
  const auto slash = row.find('/');
  const Member* list = screen->findMember(std::string_view(row).substr(0, slash));
  const auto rows = list && slash != std::string::npos ? list->nested() : std::vector<Member::Nested>();
  const auto found = std::ranges::find(rows, row.substr(slash + 1), &Member::Nested::key);
  return found == rows.end() ? nullptr : found->object;
}

Driver::Answer Driver::listScreens(const Value& /*request*/) {
  Value::List screens;
  for (const auto& screen : app_->contentView().screens()) {
    screens.push_back(describe(*screen, "screen", std::string(screen->typeName())));
  }
  return Value::Map{{"screens", std::move(screens)}};
}

Driver::Answer Driver::listObjects(const Value& /*request*/) {
  Value::List objects;
  for (const auto& object : sharedObjects()) {
    objects.push_back(describe(*object, "object", std::string(object->typeName())));
  }
  return Value::Map{{"objects", std::move(objects)}};
}

Driver::Answer Driver::set(const Value& request) {
  const auto target = findTarget(request);
  if (!target) {
    return Refusal{"no such screen or row is up"};
  }
  Member* member = target->findMember(text(request, "field"));
  if (!member || !member->isInput()) {
    return Refusal{"no such field that a person can set"};
  }
  const Value* value = request.find("value");
  if (!member->input(value ? *value : Value())) {
    return Refusal{"the value does not fit the field"};
  }
  return Value::Map{};
}

Driver::Answer Driver::act(const Value& request) {
  const auto target = findTarget(request);
  if (!target) {
    return Refusal{"no such screen or row is up"};
  }
  Member* member = target->findMember(text(request, "action"));
  if (!member || member->kind() != Member::Kind::action) {
    return Refusal{"no such action"};
  }
  if (!member->isEnabled()) {
    return Refusal{"the control is out of use"};
  }
  const Value* arguments = request.find("args");
  if (!member->perform(arguments && arguments->list() ? *arguments->list() : Value::List())) {
    return Refusal{"the arguments do not fit the action"};
  }
  return Value::Map{};
}

Driver::Answer Driver::advance(const Value& request) {
  const auto count = number(request, "seconds");
  if (!machine_.virtualTime()) {
    return Refusal{"the clock is real; start with --clock virtual"};
  }
  if (!count || *count < 0) {
    return Refusal{"seconds must be a number that is not negative"};
  }
  if (!machine_.virtualTime()->advance(seconds(*count))) {
    return Refusal{"a request is still in flight"};
  }
  return Value::Map{};
}

Driver::Answer Driver::settle(const Value& request) {
  const auto timeout = seconds(number(request, "timeout").value_or(20));
  auto* const time = machine_.virtualTime();
  if (!time) {
    waitUntilIdle(request, std::chrono::steady_clock::now() + timeout, 0);
    return Later{};
  }
  time->setTimeout(timeout);
  if (!time->settle()) {
    return Refusal{"a request is still in flight"};
  }
  return Value::Map{};
}

// The queues of the real clock can't be asked whether they are empty. Instead this waits until nothing is in
// flight for a few turns of both the main and the background queue, in which everything already posted has
// run.
void Driver::waitUntilIdle(const Value& request, std::chrono::steady_clock::time_point deadline,
                           int quietTurns) {
  constexpr int enoughTurns = 4;
  constexpr auto turn = std::chrono::milliseconds(5);
  if (quietTurns >= enoughTurns) {
    reply(request, Value::Map{});
    return;
  }
  if (std::chrono::steady_clock::now() > deadline) {
    reply(request, Refusal{"a request is still in flight"});
    return;
  }
  const int quiet = machine_.http.inFlight() == 0 ? quietTurns + 1 : 0;
  machine_.dispatch().global(QualityOfService::background).asyncAfter(turn, [this, request, deadline, quiet] {
    machine_.dispatch().main().async(
        [this, request, deadline, quiet] { waitUntilIdle(request, deadline, quiet); });
  });
}

Driver::Answer Driver::phase(const Value& request) {
  const auto phase = fromRawValue<ScenePhase>(text(request, "value"));
  if (!phase) {
    return Refusal{"a phase is active, inactive or background"};
  }
  app_->setScenePhase(*phase);
  return Value::Map{};
}

Driver::Answer Driver::activate(const Value& /*request*/) {
  app_->applicationDidBecomeActive();
  return Value::Map{};
}

Driver::Answer Driver::settings(const Value& request) {
  SettingsStore& store = machine_.ports().settings;
  if (const Value* entries = request.find("set"); entries && entries->map()) {
    for (const auto& [key, value] : *entries->map()) {
      const auto setting = settingFrom(value);
      if (!setting) {
        return Refusal{"not a value of the settings: " + key};
      }
      store.set(key, *setting);
    }
  }
  if (const Value* keys = request.find("remove"); keys && keys->list()) {
    for (const auto& key : *keys->list()) {
      if (key.string()) {
        store.remove(*key.string());
      }
    }
  }
  return Value::Map{{"settings", describe(store.all())}};
}

Driver::Answer Driver::secure(const Value& /*request*/) {
  Value::List items;
  for (const auto& [name, bytes] : machine_.fakes.secureItems.items()) {
    items.emplace_back(Value::Map{{"service", name.first}, {"account", name.second}, {"value", bytes}});
  }
  return Value::Map{{"items", std::move(items)}};
}

Driver::Answer Driver::tunnel(const Value& request) {
  SimulatedTunnel& tunnel = machine_.tunnel;
  if (const Value* failures = request.find("fail"); failures && failures->map()) {
    for (const auto operation : tunnelOperations) {
      if (const Value* words = failures->find(SimulatedTunnel::name(operation))) {
        tunnel.fail(operation, words->string() ? std::optional(*words->string()) : std::nullopt);
      }
    }
  }
  if (const Value* status = request.find("status")) {
    const auto known = lookUp(tunnelStatuses, *status);
    if (!known || !tunnel.setStatus(*known)) {
      return Refusal{known ? "no configuration is saved" : "no such status"};
    }
  }
  Value::List configurations;
  for (std::size_t index = 0; const auto& saved : tunnel.saved()) {
    Value::Map described = *describe(saved).map();
    described.emplace_back("status", static_cast<int>(tunnel.status(index++)));
    configurations.emplace_back(std::move(described));
  }
  Value::List calls;
  for (const auto operation : tunnel.operations()) {
    calls.emplace_back(SimulatedTunnel::name(operation));
  }
  return Value::Map{{"configurations", std::move(configurations)}, {"calls", std::move(calls)}};
}

Driver::Answer Driver::biometrics(const Value& request) {
  FakeBiometrics& biometrics = machine_.fakes.biometrics;
  if (const Value* type = request.find("type")) {
    const auto known = lookUp(biometryTypes, *type);
    if (!known) {
      return Refusal{"a type is none, touchID, faceID or a number"};
    }
    biometrics.type = *known;
  }
  if (const Value* available = request.find("available"); available && available->boolean()) {
    biometrics.available = *available->boolean();
  }
  if (const Value* answer = request.find("answer")) {
    const auto* code = answer->integer();
    biometrics.answer = {.success = answer->string() && *answer->string() == "success",
                         .code = code ? std::optional(static_cast<int>(*code)) : std::nullopt};
  }
  return Value::Map{{"prompts", toValue(biometrics.prompts)}};
}

Driver::Answer Driver::clipboard(const Value& /*request*/) {
  return Value::Map{{"text", machine_.fakes.clipboard.string()}};
}

Driver::Answer Driver::haptics(const Value& /*request*/) {
  Value::List played;
  for (const auto feedback : machine_.fakes.haptics.played) {
    played.emplace_back(hapticNames.at(static_cast<std::size_t>(feedback)));
  }
  return Value::Map{{"played", std::move(played)}};
}

}  // namespace quillmar::driver
