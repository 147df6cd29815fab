#include "filemanagers/glib/BusLink.h"

#include <utility>

#include "filemanagers/glib/MenuReading.h"
#include "platform/FileURL.h"
#include "platform/linux/BusNames.h"

namespace filemanagers {

using platform::ErrorHandle;
using platform::ErrorOut;
using platform::FileURL;
using platform::FIMenuKind;
using platform::Handle;
using platform::ObjectHandle;
using platform::VariantHandle;

namespace {

// Nobody waits for the answers, and an extension that was stopped for a while still gives them.
constexpr int forever = G_MAXINT;  // milliseconds

using Texts = Handle<GStrvBuilder, g_strv_builder_unref>;

Handle<char *, g_strfreev> urlsOfPaths(const std::vector<std::string> &paths) {
  const Texts urls(g_strv_builder_new());
  for (const std::string &path : paths) {
    g_strv_builder_add(urls.get(), FileURL::fromPath(path).text().c_str());
  }
  return Handle<char *, g_strfreev>(g_strv_builder_end(urls.get()));
}

std::string urlOfFolder(const std::string &path) {
  return FileURL::fromPath(path, true).text();
}

ExtensionEvents::Badges badgesOf(GVariant *urlsAndBadges) {
  ExtensionEvents::Badges badges;
  badges.reserve(g_variant_n_children(urlsAndBadges));
  GVariantIter iterator;
  g_variant_iter_init(&iterator, urlsAndBadges);
  const char *text = nullptr;
  const char *badge = nullptr;
  while (g_variant_iter_next(&iterator, "(&s&s)", &text, &badge) != FALSE) {
    if (const auto url = FileURL::fromText(text)) {
      badges.emplace_back(url->path(), badge);
    }
  }
  return badges;
}

// The callbacks of a call that was cancelled have no object any more.
bool isCancelled(const ErrorHandle &error) {
  return g_error_matches(error.get(), G_IO_ERROR, G_IO_ERROR_CANCELLED) != FALSE;
}

}  // namespace

// What GLib calls.
struct BusLink::Callbacks {
  static void connected(GObject *, GAsyncResult *result, gpointer self) {
    ErrorHandle error;
    ObjectHandle<GDBusConnection> connection(g_bus_get_finish(result, ErrorOut(error)));
    if (connection != nullptr) {
      static_cast<BusLink *>(self)->connection_ = std::move(connection);
      static_cast<BusLink *>(self)->makeProxy();
    } else if (!isCancelled(error)) {
      static_cast<BusLink *>(self)->isNotConnected();
    }
  }

  static void proxyMade(GObject *, GAsyncResult *result, gpointer data) {
    ErrorHandle error;
    ObjectHandle<HalvernFinderSync1> proxy(
        halvern_finder_sync1_proxy_new_finish(result, ErrorOut(error)));
    if (proxy != nullptr) {
      static_cast<BusLink *>(data)->takeProxy(std::move(proxy));
    } else if (!isCancelled(error)) {
      static_cast<BusLink *>(data)->isNotConnected();
    }
  }

  static void ownerChanged(GObject *, GParamSpec *, gpointer self) {
    static_cast<BusLink *>(self)->ownerChanged();
  }

  static void propertiesArrived(GObject *proxy, GAsyncResult *result, gpointer data) {
    ErrorHandle error;
    const VariantHandle reply(
        g_dbus_proxy_call_finish(G_DBUS_PROXY(proxy), result, ErrorOut(error)));
    if (reply != nullptr && g_variant_is_of_type(reply.get(), G_VARIANT_TYPE("(a{sv})")) != FALSE) {
      const VariantHandle properties(g_variant_get_child_value(reply.get(), 0));
      static_cast<BusLink *>(data)->takeProperties(properties.get());
    }
  }

  static void propertiesChanged(GDBusConnection *, const char *sender, const char *, const char *,
                                const char *, GVariant *arguments, gpointer data) {
    auto &self = *static_cast<BusLink *>(data);
    if (self.isThere_ && self.owner() == sender &&
        g_variant_is_of_type(arguments, G_VARIANT_TYPE("(sa{sv}as)")) != FALSE) {
      const VariantHandle changed(g_variant_get_child_value(arguments, 1));
      self.takeProperties(changed.get());
    }
  }

  static void badgesSet(HalvernFinderSync1 *, GVariant *badges, gpointer self) {
    static_cast<BusLink *>(self)->events_->takeAnswers(badgesOf(badges));
  }

  static void badgesChanged(HalvernFinderSync1 *, GVariant *badges, gpointer self) {
    static_cast<BusLink *>(self)->events_->takeChanges(badgesOf(badges));
  }

