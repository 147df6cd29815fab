// The extension by way of the session bus, on QtDBus. Never waits for the bus: each answer arrives
// while the event loop turns. Where there is no bus, the extension is missing.
//
// QtDBus itself waits for the bus wherever it looks up who owns a name. So nothing here is bound to
// the extension's name but messages, which need no look-up; proxy and signals are bound to the
// process that has it.
#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantMap>
#include <memory>
#include <string>
#include <vector>

#include "filemanagers/client/ExtensionLink.h"

class HalvernFinderSyncProxy;

namespace filemanagers {

class QtBusLink final : public QObject, public ExtensionLink {
  Q_OBJECT

 public:
  QtBusLink();
  ~QtBusLink() override;

  // From then on tells `events`, which must outlive this object. On a connection; or on the session
  // bus, with the connection that the file manager shares with all that is loaded into it. Where
  // the file manager has not made that before, this makes it, and waits for as long as that takes.
  void open(ExtensionEvents &events);
  void open(ExtensionEvents &events, const QDBusConnection &connection);

  void start() override;
  void requestBadges(const std::vector<std::string> &paths) override;
  void beginObserving(const std::string &folder) override;
  void endObserving(const std::string &folder) override;
  void requestMenu(platform::FIMenuKind kind) override;
  void performAction(const std::string &action, const MenuSelection &selection) override;

 private Q_SLOTS:
  void propertiesChanged(const QString &interface, const QVariantMap &changed,
                         const QStringList &invalidated);

 private:
  void askForOwner();
  void takeOwner(const QString &owner);
  void listen();
  void stopListening();
  void askForProperties();
  void takeProperties(const QVariantMap &properties);

  QDBusConnection connection_;
  ExtensionEvents *events_ = nullptr;
  std::unique_ptr<HalvernFinderSyncProxy> proxy_;  // of the process that is there; null for none
};

}  // namespace filemanagers
