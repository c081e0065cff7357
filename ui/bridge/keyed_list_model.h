#pragma once

#include <QAbstractListModel>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <functional>
#include <utility>
#include <vector>

namespace quillmar::ui {

// A list whose rows are identified by a key. `assign` keeps the rows whose key is still there and moves them
// where needed, so that a view keeps its scroll position, its focus and a half-done swipe. While the list is
// held, because the person uses it, no row moves: a new row takes the place of a removed one, or goes to the
// end.
class KeyedListModel final : public QAbstractListModel {
  Q_OBJECT
  Q_PROPERTY(int count READ count NOTIFY countChanged)
  Q_PROPERTY(bool held READ isHeld WRITE setHeld NOTIFY heldChanged)

 public:
  struct Row {
    QString key;
    QVariant data;
  };
  enum Role { modelDataRole = Qt::UserRole, keyRole };
  // news: the same list has changed. selection: the person has chosen another list. A held list keeps its
  // order only for news.
  enum class Change { news, selection };

  using QAbstractListModel::QAbstractListModel;

  int count() const { return static_cast<int>(rows_.size()); }
  // Whether the present change is a selection by the person.
  Q_INVOKABLE bool isSelecting() const { return isSelecting_; }
  bool isHeld() const { return isHeld_; }
  // Releasing the list puts its rows into the assigned order.
  void setHeld(bool held);
  // Several rows may have the same key.
  void assign(std::vector<Row> rows, Change change = Change::news);
  // Creates the data of a row when a view first asks for it.
  void setMaking(std::function<QVariant(const QVariant& data)> make) { make_ = std::move(make); }
  Q_INVOKABLE QVariant at(int index) const;

  int rowCount(const QModelIndex& parent = QModelIndex()) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QHash<int, QByteArray> roleNames() const override;

 Q_SIGNALS:
  void countChanged();
  void heldChanged();
  // Emitted after all changes of one `assign`.
  void assigned();

 private:
  void arrange(std::vector<Row> rows);
  std::vector<Row> inHeldOrder(std::vector<Row> rows) const;
  void renameRows(const std::vector<Row>& wanted);
  void removeAllBut(const std::vector<Row>& wanted);
  void insert(int index, std::vector<Row> rows);
  void place(int index, Row row);
  QVariant made(const Row& row) const { return make_ ? make_(row.data) : row.data; }

  std::vector<Row> rows_;
  std::function<QVariant(const QVariant& data)> make_;
  // The keys in the order in which they were assigned.
  QStringList order_;
  bool isHeld_ = false;
  bool isSelecting_ = false;
};

}  // namespace quillmar::ui
