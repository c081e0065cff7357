#include "platform/linux/libsecret_item_store.h"

#include <gio/gio.h>
#include <libsecret/secret.h>

#include <algorithm>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/common/thread_signals.h"

namespace quillmar {
namespace {

using Status = SecureItemStatus;
using Found = SecureItemStore::Found;

template <auto release>
struct Release {
  template <class T>
  void operator()(T* held) const {
    release(held);
  }
};
template <class T>
using Object = std::unique_ptr<T, Release<g_object_unref>>;
using ErrorPtr = std::unique_ptr<GError, Release<g_error_free>>;
using ValuePtr = std::unique_ptr<SecretValue, Release<secret_value_unref>>;
using TablePtr = std::unique_ptr<GHashTable, Release<g_hash_table_unref>>;
using Text = std::unique_ptr<char, Release<g_free>>;
using Items = std::vector<Object<SecretItem>>;

constexpr const char* label = "Quillmar";

const SecretSchema& schema() {
  static const SecretSchema schema{
      "live.quillmar.Credentials",
      SECRET_SCHEMA_NONE,
      {{"service", SECRET_SCHEMA_ATTRIBUTE_STRING}, {"account", SECRET_SCHEMA_ATTRIBUTE_STRING}},
      0,
      nullptr,
      nullptr,
      nullptr,
      nullptr,
      nullptr,
      nullptr,
      nullptr};
  return schema;
}

struct ItemName {
  std::string service;
  std::string account;

  TablePtr attributes() const {
    TablePtr table(g_hash_table_new_full(g_str_hash, g_str_equal, g_free, g_free));
    g_hash_table_insert(table.get(), g_strdup("service"), g_strdup(service.c_str()));
    g_hash_table_insert(table.get(), g_strdup("account"), g_strdup(account.c_str()));
    return table;
  }
};

// What ends an operation early, with the status that it ends with.
struct Failure {
  Status status;
};

// Where GLib's functions put their error. An error that was put there is thrown by `check`.
class ErrorSlot {
 public:
  operator GError**() { return &error_; }
  void check() {
    if (const ErrorPtr error{std::exchange(error_, nullptr)}) {
      throw Failure{g_error_matches(error.get(), SECRET_ERROR, SECRET_ERROR_IS_LOCKED)
                        ? Status::interactionNotAllowed
                        : Status::failed};
    }
  }
  ErrorSlot() = default;
  ErrorSlot(const ErrorSlot&) = delete;
  ErrorSlot& operator=(const ErrorSlot&) = delete;
  ~ErrorSlot() { g_clear_error(&error_); }

 private:
  GError* error_ = nullptr;
};

// The person's message bus, over a connection of its own: the one that GLib shares would end the program
// together with the bus, and would stay closed if it did not.
class SessionBus {
 public:
  explicit SessionBus(GCancellable* cancellable) {
    ErrorSlot error;
    const Text address(g_dbus_address_get_for_bus_sync(G_BUS_TYPE_SESSION, cancellable, error));
    error.check();
    constexpr auto asClient = static_cast<GDBusConnectionFlags>(
        G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    connection_.reset(
        g_dbus_connection_new_for_address_sync(address.get(), asClient, nullptr, cancellable, error));
    error.check();
  }
  SessionBus(const SessionBus&) = delete;
  SessionBus& operator=(const SessionBus&) = delete;
  ~SessionBus() { g_dbus_connection_close_sync(connection_.get(), nullptr, nullptr); }

  GDBusConnection* connection() const { return connection_.get(); }

 private:
  Object<GDBusConnection> connection_;
};

// libsecret's service joins the shared session bus whatever it is told. This one leaves the connection that
// it was given in its place.
GType serviceType() {
  static SecretServiceClass* parent = nullptr;
  const auto initialize = [](gpointer type, gpointer) {
    parent = static_cast<SecretServiceClass*>(g_type_class_peek_parent(type));
    G_OBJECT_CLASS(type)->constructor = [](GType own, guint count, GObjectConstructParam* properties) {
      GObject* object = G_OBJECT_CLASS(parent)->constructor(own, count, properties);
      g_object_set(object, "g-bus-type", G_BUS_TYPE_NONE, nullptr);
      return object;
    };
  };
  static const GType type =
      g_type_register_static_simple(SECRET_TYPE_SERVICE, "QuillmarSecretService", sizeof(SecretServiceClass),
                                    initialize, sizeof(SecretService), nullptr, G_TYPE_FLAG_NONE);
  return type;
}

// The keyring service for one operation: it may have been restarted since the last one.
class Keyring {
 public:
  explicit Keyring(GCancellable* cancellable) : cancellable_(cancellable), bus_(cancellable) {
    ErrorSlot error;
    service_.reset(static_cast<SecretService*>(g_initable_new(serviceType(), cancellable_, error,
                                                              "g-connection", bus_.connection(), "flags",
                                                              SECRET_SERVICE_OPEN_SESSION, nullptr)));
    error.check();
  }

