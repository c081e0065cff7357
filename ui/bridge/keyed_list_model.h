#pragma once

#include <QAbstractListModel>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <vector>

namespace quillmar::ui {

// A list whose rows are known by a key: after `assign` the rows that stayed are the same rows, moved where
// need be, so that a view keeps its place, its focus and what is half swiped. While the list is held, because
// somebody is at it, no row moves for another: a new one takes the place of one that has gone, or the end.
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

  using QAbstractListModel::QAbstractListModel;

  int count() const { return static_cast<int>(rows_.size()); }
  bool isHeld() const { return isHeld_; }
  // Let go, the rows go where they belong.
  void setHeld(bool held);
  // Keys that occur more than once stand for as many rows.
  void assign(std::vector<Row> rows);
  Q_INVOKABLE QVariant at(int index) const;

  int rowCount(const QModelIndex& parent = QModelIndex()) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QHash<int, QByteArray> roleNames() const override;

 Q_SIGNALS:
  void countChanged();
  void heldChanged();
  // All changes of one assignment have been made.
  void assigned();

 private:
  void arrange(std::vector<Row> rows);
  std::vector<Row> inHeldOrder(std::vector<Row> rows) const;
  void removeAllBut(const std::vector<Row>& wanted);
  void place(int index, Row row);

  std::vector<Row> rows_;
  // The keys in the order in which they were assigned.
  QStringList order_;
  bool isHeld_ = false;
};

}  // namespace quillmar::ui
