#pragma once

#include <QQmlPropertyMap>
#include <QVariant>
#include <memory>
#include <vector>

#ifndef Q_MOC_RUN
#include "foundation/observable.h"
#endif

namespace quillmar {
class KeyCommands;
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
  Q_PROPERTY(QString key READ key CONSTANT)

 public:
  ActionBridge(ModelBridge& model, Member& member);

  bool enabled() const { return enabled_; }
  // The key that performs it; empty if there is none.
  QString key() const { return key_; }
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
  const QString key_;
  bool enabled_;
};

// Exposes an observable object to QML by the object's own list of members:
// - state, derived values and texts are properties of the same name; setting an input's property is user
//   input, setting another does nothing; a list is a KeyedListModel;
// - every text passes through `shownText`, so that no screen can draw it in another form; only the text of
//   an input is not shortened;
// - actions are ActionBridges;
// - a part or a sheet is a nested bridge, or null; rows are a KeyedListModel of bridges, each made when a
//   view asks for its row;
// - `typeName` is the object's type, `sheet` is what is presented over this screen, or null, and `page` is
//   the page that is presented, or null. A screen that presents no pages has no `page`.
// Changes are batched: what changes in one turn of the event loop is read once, in the next turn.
class ModelBridge final : public QQmlPropertyMap {
  Q_OBJECT

 public:
  explicit ModelBridge(std::shared_ptr<ObservableObject> model, QObject* parent = nullptr);
  ~ModelBridge() override;

  // Null once retired.
  const std::shared_ptr<ObservableObject>& model() const { return model_; }
  // Null if no key has an action.
  const KeyCommands* keyCommands() const { return keyCommands_; }

  // Asks the model to dismiss the open sheet, as swiping it down does.
  Q_INVOKABLE void dismissSheet();
  Q_INVOKABLE void dismissPage();
  // Tells the model whether its pages are drawn beside it.
  Q_INVOKABLE void setPagesBeside(bool beside);
  // Performs the action of a key of the model's KeyCommands. Returns false if the model has none for it now.
  Q_INVOKABLE bool pressKey(int key, int modifiers);

 protected:
  QVariant updateValue(const QString& key, const QVariant& input) override;

 private:
  struct Entry;

  void declareProperties();
  void addEntry(Member& member);
  void addList(Entry& entry);
  void scheduleRefresh(const Member& changed);
  void refresh();
  void show(Entry& entry);
  void showValue(Entry& entry);
  void showNested(Entry& entry);
  void showRows(Entry& entry, const std::vector<Member::Nested>& rows);
  ModelBridge* bridgeOf(Entry& entry, const ObservableObject* object);
  enum class Kind { sheet, page };
  Entry* presented(Kind kind) const;
  void showPresented(Kind kind);
  void dismiss(Kind kind);
  void retire();

  // Destroyed after the entries, which refer to the model's members.
  std::shared_ptr<ObservableObject> model_;
  const KeyCommands* keyCommands_;
  std::vector<std::unique_ptr<Entry>> entries_;
  Subscription changes_;
  bool refreshScheduled_ = false;
};

}  // namespace quillmar::ui
