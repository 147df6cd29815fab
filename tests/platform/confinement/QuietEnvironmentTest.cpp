// An environment in which nothing is loaded or run, and the bus that is left in it.
#include <cstdlib>
#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/un.h>

#include "platform/linux/confinement/QuietEnvironment.h"
#include "platform/linux/confinement/SessionBusAddress.h"
#include "platform/linux/files/FileDescriptor.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/files/TemporaryDirectory.h"

using platform::Result;
using platform::sessionBusAddress;
using ::testing::Contains;
using ::testing::Pair;

namespace {

std::string valueOf(const char *name) {
  const char *value = std::getenv(name);
  return value == nullptr ? "not set" : value;
}

TEST(QuietEnvironment, HasNothingInItThatIsLoadedOrRun) {
  const EnvironmentVariable bus("DBUS_SESSION_BUS_ADDRESS", "autolaunch:;unix:path=/bus");
  const EnvironmentVariable extra("GIO_EXTRA_MODULES", "/hostile");
  const EnvironmentVariable modules("GIO_MODULE_DIR", "/hostile");
  const EnvironmentVariable files("GIO_USE_VFS", "hostile");
  const EnvironmentVariable launcher("GIO_LAUNCH_DESKTOP", "/hostile");
  const EnvironmentVariable converters("GCONV_PATH", std::nullopt);
  const EnvironmentVariable own("HOME", "/home/user");

  const platform::Variables earlier = platform::makeEnvironmentQuiet();

  EXPECT_EQ(valueOf("DBUS_SESSION_BUS_ADDRESS"), "unix:path=/bus");
  EXPECT_EQ(valueOf("GIO_EXTRA_MODULES"), "not set");
  EXPECT_EQ(valueOf("GIO_MODULE_DIR"), "/dev/null");
  EXPECT_EQ(valueOf("GIO_USE_VFS"), "local");
  EXPECT_EQ(valueOf("GIO_LAUNCH_DESKTOP"), "not set");
  EXPECT_EQ(valueOf("GCONV_PATH"), "not set");
  EXPECT_EQ(valueOf("HOME"), "/home/user");
  EXPECT_THAT(earlier, Contains(Pair("GIO_EXTRA_MODULES", "/hostile")));
  EXPECT_THAT(earlier, Contains(Pair("GCONV_PATH", std::nullopt)));
  EXPECT_THAT(earlier, Contains(Pair("DBUS_SESSION_BUS_ADDRESS", "autolaunch:;unix:path=/bus")));
}

TEST(SessionBusAddress, IsThatOfTheUnixSocketsAlone) {
  for (const auto &[given, kept] : std::vector<std::pair<std::string, std::string>>{
           {"unix:path=/bus", "unix:path=/bus"},
           {"unix:abstract=/bus,guid=0123", "unix:abstract=/bus,guid=0123"},
           {"autolaunch:;unix:path=/one;tcp:host=example.com,port=1;unix:path=/two",
            "unix:path=/one;unix:path=/two"}}) {
    const EnvironmentVariable bus("DBUS_SESSION_BUS_ADDRESS", given);
    EXPECT_EQ(*sessionBusAddress(), kept);
  }
}

TEST(SessionBusAddress, OfAnyOtherKindIsNone) {
  for (const char *given :
       {"", "autolaunch:", "tcp:host=localhost,port=1", "unixexec:path=/bin/sh", "/bus"}) {
    const EnvironmentVariable bus("DBUS_SESSION_BUS_ADDRESS", given);
    const Result<std::string> address = sessionBusAddress();
    ASSERT_FALSE(address) << given;
    EXPECT_EQ(address.reason(), "DBUS_SESSION_BUS_ADDRESS names no Unix socket");
  }
}

TEST(SessionBusAddress, IsInTheRuntimeDirectoryWhereItIsNotGiven) {
  const EnvironmentVariable bus("DBUS_SESSION_BUS_ADDRESS", std::nullopt);
  const TemporaryDirectory directory;
  const EnvironmentVariable runtime("XDG_RUNTIME_DIR", directory.path());
  EXPECT_EQ(sessionBusAddress().reason(),
            "DBUS_SESSION_BUS_ADDRESS is not set, and there is no bus in XDG_RUNTIME_DIR");
  writeFile(directory / "bus", "no socket");
  EXPECT_FALSE(sessionBusAddress());
  std::filesystem::remove(directory / "bus");

  const platform::FileDescriptor listener(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_un name{AF_UNIX, {}};
  (directory / "bus").copy(name.sun_path, sizeof name.sun_path - 1);
  ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr *>(&name), sizeof name), 0);
  EXPECT_EQ(*sessionBusAddress(), "unix:path=" + directory / "bus");
}

TEST(SessionBusAddress, IsNoneWhereNothingTells) {
  const EnvironmentVariable bus("DBUS_SESSION_BUS_ADDRESS", std::nullopt);
  const EnvironmentVariable runtime("XDG_RUNTIME_DIR", std::nullopt);
  EXPECT_EQ(sessionBusAddress().reason(),
            "Neither DBUS_SESSION_BUS_ADDRESS nor XDG_RUNTIME_DIR is set");
}

}  // namespace
