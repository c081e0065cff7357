#include "presentation/list_filter.h"

#include <algorithm>
#include <numeric>
#include <unordered_map>
#include <utility>

#include "foundation/text.h"

namespace quillmar {

SearchKey typedPart(std::string_view text) { return SearchKey(trimmed(text)); }

ListFilter::ListFilter(ObservableObject& screen)
    : text(screen, "filterText"),
      isOpen(screen, "isFilterOpen", false),
      asks(screen, "filterAsks", 0),
      placeholder(screen, "filterPlaceholder", "Part of the name"),
      openTitle(screen, "openFilterTitle", "Find"),
      closeTitle(screen, "closeFilterTitle", "Show all"),
      open(
          screen, "openFilter",
          [this] {
            isOpen = true;
            asks = asks() + 1;
          },
          [this] { return isOpen() || hasChoice(); }),
      close(
          screen, "closeFilter",
          [this] {
            text = std::string();
            isOpen = false;
          },
          [this] { return isOpen(); }),
      reaction_(text.onChange([this] { take(); })) {}

bool ListFilter::hasChoice() const {
  const auto rows =
      std::accumulate(lists_.begin(), lists_.end(), std::size_t{0},
                      [](std::size_t sum, const SelectedRows* list) { return sum + list->listSize(); });
  return rows > 1;
}

void ListFilter::take() {
  SearchKey part = typedPart(text());
  if (!(part == wanted_)) {
    wanted_ = std::move(part);
    changed_.emit();
  }
}

SelectedRows::SelectedRows(ObservableObject& screen, std::string_view name, const Member& list,
                           ListFilter& filter)
    : Member(screen, name, Kind::rows),
      list_(list),
      listReaction_(screen.observe([this](const Member& changed) {
        if (&changed == &list_) {
          takeList();
        }
      })) {
  filter.lists_.push_back(this);
}

FilteredRows::FilteredRows(ObservableObject& screen, const Names& names, const Member& list,
                           ListFilter& filter)
    : SelectedRows(screen, names.rows, list, filter),
      noMatch(screen, names.noMatch, [this] { return computeNoMatch(); }),
      filter_(filter),
      searched_(names.searched),
      filterReaction_(filter.onChange([this] { takeFilter(); })) {
  setListSize(list.nested().size());
}

std::vector<Member::Nested> FilteredRows::nested() const {
  if (!filter_.isActive()) {
    return SelectedRows::nested();
  }
  std::vector<Nested> shown;
  for (const auto& candidate : candidates_) {
    if (candidate->isShown) {
      shown.push_back(candidate->row);
    }
  }
  return shown;
}

void FilteredRows::takeFilter() {
  if (!filter_.isActive()) {
    candidates_.clear();
  } else if (candidates_.empty()) {
    updateCandidates(list().nested());
  } else {
    std::ranges::for_each(candidates_, [this](const auto& candidate) { judge(*candidate); });
  }
  select();
}

void FilteredRows::takeList() {
  const auto rows = list().nested();
  setListSize(rows.size());
  if (filter_.isActive()) {
    updateCandidates(rows);
  }
  announce();
}

void FilteredRows::updateCandidates(const std::vector<Nested>& rows) {
  std::unordered_map<const ObservableObject*, std::unique_ptr<Candidate>> known;
  for (auto& candidate : candidates_) {
    known.emplace(candidate->row.object.get(), std::move(candidate));
  }
  candidates_.clear();
  candidates_.reserve(rows.size());
  for (const Nested& row : rows) {
    const auto found = known.find(row.object.get());
    candidates_.push_back(found == known.end() ? makeCandidate(row) : std::move(found->second));
  }
}

std::unique_ptr<FilteredRows::Candidate> FilteredRows::makeCandidate(const Nested& row) {
  auto candidate = std::make_unique<Candidate>(Candidate{row, row.object->findMember(searched_)});
  takeName(*candidate);
  candidate->changes = row.object->observe([this, &renamed = *candidate](const Member& /*changed*/) {
    const bool wasShown = renamed.isShown;
    takeName(renamed);
    if (renamed.isShown != wasShown) {
      announce();
    }
  });
  return candidate;
}

void FilteredRows::takeName(Candidate& candidate) {
  const Value value = candidate.name ? candidate.name->value() : Value();
  const std::string* const name = value.string();
  if (name && *name != candidate.written) {
    candidate.written = *name;
    candidate.key = SearchKey(*name);
  }
  judge(candidate);
}

void FilteredRows::judge(Candidate& candidate) const {
  candidate.isShown = candidate.key.contains(filter_.wanted());
}

std::optional<std::string> FilteredRows::computeNoMatch() const {
  const bool isNothingShown =
      std::ranges::none_of(candidates_, [](const auto& candidate) { return candidate->isShown; });
  return !candidates_.empty() && isNothingShown ? std::optional<std::string>(noMatchText) : std::nullopt;
}

}  // namespace quillmar
