// The filtering policy of the child.

#include <iterator>

#include "console/child_detail_view.h"
#include "console/keyed_rows.h"
#include "console/root_domain.h"
#include "foundation/text.h"

namespace quillmar {
namespace {

// Whether it is a domain at all is for the service to say.
std::string normalised(const std::string& typed) { return trimmed(lowercased(typed)); }

}  // namespace

void ChildDetailView::updatePolicy() {
  if (isBlocked()) {
    blockMode = std::string("whitelist");
  }
  service().updateChildPolicy(child_.id, isBlocked(), blockMode(),
                              completion<ChildPolicy>([this](const ChildPolicy& answer) {
                                policy = answer;
                                blockedDomains = answer.blockedDomains;
                                allowedDomains = answer.allowedDomains;
                              }));
}

void ChildDetailView::addAllowed() {
  service().addChildAllowedDomain(child_.id, normalised(newDomain()),
                                  completion<ChildPolicy>([this](const ChildPolicy& answer) {
                                    allowedDomains = answer.allowedDomains;
                                    newDomain = std::string();
                                  }));
}

void ChildDetailView::addBlocked() {
  service().addChildBlockedDomain(child_.id, normalised(newBlockedDomain()),
                                  completion<ChildPolicy>([this](const ChildPolicy& answer) {
                                    blockedDomains = answer.blockedDomains;
                                    newBlockedDomain = std::string();
                                  }));
}

void ChildDetailView::removeAllowed(const std::string& domain) {
  service().removeChildAllowedDomain(
      child_.id, domain,
      completion<ChildPolicy>([this](const ChildPolicy& answer) { allowedDomains = answer.allowedDomains; }));
}

void ChildDetailView::removeBlocked(const std::string& domain) {
  service().removeChildBlockedDomain(
      child_.id, domain,
      completion<ChildPolicy>([this](const ChildPolicy& answer) { blockedDomains = answer.blockedDomains; }));
}

void ChildDetailView::allowFromLog(const DNSLog& log) {
  const std::string site = rootDomain(log);
  if (isDomainAllowed(site)) {
    return;
  }
  service().addChildAllowedDomain(child_.id, site, completion<ChildPolicy>([this](const ChildPolicy& answer) {
                                    allowedDomains = answer.allowedDomains;
                                    environment_.platform().haptics.play(HapticFeedback::success);
                                  }));
}

void ChildDetailView::blockFromLog(const DNSLog& log) {
  service().addChildBlockedDomain(child_.id, rootDomain(log),
                                  completion<ChildPolicy>([this](const ChildPolicy& answer) {
                                    blockedDomains = answer.blockedDomains;
                                    environment_.platform().haptics.play(HapticFeedback::success);
                                  }));
}

bool ChildDetailView::isDomainAllowed(std::string_view domain) const {
  return allowed_.contains(lowercased(domain));
}

void ChildDetailView::rememberAllowed() {
  allowed_.clear();
  for (const auto& domain : allowedDomains()) {
    allowed_.insert(lowercased(domain));
  }
  showAllowedRows();
  markAllowedRows();
}

void ChildDetailView::showAllowedRows() {
  const auto itself = [](const std::string& domain) { return domain; };
  const auto remove = weakly([this](const std::string& domain) { removeAllowed(domain); });
  showInRows(
      allowedRows, allowedDomains(), itself,
      [&](const std::string& domain) { return std::make_shared<PolicySiteRow>(domain, remove); },
      [](PolicySiteRow& /*row*/, const std::string& /*domain*/) {});
  showInRows(
      permanentAllowedSiteRows, allowedDomains(), itself,
      [&](const std::string& domain) { return std::make_shared<PermanentAllowedSiteRow>(domain, remove); },
      [](PermanentAllowedSiteRow& /*row*/, const std::string& /*domain*/) {});
}

void ChildDetailView::showBlockedRows() {
  showInRows(
      blockedRows, blockedDomains(), [](const std::string& domain) { return domain; },
      [this](const std::string& domain) {
        return std::make_shared<PolicySiteRow>(
            domain, weakly([this](const std::string& chosen) { removeBlocked(chosen); }));
      },
      [](PolicySiteRow& /*row*/, const std::string& /*domain*/) {});
}

std::optional<std::string> ChildDetailView::computeBlockWarning() const {
  return isBlocked()
             ? std::optional("Internet is blocked for " + child_.name + ". Only allowed sites will work.")
             : std::nullopt;
}

}  // namespace quillmar
