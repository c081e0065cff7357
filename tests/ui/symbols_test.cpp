#include "ui/items/symbols.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QImageReader>
#include <functional>
#include <set>
#include <string>

#include "child/child_home_view.h"
#include "presentation/device_texts.h"
#include "testing/ui/ui_stage.h"

namespace quillmar::ui {
namespace {

bool namesSymbol(std::string_view name) { return name.ends_with("icon") || name.ends_with("Icon"); }

void collect(std::string_view name, const Value& value, std::set<std::string>& found) {
  if (value.string() && namesSymbol(name)) {
    found.insert(*value.string());
  } else if (value.map()) {
    for (const auto& [key, entry] : *value.map()) {
      collect(key, entry, found);
    }
  } else if (value.list()) {
    for (const auto& element : *value.list()) {
      collect(name, element, found);
    }
  }
}

void collect(const ObservableObject& object, std::set<std::string>& found) {
  for (const Member* const member : object.members()) {
    collect(member->name(), member->value(), found);
    for (const auto& nested : member->nested()) {
      collect(*nested.object, found);
    }
  }
}

TEST(Symbols, each_can_be_drawn) {
  for (const auto& symbol : symbols) {
    QImageReader reader(
        QStringLiteral(":/quillmar/icons/%1.svg").arg(QString::fromStdString(std::string(symbol.file))));
    const QImage image = reader.read();
    EXPECT_FALSE(image.isNull()) << symbol.name;
  }
}

TEST(Symbols, every_file_is_used) {
  std::set<std::string> used;
  for (const auto& symbol : symbols) {
    used.insert(std::string(symbol.file) + ".svg");
  }
  for (const auto& file : QDir(":/quillmar/icons").entryList()) {
    EXPECT_TRUE(used.contains(file.toStdString())) << file.toStdString();
  }
}

TEST(Symbols, an_unknown_name_has_no_file) {
  EXPECT_EQ(symbolFile("no.such.symbol"), "");
  EXPECT_EQ(symbolFile(""), "");
}

TEST(Symbols, every_name_on_a_screen_is_known) {
  std::set<std::string> named;
  for (const auto& stored : {StoredSettings(), asParent(), asNewChild(), asEnrolledChild()}) {
    TestApplication application(stored);
    for (const bool state : {false, true}) {
      application.child().isConnectedToServer = state;
      application.vpn().isConfigured = state;
      for (const bool connected : {false, true}) {
        application.vpn().isConnected = connected;
        if (const auto home = application.find<ChildHomeView>()) {
          home->showSettings = true;
        }
        collect(application.app().contentView(), named);
      }
    }
  }
  EXPECT_GE(named.size(), 10u);
  for (const auto& name : named) {
    EXPECT_NE(symbolFile(name), "") << name;
  }
}

TEST(Symbols, every_kind_of_device_has_one) {
  for (const auto* const type :
       {"ios", "android", "windows", "mac", "macos", "chromeos", "tablet", "toaster"}) {
    Device device;
    device.deviceType = type;
    EXPECT_NE(symbolFile(deviceIconName(device)), "") << type;
  }
}

}  // namespace
}  // namespace quillmar::ui
