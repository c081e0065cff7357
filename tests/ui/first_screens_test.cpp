#include <dlfcn.h>
#include <fontconfig/fontconfig.h>
#include <gtest/gtest.h>

#include <QQuickItem>
#include <QQuickWindow>
#include <string>
#include <vector>

#include "client/network_service.h"
#include "testing/fake_platform.h"
#include "testing/ui/ui_stage.h"

namespace quillmar::ui {
namespace {

// A module of Qt Quick's stays loaded in its process, so these are the process's only screens.
bool isLoaded(const char* library) {
  void* const handle = dlopen(library, RTLD_LAZY | RTLD_NOLOAD);
  if (handle) {
    dlclose(handle);
  }
  return handle != nullptr;
}

struct FontConfigurationFile {
  std::string name;
  bool isInUse;
};

// What Fontconfig has read.
std::vector<FontConfigurationFile> fontConfigurationFiles() {
  std::vector<FontConfigurationFile> files;
  FcConfigFileInfoIter file;
  FcConfigFileInfoIterInit(nullptr, &file);
  FcChar8* name = nullptr;
  FcBool isInUse = FcFalse;
  while (FcConfigFileInfoIterGet(nullptr, &file, &name, nullptr, &isInUse)) {
    files.push_back({reinterpret_cast<const char*>(name), isInUse == FcTrue});
    FcStrFree(name);
    if (!FcConfigFileInfoIterNext(nullptr, &file)) {
      break;
    }
  }
  return files;
}

// Also those that are not visible.
int scrollBarsIn(const QQuickItem& item) {
  int bars = item.property("thumb").isValid() ? 1 : 0;
  for (const auto* const child : item.childItems()) {
    bars += scrollBarsIn(*child);
  }
  return bars;
}

struct FirstScreens : testing::TestWithParam<StoredSettings> {};

StoredSettings signedIn() {
  auto stored = asParent();
  stored[NetworkService::authTokenKey] = std::string("token");
  return stored;
}

TEST_P(FirstScreens, load_no_module_of_controls) {
  const UiStage stage({.stored = GetParam()});
  EXPECT_TRUE(isLoaded("libQt6Quick.so.6"));
  EXPECT_FALSE(isLoaded("libQt6QuickTemplates2.so.6"));
}

TEST_P(FirstScreens, read_no_configuration_of_fonts_that_is_not_in_use) {
  const UiStage stage({.stored = GetParam()});
  const auto files = fontConfigurationFiles();
  EXPECT_FALSE(files.empty());
  for (const auto& file : files) {
    EXPECT_TRUE(file.isInUse) << file.name;
  }
}

TEST_P(FirstScreens, create_no_scroll_bar_while_they_fit) {
  UiStage stage({.stored = GetParam(), .size = {460, 860}});
  stage.settle();
  EXPECT_EQ(scrollBarsIn(*stage.window().contentItem()), 0);
  stage.window().resize(460, 140);
  stage.settle();
  EXPECT_EQ(scrollBarsIn(*stage.window().contentItem()), 1);
}

INSTANTIATE_TEST_SUITE_P(all, FirstScreens, testing::Values(StoredSettings{}, signedIn()),
                         [](const auto& stored) {
                           return stored.param.empty() ? "of_a_new_installation" : "of_a_signed_in_parent";
                         });

}  // namespace
}  // namespace quillmar::ui
