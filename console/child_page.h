#pragma once

#include <optional>
#include <type_traits>
#include <utility>

#include "app/session/environment.h"
#include "client/network_service.h"
#include "client/records/child.h"
#include "foundation/calendar.h"
#include "platform/hop.h"
#include "presentation/error_alert.h"
#include "presentation/screen_model.h"

namespace quillmar {

// State that the sections of a child's page share. Each section registers its members on the page's screen.
class ChildPage {
 public:
  ChildPage(ScreenModel& screen, ErrorAlert& errorAlert, Environment& environment,
            ChildProfileWithDevices child);

  ScreenModel& screen() const { return screen_; }
  // A copy from when the page was made.
  const ChildProfileWithDevices& child() const { return child_; }
  Environment& environment() const { return environment_; }
  const Platform& platform() const { return environment_.platform(); }
  Dispatch& dispatch() const { return platform().dispatch; }
  const DateStyles& dateStyles();
  Calendar calendar() const;

  NetworkService& service() const { return *environment_.networkService(); }
  // For calls whose failure is shown in the alert. `success` runs on the main thread, and only if the screen
  // still exists.
  template <class T, class Success>
  Completion<T> completion(Success success) const;

 private:
  ScreenModel& screen_;
  ErrorAlert& errorAlert_;
  Environment& environment_;
  const ChildProfileWithDevices child_;
  // Cached: the first load is slow.
  std::optional<DateStyles> dateStyles_;
};

template <class T, class Success>
Completion<T> ChildPage::completion(Success success) const {
  return hoppingToMain(dispatch(),
                       screen_.weakly([this, success = std::move(success)](const Result<T>& result) {
                         if (!result.ok()) {
                           errorAlert_.show(result.error());
                         } else if constexpr (std::is_void_v<T>) {
                           success();
                         } else {
                           success(result.value());
                         }
                       }));
}

}  // namespace quillmar
