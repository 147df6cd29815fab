// The bundle, the identifiers and the other applications.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "platform/Bundle.h"
#include "platform/UUIDs.h"
#include "platform/Workspace.h"
#include "platform/testing/Journal.h"

namespace platform::testing {

class FakeBundle final : public Bundle {
 public:
  FileURL bundleURL() const override { return FileURL::fromPath(path, /*isDirectory=*/true); }
  std::string localizedStringForKey(const std::string &key) const override;
  bool isSystemVersionAtLeast(int major, int minor, int patch) const override;

  std::string path = "/Applications/Halvern.app/Contents/PlugIns/FinderSync.appex";
  std::map<std::string, std::string> translations;
  std::tuple<int, int, int> systemVersion{27, 0, 0};
};

// 00000000-0000-4000-8000-000000000001, and on from there.
class FakeUUIDs final : public UUIDs {
 public:
  std::string makeUUIDString() override;

 private:
  unsigned count_ = 0;
};

class RecordingWorkspace final : public Workspace {
 public:
  explicit RecordingWorkspace(Journal &journal) : journal_(journal) {}

  std::optional<FileURL> urlForApplicationWithBundleIdentifier(
      const std::string &bundleIdentifier) override;
  void openURLs(const std::vector<std::string> &urls, const FileURL &applicationURL,
                bool activates) override;

  struct Opening {
    std::vector<std::string> urls;
    std::string application;  // its path
    bool activates;

    friend bool operator==(const Opening &, const Opening &) = default;
  };

  std::map<std::string, FileURL> applications;  // by bundle identifier
  std::vector<Opening> openings;

 private:
  Journal &journal_;
};

}  // namespace platform::testing
