// What the companion program does where the command line, its output or the extension is of no
// use.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <thread>
#include <unistd.h>

#include "FinderSync1.h"
#include "platform/FileURL.h"
#include "tests/support/ExtensionSession.h"

using platform::ErrorHandle;
using platform::ErrorOut;
using platform::Handle;
using platform::ObjectHandle;
using platform::VariantHandle;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

// Has the extension's name on the bus and one directory, takes requests, and answers none.
class FakeExtension {
 public:
  enum class AfterRequest { staysSilent, leavesTheBus };

  FakeExtension(const PrivateBus &bus, const std::string &path, AfterRequest afterRequest)
      : context_(g_main_context_new()), loop_(g_main_loop_new(context_.get(), FALSE)) {
    // Calls are handled in the context that is the thread's own when the object is exported.
    g_main_context_push_thread_default(context_.get());
    connection_ = bus.connect();
    skeleton_.reset(halvern_finder_sync1_skeleton_new());
    const std::string url = platform::FileURL::fromPath(path, true).text();
    const char *const directories[] = {url.c_str(), nullptr};
    halvern_finder_sync1_set_directory_urls(skeleton_.get(), directories);
    using Handler = gboolean (*)(HalvernFinderSync1 *, GDBusMethodInvocation *, const char *const *,
                                 GDBusConnection *);
    const Handler keepSilent = [](HalvernFinderSync1 *skeleton, GDBusMethodInvocation *invocation,
                                  const char *const *, GDBusConnection *) -> gboolean {
      halvern_finder_sync1_complete_request_badge_identifiers(skeleton, invocation);
      return TRUE;
    };
    const Handler leave = [](HalvernFinderSync1 *skeleton, GDBusMethodInvocation *invocation,
                             const char *const *, GDBusConnection *connection) -> gboolean {
      halvern_finder_sync1_complete_request_badge_identifiers(skeleton, invocation);
      g_dbus_connection_flush_sync(connection, nullptr, nullptr);
      g_dbus_connection_close_sync(connection, nullptr, nullptr);
      return TRUE;
    };
    g_signal_connect(skeleton_.get(), "handle-request-badge-identifiers",
                     G_CALLBACK(afterRequest == AfterRequest::leavesTheBus ? leave : keepSilent),
                     connection_.get());
    ErrorHandle error;
    if (g_dbus_interface_skeleton_export(G_DBUS_INTERFACE_SKELETON(skeleton_.get()),
                                         connection_.get(), "/com/morvane/v3/finder",
                                         ErrorOut(error)) == FALSE) {
      throw std::runtime_error(error->message);
    }
    const VariantHandle reply(g_dbus_connection_call_sync(
        connection_.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
        "RequestName", g_variant_new("(su)", "com.morvane.v3.finder", 4U), G_VARIANT_TYPE("(u)"),
        G_DBUS_CALL_FLAGS_NONE, -1, nullptr, ErrorOut(error)));
    g_main_context_pop_thread_default(context_.get());
    if (reply == nullptr) {
      throw std::runtime_error(error->message);
    }
    thread_ = std::thread([this] {
      g_main_context_push_thread_default(context_.get());
      g_main_loop_run(loop_.get());
      g_main_context_pop_thread_default(context_.get());
    });
  }

  ~FakeExtension() {
    const Handle<GSource, g_source_unref> quit(g_idle_source_new());
    g_source_set_callback(
        quit.get(),
        [](gpointer loop) -> gboolean {
          g_main_loop_quit(static_cast<GMainLoop *>(loop));
          return G_SOURCE_REMOVE;
        },
        loop_.get(), nullptr);
    g_source_attach(quit.get(), context_.get());
    thread_.join();
    g_dbus_connection_close_sync(connection_.get(), nullptr, nullptr);
  }
  FakeExtension(const FakeExtension &) = delete;
  FakeExtension &operator=(const FakeExtension &) = delete;

 private:
  const Handle<GMainContext, g_main_context_unref> context_;
  const Handle<GMainLoop, g_main_loop_unref> loop_;
  ObjectHandle<GDBusConnection> connection_;
  ObjectHandle<HalvernFinderSync1> skeleton_;
  std::thread thread_;
};

ExtensionSession::Setup withoutExtension() {
  ExtensionSession::Setup setup;
  setup.isActivatable = false;
  return setup;
}

}  // namespace

