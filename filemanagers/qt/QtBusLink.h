// The extension by way of the session bus, on QtDBus. Never waits for the bus: each answer arrives
// while the event loop turns. Where there is no bus, the extension is missing.
//
// QtDBus itself waits for the bus wherever it looks up who owns a name: when a proxy is made for
// one, and when a signal of one, even of a process's own, is connected. So the proxy is made for
// the process that has the extension's name, signals are taken from anybody and then sorted out,
// and what has to start the extension is sent as a bare message.
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantMap>
#include <memory>
#include <string>
#include <vector>

#include "filemanagers/client/ExtensionLink.h"
#include "filemanagers/qt/BusMessages.h"

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
  void badgeIdentifiersSet(const filemanagers::BadgesMessage &badges, const QDBusMessage &signal);
  void badgeIdentifiersChanged(const filemanagers::BadgesMessage &badges,
                               const QDBusMessage &signal);
  void propertiesChanged(const QString &interface, const QVariantMap &changed,
                         const QStringList &invalidated, const QDBusMessage &signal);

 private:
  void listen();
  void askForOwner();
  void takeOwner(const QString &owner);
  bool isOfExtension(const QDBusMessage &signal) const;
  void askForProperties();
  void takeProperties(const QVariantMap &properties);

  QDBusConnection connection_;
  ExtensionEvents *events_ = nullptr;
  std::unique_ptr<QDBusServiceWatcher> watcher_;
  std::unique_ptr<HalvernFinderSyncProxy> proxy_;  // of the process that is there; null for none
};

}  // namespace filemanagers
