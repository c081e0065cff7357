#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "console/child_page.h"
#include "foundation/observable.h"
#include "platform/dispatch.h"

namespace quillmar {

enum class PolicyList { allowed, blocked };

// A site that was just added to a list of the policy and can be taken back for ten seconds.
class AddedSiteRow final : public ObservableObject {
 public:
  using Reaction = std::function<void(AddedSiteRow&)>;

  AddedSiteRow(PolicyList list, const std::string& domain, Dispatch& dispatch, Reaction onUndo,
               Reaction onTimeout);

  Text verb;
  Text domain;
  Text icon;
  Text iconColor;
  Text undoTitle{*this, "undoTitle", "Undo"};
  Action<> undo{*this, "undo", [this] { onUndo_(*this); }};

  PolicyList list() const { return list_; }

 private:
  const PolicyList list_;
  const Reaction onUndo_;
  const std::unique_ptr<Timer> timer_;
};

// The sites that were just added, the newest last. A site is removed as soon as it is taken back, before the
// service answers, so that a second tap sends nothing. It is also removed when it leaves its list in another
// way.
class AddedSites {
 public:
  // `takeBack` removes a site from a list.
  using TakeBack = std::function<void(PolicyList, const std::string& domain)>;

  AddedSites(ChildPage& page, TakeBack takeBack);

  Rows<AddedSiteRow> rows;

  void add(PolicyList list, const std::string& domain);
  // Removes the sites that are not in `domains`, the present content of this list.
  void keepOnly(PolicyList list, const std::vector<std::string>& domains);
  void clear();

 private:
  // True if there was such a site.
  template <class Predicate>
  bool removeIf(Predicate isOver);
  bool remove(const AddedSiteRow& row);

  ChildPage& page_;
  const TakeBack takeBack_;
  std::vector<std::pair<std::string, std::shared_ptr<AddedSiteRow>>> shown_;
  std::uint64_t lastKey_ = 0;
};

}  // namespace quillmar
