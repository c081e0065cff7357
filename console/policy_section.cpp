#include "console/policy_section.h"

#include <algorithm>
#include <iterator>

#include "client/child_calls.h"
#include "client/network_service.h"
#include "console/keyed_rows.h"
#include "console/root_domain.h"
#include "foundation/text.h"

namespace quillmar {
namespace {

// The service decides whether it is a valid domain.
std::string normalised(const std::string& typed) { return trimmed(lowercased(typed)); }

// The site's entry, ignoring case, or the end.
auto entryOf(const std::string& site, const std::vector<std::string>& domains) {
  return std::ranges::find(domains, lowercased(site),
                           [](const std::string& domain) { return lowercased(domain); });
}

bool lists(const std::vector<std::string>& domains, const std::string& site) {
  return entryOf(site, domains) != domains.end();
}

}  // namespace

// The members for a list in this section and in an answer.
struct PolicySection::ListPlace {
  PolicyList list;
  Published<std::vector<std::string>> PolicySection::*shown;
  std::vector<std::string> ChildPolicy::*answered;

  static const ListPlace allowed;
  static const ListPlace blocked;
};

constexpr PolicySection::ListPlace PolicySection::ListPlace::allowed{
    PolicyList::allowed, &PolicySection::allowedDomains, &ChildPolicy::allowedDomains};
constexpr PolicySection::ListPlace PolicySection::ListPlace::blocked{
    PolicyList::blocked, &PolicySection::blockedDomains, &ChildPolicy::blockedDomains};

PolicySection::PolicySection(ChildPage& page)
    : page_(page),
      screen_(page.screen()),
      addedSites(page, [this](PolicyList list, const std::string& domain) { takeBack(list, domain); }) {
  reactions_.push_back(isBlocked.onChange([this] { update(); }));
  reactions_.push_back(allowedDomains.onChange([this] { rememberAllowed(); }));
  reactions_.push_back(blockedDomains.onChange([this] { showBlockedRows(); }));
  reactions_.push_back(
      allowedDomains.onChange([this] { addedSites.keepOnly(PolicyList::allowed, allowedDomains()); }));
  reactions_.push_back(
      blockedDomains.onChange([this] { addedSites.keepOnly(PolicyList::blocked, blockedDomains()); }));
}

void PolicySection::show(const std::optional<ChildPolicy>& answer) {
  isLoaded_ = true;
  if (!answer) {
    return;
  }
  policy = answer;
  blockMode = answer->blockMode;
  blockedDomains = answer->blockedDomains;
  allowedDomains = answer->allowedDomains;
  // Assigned last: its change triggers a call that reads the others.
  isBlocked = answer->isBlocked;
}

// The site can be taken back if its addition changed the list. The page may have gone by now, or may not know
// what was in the list before.
void PolicySection::takeAddition(const ListPlace& place, const std::string& site, const ChildPolicy& answer) {
  const bool wasListed = lists((this->*place.shown)(), site);
  (this->*place.shown) = answer.*place.answered;
  const auto& domains = (this->*place.shown)();
  if (const auto entry = entryOf(site, domains);
      isLoaded_ && !wasListed && entry != domains.end() && screen_.isOnScreen()) {
    addedSites.add(place.list, *entry);
  }
}

void PolicySection::takeBack(PolicyList list, const std::string& domain) {
  list == PolicyList::allowed ? removeAllowed(domain) : removeBlocked(domain);
}

void PolicySection::update() {
  if (isBlocked()) {
    blockMode = std::string("whitelist");
  }
  page_.service().send(calls::updateChildPolicy, {page_.child().id},
                       {.isBlocked = isBlocked(), .blockMode = blockMode()},
                       page_.completion<ChildPolicy>([this](const ChildPolicy& answer) {
                         policy = answer;
                         blockedDomains = answer.blockedDomains;
                         allowedDomains = answer.allowedDomains;
                       }));
}

void PolicySection::addAllowed() {
  const std::string site = normalised(newDomain());
  page_.service().send(calls::addChildAllowedDomain, {page_.child().id}, {site},
                       page_.completion<ChildPolicy>([this, site](const ChildPolicy& answer) {
                         takeAddition(ListPlace::allowed, site, answer);
                         newDomain = std::string();
                       }));
}

void PolicySection::addBlocked() {
  const std::string site = normalised(newBlockedDomain());
  page_.service().send(calls::addChildBlockedDomain, {page_.child().id}, {site},
                       page_.completion<ChildPolicy>([this, site](const ChildPolicy& answer) {
                         takeAddition(ListPlace::blocked, site, answer);
                         newBlockedDomain = std::string();
                       }));
}

void PolicySection::removeAllowed(const std::string& domain) {
  page_.service().send(calls::removeChildAllowedDomain, {page_.child().id, domain},
                       page_.completion<ChildPolicy>(
                           [this](const ChildPolicy& answer) { allowedDomains = answer.allowedDomains; }));
}

void PolicySection::removeBlocked(const std::string& domain) {
  page_.service().send(calls::removeChildBlockedDomain, {page_.child().id, domain},
                       page_.completion<ChildPolicy>(
                           [this](const ChildPolicy& answer) { blockedDomains = answer.blockedDomains; }));
}

void PolicySection::allowFromLog(const DNSLog& log) {
  const std::string site = rootDomain(log);
  if (isDomainAllowed(site)) {
    return;
  }
  page_.service().send(calls::addChildAllowedDomain, {page_.child().id}, {site},
                       page_.completion<ChildPolicy>([this, site](const ChildPolicy& answer) {
                         takeAddition(ListPlace::allowed, site, answer);
                         page_.platform().haptics.play(HapticFeedback::success);
                       }));
}

void PolicySection::blockFromLog(const DNSLog& log) {
  const std::string site = rootDomain(log);
  page_.service().send(calls::addChildBlockedDomain, {page_.child().id}, {site},
                       page_.completion<ChildPolicy>([this, site](const ChildPolicy& answer) {
                         takeAddition(ListPlace::blocked, site, answer);
                         page_.platform().haptics.play(HapticFeedback::success);
                       }));
}

bool PolicySection::isDomainAllowed(std::string_view domain) const {
  return allowed_.contains(lowercased(domain));
}

void PolicySection::rememberAllowed() {
  allowed_.clear();
  for (const auto& domain : allowedDomains()) {
    allowed_.insert(lowercased(domain));
  }
  showAllowedRows();
}

void PolicySection::showAllowedRows() {
  const auto itself = [](const std::string& domain) { return domain; };
  const auto remove = screen_.weakly([this](const std::string& domain) { removeAllowed(domain); });
  showInRows(
      allowedRows, allowedDomains(), itself,
      [&](const std::string& domain) { return std::make_shared<PolicySiteRow>(domain, remove); },
      [](PolicySiteRow& /*row*/, const std::string& /*domain*/) {});
  showInRows(
      permanentAllowedSiteRows, allowedDomains(), itself,
      [&](const std::string& domain) { return std::make_shared<PermanentAllowedSiteRow>(domain, remove); },
      [](PermanentAllowedSiteRow& /*row*/, const std::string& /*domain*/) {});
}

void PolicySection::showBlockedRows() {
  showInRows(
      blockedRows, blockedDomains(), [](const std::string& domain) { return domain; },
      [this](const std::string& domain) {
        return std::make_shared<PolicySiteRow>(
            domain, screen_.weakly([this](const std::string& chosen) { removeBlocked(chosen); }));
      },
      [](PolicySiteRow& /*row*/, const std::string& /*domain*/) {});
}

std::optional<std::string> PolicySection::computeBlockWarning() const {
  return isBlocked() ? std::optional("Internet is blocked for " + page_.child().name +
                                     ". Only allowed sites will work.")
                     : std::nullopt;
}

}  // namespace quillmar
