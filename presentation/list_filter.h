#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "foundation/observable.h"
#include "foundation/search.h"

namespace quillmar {

class SelectedRows;

// Shown in place of the rows if the filter lets none through.
inline constexpr std::string_view noMatchText = "No match";

// The text to look for, as typed. A space at its end is ignored, because it starts the next word.
SearchKey typedPart(std::string_view text);

// The text that a person looks for in the lists of a screen, without regard to case and accents. Its members
// are registered on that screen. Without a text all rows are shown.
class ListFilter {
 public:
  explicit ListFilter(ObservableObject& screen);

  Input<std::string> text;       // "filterText"
  Published<bool> isOpen;        // "isFilterOpen": the field is shown
  Published<std::int64_t> asks;  // "filterAsks": counts `open`; each puts the cursor into the field
  Text placeholder;              // "filterPlaceholder"
  Text openTitle;                // "openFilterTitle"
  Text closeTitle;               // "closeFilterTitle"
  Action<> open;                 // "openFilter": only with rows to choose from
  Action<> close;                // "closeFilter": shows all rows again

  // Empty if all rows are shown.
  const SearchKey& wanted() const { return wanted_; }
  bool isActive() const { return !wanted_.isEmpty(); }
  // Runs whenever another part is wanted, which one of another case is not.
  Subscription onChange(std::function<void()> reaction) { return changed_.connect(std::move(reaction)); }

 private:
  friend class SelectedRows;

  bool hasChoice() const;
  void take();

  SearchKey wanted_;
  std::vector<const SelectedRows*> lists_;
  Signal<> changed_;
  Subscription reaction_;
};

// A view of a list in which a person selects rows. By itself it shows all rows of the list: those of a screen
// that selects before it makes rows, because it has too many. The list, the filter and the view belong to one
// screen, and the view is declared last.
class SelectedRows : public Member {
 public:
  SelectedRows(ObservableObject& screen, std::string_view name, const Member& list, ListFilter& filter);

  std::vector<Nested> nested() const override { return list_.nested(); }
  // Increases when the person selects other rows, and not when only the list changes.
  std::uint64_t revision() const { return revision_; }
  // How many rows there are to choose from.
  std::size_t listSize() const { return listSize_; }

  // The rows are others now because the person has selected them.
  void select() {
    ++revision_;
    announce();
  }
  void setListSize(std::size_t size) { listSize_ = size; }

 protected:
  const Member& list() const { return list_; }

 private:
  virtual void takeList() { announce(); }

  const Member& list_;
  std::size_t listSize_ = 0;
  std::uint64_t revision_ = 0;
  Subscription listReaction_;
};

// The rows of a list that a filter lets through, in the list's order. It is only a view: the list keeps all
// its rows. A row that is renamed appears or disappears.
class FilteredRows final : public SelectedRows {
 public:
  struct Names {
    std::string_view rows;      // of this member
    std::string_view noMatch;   // of `noMatch`
    std::string_view searched;  // of the text in a row
  };

  FilteredRows(ObservableObject& screen, const Names& names, const Member& list, ListFilter& filter);

  // The text shown instead of rows if the filter hides all of them; nullopt otherwise.
  Derived<std::optional<std::string>> noMatch;

  std::vector<Nested> nested() const override;

 private:
  // A row of the list, and its name prepared for searches.
  struct Candidate {
    Nested row;
    const Member* name = nullptr;
    std::string written{};
    SearchKey key{};
    bool isShown = false;
    Subscription changes{};
  };

  void takeFilter();
  void takeList() override;
  void updateCandidates(const std::vector<Nested>& rows);
  std::unique_ptr<Candidate> makeCandidate(const Nested& row);
  void takeName(Candidate& candidate);
  void judge(Candidate& candidate) const;
  std::optional<std::string> computeNoMatch() const;

  const ListFilter& filter_;
  const std::string_view searched_;
  // The rows of the list while the filter is active, otherwise none.
  std::vector<std::unique_ptr<Candidate>> candidates_;
  Subscription filterReaction_;
};

}  // namespace quillmar
