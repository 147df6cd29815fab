// Which files the extension process writes, so that it does not follow its own changes.
#pragma once

#include "platform/linux/events/OwnFiles.h"
#include "platform/linux/values/LinuxUserDefaults.h"

// All of them: the group containers, the user defaults, the badge icons, and the log where that is
// a file.
platform::OwnFiles filesThatThisProcessWrites(const platform::LinuxUserDefaults &userDefaults);
