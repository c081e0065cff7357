#include "console/activity_filling.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "client/device_calls.h"
#include "console/keyed_rows.h"
#include "presentation/device_texts.h"

namespace quillmar {
namespace {

constexpr auto allowancePeriod = std::chrono::minutes(1);

// Limits requests to a service that keeps sending the same entries.
constexpr int mostPagesWithoutNews = 3;
constexpr std::string_view repeatedPagesText = "The service keeps sending the same entries.";

}  // namespace

ActivityFilling::ActivityFilling(ChildPage& page, ScreenModel& screen, Calendar calendar, ActivityLog& log,
                                 std::function<void()> onAnswer)
    : screen_(screen),
      page_(page),
      log_(log),
      calendar_(std::move(calendar)),
      onAnswer_(std::move(onAnswer)) {}

void ActivityFilling::load(const std::vector<Device>& devices) {
  isOpen_ = true;
  for (DeviceLog& known : devices_) {
    known.isLinked = std::ranges::find(devices, known.id, &Device::id) != devices.end();
  }
  for (const Device& device : devices) {
    if (std::ranges::find(devices_, device.id, &DeviceLog::id) == devices_.end()) {
      devices_.push_back({.id = device.id, .name = deviceDisplayName(device)});
    }
  }
  askAll();
  show();
}

void ActivityFilling::setStopped(bool isStopped) {
  isStopped_ = isStopped;
  askAll();
  show();
}

void ActivityFilling::retry() {
  for (DeviceLog& device : devices_) {
    device.failure.reset();
    device.pagesWithoutNews = 0;
  }
  setStopped(false);
}

void ActivityFilling::askAll() {
  while (isOpen_ && !isStopped_ && !log_.isFull() && requestsLeft_ > 0) {
    DeviceLog* const next = nextToAsk();
    if (next == nullptr) {
      return;
    }
    ask(static_cast<std::size_t>(next - devices_.data()));
  }
}

// The device whose oldest loaded entry is the newest, so that all devices reach back about equally far.
ActivityFilling::DeviceLog* ActivityFilling::nextToAsk() {
  DeviceLog* next = nullptr;
  for (DeviceLog& device : devices_) {
    const bool canAsk = device.hasMore() && !device.isAsked;
    if (canAsk &&
        (next == nullptr || device.oldest.value_or(Date::max()) > next->oldest.value_or(Date::max()))) {
      next = &device;
    }
  }
  return next;
}

void ActivityFilling::ask(std::size_t device) {
  DeviceLog& asked = devices_[device];
  asked.isAsked = true;
  --requestsLeft_;
  // Measured with a timer, because the clock may jump.
  page_.dispatch().main().asyncAfter(allowancePeriod, screen_.weakly([this] { takeBackRequest(); }));
  page_.service().send(
      calls::getDeviceLogs, {asked.id, pageSize, asked.offset},
      hoppingToMain(page_.dispatch(), screen_.weakly([this, device](const Result<DNSLogsResponse>& answer) {
        finish(device, answer);
      })));
}

void ActivityFilling::takeBackRequest() {
  ++requestsLeft_;
  askAll();
}

void ActivityFilling::finish(std::size_t device, const Result<DNSLogsResponse>& answer) {
  if (!isOpen_) {
    return;
  }
  devices_[device].isAsked = false;
  if (answer.ok()) {
    take(device, answer.value().logs);
  } else {
    devices_[device].failure = answer.error().localizedDescription();
  }
  askAll();
  show();
  onAnswer_();
}

void ActivityFilling::take(std::size_t device, const std::vector<DNSLog>& page) {
  DeviceLog& asked = devices_[device];
  asked.offset += page.size();
  asked.hasEnded = page.empty();
  const std::size_t news = log_.add(static_cast<std::uint32_t>(device), page);
  asked.pagesWithoutNews = news > 0 ? 0 : asked.pagesWithoutNews + 1;
  if (asked.hasMore() && !log_.isFull() && asked.pagesWithoutNews == mostPagesWithoutNews) {
    asked.failure = repeatedPagesText;
  }
  const auto last = std::find_if(page.rbegin(), page.rend(), [this](const DNSLog& log) {
    return log_.timeOf(log) != ActivityLog::unreadable;
  });
  if (last != page.rend()) {
    asked.oldest = std::min(asked.oldest.value_or(Date::max()), log_.timeOf(*last));
  }
}

std::optional<Date> ActivityFilling::reached() const {
  std::optional<Date> unfinished;
  std::optional<Date> oldest;
  for (const DeviceLog& device : devices_) {
    if (device.hasMore() && !device.oldest) {
      return std::nullopt;
    }
    if (device.oldest) {
      oldest = std::min(oldest.value_or(Date::max()), *device.oldest);
      if (!device.hasEnded) {
        unfinished = std::max(unfinished.value_or(Date::min()), *device.oldest);
      }
    }
  }
  return unfinished ? unfinished : oldest;
}

std::vector<std::string> ActivityFilling::deviceNames() const {
  std::vector<std::string> names;
  names.reserve(devices_.size());
  for (const DeviceLog& device : devices_) {
    names.push_back(device.name);
  }
  return names;
}

void ActivityFilling::show() {
  setIfChanged(state, computeState());
  setIfChanged(progressText, computeProgress());
  setIfChanged(failureText, computeFailures());
  setIfChanged(limitText, computeLimit());
}

FillingState ActivityFilling::computeState() const {
  if (log_.isFull()) {
    return FillingState::full;
  }
  if (std::ranges::any_of(devices_, &DeviceLog::hasMore)) {
    return isStopped_ ? FillingState::stopped : FillingState::loading;
  }
  return computeFailures() ? FillingState::failed : FillingState::complete;
}

std::string ActivityFilling::computeProgress() const {
  const auto count = std::ssize(log_.entries());
  if (count == 0) {
    return computeState() == FillingState::loading ? "Loading activity..." : "No requests";
  }
  std::string text = calendar_.number(count) + (count == 1 ? " request" : " requests");
  if (const auto time = reached()) {
    text += ", back to " + page_.dateStyles().mediumDateShortTime(*time);
  }
  return text;
}

std::optional<std::string> ActivityFilling::computeFailures() const {
  std::optional<std::string> text;
  for (const DeviceLog& device : devices_) {
    if (device.failure) {
      const auto line = devices_.size() > 1 ? device.name + ": " + *device.failure : *device.failure;
      text = text ? *text + '\n' + line : line;
    }
  }
  return text;
}

std::optional<std::string> ActivityFilling::computeLimit() const {
  if (!log_.isFull()) {
    return std::nullopt;
  }
  const auto time = reached();
  const std::string count = calendar_.number(std::ssize(log_.entries()));
  return time ? "These are the newest " + count + " requests. Earlier than " +
                    page_.dateStyles().mediumDateShortTime(*time) + " some or all are missing."
              : "These are " + count + " requests. There are more.";
}

}  // namespace quillmar
