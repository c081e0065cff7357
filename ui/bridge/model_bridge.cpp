#include "ui/bridge/model_bridge.h"

#include <QKeySequence>
#include <QTimer>
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <utility>

#include "presentation/key_commands.h"
#include "presentation/list_filter.h"
#include "presentation/screen_model.h"
#include "ui/bridge/keyed_list_model.h"
#include "ui/bridge/shown_text.h"
#include "ui/bridge/variants.h"

namespace quillmar::ui {
namespace {

// The member that is drawn as a QR code, and never as text.
constexpr std::string_view machineReadable = "qrCode";

// The only place that decides how a model's text is converted for QML.
TextForm textForm(const Member& member) {
  if (member.name() == machineReadable) {
    return exactText;
  }
  return member.isInput() ? editedText : shownText;
}

// The key of a record is its id, or its index if it has none. The key of another value is the value itself.
QString rowKey(const Value& row, std::size_t place) {
  if (const Value* const id = row.find("id")) {
    return id->string() ? exactText(*id->string()) : exactText(writeJson(*id));
  }
  return row.map() ? QString::number(place) : exactText(writeJson(row));
}

const KeyCommands* findKeyCommands(const ObservableObject& model) {
  return dynamic_cast<const KeyCommands*>(model.findMember("keyCommands"));
}

std::vector<KeyedListModel::Row> rowsOf(const Value::List& list, TextForm form) {
  std::vector<KeyedListModel::Row> rows;
  rows.reserve(list.size());
  for (const auto& element : list) {
    rows.push_back({rowKey(element, rows.size()), toVariant(element, form)});
  }
  return rows;
}

const auto sheetKey = QStringLiteral("sheet");
const auto pageKey = QStringLiteral("page");

bool isPage(const Member& member) {
  const auto* const presentation = dynamic_cast<const Presentation*>(&member);
  return presentation && presentation->isPage();
}

}  // namespace

ActionBridge::ActionBridge(ModelBridge& model, Member& member)
    : QObject(&model),
      model_(model),
      member_(&member),
      key_(model.keyCommands() ? exactText(model.keyCommands()->keyOf(member)) : QString()),
      enabled_(member.isEnabled()) {}

void ActionBridge::update() {
  if (std::exchange(enabled_, member_->isEnabled()) != enabled_) {
    Q_EMIT enabledChanged();
  }
}

void ActionBridge::retire() { member_ = nullptr; }

bool ActionBridge::perform(const QVariantList& arguments) {
  if (!member_) {
    return false;
  }
  // The action may end its own screen.
  const auto alive = model_.model();
  Value::List converted;
  for (const auto& argument : arguments) {
    converted.push_back(fromVariant(argument));
  }
  return member_->perform(converted);
}

struct ModelBridge::Entry {
  Member& member;
  QString name;
  TextForm form;
  Value shown{};
  ActionBridge* action = nullptr;
  KeyedListModel* list = nullptr;
  // The objects of a part, rows or a sheet. The bridge of a row is null until a view asks for it.
  struct Nested {
    std::shared_ptr<ObservableObject> object;
    ModelBridge* bridge = nullptr;
  };
  std::unordered_map<const ObservableObject*, Nested> nested{};
  // The model has announced a change that QML does not show yet.
  bool hasNews = false;
  std::uint64_t revision = 0;
};

ModelBridge::ModelBridge(std::shared_ptr<ObservableObject> model, QObject* parent)
    : QQmlPropertyMap(this, parent), model_(std::move(model)), keyCommands_(findKeyCommands(*model_)) {
  declareProperties();
  for (Member* const member : model_->members()) {
    addEntry(*member);
  }
  changes_ = model_->observe([this](const Member& changed) { scheduleRefresh(changed); });
}

ModelBridge::~ModelBridge() = default;

// All at once: a property that is added alone has the whole meta-object built anew.
void ModelBridge::declareProperties() {
  QVariantHash properties{{QStringLiteral("typeName"), exactText(model_->typeName())},
                          {sheetKey, QVariant::fromValue<QObject*>(nullptr)}};
  for (const Member* const member : model_->members()) {
    properties.insert(exactText(member->name()), {});
    if (isPage(*member)) {
      properties.insert(pageKey, QVariant::fromValue<QObject*>(nullptr));
    }
  }
  insert(properties);
}

void ModelBridge::addEntry(Member& member) {
  auto& entry = *entries_.emplace_back(
      std::make_unique<Entry>(Entry{member, exactText(member.name()), textForm(member)}));
  switch (member.kind()) {
    case Member::Kind::action:
      entry.action = new ActionBridge(*this, member);
      insert(entry.name, QVariant::fromValue(entry.action));
      return;
    case Member::Kind::rows:
      addList(entry);
      entry.list->setMaking([this, &entry](const QVariant& row) {
        return QVariant::fromValue<QObject*>(
            bridgeOf(entry, static_cast<const ObservableObject*>(row.value<void*>())));
      });
      [[fallthrough]];
    case Member::Kind::part:
    case Member::Kind::sheet:
      showNested(entry);
      return;
    default:
      entry.shown = member.value();
      if (entry.shown.list()) {
        addList(entry);
        entry.list->assign(rowsOf(*entry.shown.list(), entry.form));
      } else {
        insert(entry.name, toVariant(entry.shown, entry.form));
      }
  }
}

void ModelBridge::addList(Entry& entry) {
  entry.list = new KeyedListModel(this);
  insert(entry.name, QVariant::fromValue(entry.list));
}

QVariant ModelBridge::updateValue(const QString& key, const QVariant& input) {
  const auto found = std::ranges::find(entries_, key, [](const auto& entry) { return entry->name; });
  if (found == entries_.end() || !model_) {
    return value(key);
  }
  Entry& entry = **found;
  if (!entry.member.isInput() || entry.member.kind() == Member::Kind::sheet) {
    return value(key);
  }
  const auto alive = model_;
  entry.member.input(fromVariant(input));
  entry.shown = entry.member.value();
  // A text that the person is typing is not altered.
  return toVariant(entry.shown, exactText);
}

void ModelBridge::scheduleRefresh(const Member& changed) {
  const auto entry =
      std::ranges::find_if(entries_, [&](const auto& known) { return &known->member == &changed; });
  if (entry != entries_.end()) {
    (*entry)->hasNews = true;
  }
  if (!std::exchange(refreshScheduled_, true)) {
    QMetaObject::invokeMethod(this, &ModelBridge::refresh, Qt::QueuedConnection);
  }
}

void ModelBridge::refresh() {
  refreshScheduled_ = false;
  if (!model_) {
    return;
  }
  for (auto& entry : entries_) {
    show(*entry);
  }
}

void ModelBridge::show(Entry& entry) {
  switch (entry.member.kind()) {
    case Member::Kind::action:
      return entry.action->update();
    case Member::Kind::part:
    case Member::Kind::rows:
    case Member::Kind::sheet:
      if (std::exchange(entry.hasNews, false)) {
        showNested(entry);
      }
      return;
    case Member::Kind::text:
      return;
    default:
      return showValue(entry);
  }
}

void ModelBridge::showValue(Entry& entry) {
  Value value = entry.member.value();
  if (value == entry.shown) {
    return;
  }
  entry.shown = std::move(value);
  if (entry.list && entry.shown.list()) {
    entry.list->assign(rowsOf(*entry.shown.list(), entry.form));
  } else {
    insert(entry.name, toVariant(entry.shown, entry.form));
  }
}

void ModelBridge::showNested(Entry& entry) {
  auto former = std::exchange(entry.nested, {});
  const auto shown = entry.member.nested();
  for (const auto& [key, object] : shown) {
    const auto known = former.extract(object.get());
    entry.nested.emplace(object.get(), known ? std::move(known.mapped()) : Entry::Nested{object});
  }
  if (entry.list) {
    showRows(entry, shown);
  } else {
    ModelBridge* const bridge = shown.empty() ? nullptr : bridgeOf(entry, shown.front().object.get());
    insert(entry.name, QVariant::fromValue<QObject*>(bridge));
  }
  if (entry.member.kind() == Member::Kind::sheet) {
    showPresented(isPage(entry.member) ? Kind::page : Kind::sheet);
  }
  for (const auto& [object, gone] : former) {
    if (gone.bridge) {
      gone.bridge->retire();
    }
  }
}

void ModelBridge::showRows(Entry& entry, const std::vector<Member::Nested>& rows) {
  std::vector<KeyedListModel::Row> shown;
  shown.reserve(rows.size());
  for (const auto& [key, object] : rows) {
    shown.push_back({exactText(key), QVariant::fromValue<void*>(object.get())});
  }
  const auto* const selected = dynamic_cast<const SelectedRows*>(&entry.member);
  const auto revision = selected ? selected->revision() : 0;
  const bool isNews = std::exchange(entry.revision, revision) == revision;
  entry.list->assign(std::move(shown),
                     isNews ? KeyedListModel::Change::news : KeyedListModel::Change::selection);
}

// Null if the object has gone.
ModelBridge* ModelBridge::bridgeOf(Entry& entry, const ObservableObject* object) {
  const auto known = entry.nested.find(object);
  if (known == entry.nested.end()) {
    return nullptr;
  }
  auto& nested = known->second;
  if (!nested.bridge && nested.object) {
    nested.bridge = new ModelBridge(nested.object, this);
  }
  return nested.bridge;
}

// The presented sheet or replacement of this kind; null if there is none. A sheet that the person can't
// dismiss replaces the screen instead of lying over it.
ModelBridge::Entry* ModelBridge::presented(Kind kind) const {
  const auto up = std::ranges::find_if(entries_, [kind](const auto& entry) {
    return entry->member.kind() == Member::Kind::sheet && entry->member.isInput() && !entry->nested.empty() &&
           isPage(entry->member) == (kind == Kind::page);
  });
  return up == entries_.end() ? nullptr : up->get();
}

void ModelBridge::showPresented(Kind kind) {
  const Entry* const up = presented(kind);
  insert(kind == Kind::page ? pageKey : sheetKey,
         QVariant::fromValue<QObject*>(up ? up->nested.begin()->second.bridge : nullptr));
}

void ModelBridge::dismiss(Kind kind) {
  Entry* const up = presented(kind);
  if (model_ && up) {
    const auto alive = model_;
    up->member.input(false);
  }
}

void ModelBridge::dismissSheet() { dismiss(Kind::sheet); }

void ModelBridge::dismissPage() { dismiss(Kind::page); }

void ModelBridge::setPagesBeside(bool beside) {
  if (auto* const screen = dynamic_cast<ScreenModel*>(model_.get())) {
    screen->setPagesBeside(beside);
  }
}

bool ModelBridge::pressKey(int key, int modifiers) {
  const auto alive = model_;
  const QKeyCombination pressed(Qt::KeyboardModifiers(modifiers & ~Qt::KeypadModifier),
                                static_cast<Qt::Key>(key));
  const auto asked = keyPress(QKeySequence(pressed).toString(QKeySequence::PortableText).toStdString());
  return alive && keyCommands_ && asked && keyCommands_->press(*asked);
}

// Releases the model at once, so that callbacks it started find it gone. The bridge keeps the last values
// while a sheet slides out or a row fades away.
void ModelBridge::retire() {
  using namespace std::chrono_literals;
  constexpr auto longerThanAnyTransition = 2s;
  changes_.cancel();
  for (auto& entry : entries_) {
    if (entry->action) {
      entry->action->retire();
    }
    for (auto& [address, nested] : entry->nested) {
      nested.object.reset();
      if (nested.bridge) {
        nested.bridge->retire();
      }
    }
  }
  model_.reset();
  QTimer::singleShot(longerThanAnyTransition, this, &QObject::deleteLater);
}

}  // namespace quillmar::ui
