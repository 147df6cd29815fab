// A whole platform of fakes, for one test on one thread.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "platform/Services.h"
#include "platform/testing/FakeBookmarks.h"
#include "platform/testing/FakeDesktop.h"
#include "platform/testing/FakeEventStreams.h"
#include "platform/testing/FakeFiles.h"
#include "platform/testing/HandCrankedQueues.h"
#include "platform/testing/Journal.h"
#include "platform/testing/RasterDrawing.h"
#include "platform/testing/RecordingSystemLogs.h"

namespace platform::testing {

class RecordingNotificationCenter final : public DistributedNotificationCenter {
 public:
  explicit RecordingNotificationCenter(Journal &journal) : journal_(journal) {}

  void addObserver(const std::string &name, std::function<void()> handler) override;
  void postNotification(const std::string &name) override;

  // Calls the observers of `name`, as if another process had posted it.
  void deliver(const std::string &name);

 private:
  Journal &journal_;
  std::multimap<std::string, std::function<void()>> observers_;
};

class RecordingFinderSyncController final : public FIFinderSyncController {
 public:
  explicit RecordingFinderSyncController(Journal &journal) : journal_(journal) {}

  void setDirectoryURLs(const FileURLSet &directoryURLs) override;
  void setBadgeImage(const Image &image, std::string_view label,
                     std::string_view badgeIdentifier) override;
  void setBadgeIdentifier(std::string_view badgeIdentifier, const FileURL &itemURL) override;
  std::vector<FileURL> selectedItemURLs() override { return selected; }
  std::optional<FileURL> targetedURL() override { return targeted; }

  // What the user has chosen.
  std::vector<FileURL> selected;
  std::optional<FileURL> targeted;

  struct BadgeImage {
    std::string identifier;
    std::string label;
    Image image;
  };

  std::function<void()> whileSettingDirectories = [] {};

  std::vector<FileURLSet> directoryURLs;                    // one for each call
  std::vector<BadgeImage> badgeImages;                      // in order of registration
  std::vector<std::pair<std::string, std::string>> badges;  // url text, identifier

 private:
  Journal &journal_;
};

struct FakePlatform {
  FakePlatform() = default;

  // With another one to draw, such as the system's own.
  explicit FakePlatform(Drawing &other) : drawing(other) {}

  // What has not run may be the last to hold objects that use the other fakes.
  ~FakePlatform() { queues.forgetPending(); }
  FakePlatform(const FakePlatform &) = delete;
  FakePlatform &operator=(const FakePlatform &) = delete;

  Journal journal;
  HandCrankedQueues queues;
  FakePaths paths;
  FakeFileManager fileManager{journal};
  FakePropertyListFiles propertyListFiles{journal};
  FakeUserDefaults userDefaults{journal};
  FakeBookmarks bookmarks{journal};
  RasterDrawing rasterDrawing;
  Drawing &drawing = rasterDrawing;
  RecordingNotificationCenter notificationCenter{journal};
  FakePosixAccess posixAccess{journal};
  RecordingSystemLogs systemLogs;
  FakeEventStreams eventStreams{journal};
  RecordingFinderSyncController finderSyncController{journal};
  FakeBundle bundle;
  FakeUUIDs uuids;
  RecordingWorkspace workspace{journal};

  Services services{queues,
                    queues,
                    paths,
                    fileManager,
                    propertyListFiles,
                    userDefaults,
                    bookmarks,
                    drawing,
                    notificationCenter,
                    posixAccess,
                    systemLogs,
                    eventStreams,
                    finderSyncController,
                    bundle,
                    uuids,
                    workspace};
};

// The platform behind `platform::processServices()` in a program of unit tests.
FakePlatform &processPlatform();

}  // namespace platform::testing
