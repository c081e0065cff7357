#pragma once

#include <QQmlPropertyMap>
#include <QVariant>
#include <memory>
#include <vector>

#ifndef Q_MOC_RUN
#include "foundation/observable.h"
#endif

namespace quillmar {
class Member;
class ObservableObject;
}  // namespace quillmar

namespace quillmar::ui {

class KeyedListModel;
class ModelBridge;

// An action of a model for QML: `model.signIn.enabled`, `model.signIn.trigger()`.
class ActionBridge final : public QObject {
  Q_OBJECT
  Q_PROPERTY(bool enabled READ enabled NOTIFY enabledChanged)

 public:
  ActionBridge(ModelBridge& model, Member& member);

  bool enabled() const { return enabled_; }
  void update();
  void retire();

  Q_INVOKABLE bool trigger() { return perform({}); }
  Q_INVOKABLE bool trigger(const QVariant& argument) { return perform({argument}); }
  Q_INVOKABLE bool trigger(const QVariant& first, const QVariant& second) { return perform({first, second}); }

 Q_SIGNALS:
  void enabledChanged();

 private:
  bool perform(const QVariantList& arguments);

  ModelBridge& model_;
  Member* member_;
  bool enabled_;
};

// An observable object for QML, made from its own list of members:
// - state, derived values and texts are properties of the same name; setting an input's property is a
//   person's input, of anything else does nothing; a list is a KeyedListModel;
// - a text is a `shownText`, so that no screen can draw what a model holds in any other form; only that of an
//   input is not shortened;
// - actions are ActionBridges;
// - a part and a sheet are bridges of their own, or null; rows are a KeyedListModel of bridges;
// - besides, `typeName` names the object's type, and `sheet` is what is presented over this screen, or null.
// Announcements are gathered: what changed in one turn of the event loop is looked at once, in the next.
class ModelBridge final : public QQmlPropertyMap {
  Q_OBJECT

 public:
  explicit ModelBridge(std::shared_ptr<ObservableObject> model, QObject* parent = nullptr);
  ~ModelBridge() override;

  // Null once retired.
  const std::shared_ptr<ObservableObject>& model() const { return model_; }

  // Asks the model to take away the sheet that is up, as a person does who swipes it down.
  Q_INVOKABLE void dismissSheet();

 protected:
  QVariant updateValue(const QString& key, const QVariant& input) override;

 private:
  struct Entry;

  void addEntry(Member& member);
  void addList(Entry& entry);
  void scheduleRefresh();
  void refresh();
  void show(Entry& entry);
  void showValue(Entry& entry);
  void showNested(Entry& entry);
  static bool isSheetUp(const Entry& entry);
  void showSheet();
  void retire();

  // The entries name the model's members, and go first.
  std::shared_ptr<ObservableObject> model_;
  std::vector<std::unique_ptr<Entry>> entries_;
  Subscription changes_;
  bool refreshScheduled_ = false;
};

}  // namespace quillmar::ui
