#include "tests/support/session/ExtensionSession.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <stdexcept>
#include <unistd.h>

// glibc 2.36 forgets to say that these are C functions.
extern "C" {
#include <sys/pidfd.h>
}

#include "platform/linux/values/LinuxPropertyListFiles.h"
#include "tests/support/bus/PublicNames.h"

using platform::Dictionary;
using platform::FileURL;
using platform::ObjectHandle;
using platform::VariantHandle;

namespace {

CommandOptions environmentBelow(const TemporaryDirectory &directory,
                                const ExtensionSession::Setup &setup) {
  CommandOptions options;
  options.environment = {{"HOME", directory / "home"},
                         {"XDG_DATA_HOME", directory / "data"},
                         {"XDG_CONFIG_HOME", directory / "configuration"},
                         {"XDG_CACHE_HOME", directory / "cache"},
                         {"XDG_RUNTIME_DIR", directory / "runtime"}};
  for (const auto &[name, value] : setup.environment) {
    options.environment[name] = value;
  }
  for (const std::string &name : setup.unset) {
    options.environment.erase(name);
    options.unset.push_back(name);
  }
  return options;
}

// The owner of the extension's name; -1 if there is none.
pid_t processOfExtension(const PrivateBus &bus) {
  const ObjectHandle<GDBusConnection> connection = bus.connect();
  const VariantHandle reply(g_dbus_connection_call_sync(
      connection.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
      "GetConnectionUnixProcessID", g_variant_new("(s)", busName), G_VARIANT_TYPE("(u)"),
      G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
  if (reply == nullptr) {
    return -1;
  }
  guint32 process = 0;
  g_variant_get(reply.get(), "(u)", &process);
  return static_cast<pid_t>(process);
}

// A descriptor that becomes readable when the owner of the extension's name ends; -1 if nothing
// owns it.
int descriptorOfExtension(const PrivateBus &bus) {
  const pid_t process = processOfExtension(bus);
  return process < 0 || process == getpid() ? -1 : pidfd_open(process, 0);
}

}  // namespace

ExtensionSession::Setup ExtensionSession::loggingSetup(const std::string &launcher) {
  Setup setup;
  setup.extensionCommand =
      launcher + " /bin/sh -c 'exec \"$0\" 2>> \"$HOME/log\"' '" + extensionProgram() + "'";
  return setup;
}

ExtensionSession::ExtensionSession(const Setup &setup)
    : environment_(environmentBelow(directory_, setup)) {
  writeServiceFile(setup);
  bus_.emplace(directory_ / "services");
}

void ExtensionSession::replaceBus() {
  bus_.reset();
  bus_.emplace(directory_ / "services");
}

ExtensionSession::~ExtensionSession() {
  constexpr int patience = 30'000;  // milliseconds; only a broken extension takes them
  const int extension = descriptorOfExtension(*bus_);
  bus_->stop();
  if (extension >= 0) {
    pollfd ended{extension, POLLIN, 0};
    if (poll(&ended, 1, patience) != 1) {
      ADD_FAILURE() << "the extension does not end with its bus";
      pidfd_send_signal(extension, SIGKILL, nullptr, 0);
    }
    close(extension);
  }
}

void ExtensionSession::writeServiceFile(const Setup &setup) const {
  std::filesystem::create_directories(directory_ / "services");
  for (const char *name : {"home", "runtime"}) {
    std::filesystem::create_directories(directory_ / name);
  }
  if (!setup.isActivatable) {
    return;
  }
  // The bus hands its own environment on, which is the test's; this changes it.
  std::string command = "/usr/bin/env";
  for (const std::string &name : environment_.unset) {
    command += " -u " + name;
  }
  for (const auto &[name, value] : environment_.environment) {
    command.append(" '").append(name).append("=").append(value).append("'");
  }
  command +=
      " " + (setup.extensionCommand.empty() ? std::string("'" HALVERN_FINDER_SYNC_PROGRAM "'")
                                            : setup.extensionCommand);
  writeFile(directory_ / "services/com.morvane.v3.finder.service",
            "[D-BUS Service]\nName=com.morvane.v3.finder\nExec=" + command + "\n");
}

std::string ExtensionSession::halvernProgram() {
  return HALVERN_PROGRAM;
}

std::string ExtensionSession::extensionProgram() {
  return HALVERN_FINDER_SYNC_PROGRAM;
}

pid_t ExtensionSession::extensionProcess() const {
  return processOfExtension(*bus_);
}

std::string ExtensionSession::log() const {
  return readFileForTest(directory_ / "home/log");
}

CommandOptions ExtensionSession::environment() const {
  CommandOptions options = environment_;
  options.environment["DBUS_SESSION_BUS_ADDRESS"] = bus_->address();
  options.unset.emplace_back("NO_COLOR");
  return options;
}

CommandResult ExtensionSession::halvern(const std::vector<std::string> &arguments,
                                        const CommandOptions &options) const {
  std::vector<std::string> command = {halvernProgram()};
  command.insert(command.end(), arguments.begin(), arguments.end());
  CommandOptions all = environment();
  for (const auto &[name, value] : options.environment) {
    all.environment[name] = value;
  }
  all.unset.insert(all.unset.end(), options.unset.begin(), options.unset.end());
  all.directory = options.directory.empty() ? directory_.path().string() : options.directory;
  return runCommand(command, all);
}

std::string ExtensionSession::sharedPath(std::string_view name) const {
  const std::string path =
      directory_ / "data/group-containers/7KQ2M9XR4T.com.morvane.shared/FinderSync";
  return name.empty() ? path : path + "/" + std::string(name);
}

Dictionary ExtensionSession::sharedDictionary(std::string_view name) const {
  const auto dictionary = platform::LinuxPropertyListFiles().dictionaryWithContentsOfURL(
      FileURL::fromPath(sharedPath(name)));
  if (!dictionary) {
    throw std::runtime_error(std::string(name) + ": " + dictionary.reason());
  }
  return *dictionary;
}

void ExtensionSession::writeSharedDictionary(std::string_view name,
                                             const Dictionary &dictionary) const {
  std::filesystem::create_directories(sharedPath());
  ASSERT_TRUE(platform::LinuxPropertyListFiles().writeDictionary(
      dictionary, FileURL::fromPath(sharedPath(name))));
}
