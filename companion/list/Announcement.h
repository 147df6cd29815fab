// Telling running extensions that the list of working copies is a new one.
#pragma once

namespace companion {

// Returns when the bus has the notification, so that the program may end. Where there is no session
// bus it prints a note: the list counts all the same, only later.
void announceManifest();

}  // namespace companion
