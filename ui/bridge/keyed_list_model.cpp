#include "ui/bridge/keyed_list_model.h"

#include <QHash>
#include <QSet>
#include <algorithm>
#include <deque>
#include <iterator>
#include <optional>
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
  makeKeysUnique(rows);
  order_.clear();
  for (const auto& row : rows) {
    order_.append(row.key);
  }
  arrange(isHeld_ ? inHeldOrder(std::move(rows)) : std::move(rows));
  Q_EMIT assigned();
}

void KeyedListModel::setHeld(bool held) {
  if (std::exchange(isHeld_, held) == held) {
    return;
  }
  if (!held) {
    QHash<QString, Row> byKey;
    for (const auto& row : rows_) {
      byKey.insert(row.key, row);
    }
    std::vector<Row> rows;
    for (const auto& key : order_) {
      rows.push_back(byKey.value(key));
    }
    arrange(std::move(rows));
  }
  Q_EMIT heldChanged();
}

// Rows that the list already has keep their places.
std::vector<KeyedListModel::Row> KeyedListModel::inHeldOrder(std::vector<Row> rows) const {
  QHash<QString, std::size_t> places;
  for (const auto& row : rows_) {
    places.insert(row.key, places.size());
  }
  std::vector<std::optional<Row>> held(rows_.size());
  std::deque<Row> newcomers;
  for (auto& row : rows) {
    if (const auto known = places.constFind(row.key); known != places.cend()) {
      held[*known] = std::move(row);
    } else {
      newcomers.push_back(std::move(row));
    }
  }
  std::vector<Row> ordered;
  for (auto& place : held) {
    if (place) {
      ordered.push_back(std::move(*place));
    } else if (!newcomers.empty()) {
      ordered.push_back(std::move(newcomers.front()));
      newcomers.pop_front();
    }
  }
  std::ranges::move(newcomers, std::back_inserter(ordered));
  return ordered;
}

void KeyedListModel::arrange(std::vector<Row> rows) {
  const int before = count();
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

// The rows before `index` are in their final places.
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
