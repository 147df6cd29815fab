// What processes that the spawner forks do first. Each function is about the calling process, and
// is for one that has one thread.
#pragma once

namespace platform {

// The spawner heeds no signal; what it starts does, as a new program expects.
void restoreSignals();

// Has the open files from that number on closed when a program is run, also those that whoever
// started the extension left open.
void closeWhenAProgramIsRun(int firstFile);

// Closes all open files but the standard ones and that one, which gets another number: the answer.
int keepOnly(int file);

}  // namespace platform
