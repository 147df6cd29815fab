// The extension on the session bus: the file managers' requests come in here, and what they are to
// show goes out. Confined to the main thread.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "FinderSync1.h"
#include "platform/FinderSync.h"
#include "platform/linux/GLibHandles.h"
#include "platform/linux/process/BadgeAnswers.h"
#include "platform/linux/process/ClientRequests.h"
#include "platform/linux/process/MenuRequest.h"
#include "platform/linux/process/SpareMemory.h"

class FinderSyncService final : public platform::FIFinderSyncController {
 public:
  enum class NameRequest { owned, taken, failed };

  // Not on the bus before `exportObject`.
  FinderSyncService();
  ~FinderSyncService() override;
  FinderSyncService(const FinderSyncService &) = delete;
  FinderSyncService &operator=(const FinderSyncService &) = delete;

  // False with a reason if it cannot be.
  bool exportObject(GDBusConnection *connection, std::string &reason);

  // Asks for the well-known name, once and without queueing. Waits for the bus.
  NameRequest requestName(std::string &reason);

  // Whom the requests go to. Must be set once the object is exported, before the main loop turns
  // for the first time.
  void setPrincipalObject(platform::FIFinderSync &principalObject) {
    requests_->setPrincipalObject(principalObject);
  }

  void setDirectoryURLs(const platform::FileURLSet &directoryURLs) override;
  void setBadgeImage(const platform::Image &image, std::string_view label,
                     std::string_view badgeIdentifier) override;
  void setBadgeIdentifier(std::string_view badgeIdentifier,
                          const platform::FileURL &itemURL) override;

  // Of the menu call that is dealt with at the moment; empty and none otherwise.
  std::vector<platform::FileURL> selectedItemURLs() override { return menuRequest_.selected; }
  std::optional<platform::FileURL> targetedURL() override { return menuRequest_.targeted; }
  const std::string &activationToken() const { return menuRequest_.activationToken; }

 private:
  // What the bus is told of a badge that has an image.
  struct Badge {
    std::string identifier;
    std::string label;
    std::string iconName;
  };

  // Whether more badges are likely to follow at once: answers that are awaited, or, in a change,
  // the other items and the folders above them.
  void sendSoon(bool expectsMore);
  void stopWaitingToSend();
  void sendMessages();

  const platform::ObjectHandle<HalvernFinderSync1> skeleton_;
  platform::ObjectHandle<GDBusConnection> connection_;
  std::vector<Badge> badges_;  // in order of registration
  BadgeAnswers answers_;
  MenuRequest menuRequest_;
  SpareMemory spareMemory_;
  std::optional<ClientRequests> requests_;
  // Sources that send what is gathered; 0 while there are none.
  guint latestSend_ = 0;
  guint idleSend_ = 0;
};
