#include "tests/support/FileManagerClient.h"

#include <algorithm>

#include "platform/FileURL.h"
#include "tests/support/PublicNames.h"

using platform::ErrorHandle;
using platform::ErrorOut;
using platform::FileURL;
using platform::Handle;
using platform::VariantHandle;

namespace {

constexpr const char *propertiesInterface = "org.freedesktop.DBus.Properties";

constexpr guint firstRestartDelay = 1;      // seconds
constexpr guint greatestRestartDelay = 60;  // seconds

bool isBelow(const std::string &path, const std::string &folder) {
  return path.size() > folder.size() && path.starts_with(folder) && path[folder.size()] == '/';
}

std::string folderOf(const std::string &path) {
  const std::size_t slash = path.rfind('/');
  return slash == 0 ? "/" : path.substr(0, slash);
}

std::vector<std::string> pathsOfURLs(GVariant *urls) {
  const Handle<const char *, g_free> texts(g_variant_get_strv(urls, nullptr));
  std::vector<std::string> paths;
  for (const char *const *text = texts.get(); *text != nullptr; ++text) {
    if (const auto url = FileURL::fromText(*text)) {
      paths.push_back(url->path());
    }
  }
  return paths;
}

bool isCancelled(const ErrorHandle &error) {
  return g_error_matches(error.get(), G_IO_ERROR, G_IO_ERROR_CANCELLED) != FALSE;
}

}  // namespace

// What GLib calls. An asynchronous call that was cancelled has no client any more.
struct FileManagerClient::Callbacks {
  static void nameAppeared(GDBusConnection *, const char *, const char *owner, gpointer self) {
    static_cast<FileManagerClient *>(self)->serviceAppeared(owner);
  }

  static void nameVanished(GDBusConnection *, const char *, gpointer self) {
    static_cast<FileManagerClient *>(self)->serviceVanished();
  }

  static void signalArrived(GDBusConnection *, const char *sender, const char *,
                            const char *interface, const char *signal, GVariant *parameters,
                            gpointer data) {
    auto &self = *static_cast<FileManagerClient *>(data);
    if (self.owner_ != sender) {
      return;
    }
    if (std::string(interface) == propertiesInterface) {
      const VariantHandle changed(g_variant_get_child_value(parameters, 1));
      const VariantHandle urls(
          g_variant_lookup_value(changed.get(), "DirectoryURLs", G_VARIANT_TYPE_STRING_ARRAY));
      if (urls != nullptr) {
        self.setDirectories(pathsOfURLs(urls.get()));
      }
      return;
    }
    const bool areAnswers = std::string(signal) == "BadgeIdentifiersSet";
    ++self.counts_.badgeMessages;
    const VariantHandle badges(g_variant_get_child_value(parameters, 0));
    GVariantIter iterator;
    g_variant_iter_init(&iterator, badges.get());
    const char *text = nullptr;
    const char *badge = nullptr;
    while (g_variant_iter_next(&iterator, "(&s&s)", &text, &badge) != FALSE) {
      if (const auto url = FileURL::fromText(text)) {
        areAnswers ? self.takeAnswer(url->path(), badge) : self.takeChange(url->path(), badge);
      }
    }
  }

  static void directoriesArrived(GObject *connection, GAsyncResult *result, gpointer data) {
    ErrorHandle error;
    const VariantHandle reply(
        g_dbus_connection_call_finish(G_DBUS_CONNECTION(connection), result, ErrorOut(error)));
    if (isCancelled(error)) {
      return;
    }
    auto &self = *static_cast<FileManagerClient *>(data);
    // A change that was told meanwhile counts.
    if (reply != nullptr && !self.directories_) {
      const VariantHandle boxed(g_variant_get_child_value(reply.get(), 0));
      const VariantHandle urls(g_variant_get_variant(boxed.get()));
      self.setDirectories(pathsOfURLs(urls.get()));
    }
  }

  static void callEnded(GObject *connection, GAsyncResult *result, gpointer data) {
    ErrorHandle error;
    const VariantHandle reply(
        g_dbus_connection_call_finish(G_DBUS_CONNECTION(connection), result, ErrorOut(error)));
    if (error != nullptr && !isCancelled(error) &&
        !g_error_matches(error.get(), G_DBUS_ERROR, G_DBUS_ERROR_NO_REPLY) &&
        !g_error_matches(error.get(), G_DBUS_ERROR, G_DBUS_ERROR_SERVICE_UNKNOWN) &&
        !g_error_matches(error.get(), G_DBUS_ERROR, G_DBUS_ERROR_NAME_HAS_NO_OWNER)) {
      ++static_cast<FileManagerClient *>(data)->counts_.refusedCalls;
    }
  }

