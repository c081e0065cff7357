#include "ui/adapters/qt_notifications.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QStringList>
#include <QVariantMap>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "testing/temporary_directory.h"
#include "tests/contracts/notifications_contract.h"
#include "tests/platform/private_bus.h"
#include "tests/ui/support/wait_until.h"

namespace quillmar::ui {

enum class Manner { answers, refuses, isSilent };

// Records what it is asked to show, and answers in one way.
class FakeScreen : public QObject {
 public:
  FakeScreen(const QDBusConnection& bus, const QString& service, const QString& path)
      : bus_(bus), service_(service) {
    bus_.registerObject(path, this, QDBusConnection::ExportAllSlots);
    bus_.registerService(service_);
  }
  // Ends like its program, so that a call without an answer fails.
  ~FakeScreen() override { QDBusConnection::disconnectFromBus(bus_.name()); }

  Manner manner = Manner::answers;
  std::size_t calls = 0;
  std::vector<Notification> visible;

 protected:
  void take(const QDBusMessage& call, const Notification& notification) {
    ++calls;
    call.setDelayedReply(manner != Manner::answers);
    if (manner == Manner::refuses) {
      bus_.send(
          call.createErrorReply(QStringLiteral("org.freedesktop.portal.Error.Failed"), QStringLiteral("no")));
      return;
    }
    std::erase_if(visible, [&](const Notification& former) { return former.id == notification.id; });
    visible.push_back(notification);
  }

 private:
  QDBusConnection bus_;
  const QString service_;
};

class FakeNotificationPortal final : public FakeScreen {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Notification")

 public:
  explicit FakeNotificationPortal(const QDBusConnection& bus)
      : FakeScreen(bus, QStringLiteral("org.freedesktop.portal.Desktop"),
                   QStringLiteral("/org/freedesktop/portal/desktop")) {}

 public Q_SLOTS:
  void AddNotification(const QString& id, const QVariantMap& notification, const QDBusMessage& call) {
    take(call, {.id = id.toStdString(),
                .title = notification.value("title").toString().toStdString(),
                .body = notification.value("body").toString().toStdString()});
  }
};

// A portal without the interface for notifications.
class OtherPortal final : public FakeScreen {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

 public:
  explicit OtherPortal(const QDBusConnection& bus)
      : FakeScreen(bus, QStringLiteral("org.freedesktop.portal.Desktop"),
                   QStringLiteral("/org/freedesktop/portal/desktop")) {}
};

// A notification service. It identifies notifications by numbers; the first character of a title stands for
// the id.
class FakeService final : public FakeScreen {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

 public:
  explicit FakeService(const QDBusConnection& bus)
      : FakeScreen(bus, QStringLiteral("org.freedesktop.Notifications"),
                   QStringLiteral("/org/freedesktop/Notifications")) {}

  QString application;
  QStringList actions;
  std::vector<uint> replaced;

 public Q_SLOTS:
  uint Notify(const QString& name, uint replaces, const QString& /*icon*/, const QString& title,
              const QString& body, const QStringList& offered, const QVariantMap& /*hints*/, int /*timeout*/,
              const QDBusMessage& call) {
    application = name;
    actions = offered;
    replaced.push_back(replaces);
    const uint number = replaces == 0 ? ++last_ : replaces;
    take(call, {.id = std::to_string(number), .title = title.toStdString(), .body = body.toStdString()});
    return number;
  }

 private:
  uint last_ = 0;
};

namespace {

// A bus of the test's own, with the program on it.
class Bus {
 public:
  Bus() { EXPECT_TRUE(bus_.running()); }
  ~Bus() { QDBusConnection::disconnectFromBus("program"); }
  Bus(const Bus&) = delete;
  Bus& operator=(const Bus&) = delete;

  QDBusConnection connect(const QString& name) {
    return QDBusConnection::connectToBus(QString::fromStdString(bus_.address()), name);
  }

