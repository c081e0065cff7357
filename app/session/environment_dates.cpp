#include "app/session/environment.h"

// In a file of its own, so that a program without dates does not link it.
namespace quillmar {

DateStyles Environment::dateStyles() const {
  return {platform_.deviceInfo.locale(), platform_.deviceInfo.timeZone()};
}

}  // namespace quillmar
