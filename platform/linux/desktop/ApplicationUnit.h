// A launched program's own place among the processes of the session.
#pragma once

#include <string>
#include <vector>

#include "platform/linux/desktop/ApplicationLaunch.h"

namespace platform {

// What the service manager runs in place of this process to launch: a program, and the argument
// before those of the launch.
struct Launcher {
  std::string program;
  std::string option;
};

// The arguments behind the option: the application, the token, and each URL.
std::vector<std::string> argumentsOfLaunch(const ApplicationLaunch &launch);

enum class UnitStart {
  started,
  refused,  // no service manager runs the session, or not one that can do this
  unknown   // it has not said
};

// Where a service manager runs the session, what is restricted in the unit of a service and what
// ends it holds for all that the service starts. So the manager is asked to run the launcher as a
// service of its own, which stays as long as the application does. It is given the environment of
// this process with `variables` changed in it. Waits for the manager's answer.
UnitStart startApplicationUnit(const Launcher &launcher, const ApplicationLaunch &launch,
                               const Variables &variables);

}  // namespace platform
