#include "filemanagers/qt/QtBusLink.h"

#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QtDebug>
#include <limits>
#include <utility>

#include "FinderSyncProxy.h"
#include "filemanagers/qt/BusMessages.h"
#include "platform/FileURL.h"
#include "platform/linux/BusNames.h"

namespace filemanagers {

using platform::FileURL;
using platform::FIMenuKind;

namespace {

// Nobody waits for the answers, and an extension that was stopped for a while still gives them.
constexpr int forever = std::numeric_limits<int>::max();  // milliseconds

QString urlOfFolder(const std::string &path) {
  return QString::fromStdString(FileURL::fromPath(path, true).text());
}

QStringList urlsOfPaths(const std::vector<std::string> &paths) {
  QStringList urls;
  urls.reserve(static_cast<int>(paths.size()));
  for (const std::string &path : paths) {
    urls.push_back(QString::fromStdString(FileURL::fromPath(path).text()));
  }
  return urls;
}

ExtensionEvents::Badges badgesOf(const BadgesMessage &message) {
  ExtensionEvents::Badges badges;
  badges.reserve(static_cast<std::size_t>(message.size()));
  for (const ItemBadge &item : message) {
    if (const auto url = FileURL::fromText(item.url.toStdString())) {
      badges.emplace_back(url->path(), item.badge.toStdString());
    }
  }
  return badges;
}

QDBusMessage callOfDaemon(const char *method) {
  return QDBusMessage::createMethodCall(platform::busDaemonName, platform::busDaemonPath,
                                        platform::busDaemonName, method);
}

// Calls the function with the ended call, unless the context is gone then.
template <typename Function>
void whenEnded(const QDBusPendingCall &call, QObject *context, Function function) {
  auto *watcher = std::make_unique<QDBusPendingCallWatcher>(call, context).release();
  QObject::connect(watcher, &QDBusPendingCallWatcher::finished, context,
                   [function = std::move(function)](QDBusPendingCallWatcher *ended) {
                     ended->deleteLater();
                     function(*ended);
                   });
}

}  // namespace

QtBusLink::QtBusLink() : connection_(QString()) {
  registerBusMessages();
}

QtBusLink::~QtBusLink() = default;

void QtBusLink::open(ExtensionEvents &events) {
  open(events, QDBusConnection::sessionBus());
}

void QtBusLink::open(ExtensionEvents &events, const QDBusConnection &connection) {
  events_ = &events;
  connection_ = connection;
  watcher_ = std::make_unique<QDBusServiceWatcher>(platform::finderSyncBusName, connection_,
                                                   QDBusServiceWatcher::WatchForOwnerChange);
  connect(watcher_.get(), &QDBusServiceWatcher::serviceOwnerChanged, this,
          [this](const QString &, const QString &, const QString &owner) { takeOwner(owner); });
  listen();
  askForOwner();
}

void QtBusLink::listen() {
  const QString anybody;
  connection_.connect(anybody, platform::finderSyncObjectPath, platform::finderSyncInterface,
                      "BadgeIdentifiersSet", this,
                      SLOT(badgeIdentifiersSet(filemanagers::BadgesMessage, QDBusMessage)));
  connection_.connect(anybody, platform::finderSyncObjectPath, platform::finderSyncInterface,
                      "BadgeIdentifiersChanged", this,
                      SLOT(badgeIdentifiersChanged(filemanagers::BadgesMessage, QDBusMessage)));
  connection_.connect(anybody, platform::finderSyncObjectPath, platform::propertiesInterface,
                      "PropertiesChanged", this,
                      SLOT(propertiesChanged(QString, QVariantMap, QStringList, QDBusMessage)));
}

bool QtBusLink::isOfExtension(const QDBusMessage &signal) const {
  return proxy_ != nullptr && signal.service() == proxy_->service();
}

void QtBusLink::badgeIdentifiersSet(const BadgesMessage &badges, const QDBusMessage &signal) {
  if (isOfExtension(signal)) {
    events_->takeAnswers(badgesOf(badges));
  }
}

void QtBusLink::badgeIdentifiersChanged(const BadgesMessage &badges, const QDBusMessage &signal) {
  if (isOfExtension(signal)) {
    events_->takeChanges(badgesOf(badges));
  }
}

void QtBusLink::askForOwner() {
  QDBusMessage call = callOfDaemon("GetNameOwner");
  call << QString(platform::finderSyncBusName);
  whenEnded(connection_.asyncCall(call, forever), this, [this](const QDBusPendingCall &ended) {
    const QDBusPendingReply<QString> reply = ended;
    if (!reply.isError()) {
      takeOwner(reply.value());
    }
  });
}

void QtBusLink::takeOwner(const QString &owner) {
  if (proxy_ != nullptr && proxy_->service() == owner) {
    return;
  }
  if (proxy_ != nullptr) {
    proxy_.reset();
    events_->vanished();
  }
  if (owner.isEmpty()) {
    return;
  }
  proxy_ =
      std::make_unique<HalvernFinderSyncProxy>(owner, platform::finderSyncObjectPath, connection_);
  proxy_->setTimeout(forever);
  askForProperties();
  events_->appeared();
}

void QtBusLink::askForProperties() {
  QDBusMessage call = QDBusMessage::createMethodCall(proxy_->service(), proxy_->path(),
                                                     platform::propertiesInterface, "GetAll");
  call << QString(platform::finderSyncInterface);
  whenEnded(connection_.asyncCall(call, forever), proxy_.get(),
            [this](const QDBusPendingCall &ended) {
              const QDBusPendingReply<QVariantMap> reply = ended;
              if (!reply.isError()) {
                takeProperties(reply.value());
              }
            });
}

void QtBusLink::propertiesChanged(const QString &interface, const QVariantMap &changed,
                                  const QStringList & /*invalidated*/, const QDBusMessage &signal) {
  if (isOfExtension(signal) && interface == QLatin1String(platform::finderSyncInterface)) {
    takeProperties(changed);
  }
}

void QtBusLink::takeProperties(const QVariantMap &properties) {
  const auto badges = properties.value("Badges").value<QDBusArgument>();
  if (badges.currentSignature() == QLatin1String("a(sss)")) {
    ExtensionEvents::IconNames iconNames;
    for (const CatalogueEntry &entry : qdbus_cast<CatalogueMessage>(badges)) {
      iconNames[entry.badge.toStdString()] = entry.iconName.toStdString();
    }
    events_->takeIconNames(iconNames);
  }
  const QVariant urls = properties.value("DirectoryURLs");
  if (urls.userType() == QMetaType::QStringList) {
    std::vector<std::string> paths;
    for (const QString &text : urls.toStringList()) {
      if (const auto url = FileURL::fromText(text.toStdString())) {
        paths.push_back(url->path());
      }
    }
    events_->takeDirectories(paths);
  }
}

void QtBusLink::start() {
  if (!connection_.isConnected()) {
    events_->isMissing();
    return;
  }
  QDBusMessage call = callOfDaemon("StartServiceByName");
  call << QString(platform::finderSyncBusName) << 0U;
  whenEnded(connection_.asyncCall(call, forever), this, [this](const QDBusPendingCall &ended) {
    if (ended.isError() && ended.error().type() == QDBusError::ServiceUnknown) {
      events_->isMissing();
    }
  });
}

void QtBusLink::requestBadges(const std::vector<std::string> &paths) {
  proxy_->RequestBadgeIdentifiers(urlsOfPaths(paths));
}

void QtBusLink::beginObserving(const std::string &folder) {
  proxy_->BeginObservingDirectory(urlOfFolder(folder));
}

void QtBusLink::endObserving(const std::string &folder) {
  proxy_->EndObservingDirectory(urlOfFolder(folder));
}

// The menu is the same whatever is selected.
void QtBusLink::requestMenu(FIMenuKind kind) {
  whenEnded(proxy_->MenuForMenuKind(static_cast<uint>(kind), {}, {}), proxy_.get(),
            [this, kind](const QDBusPendingCall &ended) {
              const QDBusPendingReply<MenuMessage> reply = ended;
              if (!reply.isError()) {
                events_->takeMenu(kind, menuOfMessage(reply.value()));
              }
            });
}

void QtBusLink::performAction(const std::string &action, const MenuSelection &selection) {
  QDBusMessage call =
      QDBusMessage::createMethodCall(platform::finderSyncBusName, platform::finderSyncObjectPath,
                                     platform::finderSyncInterface, "PerformMenuAction");
  call << QString::fromStdString(action) << urlsOfPaths(selection.selected)
       << (selection.targeted.empty() ? QString("") : urlOfFolder(selection.targeted))
       << QVariantMap();
  // Whoever chose the command sees nothing happen, so it is said where such things are looked up.
  whenEnded(connection_.asyncCall(call, forever), this, [](const QDBusPendingCall &ended) {
    if (ended.isError()) {
      qWarning().noquote() << "The command was not carried out:" << ended.error().message();
    }
  });
}

}  // namespace filemanagers
