// Applications as desktop entries, found and launched through GIO. All of this may take long, since
// a file system may not answer and an application may take its time to start: it is for processes
// that do nothing else.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/confinement/QuietEnvironment.h"

namespace platform {

// The path of the installed desktop entry of that name, which has no "-" in it (GIO would look for
// a folder, too). What is no file is passed over.
std::optional<std::string> pathOfDesktopEntry(const std::string &name);

struct ApplicationLaunch {
  // The path of the desktop entry. Anything else stands for the containing application's.
  std::string application;
  // Empty: the application is not to come forward.
  std::string activationToken;
  std::vector<std::string> urls;
};

// How long a process that launches may take, in seconds: as long as a session bus waits for a
// service that it starts.
constexpr unsigned launchPatience = 120;

// Has the application open the URLs, starting it if need be, as a program with a session of its own
// and this process's environment with `variables` changed in it. Calls `isUnderWay` when the
// program runs or its service has been asked; returns when the service has answered. How it went is
// told to nobody.
void launchApplication(const ApplicationLaunch &launch, const Variables &variables,
                       const std::function<void()> &isUnderWay);

}  // namespace platform
