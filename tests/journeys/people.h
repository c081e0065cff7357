#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include "app/country_selection_view.h"
#include "app/role_selection_view.h"
#include "child/child_enrollment_view.h"
#include "child/child_home_view.h"
#include "console/device_list_view.h"
#include "identity/login_view.h"
#include "testing/qr_picture.h"
#include "testing/test_application.h"
#include "tests/journeys/real_service.h"
#include "tests/journeys/shared_time.h"

// People, each with a machine, and their actions on its screens.
namespace quillmar {

class Person : public TestApplication {
 public:
  Person(const RealService& service, SharedTime& time) : Person(service.network(), time) {}
  Person(TestApplication::Network network, SharedTime& time) : TestApplication({}, std::move(network)) {
    time.include(machine.dispatch);
  }

  std::string setting(std::string_view key) { return machine.settings.string(key).value_or(""); }

  // The text that a camera reads from this code on screen.
  std::string textInPicture(const QRCodeView& code) {
    const auto modules = code.modules(machine.qrEncoder);
    return modules ? textOf(readPictureOf(*modules)) : std::string();
  }
};

class Child : public Person {
 public:
  Child(const RealService& service, SharedTime& time) : Person(service, time) {
    machine.tunnel.behaveLikePlatform();
  }

  void chooseRole() {
    screen<RoleSelectionView>().cards.find("child")->action();
    settle();
  }

  ChildEnrollmentView& enrollment() { return screen<ChildEnrollmentView>(); }
  ChildHomeView& home() { return screen<ChildHomeView>(); }

  // Starts the enrollment; returns the text of the QR code on screen.
  std::string startEnrollment() {
    EXPECT_TRUE(enrollment().startEnrollment());
    settle();
    return textInPicture(enrollment().qrCode());
  }
};

class Parent : public Person {
 public:
  static constexpr const char* password = "correct horse";

  using Person::Person;

  void chooseRole() {
    auto& roles = screen<RoleSelectionView>();
    roles.cards.find("parent")->action();
    settle();
    roles.countrySelection->confirmRegion();
    settle();
  }

  void signUp(const std::string& name, const std::string& email) {
    auto& login = screen<LoginView>();
    login.signUp();
    auto& form = *login.showRegister;
    form.name = name;
    form.email = email;
    form.phone = std::string("+61 412 345 678");
    form.password = std::string(password);
    form.confirmPassword = std::string(password);
    press(form.createAccount);
  }

  DeviceListView& dashboard() { return screen<DeviceListView>(); }
  ChildDashboardCard& card() { return dashboard().cards[0]; }

  void addChild(const std::string& name) {
    press(dashboard().addChild);
    auto& form = *dashboard().showAddChild;
    form.name = name;
    press(form.createChildProfile);
  }

  // Opens the camera for the first child.
  ScannerView& openScanner() {
    press(card().addDevice);
    press(dashboard().showAddDevice->addPhone);
    return scanner();
  }
  ScannerView& scanner() { return screen<ScannerView>(); }

  void scan(const std::string& code) {
    machine.qrReader.showCode(code);
    settle();
  }

  // Enrols a device for the first child, from its start until the next poll can succeed.
  void enrol(Child& child) {
    openScanner();
    scan(child.startEnrollment());
    press(scanner().completeEnrollment);
    press(scanner().done);
  }

  // Runs a control, which must be enabled.
  template <class Control>
  void press(Control& control) {
    EXPECT_TRUE(control()) << control.name();
    settle();
  }
};

}  // namespace quillmar
