// What a fork of the spawner does for the extension with desktop entries, and then ends. Both give
// themselves up when they take so long that something must be broken.
#pragma once

#include "platform/linux/desktop/ApplicationUnit.h"

namespace platform {

// `answer` gets the entry's path, or nothing; it is closed at the end.
[[noreturn]] void findApplication(const std::string &name, int answer);

// `answer` is closed when the application is on its way.
[[noreturn]] void carryOutLaunch(const ApplicationLaunch &launch, const Launcher &launcher,
                                 int answer);

}  // namespace platform
