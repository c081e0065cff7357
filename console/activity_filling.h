#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "client/records/device.h"
#include "console/activity_log.h"
#include "console/child_page.h"
#include "foundation/raw_enum.h"

namespace quillmar {

// loading: more entries to request. stopped: by the person. failed: only devices whose request failed are
// left. full: no room for more entries. complete: the service has no more entries.
enum class FillingState { loading, stopped, failed, full, complete };

template <>
inline constexpr std::array rawNames<FillingState> =
    rawCases<FillingState>({{FillingState::loading, "loading"},
                            {FillingState::stopped, "stopped"},
                            {FillingState::failed, "failed"},
                            {FillingState::full, "full"},
                            {FillingState::complete, "complete"}});

// Fills a log page by page, each device from its newest entry on, until the service has no more entries or
// the log is full. To spare the service it sends few requests a minute, and one at a time for each device.
// New entries at the service shift the offsets: a page may then repeat entries, but never omits one.
class ActivityFilling {
  // First: the members register with it.
  ScreenModel& screen_;

 public:
  static constexpr std::int64_t pageSize = 1000;
  static constexpr int requestsPerMinute = 50;

  // `onAnswer` runs after each answer, even one without new entries.
  ActivityFilling(ChildPage& page, ScreenModel& screen, Calendar calendar, ActivityLog& log,
                  std::function<void()> onAnswer);

  Published<FillingState> state{screen_, "filling", FillingState::loading};
  // The number of entries, and the time of the oldest one.
  Published<std::string> progressText{screen_, "progressText"};
  // One line for each device that failed.
  Published<std::optional<std::string>> failureText{screen_, "failureText"};
  Published<std::optional<std::string>> limitText{screen_, "limitText"};
  Text stopTitle{screen_, "stopTitle", "Stop"};
  Text goOnTitle{screen_, "goOnTitle", "Go On"};
  Text tryAgainTitle{screen_, "tryAgainTitle", "Try Again"};

  Action<> stop{screen_, "stop", [this] { setStopped(true); },
                [this] { return state() == FillingState::loading; }};
  Action<> goOn{screen_, "goOn", [this] { setStopped(false); },
                [this] { return state() == FillingState::stopped; }};
  Action<> tryAgain{screen_, "tryAgain", [this] { retry(); },
                    [this] { return isOpen_ && failureText().has_value(); }};

  // Starts to load these devices. Entries of other devices stay in the log.
  void load(const std::vector<Device>& devices);
  // Sends no further request.
  void close() { isOpen_ = false; }

  // Everything since this time is loaded, except for devices that failed; nullopt if not yet known.
  std::optional<Date> reached() const;
  // The names of the devices, by their index in the log.
  std::vector<std::string> deviceNames() const;

 private:
  struct DeviceLog {
    std::string id;
    std::string name;
    std::size_t offset = 0;
    // The time of the last entry so far.
    std::optional<Date> oldest = std::nullopt;
    int pagesWithoutNews = 0;
    bool isLinked = true;
    bool isAsked = false;
    bool hasEnded = false;
    std::optional<std::string> failure = std::nullopt;

    bool hasMore() const { return isLinked && !hasEnded && !failure; }
  };

  void setStopped(bool isStopped);
  void retry();
  void askAll();
  DeviceLog* nextToAsk();
  void ask(std::size_t device);
  void takeBackRequest();
  void finish(std::size_t device, const Result<DNSLogsResponse>& answer);
  void take(std::size_t device, const std::vector<DNSLog>& page);
  void show();
  FillingState computeState() const;
  std::string computeProgress() const;
  std::optional<std::string> computeFailures() const;
  std::optional<std::string> computeLimit() const;

  ChildPage& page_;
  ActivityLog& log_;
  const Calendar calendar_;
  const std::function<void()> onAnswer_;
  std::vector<DeviceLog> devices_;
  int requestsLeft_ = requestsPerMinute;
  bool isOpen_ = false;
  bool isStopped_ = false;
};

}  // namespace quillmar
