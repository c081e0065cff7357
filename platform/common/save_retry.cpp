#include "platform/common/save_retry.h"

namespace quillmar {

SaveRetry::SaveRetry(SqliteSettingsStore& settings, Dispatch& dispatch)
    : settings_(settings), dispatch_(dispatch) {
  settings_.whenUnsaved([&dispatch, known = std::weak_ptr(self_)] {
    dispatch.main().async([known] {
      if (const auto self = known.lock()) {
        (*self)->begin();
      }
    });
  });
}

SaveRetry::~SaveRetry() { settings_.whenUnsaved({}); }

void SaveRetry::begin() {
  if (timer_) {
    return;
  }
  timer_ = dispatch_.scheduleRepeating(period, [this] {
    settings_.synchronize();
    if (!settings_.hasUnsaved()) {
      timer_.reset();
    }
  });
}

}  // namespace quillmar
