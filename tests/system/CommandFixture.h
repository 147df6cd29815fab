// The extension with an application to hand its commands to, as desktop entry and stand-in.
#pragma once

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "tests/support/bus/BusClient.h"
#include "tests/support/processes/LaunchedPrograms.h"
#include "tests/support/session/CommandApplication.h"
#include "tests/support/session/ExtensionSession.h"

constexpr const char *invalidArguments = "org.freedesktop.DBus.Error.InvalidArgs";
constexpr const char *limitsExceeded = "org.freedesktop.DBus.Error.LimitsExceeded";

class CommandFixture : public ::testing::Test {
 protected:
  explicit CommandFixture(ExtensionSession::Setup setup = {});

  // The application's desktop entry, with further lines in it, in the user's data directory or in
  // that of the system.
  static std::string entryOfApplication(const std::string &lines = "") {
    return CommandApplication::desktopEntry(lines);
  }
  void installApplication(const std::string &lines = "") const { application.install(lines); }
  void installApplicationForAll() const;

  // Starts the extension. What is launched from then on is looked at by `launched`.
  void start();

  static std::string urlOf(const std::string &path) {
    return platform::FileURL::fromPath(path).text();
  }

  // Has the action performed; the name of the D-Bus error, "" for none. Takes a floating
  // `platformData`; null is an empty one.
  std::string perform(const std::string &action, const std::vector<std::string> &selected,
                      const std::string &targeted = "", GVariant *platformData = nullptr);

  // With that token in the platform data.
  std::string performWithToken(const std::string &action, const std::string &token);

  // What was sent, as the application finds it.
  std::string commandDirectory() const { return application.commandDirectory(); }
  std::vector<std::string> commandNames() const { return application.commandNames(); }
  platform::Dictionary command() const { return application.command(); }
  std::vector<std::string> sentPaths() const { return application.sentPaths(); }

  // What the one program that was launched was given as its only argument.
  std::string launchedURL() const;

  LaunchedPrograms launched;
  const TemporaryDirectory dataOfSystem;
  ExtensionSession session;
  const CommandApplication application{session};
  BusClient client{session.bus()};
};
