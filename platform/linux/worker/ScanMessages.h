// What the extension process, the status worker and its scans tell each other
// (docs/formats/status-worker.md).
//
// Each message is one serialized GVariant. What is decoded has been checked: it may come from a
// process in which anything has happened.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "scanner/KTRWorkingCopyStatusScanner.h"

// Extension to worker: scan this. With it goes the socket to which the scan reports.
struct ScanRequest {
  std::string targetPath;
  std::optional<std::string> configDir;
  KTRWorkingCopyScanOptions options;
};

// One reported node: as much of its status as crosses.
struct ScanReport {
  std::string path;
  svn_wc_status_kind status = svn_wc_status_none;
  bool isConflicted = false;
  bool isLocked = false;
  bool isSwitched = false;

  bool operator==(const ScanReport &) const = default;
};
using ScanReports = std::vector<ScanReport>;

// The database that the scan is about, before it is opened: where it is and what state it is in.
struct ScanDatabase {
  std::string path;
  std::string state;

  bool operator==(const ScanDatabase &) const = default;
};

// The scan goes on, although it has nothing to report.
struct ScanBeat {
  bool operator==(const ScanBeat &) const = default;
};

// The scan has ended by itself; all it had to report has been sent.
struct ScanEnd {
  int error = 0;        // the library's number; 0 without error
  std::string message;  // what is sent of it is valid UTF-8, and cut off at its greatest length

  bool operator==(const ScanEnd &) const = default;
};

// What a scan tells the extension.
using ScanMessage = std::variant<ScanReports, ScanDatabase, ScanBeat, ScanEnd>;

// Worker to extension: how the process of the scan has ended.
struct ScanExit {
  bool isSignal = false;
  int number = 0;  // of the signal, or the exit status

  bool operator==(const ScanExit &) const = default;
};

// The greatest message, in bytes. Some paths of the greatest length fit into it, and it fits into
// what the kernel keeps for a socket by default (net.core.wmem_default, 208 KiB).
constexpr std::size_t greatestScanMessage = 64 << 10;

// Of the library's message at the end, in bytes. It becomes a line of the log.
constexpr std::size_t greatestScanErrorText = 1024;

std::string encode(const ScanRequest &request);
std::string encode(const ScanMessage &message);
std::string encode(const ScanExit &exit);

// None if it is not such a message. A path in a report is not checked here.
std::optional<ScanRequest> decodeScanRequest(std::string_view bytes);
std::optional<ScanMessage> decodeScanMessage(std::string_view bytes);
std::optional<ScanExit> decodeScanExit(std::string_view bytes);
