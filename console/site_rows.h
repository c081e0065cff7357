#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "client/records/dns_log.h"
#include "foundation/observable.h"

// The rows of a child's activity. A row follows drags in its direction. If the drag ends beyond the
// threshold, the row acts and returns. People who can't drag use an action instead.
namespace quillmar {

// Which drags move a row, and how far it must move. Distances are in points.
struct SwipeRule {
  double direction = 1;  // 1: right, -1: left
  double steepness = 1;  // a drag counts if its width exceeds this multiple of its height
  double threshold = 0;
  double minimumDistance = 0;  // shorter movements in any direction are not drags

  bool accepts(double dx, double dy) const;
  bool firesAt(double offset) const;
};

// The strip visible behind a dragged row.
struct SwipeStrip {
  std::string_view title;
  std::string_view icon;
  std::string_view color;
};

class SwipeRow : public ObservableObject {
 public:
  Published<double> offset{*this, "offset", 0.0};
  Derived<double> swipeThreshold{*this, "swipeThreshold", [this] { return rule_.threshold; }};
  Derived<double> minimumDistance{*this, "minimumDistance", [this] { return rule_.minimumDistance; }};

  Derived<bool> showsStrip{*this, "showsStrip", [this] { return offset() != 0; }};
  Text stripTitle;
  Text stripIcon;
  Text stripColor;

  // The offset from where the drag started.
  Action<double, double> dragChanged{*this, "dragChanged", [this](double dx, double dy) { drag(dx, dy); },
                                     [this] { return canSwipe(); }};
  Action<double, double> dragEnded{*this, "dragEnded", [this](double /*dx*/, double /*dy*/) { endDrag(); }};

 protected:
  SwipeRow(std::string_view typeName, const SwipeRule& rule, const SwipeStrip& strip);

 private:
  virtual bool canSwipe() const { return true; }
  virtual void fire() = 0;
  void drag(double dx, double dy);
  void endDrag();

  const SwipeRule rule_;
};

// A site, shown by its newest log entry.
class LogRow : public SwipeRow {
 public:
  using Reaction = std::function<void(const DNSLog&)>;

  Published<DNSLog> log;
  Derived<std::string> site;
  Published<std::string> timeText{*this, "timeText"};
  // How often, in a list that counts.
  Published<std::string> countText{*this, "countText"};

  void show(const DNSLog& newLog, const std::string& newTimeText);

 protected:
  LogRow(std::string_view typeName, const SwipeStrip& strip, DNSLog log);
};

// A site that can be allowed, once.
class AllowableRow : public LogRow {
 public:
  Published<bool> isAlreadyAllowed{*this, "isAlreadyAllowed", false};

  Text allowTitle{*this, "allowTitle", "Allow"};
  Action<> allow{*this, "allow", [this] { onAllow_(log()); }, [this] { return canSwipe(); }};

 protected:
  AllowableRow(std::string_view typeName, DNSLog log, Reaction onAllow);

 private:
  bool canSwipe() const override { return !isAlreadyAllowed(); }
  void fire() override { onAllow_(log()); }

  const Reaction onAllow_;
};

// A site from the last minute, blocked or allowed.
class RecentActivityRow final : public AllowableRow {
 public:
  RecentActivityRow(DNSLog log, Reaction onAllow);

  // Always false: a swipe leaves no open row.
  Published<bool> isSwiped{*this, "isSwiped", false};

  Derived<std::string> icon{
      *this, "icon",
      [this] { return std::string(log().wasBlocked ? "xmark.circle.fill" : "checkmark.circle.fill"); }};
  Derived<std::string> iconColor{
      *this, "iconColor", [this] { return std::string(log().wasBlocked ? "brandRed" : "brandGreen"); }};
  Derived<std::optional<std::string>> badge{*this, "badge", [this] { return computeBadge(); }};
  Derived<std::string> badgeColor{
      *this, "badgeColor", [this] { return std::string(isAlreadyAllowed() ? "brandGreen" : "brandRed"); }};

 private:
  std::optional<std::string> computeBadge() const;
};

// A site that was blocked.
class BlockedSiteRow final : public AllowableRow {
 public:
  BlockedSiteRow(DNSLog log, Reaction onAllow);

  Text icon{*this, "icon", "xmark.circle.fill"};
  Text iconColor{*this, "iconColor", "brandRed"};
  Derived<std::optional<std::string>> badge{
      *this, "badge",
      [this] { return isAlreadyAllowed() ? std::optional<std::string>("Now Allowed") : std::nullopt; }};
  Text badgeIcon{*this, "badgeIcon", "checkmark"};
  Text badgeColor{*this, "badgeColor", "brandGreen"};
};

// A site that was visited.
class AllowedSiteRow final : public LogRow {
 public:
  AllowedSiteRow(DNSLog log, Reaction onBlock);

  Text icon{*this, "icon", "checkmark.circle.fill"};
  Text iconColor{*this, "iconColor", "brandGreen"};

  Text blockTitle{*this, "blockTitle", "Block"};
  Action<> block{*this, "block", [this] { onBlock_(log()); }};

 private:
  void fire() override { onBlock_(log()); }

  const Reaction onBlock_;
};

// A permanently allowed site.
class PermanentAllowedSiteRow final : public SwipeRow {
 public:
  PermanentAllowedSiteRow(std::string_view domain, std::function<void(const std::string&)> onRemove);

  Text domain;
  Text icon{*this, "icon", "checkmark.circle.fill"};
  Text iconColor{*this, "iconColor", "brandGreen"};

  Text removeTitle{*this, "removeTitle", "Remove"};
  Action<> remove{*this, "remove", [this] { onRemove_(domain()); }};

 private:
  void fire() override { onRemove_(domain()); }

  const std::function<void(const std::string&)> onRemove_;
};

// A site in a policy list, with a remove button.
class PolicySiteRow final : public ObservableObject {
 public:
  PolicySiteRow(std::string_view domain, std::function<void(const std::string&)> onRemove);

  Text domain;
  Text removeIcon{*this, "removeIcon", "minus.circle.fill"};
  Text removeTitle{*this, "removeTitle", "Remove"};
  Action<> remove{*this, "remove", [this] { onRemove_(domain()); }};

 private:
  const std::function<void(const std::string&)> onRemove_;
};

}  // namespace quillmar
