#pragma once

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <memory>
#include <string>
#include <vector>

#include "foundation/record.h"
#include "ui/bridge/keyed_list_model.h"
#include "ui/bridge/model_bridge.h"

namespace quillmar::ui {

// A record in a model.
struct Entry {
  std::string id;
  int count = 0;
  std::vector<std::string> sites{};
  friend bool operator==(const Entry&, const Entry&) = default;
};

// A model and its bridge.
template <class Model>
struct BridgedModel : testing::Test {
  static void turn() { QCoreApplication::processEvents(); }
  static ModelBridge* asBridge(const QVariant& value) {
    return qobject_cast<ModelBridge*>(value.value<QObject*>());
  }
  QVariant shown(const char* name) const { return bridge.value(QLatin1StringView(name)); }
  ModelBridge* nested(const char* name) const { return asBridge(shown(name)); }
  KeyedListModel* list(const char* name) const { return shown(name).template value<KeyedListModel*>(); }
  ActionBridge* action(const char* name) const { return shown(name).template value<ActionBridge*>(); }
  // Assigns to a property as QML does.
  void assign(const char* name, const QVariant& value) { bridge.setProperty(name, value); }

  std::shared_ptr<Model> model = std::make_shared<Model>();
  ModelBridge bridge{model};
};

}  // namespace quillmar::ui

namespace quillmar {

template <>
inline constexpr auto wire<ui::Entry> = record(required("id", &ui::Entry::id),
                                               required("count", &ui::Entry::count),
                                               required("sites", &ui::Entry::sites));

}  // namespace quillmar