  // Locked ones, too.
  Items find(const ItemName& name) {
    ErrorSlot error;
    GList* list = secret_service_search_sync(service_.get(), &schema(), name.attributes().get(),
                                             SECRET_SEARCH_ALL, cancellable_, error);
    Items items;
    for (GList* at = list; at; at = at->next) {
      items.emplace_back(static_cast<SecretItem*>(at->data));
    }
    g_list_free(list);
    error.check();
    return items;
  }

  std::string read(SecretItem& item) {
    ErrorSlot error;
    secret_item_load_secret_sync(&item, cancellable_, error);
    error.check();
    const ValuePtr value(secret_item_get_secret(&item));
    if (!value) {
      throw Failure{Status::failed};
    }
    gsize size = 0;
    const char* bytes = secret_value_get(value.get(), &size);
    return {bytes, size};
  }

  void create(const ItemName& name, const std::string& bytes) {
    ErrorSlot error;
    const Object<SecretCollection> collection(secret_collection_for_alias_sync(
        service_.get(), SECRET_COLLECTION_DEFAULT, SECRET_COLLECTION_NONE, cancellable_, error));
    error.check();
    // To make a first keyring takes a person's answer.
    if (!collection) {
      throw Failure{Status::failed};
    }
    if (secret_collection_get_locked(collection.get())) {
      throw Failure{Status::interactionNotAllowed};
    }
    const ValuePtr value(secret_value_new(bytes.data(), static_cast<gssize>(bytes.size()), "text/plain"));
    const Object<SecretItem> item(secret_item_create_sync(collection.get(), &schema(),
                                                          name.attributes().get(), label, value.get(),
                                                          SECRET_ITEM_CREATE_NONE, cancellable_, error));
    error.check();
  }

  void erase(SecretItem& item) {
    ErrorSlot error;
    secret_item_delete_sync(&item, cancellable_, error);
    error.check();
  }

 private:
  GCancellable* const cancellable_;
  const SessionBus bus_;
  Object<SecretService> service_;
};

bool isLocked(const Object<SecretItem>& item) { return secret_item_get_locked(item.get()); }

Found add(Keyring& keyring, const ItemName& name, const std::string& bytes) {
  if (!keyring.find(name).empty()) {
    return {Status::duplicate, std::nullopt};
  }
  keyring.create(name, bytes);
  return {Status::success, std::nullopt};
}

Found copyMatching(Keyring& keyring, const ItemName& name) {
  const Items items = keyring.find(name);
  if (items.empty()) {
    return {Status::notFound, std::nullopt};
  }
  const auto open = std::ranges::find_if_not(items, isLocked);
  return open == items.end() ? Found{Status::interactionNotAllowed, std::nullopt}
                             : Found{Status::success, keyring.read(**open)};
}

Found remove(Keyring& keyring, const ItemName& name) {
  const Items items = keyring.find(name);
  if (items.empty()) {
    return {Status::notFound, std::nullopt};
  }
  if (std::ranges::any_of(items, isLocked)) {
    return {Status::interactionNotAllowed, std::nullopt};
  }
  for (const auto& item : items) {
    keyring.erase(*item);
  }
  return {Status::success, std::nullopt};
}

using Operation = std::function<Found(Keyring&)>;

Found perform(const Operation& operation, GCancellable* cancellable) {
  try {
    Keyring keyring(cancellable);
    return operation(keyring);
  } catch (const Failure& failure) {
    return {failure.status, std::nullopt};
  }
}

// On a thread of its own, which is left behind when it takes too long: joining a bus that stays mute can't be
// cancelled.
Found within(std::chrono::milliseconds patience, Operation operation) {
  const std::shared_ptr<GCancellable> cancellable(g_cancellable_new(), g_object_unref);
  std::promise<Found> promise;
  auto found = promise.get_future();
  std::thread thread([promise = std::move(promise), operation = std::move(operation), cancellable]() mutable {
    blockSignalsOfThisThread();
    promise.set_value(perform(operation, cancellable.get()));
  });
  if (found.wait_for(patience) == std::future_status::ready) {
    thread.join();
    return found.get();
  }
  g_cancellable_cancel(cancellable.get());
  thread.detach();
  return {Status::failed, std::nullopt};
}

ItemName nameOf(std::string_view service, std::string_view account) {
  return {std::string(service), std::string(account)};
}

}  // namespace

SecureItemStatus LibsecretItemStore::add(std::string_view service, std::string_view account,
                                         std::string_view bytes) {
  return within(patience_, [name = nameOf(service, account), bytes = std::string(bytes)](
                               Keyring& keyring) { return quillmar::add(keyring, name, bytes); })
      .status;
}

SecureItemStore::Found LibsecretItemStore::copyMatching(std::string_view service, std::string_view account) {
  return within(patience_, [name = nameOf(service, account)](Keyring& keyring) {
    return quillmar::copyMatching(keyring, name);
  });
}

SecureItemStatus LibsecretItemStore::remove(std::string_view service, std::string_view account) {
  return within(patience_, [name = nameOf(service, account)](
                               Keyring& keyring) { return quillmar::remove(keyring, name); })
      .status;
}

}  // namespace quillmar
