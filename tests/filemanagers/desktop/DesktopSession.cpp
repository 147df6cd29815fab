#include "tests/filemanagers/desktop/DesktopSession.h"

#include <filesystem>
#include <stdexcept>

using platform::ErrorHandle;
using platform::ErrorOut;
using platform::ObjectHandle;
using platform::VariantHandle;

namespace {

// Started by hand, since nothing but the extension is to be activated on the session's bus.
constexpr const char *accessibilityProgram = "/usr/libexec/at-spi-bus-launcher";

ExtensionSession::Setup withoutDesktopOfUser(ExtensionSession::Setup setup) {
  for (const auto &[name, value] : std::map<std::string, std::string>{
           {"LC_ALL", "C.UTF-8"},
           // Settings are a file of the session's.
           {"GSETTINGS_BACKEND", "keyfile"},
           // No other services for files, disks and settings.
           {"GIO_USE_VFS", "local"},
           {"GIO_USE_VOLUME_MONITOR", "unix"},
           {"GDK_BACKEND", "x11"},
           {"QT_QPA_PLATFORM", "xcb"},
       }) {
    setup.environment.emplace(name, value);
  }
  for (const char *name : {"WAYLAND_DISPLAY", "XDG_SESSION_TYPE", "XDG_CURRENT_DESKTOP",
                           "DESKTOP_SESSION", "SESSION_MANAGER", "XAUTHORITY", "GTK_THEME",
                           "GTK_MODULES", "NO_AT_BRIDGE", "AT_SPI_BUS_ADDRESS"}) {
    setup.unset.emplace_back(name);
  }
  return setup;
}

// Every window fills the screen.
constexpr const char *windowManagerConfiguration =
    R"(<openbox_config xmlns="http://openbox.org/3.4/rc"><applications><application type="normal">)"
    "<decor>no</decor><maximized>yes</maximized></application></applications></openbox_config>\n";

// The address of the bus on which programs tell what they show; empty while there is none.
std::string addressOfAccessibilityBus(GDBusConnection *connection) {
  const VariantHandle reply(g_dbus_connection_call_sync(
      connection, "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", nullptr,
      G_VARIANT_TYPE("(s)"), G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, nullptr, nullptr));
  if (reply == nullptr) {
    return "";
  }
  const char *address = nullptr;
  g_variant_get(reply.get(), "(&s)", &address);
  return address;
}

}  // namespace

DesktopSession::DesktopSession(ExtensionSession::Setup setup) {
  extension_ = std::make_unique<ExtensionSession>(withoutDesktopOfUser(std::move(setup)));
  leftOver_.begin();
  // As file managers require it.
  std::filesystem::permissions(*extension_ / "runtime", std::filesystem::perms::owner_all);
  writeFile(*extension_ / "configuration/openbox/rc.xml", windowManagerConfiguration);
  display_ = std::make_unique<VirtualDisplay>(extension_->environment(),
                                              *extension_ / "window-manager-errors");

  accessibility_ = std::make_unique<QuietProgram>(
      std::vector<std::string>{accessibilityProgram, "--launch-immediately", "--a11y=1"},
      environment(), *extension_ / "accessibility-errors");
  const ObjectHandle<GDBusConnection> session = extension_->bus().connect();
  std::string address;
  if (!turnMainLoopUntil([&] {
        address = addressOfAccessibilityBus(session.get());
        return !address.empty();
      })) {
    throw std::runtime_error("There is no accessibility bus");
  }
  ErrorHandle error;
  accessibilityBus_.reset(g_dbus_connection_new_for_address_sync(
      address.c_str(),
      static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                        G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
      nullptr, nullptr, ErrorOut(error)));
  if (accessibilityBus_ == nullptr) {
    throw std::runtime_error(error->message);
  }
  g_dbus_connection_set_exit_on_close(accessibilityBus_.get(), FALSE);
}

DesktopSession::~DesktopSession() {
  accessibilityBus_.reset();
  accessibility_.reset();
  display_.reset();
  extension_.reset();
  // A program whose parent is ended comes to this process.
  while (!leftOver_.processes().empty()) {
    leftOver_.end();
  }
}

CommandOptions DesktopSession::environment() const {
  CommandOptions options = extension_->environment();
  options.environment["DISPLAY"] = display_->name();
  return options;
}

AccessibleObject DesktopSession::accessiblePrograms() const {
  return {accessibilityBus_.get(), "org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root"};
}
