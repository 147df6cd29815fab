// One scan, in the process that is there for it alone.
#pragma once

#include "platform/linux/worker/MessageSocket.h"
#include "platform/linux/worker/ScanMessages.h"
#include "platform/linux/worker/program/Confinement.h"

// Restricts the process to what the scan needs, scans, and sends all there is to tell. The exit
// status with which the process must end; success if the end of the scan has been told.
int runScan(const MessageSocket &receiver, const ScanRequest &request,
            ScanConfinement &confinement);