 private:
  TemporaryDirectory directory_;
  PrivateBus bus_{directory_.path()};
};

// As a notification service says it, whoever does.
void say(const QDBusConnection& speaker, const QString& signal, uint number, const QString& word) {
  auto message =
      QDBusMessage::createSignal("/org/freedesktop/Notifications", "org.freedesktop.Notifications", signal);
  message << number << word;
  speaker.send(message);
}

// Waits until the program has received the answers to its calls: the answer to a later call comes after them.
void waitForAnswers() {
  auto pending = QDBusConnection("program").asyncCall(QDBusMessage::createMethodCall(
      "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetId"));
  EXPECT_TRUE(waitUntil([&] { return pending.isFinished(); }));
  QCoreApplication::processEvents();
}

template <class Screen>
class Desktop final : public NotificationsHarness {
 public:
  Notifications& notifications() override { return notifications_; }
  std::vector<Notification> visibleAfter(std::size_t calls) override {
    EXPECT_TRUE(waitUntil([&] { return screen_.calls >= calls; }));
    waitForAnswers();
    EXPECT_EQ(screen_.calls, calls);
    return named(screen_.visible);
  }

 private:
  // A service's numbers follow the order in which the contract's ids first occur.
  static std::vector<Notification> named(std::vector<Notification> visible) {
    if constexpr (std::is_same_v<Screen, FakeService>) {
      for (auto& notification : visible) {
        notification.id = notification.id == "1" ? "a" : "b";
      }
    }
    return visible;
  }

  Bus bus_;
  QtNotifications notifications_{bus_.connect("program")};
  Screen screen_{bus_.connect("screen")};
};

}  // namespace
}  // namespace quillmar::ui

namespace quillmar {
namespace {

INSTANTIATE_TEST_SUITE_P(
    Qt, NotificationsContract,
    testing::Values(factory<NotificationsHarness, ui::Desktop<ui::FakeNotificationPortal>>("portal"),
                    factory<NotificationsHarness, ui::Desktop<ui::FakeService>>("service")));

}  // namespace

namespace ui {
namespace {

class OnABus : public testing::Test {
 protected:
  void startPortal() { portal = std::make_unique<FakeNotificationPortal>(bus.connect("portal")); }
  void startService() { service = std::make_unique<FakeService>(bus.connect("service")); }
  bool waitForService(std::size_t calls) {
    const bool came = waitUntil([&] { return service->calls >= calls; });
    waitForAnswers();
    return came && service->calls == calls;
  }
  void expectServiceToShowNext() {
    startService();
    notifications.show(named("next"));
    ASSERT_TRUE(waitForService(1));
    EXPECT_EQ(service->visible.front().title, "next");
  }
  static Notification named(const std::string& title) { return {.id = "a", .title = title, .body = "body"}; }

