// The extension by way of the session bus, on GIO. Never waits: each answer arrives while the
// default main context turns. Where there is no bus, the extension is missing.
#pragma once

#include <string>
#include <vector>

#include "FinderSync1.h"
#include "filemanagers/client/ExtensionLink.h"
#include "platform/linux/GLibHandles.h"

namespace filemanagers {

class BusLink final : public ExtensionLink {
 public:
  BusLink();
  ~BusLink() override;
  BusLink(const BusLink &) = delete;
  BusLink &operator=(const BusLink &) = delete;

  // From then on tells `events`, which must outlive this object. On the session bus, with the
  // connection that the file manager shares with all that is loaded into it; or on a connection.
  void open(ExtensionEvents &events);
  void open(ExtensionEvents &events, GDBusConnection *connection);

  void start() override;
  void requestBadges(const std::vector<std::string> &paths) override;
  void beginObserving(const std::string &folder) override;
  void endObserving(const std::string &folder) override;
  void requestMenu(platform::FIMenuKind kind) override;
  void performAction(const std::string &action, const MenuSelection &selection) override;

 private:
  struct Callbacks;

  void connect();
  void makeProxy();
  void isNotConnected();
  void takeProxy(platform::ObjectHandle<HalvernFinderSync1> proxy);
  void ownerChanged();
  std::string owner() const;  // of the name; empty for none
  void takeProperties(GVariant *properties);

  const platform::ObjectHandle<GCancellable> cancellable_;   // of what lasts as long as this object
  platform::ObjectHandle<GCancellable> processCancellable_;  // of what is asked of one process
  platform::ObjectHandle<GDBusConnection> connection_;       // null until it stands
  platform::ObjectHandle<HalvernFinderSync1> proxy_;         // the same
  guint propertiesSubscription_ = 0;
  ExtensionEvents *events_ = nullptr;
  bool isThere_ = false;
  bool isConnecting_ = false;
  bool startsWhenConnected_ = false;
};

}  // namespace filemanagers
