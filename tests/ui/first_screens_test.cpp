#include <dlfcn.h>
#include <gtest/gtest.h>

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

INSTANTIATE_TEST_SUITE_P(all, FirstScreens, testing::Values(StoredSettings{}, signedIn()),
                         [](const auto& stored) {
                           return stored.param.empty() ? "of_a_new_installation" : "of_a_signed_in_parent";
                         });

}  // namespace
}  // namespace quillmar::ui
