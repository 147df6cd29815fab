// How a command reaches the containing application: as a file in the shared container, and a URL
// that names the file.
#include <algorithm>
#include <filesystem>

#include "extension/KTRFinderSync.h"
#include "platform/SharedDirectory.h"
#include "platform/URLComponents.h"

namespace {

using platform::FileURL;

// The extension's bundle lies in the application's: Application.app/Contents/PlugIns/ holds it.
constexpr int levelsBelowApplication = 3;

// Nobody waits for a command any more that was not taken for so long.
constexpr std::chrono::hours greatestCommandAge{1};

// A menu's action waits for the sweep, so a directory with very many entries must not hold it up:
// it is given up then. What is young now hides what is old behind it for an hour at the most.
constexpr std::chrono::seconds greatestSweepTime{1};

bool isApplicationName(std::string_view path) {
  std::string extension = std::filesystem::path(path).extension();
  std::transform(extension.begin(), extension.end(), extension.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  return extension == ".app";
}

}  // namespace

std::vector<std::string> KTRFinderSync::p_selectedItemPaths() const {
  std::vector<FileURL> urls = i_services.finderSyncController.selectedItemURLs();
  if (urls.empty()) {
    if (std::optional<FileURL> targeted = i_services.finderSyncController.targetedURL()) {
      urls.push_back(*std::move(targeted));
    }
  }
  std::vector<std::string> paths;
  paths.reserve(urls.size());
  for (const FileURL &url : urls) {
    std::string path = i_services.paths.standardizedPath(url.path());
    if (platform::isPropertyListText(path)) {
      paths.push_back(std::move(path));
    }
  }
  return paths;
}

std::optional<FileURL> KTRFinderSync::p_containingAppURL() const {
  std::optional<FileURL> candidate = i_services.bundle.bundleURL();
  for (int level = 0; candidate && level < levelsBelowApplication; ++level) {
    candidate = candidate->deletingLastPathComponent();
  }
  if (candidate && isApplicationName(candidate->path())) {
    return candidate;
  }
  return i_services.workspace.urlForApplicationWithBundleIdentifier("com.morvane.v3");
}

void KTRFinderSync::p_sendCommand(std::string_view action) const {
  const std::vector<std::string> paths = p_selectedItemPaths();
  if (paths.empty()) {
    return;
  }
  const std::optional<FileURL> application = p_containingAppURL();
  if (!application) {
    return;
  }
  const std::optional<FileURL> sharedDirectory =
      platform::sharedDirectoryURL(i_services.fileManager);
  if (!sharedDirectory) {
    return;
  }
  const FileURL directory =
      sharedDirectory->appendingPathComponent("Commands", /*isDirectory=*/true);
  // Where this fails, so does the writing.
  i_services.fileManager.createDirectoryWithIntermediates(directory);
  p_deleteStaleCommandFilesInDirectory(directory);

  const std::string identifier = i_services.uuids.makeUUIDString();
  const platform::Dictionary command{
      {"action", std::string(action)},
      {"paths", platform::Array(paths.begin(), paths.end())},
      {"date", i_services.clock.now()},
  };
  if (!i_services.propertyListFiles.writeDictionary(
          command, directory.appendingPathComponent(identifier + ".plist"))) {
    return;
  }

  const std::string url = platform::textOfURL(
      {.scheme = "halvern", .host = "finder-sync-command", .queryItems = {{"id", identifier}}});
  // Commands that ask something in a window of the application do not bring it forward either, on
  // purpose.
  const bool activates = action == "reveal";
  i_services.workspace.openURLs({url}, *application, activates);
}

void KTRFinderSync::p_deleteStaleCommandFilesInDirectory(const FileURL &directoryURL) const {
  const platform::Clock::TimePoint begin = i_services.clock.now();
  i_services.fileManager.visitContentsOfDirectory(
      directoryURL, [&](const platform::DirectoryEntry &entry) {
        const platform::Clock::TimePoint now = i_services.clock.now();
        const auto &date = entry.contentModificationDate;
        if (date && *date < now - greatestCommandAge) {
          i_services.fileManager.removeItem(directoryURL.appendingPathComponent(entry.name));
        }
        // A clock that is set back meanwhile ends it too.
        return now >= begin && now - begin < greatestSweepTime;
      });
}
