#include "tests/unit/RegistryFixture.h"

#include <svn_error.h>

svn_error_t *FakeScanner::scan(const std::string &targetPath,
                               const std::optional<std::string> &configDir,
                               KTRWorkingCopyScanOptions scanOptions,
                               const KTRWorkingCopyEntryBlock &entryBlock) {
  targets.push_back(targetPath);
  configDirs.push_back(configDir);
  options.push_back(scanOptions);
  whileScanning();
  svn_lock_t lock{};
  for (const ReportedNode &node : nodes[targetPath]) {
    svn_client_status_t status{};
    status.node_status = node.status;
    status.conflicted = node.isConflicted ? TRUE : FALSE;
    status.lock = node.isLocked ? &lock : nullptr;
    if (svn_error_t *error = entryBlock(node.path.c_str(), &status, nullptr)) {
      return error;
    }
  }
  const auto error = errors.find(targetPath);
  return error == errors.end()
             ? SVN_NO_ERROR
             : svn_error_create(error->second.first, nullptr, error->second.second.c_str());
}

void RegistryPeer::requestRecovery(const std::map<std::string, int> &generations) {
  KTRFinderSyncWorkingCopies::GenerationsByIdentifier request;
  for (const auto &[identifier, number] : generations) {
    request.emplace(identifier, Generation(number));
  }
  registry.p_requestRecoveryForWorkingCopies(request);
}

std::map<std::string, PropertyList> RegistryPeer::lastRequestedGenerations() {
  platform::LockGuard guard(registry.i_stateLock);
  std::map<std::string, PropertyList> numbers;
  for (const auto &[identifier, generation] : registry.i_lastRequestedGenerations) {
    numbers.emplace(identifier, generation.number());
  }
  return numbers;
}

RegistryFixture::RegistryFixture()
    : registry(fakes.services, [this](const auto &target, const auto &configDir,
                                      const auto &options, const auto &block) {
        return scanner.scan(target, configDir, options, block);
      }) {
  fakes.fileManager.containers.emplace("7KQ2M9XR4T.com.morvane.shared",
                                       FileURL::fromPath("/containers/group", true));
}

Dictionary RegistryFixture::entry(const std::string &identifier, const std::string &bookmark) {
  Dictionary entry{{"wcID", identifier}};
  if (!bookmark.empty()) {
    entry.emplace("bookmark", bookmarkNamed(bookmark));
  }
  return entry;
}

void RegistryFixture::publishManifest(Dictionary manifest) {
  fakes.propertyListFiles.files.insert_or_assign(manifestPath, std::move(manifest));
}

void RegistryFixture::publish(std::optional<int> generation, Array entries) {
  Dictionary manifest{{"entries", std::move(entries)}};
  if (generation) {
    manifest.emplace("generation", *generation);
  }
  publishManifest(std::move(manifest));
}

void RegistryFixture::registerRoots(const std::vector<std::string> &paths) {
  Array entries;
  for (const std::string &path : paths) {
    fakes.bookmarks.paths["app " + path] = path;
    entries.emplace_back(entry(std::to_string(std::hash<std::string>()(path)), "app " + path));
  }
  publish(1, std::move(entries));
  registry.reloadManifest();
  fakes.queues.runUntilIdle();
}

Dictionary RegistryFixture::store() {
  const auto found = fakes.userDefaults.objects.find(storeKey);
  return found == fakes.userDefaults.objects.end() ? Dictionary() : *found->second.as<Dictionary>();
}

void RegistryFixture::setStore(
    const std::map<std::string, std::string> &bookmarkNamesByIdentifier) {
  Dictionary bookmarks;
  for (const auto &[identifier, name] : bookmarkNamesByIdentifier) {
    bookmarks.emplace(identifier, bookmarkNamed(name));
  }
  fakes.userDefaults.objects.insert_or_assign(storeKey, PropertyList(bookmarks));
}

std::vector<std::string> RegistryFixture::rootPaths() const {
  std::vector<std::string> paths;
  for (const FileURL &url : registry.resolvedRootURLs()) {
    paths.push_back(url.path());
  }
  return paths;
}

std::size_t RegistryFixture::postedRequests() const {
  return fakes.journal.callsBeginningWith("post com.morvane.finderSync.needBookmarks").size();
}

std::string RegistryFixture::badge(const std::string &path) {
  std::optional<std::string> answer;
  registry.badgeIdentifierForURL(FileURL::fromPath(path),
                                 [&answer](std::optional<BadgeIdentifier> badge) {
                                   EXPECT_FALSE(answer) << "answered twice";
                                   answer = badge.value_or("");
                                 });
  fakes.queues.runUntilIdle();
  EXPECT_TRUE(answer) << "not answered";
  return answer.value_or("never answered");
}