  Bus bus;
  QtNotifications notifications{bus.connect("program")};
  std::unique_ptr<FakeNotificationPortal> portal;
  std::unique_ptr<FakeService> service;
};

TEST_F(OnABus, the_portal_is_preferred_and_nothing_is_shown_twice) {
  startPortal();
  startService();
  notifications.show(named("one"));
  ASSERT_TRUE(waitUntil([&] { return portal->calls == 1; }));
  waitForAnswers();
  EXPECT_EQ(portal->visible, std::vector{named("one")});
  EXPECT_EQ(service->calls, 0U);
}

TEST_F(OnABus, without_a_portal_the_service_shows_it_under_our_name) {
  startService();
  notifications.show(named("one"));
  ASSERT_TRUE(waitForService(1));
  EXPECT_EQ(service->application, "Quillmar");
  EXPECT_EQ(service->replaced, std::vector<uint>{0});
}

TEST_F(OnABus, a_portal_without_notifications_counts_as_none) {
  const OtherPortal other(bus.connect("portal"));
  expectServiceToShowNext();
}

TEST_F(OnABus, a_portal_that_refuses_counts_as_none) {
  startPortal();
  portal->manner = Manner::refuses;
  expectServiceToShowNext();
}

TEST_F(OnABus, a_silent_portal_is_not_waited_for_and_what_it_took_is_not_shown_elsewhere) {
  startPortal();
  startService();
  portal->manner = Manner::isSilent;
  notifications.show(named("one"));
  notifications.show(named("two"));
  ASSERT_TRUE(waitUntil([&] { return portal->calls == 2; }));
  // Destroying the portal fails both calls. The next call finds no portal.
  portal.reset();
  notifications.show(named("three"));
  ASSERT_TRUE(waitForService(1));
  EXPECT_EQ(service->visible.front().title, "three");
}

TEST_F(OnABus, a_silent_service_is_not_waited_for) {
  startService();
  service->manner = Manner::isSilent;
  notifications.show(named("one"));
  notifications.show(named("two"));
  EXPECT_TRUE(waitForService(2));
  EXPECT_EQ(service->replaced, (std::vector<uint>{0, 0}));
}

TEST_F(OnABus, a_service_that_starts_later_shows_what_comes_then) {
  notifications.show(named("lost"));
  waitForAnswers();
  waitForAnswers();
  expectServiceToShowNext();
}

TEST_F(OnABus, an_answer_after_the_adapters_end_is_ignored) {
  startService();
  {
    QtNotifications brief(bus.connect("program"));
    brief.show(named("one"));
  }
  waitForAnswers();
  EXPECT_EQ(service->calls, 0U);
}

// A notification of ours is on the service's screen, as number 1.
class OnAScreen : public OnABus {
 protected:
  OnAScreen() {
    QObject::connect(&notifications, &QtNotifications::chosen, &notifications,
                     [this](const QString& token) { chosen.push_back(token); });
    startService();
    notifications.show(named("one"));
    EXPECT_TRUE(waitForService(1));
  }
  ~OnAScreen() override { QDBusConnection::disconnectFromBus("stranger"); }

  // The word of this speaker, and after it a true choice: what is to be ignored has come before.
  QStringList chosenAfter(const QString& speaker, const QString& signal, uint number, const QString& word) {
    say(bus.connect(speaker), signal, number, word);
    waitForAnswersOf(speaker);
    const auto before = chosen.size();
    say(bus.connect("service"), "ActionInvoked", 1, "default");
    EXPECT_TRUE(waitUntil([&] { return chosen.size() > before; }));
    waitForAnswers();
    return chosen;
  }
  // The bus has passed on what it said.
  static void waitForAnswersOf(const QString& speaker) {
    QDBusConnection(speaker).call(QDBusMessage::createMethodCall(
        "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetId"));
  }

  QStringList chosen;
};

TEST_F(OnAScreen, can_be_chosen_as_a_whole) {
  EXPECT_EQ(service->actions.value(0), "default");
  EXPECT_EQ(service->actions.size(), 2) << "an action and its word";
}

TEST_F(OnAScreen, is_chosen_with_the_token_that_came_before) {
  EXPECT_EQ(chosenAfter("service", "ActivationToken", 1, "token"), QStringList{"token"});
  EXPECT_EQ(chosenAfter("service", "ActivationToken", 7, "not ours"), (QStringList{"token", ""}));
}

TEST_F(OnAScreen, is_not_chosen_by_what_concerns_others) {
  EXPECT_EQ(chosenAfter("service", "ActionInvoked", 2, "default"), QStringList{""});
}

TEST_F(OnAScreen, is_not_chosen_by_another_action) {
  EXPECT_EQ(chosenAfter("service", "ActionInvoked", 1, "delete everything"), QStringList{""});
}

TEST_F(OnAScreen, is_not_chosen_by_another_program) {
  EXPECT_EQ(chosenAfter("stranger", "ActionInvoked", 1, "default"), QStringList{""});
  EXPECT_EQ(chosenAfter("stranger", "ActivationToken", 1, "forged"), (QStringList{"", ""}));
}

TEST(WithoutABus, nothing_is_shown) {
  QtNotifications notifications{QDBusConnection("no bus")};
  notifications.show({.id = "a", .title = "title", .body = "body"});
  QCoreApplication::processEvents();
}

}  // namespace
}  // namespace ui
}  // namespace quillmar

#include "qt_notifications_test.moc"
