#include "ui/bridge/keyed_list_model.h"

#include <QHash>
#include <QSet>
#include <algorithm>
#include <utility>

namespace quillmar::ui {
namespace {

void makeKeysUnique(std::vector<KeyedListModel::Row>& rows) {
  QHash<QString, int> seen;
  for (auto& row : rows) {
    if (const int before = seen[row.key]++; before > 0) {
      row.key += QLatin1Char('\n') + QString::number(before);
    }
  }
}

}  // namespace

void KeyedListModel::assign(std::vector<Row> rows) {
  const int before = count();
  makeKeysUnique(rows);
  removeAllBut(rows);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    place(static_cast<int>(i), std::move(rows[i]));
  }
  if (count() != before) {
    Q_EMIT countChanged();
  }
}

void KeyedListModel::removeAllBut(const std::vector<Row>& wanted) {
  QSet<QString> keys;
  for (const auto& row : wanted) {
    keys.insert(row.key);
  }
  for (int i = count() - 1; i >= 0; --i) {
    if (!keys.contains(rows_[static_cast<std::size_t>(i)].key)) {
      beginRemoveRows(QModelIndex(), i, i);
      rows_.erase(rows_.begin() + i);
      endRemoveRows();
    }
  }
}

// Rows before `index` stand already as they should.
void KeyedListModel::place(int index, Row row) {
  const auto from = std::find_if(rows_.begin() + index, rows_.end(),
                                 [&](const Row& known) { return known.key == row.key; });
  if (from == rows_.end()) {
    beginInsertRows(QModelIndex(), index, index);
    rows_.insert(rows_.begin() + index, std::move(row));
    endInsertRows();
    return;
  }
  const int position = static_cast<int>(from - rows_.begin());
  if (position != index) {
    beginMoveRows(QModelIndex(), position, position, QModelIndex(), index);
    std::rotate(rows_.begin() + index, from, from + 1);
    endMoveRows();
  }
  if (auto& data = rows_[static_cast<std::size_t>(index)].data; data != row.data) {
    data = std::move(row.data);
    const QModelIndex changed = this->index(index);
    Q_EMIT dataChanged(changed, changed, {modelDataRole});
  }
}

QVariant KeyedListModel::at(int index) const {
  return index >= 0 && index < count() ? rows_[static_cast<std::size_t>(index)].data : QVariant();
}

int KeyedListModel::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : count(); }

QVariant KeyedListModel::data(const QModelIndex& index, int role) const {
  if (!checkIndex(index, CheckIndexOption::IndexIsValid)) {
    return {};
  }
  const Row& row = rows_[static_cast<std::size_t>(index.row())];
  return role == keyRole ? QVariant(row.key) : role == modelDataRole ? row.data : QVariant();
}

QHash<int, QByteArray> KeyedListModel::roleNames() const {
  return {{modelDataRole, "modelData"}, {keyRole, "key"}};
}

}  // namespace quillmar::ui
