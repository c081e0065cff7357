#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "console/added_sites.h"
#include "console/child_page.h"
#include "console/site_rows.h"

namespace quillmar {

// The child's filtering policy: the internet block, and the sites that are always blocked or always allowed.
// A change is shown only after the service has answered.
class PolicySection {
  // First: the members register with it.
  ChildPage& page_;
  ScreenModel& screen_;

 public:
  explicit PolicySection(ChildPage& page);

  // The last policy received.
  Published<std::optional<ChildPolicy>> policy{screen_, "policy"};
  Input<bool> isBlocked{screen_, "isBlocked", false};
  // Sent with the toggle.
  Published<std::string> blockMode{screen_, "blockMode", "blacklist"};
  Published<std::vector<std::string>> blockedDomains{screen_, "blockedDomains"};
  Published<std::vector<std::string>> allowedDomains{screen_, "allowedDomains"};
  // The text fields for an allowed site and for a blocked one.
  Input<std::string> newDomain{screen_, "newDomain"};
  Input<std::string> newBlockedDomain{screen_, "newBlockedDomain"};

  Rows<PolicySiteRow> allowedRows{screen_, "allowedRows"};
  Rows<PolicySiteRow> blockedRows{screen_, "blockedRows"};
  // The allowed sites, shown among the visited ones.
  Rows<PermanentAllowedSiteRow> permanentAllowedSiteRows{screen_, "permanentAllowedSiteRows"};
  // The sites that can still be taken back.
  AddedSites addedSites;
  Derived<std::int64_t> allowedCount{screen_, "allowedCount",
                                     [this] { return std::ssize(allowedDomains()); }};
  Derived<std::int64_t> blockedCount{screen_, "blockedCount",
                                     [this] { return std::ssize(blockedDomains()); }};

  Text controlsTitle{screen_, "controlsTitle", "Internet Controls"};
  Text blockTitle{screen_, "blockTitle", "Block the Internet"};
  Text blockCaption{screen_, "blockCaption", "Block all sites except allowed list"};
  // nullopt if the internet is not blocked.
  Derived<std::optional<std::string>> blockWarning{screen_, "blockWarning",
                                                   [this] { return computeBlockWarning(); }};
  Text blockWarningIcon{screen_, "blockWarningIcon", "exclamationmark.triangle.fill"};
  Text allowedTitle{screen_, "allowedTitle", "Allowed Sites"};
  Text noAllowedText{
      screen_, "noAllowedText",
      "No sites allowed yet. Default sites (Quillmar, Microsoft, Apple, Google) are always allowed."};
  Text allowedPlaceholder{screen_, "allowedPlaceholder", "Add allowed site (e.g., example.com)"};
  Text blockedTitle{screen_, "blockedTitle", "Blocked Sites"};
  Text blockedCaption{screen_, "blockedCaption", "Sites in this list will always be blocked"};
  Text noBlockedText{screen_, "noBlockedText", "No blocked sites yet"};
  Text blockedPlaceholder{screen_, "blockedPlaceholder", "Add blocked site (e.g., example.com)"};
  Text addIcon{screen_, "addIcon", "plus.circle.fill"};
  Text permanentTitle{screen_, "permanentTitle", "Sites You've Allowed"};
  Text permanentCaption{screen_, "permanentCaption", "These sites are always allowed. Swipe left to remove."};
  Text noPermanentHeading{screen_, "noPermanentHeading", "No sites manually allowed yet"};
  Text noPermanentText{screen_, "noPermanentText",
                       "Default sites (Quillmar, Microsoft, Apple, Google) are always allowed."};

  Action<> addAllowedSite{screen_, "addAllowedSite", [this] { addAllowed(); },
                          [this] { return !newDomain().empty(); }};
  Action<> addBlockedSite{screen_, "addBlockedSite", [this] { addBlocked(); },
                          [this] { return !newBlockedDomain().empty(); }};
  Action<std::string> removeAllowedSite{screen_, "removeAllowedSite",
                                        [this](const std::string& domain) { removeAllowed(domain); }};
  Action<std::string> removeBlockedSite{screen_, "removeBlockedSite",
                                        [this](const std::string& domain) { removeBlocked(domain); }};

  // Without a policy, nothing is in force and the lists stay as they are.
  void show(const std::optional<ChildPolicy>& answer);
  // Stops work that is needed only while the page is visible.
  void stop() { addedSites.clear(); }
  bool isDomainAllowed(std::string_view domain) const;
  void allowFromLog(const DNSLog& log);
  void blockFromLog(const DNSLog& log);

 private:
  struct ListPlace;

  void update();
  void takeAddition(const ListPlace& place, const std::string& site, const ChildPolicy& answer);
  void takeBack(PolicyList list, const std::string& domain);
  void addAllowed();
  void addBlocked();
  void removeAllowed(const std::string& domain);
  void removeBlocked(const std::string& domain);
  void rememberAllowed();
  void showAllowedRows();
  void showBlockedRows();
  std::optional<std::string> computeBlockWarning() const;

  // The allowed sites in lower case.
  std::unordered_set<std::string> allowed_;
  // Whether the lists have been loaded.
  bool isLoaded_ = false;
  std::vector<Subscription> reactions_;
};

}  // namespace quillmar
