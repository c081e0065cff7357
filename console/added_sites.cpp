#include "console/added_sites.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

namespace quillmar {
namespace {

constexpr auto undoTime = std::chrono::seconds(10);

struct ListFace {
  PolicyList list;
  std::string_view verb;
  std::string_view icon;
  std::string_view color;
};

constexpr auto listFaces =
    std::to_array<ListFace>({{PolicyList::allowed, "Allowed", "checkmark.circle.fill", "brandGreen"},
                             {PolicyList::blocked, "Blocked", "nosign", "brandRed"}});

const ListFace& faceOf(PolicyList list) { return *std::ranges::find(listFaces, list, &ListFace::list); }

}  // namespace

AddedSiteRow::AddedSiteRow(PolicyList list, const std::string& domain, Dispatch& dispatch, Reaction onUndo,
                           Reaction onTimeout)
    : ObservableObject("AddedSiteRow"),
      verb(*this, "verb", faceOf(list).verb),
      domain(*this, "domain", domain),
      icon(*this, "icon", faceOf(list).icon),
      iconColor(*this, "iconColor", faceOf(list).color),
      list_(list),
      onUndo_(std::move(onUndo)),
      timer_(dispatch.scheduleRepeating(
          undoTime, weakly([this, onTimeout = std::move(onTimeout)] { onTimeout(*this); }))) {}

AddedSites::AddedSites(ChildPage& page, TakeBack takeBack)
    : rows(page.screen(), "addedSites"), page_(page), takeBack_(std::move(takeBack)) {}

void AddedSites::add(PolicyList list, const std::string& domain) {
  const auto undo = [this](AddedSiteRow& row) {
    if (remove(row)) {
      takeBack_(row.list(), row.domain());
    }
  };
  const auto& screen = page_.screen();
  shown_.emplace_back(
      std::to_string(++lastKey_),
      std::make_shared<AddedSiteRow>(list, domain, page_.dispatch(), screen.weakly(undo),
                                     screen.weakly([this](const AddedSiteRow& row) { remove(row); })));
  rows.assign(shown_);
}

void AddedSites::keepOnly(PolicyList list, const std::vector<std::string>& domains) {
  removeIf([&](const AddedSiteRow& row) {
    return row.list() == list && std::ranges::find(domains, row.domain()) == domains.end();
  });
}

void AddedSites::clear() {
  removeIf([](const AddedSiteRow& /*row*/) { return true; });
}

bool AddedSites::remove(const AddedSiteRow& row) {
  return removeIf([&](const AddedSiteRow& other) { return &other == &row; });
}

template <class Predicate>
bool AddedSites::removeIf(Predicate isOver) {
  const bool removes = std::erase_if(shown_, [&](const auto& entry) { return isOver(*entry.second); }) > 0;
  if (removes) {
    rows.assign(shown_);
  }
  return removes;
}

}  // namespace quillmar
