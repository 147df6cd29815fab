// Telling running extensions that the list of working copies is a new one.
#pragma once

namespace companion {

// Returns when the bus has the notification, so that the program may end. Where there is no session
// bus it prints a note: the list counts all the same, only later.
void announceManifest();

// The same for a program that has saved nothing: an earlier one may have been ended between saving
// the list and announcing it. Prints nothing.
void announceManifestAgain();

}  // namespace companion
