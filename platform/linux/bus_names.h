#pragma once

#include <string>

// The names on the message bus that several adapters use.
namespace quillmar {

inline const std::string systemBusSocket = "/run/dbus/system_bus_socket";
inline const std::string systemBusAddress = "unix:path=" + systemBusSocket;

inline constexpr const char* messageBus = "org.freedesktop.DBus";
inline constexpr const char* messageBusPath = "/org/freedesktop/DBus";
inline constexpr const char* propertiesInterface = "org.freedesktop.DBus.Properties";

inline constexpr const char* networkManager = "org.freedesktop.NetworkManager";
inline constexpr const char* networkManagerPath = "/org/freedesktop/NetworkManager";

inline constexpr const char* fprint = "net.reactivated.Fprint";
inline constexpr const char* fprintManager = "net.reactivated.Fprint.Manager";
inline constexpr const char* fprintDevice = "net.reactivated.Fprint.Device";
inline constexpr const char* fprintManagerPath = "/net/reactivated/Fprint/Manager";

}  // namespace quillmar
