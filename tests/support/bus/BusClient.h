// A client of the extension on a bus, with a connection of its own, as a file manager has one.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "tests/support/bus/PrivateBus.h"

class BusClient {
 public:
  using Badges = std::vector<std::pair<std::string, std::string>>;  // url, identifier

  // Listens from the start. Signals arrive while the default main context turns.
  explicit BusClient(const PrivateBus &bus);
  ~BusClient();
  BusClient(const BusClient &) = delete;
  BusClient &operator=(const BusClient &) = delete;

  // Calls a method of the extension and waits for its end. The name of the D-Bus error that it was
  // refused with, "" if it was not. Takes a floating `arguments`.
  std::string call(const char *method, GVariant *arguments);
  // The same for a method that answers something; a refusal throws.
  platform::VariantHandle answer(const char *method, GVariant *arguments);
  std::string requestBadges(const std::vector<std::string> &urls);

  // Posts the notification that there is a new manifest.
  void announceManifest();

  // The value of a property of the extension.
  platform::VariantHandle property(const char *name) const;
  std::vector<std::string> directoryURLs() const;

  // Whether that process has the extension's name.
  bool ownsName(const std::string &processIdentifier) const;

  // Turns the main loop until that many badges have been set for this client; false if they are
  // not.
  bool waitForBadges(std::size_t count);

  // Turns the main loop until the badge of that url has been announced as changed; false if it is
  // not. A root is announced when everything in it is watched.
  bool waitForChange(const std::string &url);

  // Has a message go to the extension and back, and takes every signal that came before its answer.
  void catchUp();

  // What came with BadgeIdentifiersSet and with BadgeIdentifiersChanged, in that order of arrival.
  Badges set;
  Badges changed;
  std::size_t messageCount = 0;                               // of both signals
  std::vector<std::vector<std::string>> directoryURLChanges;  // one for each change signal

 private:
  platform::ObjectHandle<GDBusConnection> connection_;
  std::vector<guint> subscriptions_;
};
