#include "console/site_rows.h"

#include <cmath>
#include <utility>

#include "console/keyed_rows.h"
#include "console/root_domain.h"

namespace quillmar {
namespace {

constexpr SwipeRule logRule{.direction = 1, .steepness = 2, .threshold = 80, .minimumDistance = 30};
constexpr SwipeRule permanentRule{.direction = -1, .steepness = 1, .threshold = -80, .minimumDistance = 10};

constexpr SwipeStrip allowStrip{.title = "Allow", .icon = "checkmark", .color = "brandGreen"};
constexpr SwipeStrip blockStrip{.title = "Block", .icon = "nosign", .color = "brandRed"};
constexpr SwipeStrip removeStrip{.title = "Remove", .icon = "trash", .color = "brandRed"};

}  // namespace

bool SwipeRule::accepts(double dx, double dy) const {
  return steepness * std::abs(dy) < std::abs(dx) && dx * direction > 0;
}

bool SwipeRule::firesAt(double offset) const { return offset * direction > threshold * direction; }

SwipeRow::SwipeRow(std::string_view typeName, const SwipeRule& rule, const SwipeStrip& strip)
    : ObservableObject(typeName),
      stripTitle(*this, "stripTitle", strip.title),
      stripIcon(*this, "stripIcon", strip.icon),
      stripColor(*this, "stripColor", strip.color),
      rule_(rule) {}

void SwipeRow::drag(double dx, double dy) {
  if (rule_.accepts(dx, dy)) {
    offset = dx;
  }
}

// Uses the last accepted offset, even if the drag has moved on since.
void SwipeRow::endDrag() {
  if (canSwipe() && rule_.firesAt(offset())) {
    fire();
  }
  offset = 0.0;
}

LogRow::LogRow(std::string_view typeName, const SwipeStrip& strip, DNSLog log)
    : SwipeRow(typeName, logRule, strip),
      log(*this, "log", std::move(log)),
      site(*this, "site", [this] { return rootDomain(this->log()); }) {}

void LogRow::show(const DNSLog& newLog, const std::string& newTimeText) {
  setIfChanged(log, newLog);
  setIfChanged(timeText, newTimeText);
}

AllowableRow::AllowableRow(std::string_view typeName, DNSLog log, Reaction onAllow)
    : LogRow(typeName, allowStrip, std::move(log)), onAllow_(std::move(onAllow)) {}

RecentActivityRow::RecentActivityRow(DNSLog log, Reaction onAllow)
    : AllowableRow("RecentActivityRow", std::move(log), std::move(onAllow)) {}

std::optional<std::string> RecentActivityRow::computeBadge() const {
  if (isAlreadyAllowed()) {
    return "Allowed";
  }
  return log().wasBlocked ? std::optional<std::string>("Blocked") : std::nullopt;
}

BlockedSiteRow::BlockedSiteRow(DNSLog log, Reaction onAllow)
    : AllowableRow("BlockedSiteRow", std::move(log), std::move(onAllow)) {}

AllowedSiteRow::AllowedSiteRow(DNSLog log, Reaction onBlock)
    : LogRow("AllowedSiteRow", blockStrip, std::move(log)), onBlock_(std::move(onBlock)) {}

PermanentAllowedSiteRow::PermanentAllowedSiteRow(std::string_view domain,
                                                 std::function<void(const std::string&)> onRemove)
    : SwipeRow("PermanentAllowedSiteRow", permanentRule, removeStrip),
      domain(*this, "domain", domain),
      onRemove_(std::move(onRemove)) {}

PolicySiteRow::PolicySiteRow(std::string_view domain, std::function<void(const std::string&)> onRemove)
    : ObservableObject("PolicySiteRow"), domain(*this, "domain", domain), onRemove_(std::move(onRemove)) {}

}  // namespace quillmar