  static gboolean ask(gpointer data) {
    auto &self = *static_cast<FileManagerClient *>(data);
    self.askSource_ = 0;
    self.askForWanted();
    return G_SOURCE_REMOVE;
  }

  static gboolean start(gpointer data) {
    auto &self = *static_cast<FileManagerClient *>(data);
    self.startSource_ = 0;
    // Whether it starts shows by its name.
    g_dbus_connection_call(self.connection_.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus",
                           "org.freedesktop.DBus", "StartServiceByName",
                           g_variant_new("(su)", busName, 0U), nullptr, G_DBUS_CALL_FLAGS_NONE, -1,
                           nullptr, nullptr, nullptr);
    self.planStart();
    return G_SOURCE_REMOVE;
  }
};

FileManagerClient::FileManagerClient(const PrivateBus &bus)
    : connection_(bus.connect()), cancellable_(g_cancellable_new()) {
  subscription_ = g_dbus_connection_signal_subscribe(connection_.get(), nullptr, nullptr, nullptr,
                                                     objectPath, nullptr, G_DBUS_SIGNAL_FLAGS_NONE,
                                                     Callbacks::signalArrived, this, nullptr);
  nameWatch_ = g_bus_watch_name_on_connection(
      connection_.get(), busName, G_BUS_NAME_WATCHER_FLAGS_NONE, Callbacks::nameAppeared,
      Callbacks::nameVanished, this, nullptr);
}

FileManagerClient::~FileManagerClient() {
  g_cancellable_cancel(cancellable_.get());
  g_bus_unwatch_name(nameWatch_);
  g_dbus_connection_signal_unsubscribe(connection_.get(), subscription_);
  for (const guint source : {askSource_, startSource_}) {
    if (source != 0) {
      g_source_remove(source);
    }
  }
  g_dbus_connection_close_sync(connection_.get(), nullptr, nullptr);
}

void FileManagerClient::serviceAppeared(const std::string &owner) {
  owner_ = owner;
  startDelay_ = firstRestartDelay;
  if (startSource_ != 0) {
    g_source_remove(startSource_);
    startSource_ = 0;
  }
  g_dbus_connection_call(connection_.get(), owner_.c_str(), objectPath, propertiesInterface, "Get",
                         g_variant_new("(ss)", interfaceName, "DirectoryURLs"),
                         G_VARIANT_TYPE("(v)"), G_DBUS_CALL_FLAGS_NONE, -1, cancellable_.get(),
                         Callbacks::directoriesArrived, this);
}

// What is drawn stays. The next process is asked for all of it.
void FileManagerClient::serviceVanished() {
  owner_.clear();
  directories_.reset();
  observedFolders_.clear();
  wanted_.clear();
  for (auto &[path, item] : items_) {
    item = {item.isInside, false, false, 0};
  }
  planStart();
}

void FileManagerClient::planStart() {
  if (startSource_ != 0 || !owner_.empty() || items_.empty()) {
    return;
  }
  startSource_ = g_timeout_add_seconds(startDelay_, Callbacks::start, this);
  startDelay_ = std::clamp(2 * startDelay_, firstRestartDelay, greatestRestartDelay);
}

void FileManagerClient::show(const std::set<std::string> &paths) {
  for (auto entry = items_.begin(); entry != items_.end();) {
    if (paths.contains(entry->first)) {
      ++entry;
      continue;
    }
    wanted_.erase(entry->first);
    badgeByPath_.erase(entry->first);
    entry = items_.erase(entry);
  }
  for (const std::string &path : paths) {
    const auto [entry, isNew] = items_.try_emplace(path);
    if (isNew && !directoryOf(path).empty()) {
      entry->second.isInside = true;
      want(path);
    }
  }
  endNeedlessObservations();
  planStart();
}

bool FileManagerClient::isSettled() const {
  return directories_ && wanted_.empty() &&
         std::all_of(items_.begin(), items_.end(), [](const auto &entry) {
           const Item &item = entry.second;
           return item.underWay == 0 && item.isKnown == item.isInside;
         });
}

void FileManagerClient::catchUp() {
  const VariantHandle reply(g_dbus_connection_call_sync(
      connection_.get(), busName, objectPath, propertiesInterface, "Get",
      g_variant_new("(ss)", interfaceName, "Badges"), G_VARIANT_TYPE("(v)"), G_DBUS_CALL_FLAGS_NONE,
      -1, nullptr, nullptr));
  while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
  }
}

