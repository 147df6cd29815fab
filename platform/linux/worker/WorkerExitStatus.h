// How a scan that has not come to its end says why, where that is not the fault of the working copy
// that was scanned.
#pragma once

// The system has no more memory.
constexpr int workerExitWithoutMemory = 75;

// No process is to be had for the scan, or no thread of it.
constexpr int workerExitWithoutProcess = 76;

// The scan cannot give up what it must not have.
constexpr int workerExitWithoutConfinement = 77;
