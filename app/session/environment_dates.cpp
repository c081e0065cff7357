#include "app/session/environment.h"

// This is a separate source, so that a program without dates does not link it.
namespace quillmar {

DateStyles Environment::dateStyles() const {
  return {platform_.deviceInfo.locale(), platform_.deviceInfo.timeZone()};
}

}  // namespace quillmar
