// Processes that others have started.
#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

pid_t parentOfProcess(pid_t process);  // 0 where it has ended

// Those that run a program of that file name, among the process `top` and all beneath it. Those
// that end meanwhile may be missing.
std::vector<pid_t> processesOfProgram(const std::string &program, pid_t top);

// The extension's process, the one beside it that starts programs, and the status worker where
// there is one.
std::vector<pid_t> processesOfExtension(pid_t extension);

// Blocks until the process, which need not be one of this one's, has ended; false if it does not in
// the time that only a broken program takes.
bool waitForProcessEnd(pid_t process);
