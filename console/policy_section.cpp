#include "console/policy_section.h"

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

}  // namespace

PolicySection::PolicySection(ChildPage& page) : page_(page), screen_(page.screen()) {
  reactions_.push_back(isBlocked.onChange([this] { update(); }));
  reactions_.push_back(allowedDomains.onChange([this] { rememberAllowed(); }));
  reactions_.push_back(blockedDomains.onChange([this] { showBlockedRows(); }));
}

void PolicySection::show(const ChildPolicy& answer) {
  policy = answer;
  blockMode = answer.blockMode;
  blockedDomains = answer.blockedDomains;
  allowedDomains = answer.allowedDomains;
  // Assigned last: its change triggers a call that reads the others.
  isBlocked = answer.isBlocked;
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
  page_.service().send(calls::addChildAllowedDomain, {page_.child().id}, {normalised(newDomain())},
                       page_.completion<ChildPolicy>([this](const ChildPolicy& answer) {
                         allowedDomains = answer.allowedDomains;
                         newDomain = std::string();
                       }));
}

void PolicySection::addBlocked() {
  page_.service().send(calls::addChildBlockedDomain, {page_.child().id}, {normalised(newBlockedDomain())},
                       page_.completion<ChildPolicy>([this](const ChildPolicy& answer) {
                         blockedDomains = answer.blockedDomains;
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
                       page_.completion<ChildPolicy>([this](const ChildPolicy& answer) {
                         allowedDomains = answer.allowedDomains;
                         page_.platform().haptics.play(HapticFeedback::success);
                       }));
}

void PolicySection::blockFromLog(const DNSLog& log) {
  page_.service().send(calls::addChildBlockedDomain, {page_.child().id}, {rootDomain(log)},
                       page_.completion<ChildPolicy>([this](const ChildPolicy& answer) {
                         blockedDomains = answer.blockedDomains;
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
