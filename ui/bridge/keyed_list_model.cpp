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

QSet<QString> keysOf(const std::vector<KeyedListModel::Row>& rows) {
  QSet<QString> keys;
  keys.reserve(static_cast<qsizetype>(rows.size()));
  for (const auto& row : rows) {
    keys.insert(row.key);
  }
  return keys;
}

}  // namespace

void KeyedListModel::assign(std::vector<Row> rows, Change change) {
  makeKeysUnique(rows);
  order_.clear();
  for (const auto& row : rows) {
    order_.append(row.key);
  }
  isSelecting_ = change == Change::selection;
  arrange(isHeld_ && !isSelecting_ ? inHeldOrder(std::move(rows)) : std::move(rows));
  Q_EMIT assigned();
  isSelecting_ = false;
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
  renameRows(rows);
  removeAllBut(rows);
  const QSet<QString> known = keysOf(rows_);
  for (auto row = rows.begin(); row != rows.end();) {
    const auto index = static_cast<int>(row - rows.begin());
    const auto isNew = [&known](const Row& wanted) { return !known.contains(wanted.key); };
    const auto end = std::find_if_not(row, rows.end(), isNew);
    if (row != end) {
      insert(index, {std::make_move_iterator(row), std::make_move_iterator(end)});
      row = end;
    } else {
      place(index, std::move(*row++));
    }
  }
  if (count() != before) {
    Q_EMIT countChanged();
  }
}

// A row whose object is still wanted, under another key, is the same row: its view stays.
void KeyedListModel::renameRows(const std::vector<Row>& wanted) {
  const QSet<QString> known = keysOf(rows_);
  QHash<const void*, QString> newKeys;
  for (const Row& row : wanted) {
    if (const void* const object = row.data.value<void*>(); object && !known.contains(row.key)) {
      newKeys.insert(object, row.key);
    }
  }
  if (newKeys.isEmpty()) {
    return;
  }
  const QSet<QString> kept = keysOf(wanted);
  for (Row& row : rows_) {
    if (const auto found = newKeys.constFind(row.data.value<void*>());
        found != newKeys.cend() && !kept.contains(row.key)) {
      row.key = *found;
    }
  }
}

// Rows side by side are removed, and inserted, in one step: a view lays itself out again after each.
void KeyedListModel::removeAllBut(const std::vector<Row>& wanted) {
  const QSet<QString> keys = keysOf(wanted);
  const auto isKept = [&keys](const Row& row) { return keys.contains(row.key); };
  for (auto end = rows_.end(); end != rows_.begin();) {
    const auto last = std::find_if_not(std::make_reverse_iterator(end), rows_.rend(), isKept);
    const auto first = std::find_if(last, rows_.rend(), isKept).base();
    if (first == last.base()) {
      return;
    }
    const auto start = first - rows_.begin();
    beginRemoveRows(QModelIndex(), static_cast<int>(start),
                    static_cast<int>(last.base() - rows_.begin()) - 1);
    end = rows_.erase(first, last.base());
    endRemoveRows();
  }
}

void KeyedListModel::insert(int index, std::vector<Row> rows) {
  beginInsertRows(QModelIndex(), index, index + static_cast<int>(rows.size()) - 1);
  rows_.insert(rows_.begin() + index, std::make_move_iterator(rows.begin()),
               std::make_move_iterator(rows.end()));
  endInsertRows();
}

// Moves a row that the list already has. Those before `index` are in their final places.
void KeyedListModel::place(int index, Row row) {
  const auto from = std::find_if(rows_.begin() + index, rows_.end(),
                                 [&](const Row& known) { return known.key == row.key; });
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
  return index >= 0 && index < count() ? made(rows_[static_cast<std::size_t>(index)]) : QVariant();
}

int KeyedListModel::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : count(); }

QVariant KeyedListModel::data(const QModelIndex& index, int role) const {
  if (!checkIndex(index, CheckIndexOption::IndexIsValid)) {
    return {};
  }
  const Row& row = rows_[static_cast<std::size_t>(index.row())];
  return role == keyRole ? QVariant(row.key) : role == modelDataRole ? made(row) : QVariant();
}

QHash<int, QByteArray> KeyedListModel::roleNames() const {
  return {{modelDataRole, "modelData"}, {keyRole, "key"}};
}

}  // namespace quillmar::ui
