#include "app/session/environment.h"

// Apart, for a program that shows no dates.
namespace quillmar {

DateStyles Environment::dateStyles() const {
  return {platform_.deviceInfo.locale(), platform_.deviceInfo.timeZone()};
}

}  // namespace quillmar
