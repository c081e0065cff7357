#pragma once

#include <QAbstractListModel>
#include <QString>
#include <QVariant>
#include <vector>

namespace quillmar::ui {

// A list whose rows are known by a key: after `assign` the rows that stayed are the same rows, moved where
// need be, so that a view keeps its place, its focus and what is half swiped.
class KeyedListModel final : public QAbstractListModel {
  Q_OBJECT
  Q_PROPERTY(int count READ count NOTIFY countChanged)

 public:
  struct Row {
    QString key;
    QVariant data;
  };
  enum Role { modelDataRole = Qt::UserRole, keyRole };

  using QAbstractListModel::QAbstractListModel;

  int count() const { return static_cast<int>(rows_.size()); }
  // Keys that occur more than once stand for as many rows.
  void assign(std::vector<Row> rows);
  Q_INVOKABLE QVariant at(int index) const;

  int rowCount(const QModelIndex& parent = QModelIndex()) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QHash<int, QByteArray> roleNames() const override;

 Q_SIGNALS:
  void countChanged();

 private:
  void removeAllBut(const std::vector<Row>& wanted);
  void place(int index, Row row);

  std::vector<Row> rows_;
};

}  // namespace quillmar::ui