TEST(CompanionProgram, PrintsHelpAndVersionOnRequest) {
  const ExtensionSession session(withoutExtension());
  const CommandResult version = session.halvern({"--version"});
  EXPECT_EQ(version.status, 0);
  EXPECT_EQ(version.output, "halvern " HALVERN_VERSION "\n");
  for (const std::vector<std::string> &arguments :
       std::vector<std::vector<std::string>>{{"--help"}, {"-h"}, {"badges", "--help"}}) {
    const CommandResult help = session.halvern(arguments);
    EXPECT_EQ(help.status, 0);
    EXPECT_THAT(help.output, StartsWith("Usage: halvern "));
    EXPECT_EQ(help.errors, "");
  }
}

TEST(CompanionProgram, AnswersWrongUseWithAHint) {
  const ExtensionSession session(withoutExtension());
  const CommandResult result = session.halvern({"badges", "--frobnicate"});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors,
            "halvern: unknown option: --frobnicate\nhalvern: try: halvern badges --help\n");
  EXPECT_EQ(session.halvern({}).status, 2);
  EXPECT_EQ(session.halvern({"watchh"}).errors,
            "halvern: unknown command: watchh\nhalvern: try: halvern --help\n");
}

TEST(CompanionProgram, FailsWhereItsOutputCannotBeWritten) {
  const ExtensionSession session(withoutExtension());
  CommandOptions options = session.environment();
  for (const auto &[redirection, reason] :
       {std::pair(">/dev/full", "No space left on device"), {">&-", "Bad file descriptor"}}) {
    const CommandResult result = runCommand(
        {"sh", "-c", "'" + ExtensionSession::halvernProgram() + "' --help " + redirection},
        options);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, std::string("halvern: standard output: ") + reason + "\n");
  }
}

TEST(CompanionProgram, SurvivesAReaderThatGoesAway) {
  int ends[2] = {};
  ASSERT_EQ(pipe(ends), 0);
  close(ends[0]);
  const ObjectHandle<GSubprocessLauncher> launcher(
      g_subprocess_launcher_new(G_SUBPROCESS_FLAGS_STDERR_PIPE));
  g_subprocess_launcher_take_stdout_fd(launcher.get(), ends[1]);
  const ObjectHandle<GSubprocess> process(g_subprocess_launcher_spawn(
      launcher.get(), nullptr, ExtensionSession::halvernProgram().c_str(), "--help", nullptr));
  ASSERT_NE(process, nullptr);
  char *errorsOut = nullptr;
  g_subprocess_communicate_utf8(process.get(), nullptr, nullptr, nullptr, &errorsOut, nullptr);
  const platform::StringHandle errors(errorsOut);
  ASSERT_TRUE(g_subprocess_get_if_exited(process.get()));
  EXPECT_EQ(g_subprocess_get_exit_status(process.get()), 1);
  EXPECT_STREQ(errors.get(), "halvern: standard output: Broken pipe\n");
}

TEST(CompanionBadgesFailure, NamesTheReasonWhereThereIsNoBus) {
  const ExtensionSession session(withoutExtension());
  CommandOptions options;
  options.environment["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=" + session / "no-bus";
  const CommandResult result = session.halvern({"badges"}, options);
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, StartsWith("halvern: the extension is not reachable: "));
}

TEST(CompanionBadgesFailure, NamesTheReasonWhereTheExtensionIsNotInstalled) {
  const ExtensionSession session(withoutExtension());
  const CommandResult result = session.halvern({"badges"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output, "");
  EXPECT_THAT(result.errors, StartsWith("halvern: the extension is not reachable: "));
  EXPECT_THAT(result.errors, HasSubstr("com.morvane.v3.finder"));
}

TEST(CompanionBadgesFailure, NamesTheReasonWhereTheExtensionDoesNotStart) {
  ExtensionSession::Setup setup;
  setup.extensionCommand = "/bin/false";
  const ExtensionSession session(setup);
  const CommandResult result = session.halvern({"badges"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, StartsWith("halvern: the extension is not reachable: "));
}

TEST(CompanionBadgesFailure, EndsAtOnceWhenTheExtensionEndsMeanwhile) {
  const ExtensionSession session(withoutExtension());
  const FakeExtension extension(session.bus(), session.directory().path(),
                                FakeExtension::AfterRequest::leavesTheBus);
  const CommandResult result = session.halvern({"badges", "--timeout=250", "home"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors,
            "halvern: the extension is not reachable: it ended before it had answered\n");
}

TEST(CompanionBadgesFailure, EndsWhenTheExtensionStaysSilent) {
  const ExtensionSession session(withoutExtension());
  const FakeExtension extension(session.bus(), session.directory().path(),
                                FakeExtension::AfterRequest::staysSilent);
  const CommandResult result = session.halvern({"badges", "--timeout=1", "home"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors, "halvern: the extension has not answered for 1 s\n");
}
