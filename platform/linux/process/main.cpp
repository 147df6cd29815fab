// The extension process: halvern-finder-sync.
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>

#include <glib-unix.h>

#include "extension/KTRFinderSync.h"
#include "platform/linux/GLibHandles.h"
#include "platform/linux/StandardStreams.h"
#include "platform/linux/confinement/ExtensionConfinement.h"
#include "platform/linux/confinement/QuietEnvironment.h"
#include "platform/linux/confinement/SessionBusAddress.h"
#include "platform/linux/desktop/ApplicationLaunch.h"
#include "platform/linux/process/FinderSyncService.h"
#include "platform/linux/process/ProcessServices.h"
#include "platform/linux/process/SpareMemory.h"
#include "platform/linux/process/guard/SessionBus.h"
#include "platform/linux/spawner/Spawner.h"

namespace {

constexpr int exitFailed = 1;
constexpr int exitUsage = 2;

int fail(const std::string &message) {
  std::fprintf(stderr, "halvern-finder-sync: %s\n", message.c_str());
  return exitFailed;
}

// Not for people: a service manager runs this process with it instead of the extension, to launch
// an application. Behind it come the desktop entry, the activation token and the URLs.
constexpr const char *launchOption = "--launch";

int launch(const platform::ApplicationLaunch &launch) {
  alarm(platform::launchPatience);
  platform::launchApplication(launch, platform::makeEnvironmentQuiet(), [] {});
  std::_Exit(EXIT_SUCCESS);
}

int printUsage(std::FILE *stream) {
  std::fputs(
      "Usage: halvern-finder-sync [--help | --version]\n"
      "\n"
      "Halvern's file-manager extension. The session bus starts it when a file manager\n"
      "first needs it; it runs until the session ends. To look at it, use \"halvern\".\n",
      stream);
  return stream == stdout ? EXIT_SUCCESS : exitUsage;
}

gboolean quitLoop(gpointer loop) {
  g_main_loop_quit(static_cast<GMainLoop *>(loop));
  return G_SOURCE_REMOVE;
}

// `spawner` has been started while this process could still fork it.
int run(const platform::Spawner &spawner) {
  using namespace platform;

  const Outcome confined = confineExtension();
  if (!confined) {
    return fail("It cannot be confined: " + confined.reason());
  }
  const Result<std::string> address = sessionBusAddress();
  if (!address) {
    return fail("The session bus cannot be reached: " + address.reason());
  }
  makeEnvironmentQuiet();

  ErrorHandle error;
  const ObjectHandle<GDBusConnection> connection(connectToBus(*address, error));
  if (connection == nullptr) {
    return fail(std::string("The session bus cannot be reached: ") + error->message);
  }
  g_dbus_connection_set_exit_on_close(connection.get(), FALSE);

  // Heard from here on, acted on when the loop runs: an end during the start-up is a clean one too.
  const Handle<GMainLoop, g_main_loop_unref> loop(g_main_loop_new(nullptr, FALSE));
  for (const int signal : {SIGTERM, SIGINT}) {
    g_unix_signal_add(signal, quitLoop, loop.get());
  }
  g_signal_connect_swapped(connection.get(), "closed", G_CALLBACK(quitLoop), loop.get());
  // Without its spawner it could not do all that it is asked for. The bus starts another.
  const GUnixFDSourceFunc spawnerEnded = [](int /*descriptor*/, GIOCondition /*condition*/,
                                            gpointer data) { return quitLoop(data); };
  g_unix_fd_add(spawner.endDescriptor(), G_IO_IN, spawnerEnded, loop.get());

  // The order matters: whoever sees the name owned gets an answer, because the object is there
  // before the name and nothing is answered before the principal object is; and a second process
  // has touched nothing by the time it learns that the name is taken.
  auto &service = *new FinderSyncService;  // NOLINT: lives as long as the process
  std::string reason;
  if (!service.exportObject(connection.get(), reason)) {
    return fail("The bus object cannot be exported: " + reason);
  }
  switch (service.requestName(reason)) {
    case FinderSyncService::NameRequest::owned:
      break;
    case FinderSyncService::NameRequest::taken:
      return fail("already running on this session bus");
    case FinderSyncService::NameRequest::failed:
      return fail("The bus name cannot be had: " + reason);
  }
  startProcessServices(connection.get(), service, spawner);
  KTRFinderSync finderSync(processServices());
  service.setPrincipalObject(finderSync);

  g_main_loop_run(loop.get());

  g_dbus_connection_flush_sync(connection.get(), nullptr, nullptr);
  return spawner.hasEnded() ? fail("The process that starts programs for it has ended")
                            : EXIT_SUCCESS;
}

}  // namespace

int main(int argumentCount, char **arguments) {
  platform::prepareStandardStreams();
  if (argumentCount > 1) {
    const std::string argument = arguments[1];
    if (argumentCount == 2 && argument == "--help") {
      return printUsage(stdout);
    }
    if (argumentCount == 2 && argument == "--version") {
      std::puts("halvern-finder-sync " HALVERN_VERSION);
      return EXIT_SUCCESS;
    }
    if (argumentCount >= 4 && argument == launchOption) {
      return launch({arguments[2], arguments[3], {arguments + 4, arguments + argumentCount}});
    }
    return printUsage(stderr);
  }
  SpareMemory::keepLittle();
  using platform::Spawner;
  const platform::Result<Spawner> spawner =
      Spawner::start(Spawner::programsBesideThisOne(launchOption));
  if (!spawner) {
    return fail("No process can be had that launches applications: " + spawner.reason());
  }
  const int status = run(*spawner);
  // A scan may be running on its queue. It only reads, so the process does not wait for it, and
  // destroys nothing beneath it.
  std::fflush(nullptr);
  std::_Exit(status);
}
