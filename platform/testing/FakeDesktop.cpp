#include "platform/testing/FakeDesktop.h"

namespace platform::testing {

std::string FakeBundle::localizedStringForKey(const std::string &key) const {
  const auto found = translations.find(key);
  return found == translations.end() ? key : found->second;
}

bool FakeBundle::isSystemVersionAtLeast(int major, int minor, int patch) const {
  return systemVersion >= std::tuple(major, minor, patch);
}

std::string FakeUUIDs::makeUUIDString() {
  const std::string count = std::to_string(++count_);
  return "00000000-0000-4000-8000-" + std::string(12 - count.size(), '0') + count;
}

std::optional<FileURL> RecordingWorkspace::urlForApplicationWithBundleIdentifier(
    const std::string &bundleIdentifier) {
  journal_.note("find application " + bundleIdentifier);
  const auto found = applications.find(bundleIdentifier);
  return found == applications.end() ? std::nullopt : std::optional(found->second);
}

void RecordingWorkspace::openURLs(const std::vector<std::string> &urls,
                                  const FileURL &applicationURL, bool activates) {
  for (const std::string &url : urls) {
    journal_.note("open " + url);
  }
  openings.push_back({urls, applicationURL.path(), activates});
}

}  // namespace platform::testing
