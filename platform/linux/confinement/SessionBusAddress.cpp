#include "platform/linux/confinement/SessionBusAddress.h"

#include <filesystem>
#include <sstream>

#include "platform/linux/GLibHandles.h"

namespace platform {

namespace {

// Of a list of addresses, which are tried one after the other.
std::string unixAddressesOf(const std::string &addresses) {
  std::string kept;
  std::istringstream list(addresses);
  for (std::string address; std::getline(list, address, ';');) {
    if (address.starts_with("unix:")) {
      kept += (kept.empty() ? "" : ";") + address;
    }
  }
  return kept;
}

}  // namespace

Result<std::string> sessionBusAddress() {
  using Failure = Result<std::string>;
  if (const char *addresses = g_getenv("DBUS_SESSION_BUS_ADDRESS")) {
    std::string kept = unixAddressesOf(addresses);
    return kept.empty() ? Failure::failure("DBUS_SESSION_BUS_ADDRESS names no Unix socket")
                        : Failure(std::move(kept));
  }
  const char *directory = g_getenv("XDG_RUNTIME_DIR");
  if (directory == nullptr) {
    return Failure::failure("Neither DBUS_SESSION_BUS_ADDRESS nor XDG_RUNTIME_DIR is set");
  }
  const std::filesystem::path socket = std::filesystem::path(directory) / "bus";
  std::error_code error;
  if (!socket.is_absolute() || !std::filesystem::is_socket(socket, error)) {
    return Failure::failure(
        "DBUS_SESSION_BUS_ADDRESS is not set, and there is no bus in XDG_RUNTIME_DIR");
  }
  return "unix:path=" +
         std::string(StringHandle(g_dbus_address_escape_value(socket.c_str())).get());
}

}  // namespace platform