void FileManagerClient::setDirectories(const std::vector<std::string> &paths) {
  const bool isNewProcess = !directories_;
  directories_.emplace(paths.begin(), paths.end());
  for (auto &[path, item] : items_) {
    const bool wasInside = std::exchange(item.isInside, !directoryOf(path).empty());
    if (item.isInside && (!wasInside || isNewProcess)) {
      want(path);
    } else if (!item.isInside) {
      item.isKnown = false;
      wanted_.erase(path);
      draw(path, "");
    }
  }
}

void FileManagerClient::takeAnswer(const std::string &path, const std::string &badge) {
  const auto found = items_.find(path);
  if (found == items_.end() || found->second.underWay == 0) {
    return;
  }
  Item &item = found->second;
  --item.underWay;
  if (!item.isInside) {
    return;
  }
  item.isKnown = true;
  draw(path, badge);
  if (item.isOutdated && item.underWay == 0) {
    want(path);
  }
}

void FileManagerClient::takeChange(const std::string &path, const std::string &badge) {
  if (const auto found = items_.find(path); found != items_.end() && found->second.isInside) {
    found->second.isKnown = true;
    draw(path, badge);
  }
  if (directories_ && directories_->contains(path)) {
    for (auto &[shown, item] : items_) {
      if (isBelow(shown, path)) {
        // The answer that is on its way may be from before the change.
        item.isOutdated = item.underWay > 0;
        if (item.underWay == 0) {
          want(shown);
        }
      }
    }
  }
}

void FileManagerClient::draw(const std::string &path, const std::string &badge) {
  const auto drawn = badgeByPath_.find(path);
  if ((drawn == badgeByPath_.end() ? "" : drawn->second) == badge) {
    return;
  }
  ++counts_.redraws;
  if (badge.empty()) {
    badgeByPath_.erase(drawn);
  } else {
    badgeByPath_[path] = badge;
  }
}

// What the main loop's turn comes to want is asked for in one call.
void FileManagerClient::want(const std::string &path) {
  wanted_.insert(path);
  if (askSource_ == 0) {
    askSource_ = g_idle_add(Callbacks::ask, this);
  }
}

void FileManagerClient::askForWanted() {
  if (wanted_.empty() || owner_.empty()) {
    return;
  }
  GVariantBuilder urls;
  g_variant_builder_init(&urls, G_VARIANT_TYPE_STRING_ARRAY);
  for (const std::string &path : wanted_) {
    Item &item = items_.at(path);
    item.isOutdated = false;
    ++item.underWay;
    beginObservingFolderOf(path);
    g_variant_builder_add(&urls, "s", FileURL::fromPath(path).text().c_str());
  }
  ++counts_.requestCalls;
  counts_.requestedItems += wanted_.size();
  wanted_.clear();
  call("RequestBadgeIdentifiers", g_variant_new("(as)", &urls));
}

void FileManagerClient::beginObservingFolderOf(const std::string &path) {
  const std::string folder = folderOf(path);
  const std::string directory = directoryOf(folder);
  if (!directory.empty() && observedFolders_.try_emplace(folder, directory).second) {
    call("BeginObservingDirectory",
         g_variant_new("(s)", FileURL::fromPath(folder, true).text().c_str()));
  }
}

// An end drops all that is known of the folder's directory.
void FileManagerClient::endNeedlessObservations() {
  const auto isNeeded = [this](const std::string &directory) {
    return std::any_of(items_.begin(), items_.end(), [&directory](const auto &entry) {
      return entry.first == directory || isBelow(entry.first, directory);
    });
  };
  std::erase_if(observedFolders_, [&](const auto &observed) {
    if (isNeeded(observed.second)) {
      return false;
    }
    call("EndObservingDirectory",
         g_variant_new("(s)", FileURL::fromPath(observed.first, true).text().c_str()));
    return true;
  });
}

void FileManagerClient::call(const char *method, GVariant *arguments) {
  g_dbus_connection_call(connection_.get(), owner_.c_str(), objectPath, interfaceName, method,
                         arguments, nullptr, G_DBUS_CALL_FLAGS_NONE, -1, cancellable_.get(),
                         Callbacks::callEnded, this);
}

// The innermost of the directories that hold the path; empty if none does.
std::string FileManagerClient::directoryOf(const std::string &path) const {
  std::string found;
  if (!directories_) {
    return found;
  }
  for (const std::string &directory : *directories_) {
    if ((path == directory || isBelow(path, directory)) && directory.size() > found.size()) {
      found = directory;
    }
  }
  return found;
}
