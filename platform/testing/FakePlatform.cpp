#include "platform/testing/FakePlatform.h"

namespace platform::testing {

void RecordingNotificationCenter::addObserver(const std::string &name,
                                              std::function<void()> handler) {
  journal_.note("observe " + name);
  observers_.emplace(name, std::move(handler));
}

void RecordingNotificationCenter::postNotification(const std::string &name) {
  journal_.note("post " + name);
}

void RecordingNotificationCenter::deliver(const std::string &name) {
  const auto [begin, end] = observers_.equal_range(name);
  for (auto observer = begin; observer != end; ++observer) {
    observer->second();
  }
}

void RecordingFinderSyncController::setDirectoryURLs(const FileURLSet &urls) {
  journal_.note("set directories");
  directoryURLs.push_back(urls);
  whileSettingDirectories();
}

void RecordingFinderSyncController::setBadgeImage(const Image &image, std::string_view label,
                                                  std::string_view badgeIdentifier) {
  const std::string identifier(badgeIdentifier);
  journal_.note("set badge image " + identifier);
  badgeImages.push_back({identifier, std::string(label), image});
}

void RecordingFinderSyncController::setBadgeIdentifier(std::string_view badgeIdentifier,
                                                       const FileURL &itemURL) {
  journal_.note("set badge " + itemURL.text());
  badges.emplace_back(itemURL.text(), badgeIdentifier);
}

FakePlatform &processPlatform() {
  static FakePlatform platform;
  return platform;
}

}  // namespace platform::testing

platform::Services &platform::processServices() {
  return testing::processPlatform().services;
}
