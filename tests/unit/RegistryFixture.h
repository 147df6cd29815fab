// A registry on fakes, with a scanner whose reports a test writes down.
#pragma once

#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "extension/KTRFinderSync.h"
#include "platform/testing/FakePlatform.h"
#include "registry/KTRFinderSyncWorkingCopies.h"

using platform::Array;
using platform::Data;
using platform::Dictionary;
using platform::FileURL;
using platform::FileURLSet;
using platform::PropertyList;
using platform::testing::bookmarkNamed;
using platform::testing::FakePlatform;

// One node as a scan reports it.
struct ReportedNode {
  std::string path;
  svn_wc_status_kind status = svn_wc_status_normal;
  bool isConflicted = false;
  bool isLocked = false;
};

class FakeScanner {
 public:
  svn_error_t *scan(const std::string &targetPath, const std::optional<std::string> &configDir,
                    KTRWorkingCopyScanOptions options, const KTRWorkingCopyEntryBlock &entryBlock);

  std::map<std::string, std::vector<ReportedNode>> nodes;  // by target path
  std::map<std::string, std::pair<apr_status_t, std::string>> errors;
  std::function<void()> whileScanning = [] {};

  std::vector<std::string> targets;  // one for each scan
  std::vector<std::optional<std::string>> configDirs;
  std::vector<KTRWorkingCopyScanOptions> options;
};

// The private operations of the registry.
struct RegistryPeer {
  KTRFinderSyncWorkingCopies &registry;

  std::optional<FileURL> resolveScoped(const Data &data, bool *isStale) {
    return registry.p_resolveScopedBookmark(data, isStale);
  }
  std::optional<FileURL> resolveImplicit(const Data &data) {
    return registry.p_resolveImplicitBookmark(data);
  }
  bool probeAccess(const std::string &path) {
    return registry.p_probeAccessAtURL(FileURL::fromPath(path, true));
  }
  std::optional<Data> mint(const std::string &path) {
    return registry.p_mintOwnScopedBookmarkForURL(FileURL::fromPath(path, true));
  }
  void requestRecovery(const std::map<std::string, int> &generations);
  std::map<std::string, PropertyList> lastRequestedGenerations();
  std::optional<std::string> rootPathContaining(const std::string &path) {
    return registry.p_rootPathContainingPath(path);
  }
  std::optional<std::string> sharedConfigDirectoryPath() {
    return registry.p_sharedConfigDirectoryPath();
  }
};

class RegistryFixture : public ::testing::Test {
 protected:
  static constexpr const char *sharedDirectory = "/containers/group/FinderSync";
  static constexpr const char *manifestPath = "/containers/group/FinderSync/Manifest.plist";
  static constexpr const char *requestPath = "/containers/group/FinderSync/RecoveryRequest.plist";
  static constexpr const char *storeKey = "KTRFinderSyncScopedBookmarks";
  static constexpr const char *logName = "com.morvane.v3.finder WorkingCopies: ";
  static constexpr const char *statusQueue = "com.morvane.finderSync.status";

  RegistryFixture();

  // An entry of a manifest; an empty bookmark name leaves the bookmark out.
  static Dictionary entry(const std::string &identifier, const std::string &bookmark = "");
  void publishManifest(Dictionary manifest);
  void publish(std::optional<int> generation, Array entries);

  // Registers working copies at these paths, so that badges can be asked for.
  void registerRoots(const std::vector<std::string> &paths);

  Dictionary store();
  void setStore(const std::map<std::string, std::string> &bookmarkNamesByIdentifier);
  Dictionary recoveryRequest() { return fakes.propertyListFiles.files[requestPath]; }
  std::vector<std::string> rootPaths() const;
  std::size_t postedRequests() const;

  // What a principal object takes for the shared registry.
  KTRFinderSync::SharedWorkingCopies sharedRegistry() {
    return [this]() -> KTRFinderSyncWorkingCopies & { return registry; };
  }

  // Asks for a badge and lets the queues run; "" stands for no badge.
  std::string badge(const std::string &path);

  FakePlatform fakes;
  FakeScanner scanner;
  KTRFinderSyncWorkingCopies registry;
  RegistryPeer peer{registry};
};