  template <FIMenuKind kind>
  static void menuArrived(GObject *proxy, GAsyncResult *result, gpointer data) {
    ErrorHandle error;
    GVariant *menuOut = nullptr;
    halvern_finder_sync1_call_menu_for_menu_kind_finish(HALVERN_FINDER_SYNC1(proxy), &menuOut,
                                                        result, ErrorOut(error));
    const VariantHandle menu(menuOut);
    if (menu != nullptr) {
      static_cast<BusLink *>(data)->events_->takeMenu(kind, menuOfVariant(menu.get()));
    }
  }

  static void startEnded(GObject *connection, GAsyncResult *result, gpointer data) {
    ErrorHandle error;
    const VariantHandle reply(
        g_dbus_connection_call_finish(G_DBUS_CONNECTION(connection), result, ErrorOut(error)));
    if (g_error_matches(error.get(), G_DBUS_ERROR, G_DBUS_ERROR_SERVICE_UNKNOWN) != FALSE) {
      static_cast<BusLink *>(data)->events_->isMissing();
    }
  }

  // Whoever chose the command sees nothing happen, so it is said where such things are looked up.
  static void actionEnded(GObject *connection, GAsyncResult *result, gpointer) {
    ErrorHandle error;
    const VariantHandle reply(
        g_dbus_connection_call_finish(G_DBUS_CONNECTION(connection), result, ErrorOut(error)));
    if (error != nullptr && !isCancelled(error)) {
      g_dbus_error_strip_remote_error(error.get());
      g_message("The command was not carried out: %s", error->message);
    }
  }
};

BusLink::BusLink() : cancellable_(g_cancellable_new()), processCancellable_(g_cancellable_new()) {}

BusLink::~BusLink() {
  g_cancellable_cancel(cancellable_.get());
  g_cancellable_cancel(processCancellable_.get());
  if (proxy_ != nullptr) {
    g_signal_handlers_disconnect_by_data(proxy_.get(), this);
    g_dbus_connection_signal_unsubscribe(connection_.get(), propertiesSubscription_);
  }
}

void BusLink::open(ExtensionEvents &events) {
  events_ = &events;
  connect();
}

void BusLink::open(ExtensionEvents &events, GDBusConnection *connection) {
  connection_.reset(G_DBUS_CONNECTION(g_object_ref(connection)));
  open(events);
}

void BusLink::connect() {
  isConnecting_ = true;
  if (connection_ == nullptr) {
    g_bus_get(G_BUS_TYPE_SESSION, cancellable_.get(), Callbacks::connected, this);
  } else {
    makeProxy();
  }
}

// The properties are asked for here, with more patience than the proxy has, which then does not
// listen to their changes either.
void BusLink::makeProxy() {
  const auto flags =
      static_cast<GDBusProxyFlags>(G_DBUS_PROXY_FLAGS_DO_NOT_LOAD_PROPERTIES |
                                   G_DBUS_PROXY_FLAGS_DO_NOT_AUTO_START_AT_CONSTRUCTION);
  halvern_finder_sync1_proxy_new(connection_.get(), flags, platform::finderSyncBusName,
                                 platform::finderSyncObjectPath, cancellable_.get(),
                                 Callbacks::proxyMade, this);
}

// It is tried again when the extension is to be started the next time.
void BusLink::isNotConnected() {
  isConnecting_ = false;
  if (std::exchange(startsWhenConnected_, false)) {
    events_->isMissing();
  }
}

void BusLink::takeProxy(ObjectHandle<HalvernFinderSync1> proxy) {
  isConnecting_ = false;
  proxy_ = std::move(proxy);
  g_dbus_proxy_set_default_timeout(G_DBUS_PROXY(proxy_.get()), forever);
  g_signal_connect(proxy_.get(), "notify::g-name-owner", G_CALLBACK(Callbacks::ownerChanged), this);
  propertiesSubscription_ = g_dbus_connection_signal_subscribe(
      connection_.get(), platform::finderSyncBusName, platform::propertiesInterface,
      "PropertiesChanged", platform::finderSyncObjectPath, platform::finderSyncInterface,
      G_DBUS_SIGNAL_FLAGS_NONE, Callbacks::propertiesChanged, this, nullptr);
  g_signal_connect(proxy_.get(), "badge-identifiers-set", G_CALLBACK(Callbacks::badgesSet), this);
  g_signal_connect(proxy_.get(), "badge-identifiers-changed", G_CALLBACK(Callbacks::badgesChanged),
                   this);
  ownerChanged();
  if (std::exchange(startsWhenConnected_, false) && !isThere_) {
    start();
  }
}

void BusLink::ownerChanged() {
  if (std::exchange(isThere_, false)) {
    g_cancellable_cancel(processCancellable_.get());
    processCancellable_.reset(g_cancellable_new());
    events_->vanished();
  }
  if (owner().empty()) {
    return;
  }
  isThere_ = true;
  const std::string method = std::string(platform::propertiesInterface) + ".GetAll";
  g_dbus_proxy_call(G_DBUS_PROXY(proxy_.get()), method.c_str(),
                    g_variant_new("(s)", platform::finderSyncInterface), G_DBUS_CALL_FLAGS_NONE,
                    forever, processCancellable_.get(), Callbacks::propertiesArrived, this);
  events_->appeared();
}

std::string BusLink::owner() const {
  const platform::StringHandle owner(g_dbus_proxy_get_name_owner(G_DBUS_PROXY(proxy_.get())));
  return owner == nullptr ? "" : owner.get();
}

void BusLink::takeProperties(GVariant *properties) {
  const VariantHandle badges(
      g_variant_lookup_value(properties, "Badges", G_VARIANT_TYPE("a(sss)")));
  if (badges != nullptr) {
    ExtensionEvents::IconNames iconNames;
    GVariantIter iterator;
    g_variant_iter_init(&iterator, badges.get());
    const char *badge = nullptr;
    const char *label = nullptr;
    const char *iconName = nullptr;
    while (g_variant_iter_next(&iterator, "(&s&s&s)", &badge, &label, &iconName) != FALSE) {
      iconNames[badge] = iconName;
    }
    events_->takeIconNames(iconNames);
  }
  const VariantHandle urls(
      g_variant_lookup_value(properties, "DirectoryURLs", G_VARIANT_TYPE_STRING_ARRAY));
  if (urls != nullptr) {
    const Handle<const char *, g_free> texts(g_variant_get_strv(urls.get(), nullptr));
    std::vector<std::string> paths;
    for (const char *const *text = texts.get(); *text != nullptr; ++text) {
      if (const auto url = FileURL::fromText(*text)) {
        paths.push_back(url->path());
      }
    }
    events_->takeDirectories(paths);
  }
}

void BusLink::start() {
  if (proxy_ == nullptr) {
    startsWhenConnected_ = true;
    if (!isConnecting_) {
      connect();
    }
    return;
  }
  g_dbus_connection_call(
      connection_.get(), platform::busDaemonName, platform::busDaemonPath, platform::busDaemonName,
      "StartServiceByName", g_variant_new("(su)", platform::finderSyncBusName, 0U), nullptr,
      G_DBUS_CALL_FLAGS_NONE, forever, cancellable_.get(), Callbacks::startEnded, this);
}

void BusLink::requestBadges(const std::vector<std::string> &paths) {
  const auto urls = urlsOfPaths(paths);
  halvern_finder_sync1_call_request_badge_identifiers(proxy_.get(), urls.get(),
                                                      processCancellable_.get(), nullptr, nullptr);
}

void BusLink::beginObserving(const std::string &folder) {
  halvern_finder_sync1_call_begin_observing_directory(proxy_.get(), urlOfFolder(folder).c_str(),
                                                      processCancellable_.get(), nullptr, nullptr);
}

void BusLink::endObserving(const std::string &folder) {
  halvern_finder_sync1_call_end_observing_directory(proxy_.get(), urlOfFolder(folder).c_str(),
                                                    processCancellable_.get(), nullptr, nullptr);
}

// The menu is the same whatever is selected.
void BusLink::requestMenu(FIMenuKind kind) {
  const char *const none[] = {nullptr};
  halvern_finder_sync1_call_menu_for_menu_kind(
      proxy_.get(), static_cast<guint>(kind), none, "", processCancellable_.get(),
      kind == FIMenuKind::contextualMenuForItems
          ? Callbacks::menuArrived<FIMenuKind::contextualMenuForItems>
          : Callbacks::menuArrived<FIMenuKind::contextualMenuForContainer>,
      this);
}

// To whoever has the name when it arrives, or is started for it; the proxy would call the process
// that had it last.
void BusLink::performAction(const std::string &action, const MenuSelection &selection) {
  if (connection_ == nullptr) {
    return;
  }
  const auto selected = urlsOfPaths(selection.selected);
  const std::string targeted = selection.targeted.empty() ? "" : urlOfFolder(selection.targeted);
  g_dbus_connection_call(
      connection_.get(), platform::finderSyncBusName, platform::finderSyncObjectPath,
      platform::finderSyncInterface, "PerformMenuAction",
      g_variant_new("(s^assa{sv})", action.c_str(), selected.get(), targeted.c_str(), nullptr),
      nullptr, G_DBUS_CALL_FLAGS_NONE, forever, cancellable_.get(), Callbacks::actionEnded,
      nullptr);
}

}  // namespace filemanagers
