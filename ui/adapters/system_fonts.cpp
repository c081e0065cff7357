#include "ui/adapters/system_fonts.h"

#include <fontconfig/fontconfig.h>

#include <QFontDatabase>
#include <QStringList>
#include <memory>
#include <mutex>

namespace quillmar::ui {
namespace {

using Configuration = std::unique_ptr<FcConfig, decltype(&FcConfigDestroy)>;

bool hasCacheFolder(FcConfig& configuration) {
  const std::unique_ptr<FcStrList, decltype(&FcStrListDone)> folders(FcConfigGetCacheDirs(&configuration),
                                                                     FcStrListDone);
  return folders && FcStrListNext(folders.get());
}

// By itself Fontconfig would also parse every file in /usr/share/fontconfig/conf.avail, in use or not, only
// to be able to list them. That takes nearly as long as the files in use. A configuration that is missing or
// has no cache is left to Fontconfig, which has replacements.
void readConfigurationInUse() {
  const Configuration configuration(FcConfigCreate(), FcConfigDestroy);
  if (configuration && FcConfigParseAndLoad(configuration.get(), nullptr, FcTrue) &&
      hasCacheFolder(*configuration)) {
    FcConfigSetCurrent(configuration.get());
  }
}

}  // namespace

void readSystemFonts() {
  static std::once_flag once;
  std::call_once(once, readConfigurationInUse);
  // Has Qt list them.
  static_cast<void>(QFontDatabase::families());
}

}  // namespace quillmar::ui
