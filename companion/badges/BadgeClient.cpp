#include "companion/badges/BadgeClient.h"

#include <set>

#include "companion/badges/ReachFailure.h"
#include "platform/FileURL.h"
#include "platform/linux/BusNames.h"
#include "platform/linux/files/LinuxPaths.h"

namespace companion {

using platform::ErrorHandle;
using platform::ErrorOut;
using platform::FileURL;
using platform::Handle;
using platform::ObjectHandle;
using platform::Result;
using platform::VariantHandle;

namespace {

// Well within what one call may carry, 100,000 urls and 16 MiB, and small enough that answers come
// soon after the first question.
constexpr std::size_t greatestChunkCount = 10'000;
constexpr std::size_t greatestChunkSize = 4 << 20;  // bytes

// The process that has the extension's name, started if there is none.
std::optional<std::string> startedOwner(GDBusConnection *connection,
                                        const BadgeClient::Limits &limits, ErrorHandle &error) {
  const auto call = [&](const BusMethod &method, GVariant *arguments) {
    return callOverBus(connection, method, arguments, limits.patience, limits.shouldStop, error);
  };
  // Any call to a name makes the bus start what has it. Asking the bus itself to do so would fail
  // where the extension was started by hand and is not installed.
  if (call({platform::finderSyncBusName, platform::finderSyncObjectPath,
            "org.freedesktop.DBus.Peer", "Ping"},
           nullptr) == nullptr) {
    return std::nullopt;
  }
  const VariantHandle reply = call(
      {platform::busDaemonName, platform::busDaemonPath, platform::busDaemonName, "GetNameOwner"},
      g_variant_new("(s)", platform::finderSyncBusName));
  if (reply == nullptr) {
    return std::nullopt;
  }
  const char *owner = nullptr;
  g_variant_get(reply.get(), "(&s)", &owner);
  return owner;
}

std::string standardizedPath(const FileURL &url) {
  return platform::LinuxPaths().standardizedPath(url.path());
}

std::vector<std::string> pathsOfURLs(GVariant *urls) {
  std::set<std::string> paths;
  const Handle<const char *, g_free> texts(g_variant_get_strv(urls, nullptr));
  for (const char *const *text = texts.get(); *text != nullptr; ++text) {
    if (const std::optional<FileURL> url = FileURL::fromText(*text)) {
      paths.insert(standardizedPath(*url));
    }
  }
  return {paths.begin(), paths.end()};
}

// What does not name a file is left out.
Badges badgesOfURLs(GVariant *badges) {
  Badges result;
  GVariantIter iterator;
  g_variant_iter_init(&iterator, badges);
  const char *text = nullptr;
  const char *badge = nullptr;
  while (g_variant_iter_next(&iterator, "(&s&s)", &text, &badge) != FALSE) {
    if (const std::optional<FileURL> url = FileURL::fromText(text)) {
      result.emplace_back(standardizedPath(*url), badge);
    }
  }
  return result;
}

}  // namespace

Result<std::unique_ptr<BadgeClient>> BadgeClient::connect(GDBusConnection *connection,
                                                          Limits limits) {
  using Connected = Result<std::unique_ptr<BadgeClient>>;
  ErrorHandle error;
  const std::optional<std::string> owner = startedOwner(connection, limits, error);
  if (!owner) {
    return Connected::failure(whyNotStarted(error, limits.patience));
  }
  // Subscribes to the signals of that process and of no other.
  ObjectHandle<HalvernFinderSync1> proxy(halvern_finder_sync1_proxy_new_sync(
      connection, G_DBUS_PROXY_FLAGS_DO_NOT_LOAD_PROPERTIES, owner->c_str(),
      platform::finderSyncObjectPath, nullptr, ErrorOut(error)));
  if (proxy == nullptr) {
    return Connected::failure(notReachable(error));
  }
  ObjectHandle<GDBusConnection> own(G_DBUS_CONNECTION(g_object_ref(connection)));
  return Connected(std::unique_ptr<BadgeClient>(
      new BadgeClient(std::move(own), std::move(proxy), std::move(limits))));
}

BadgeClient::BadgeClient(ObjectHandle<GDBusConnection> connection,
                         ObjectHandle<HalvernFinderSync1> proxy, Limits limits)
    : connection_(std::move(connection)),
      proxy_(std::move(proxy)),
      limits_(std::move(limits)),
      ownerWatch_(connection_.get(), [this](const std::string &owner) {
        if (owner != processName()) {
          hasEnded_ = true;
        }
      }) {
  using BadgesSignal = void (*)(HalvernFinderSync1 *, GVariant *, BadgeClient *);
  const BadgesSignal answersArrived = [](HalvernFinderSync1 *, GVariant *badges,
                                         BadgeClient *self) { self->takeAnswers(badges); };
  const BadgesSignal changesArrived = [](HalvernFinderSync1 *, GVariant *badges,
                                         BadgeClient *self) {
    self->news_.badgesChanged(badgesOfURLs(badges));
  };
  answersHandler_ =
      g_signal_connect(proxy_.get(), "badge-identifiers-set", G_CALLBACK(answersArrived), this);
  changesHandler_ =
      g_signal_connect(proxy_.get(), "badge-identifiers-changed", G_CALLBACK(changesArrived), this);

  propertiesSubscription_ = g_dbus_connection_signal_subscribe(
      connection_.get(), processName(), platform::propertiesInterface, "PropertiesChanged",
      platform::finderSyncObjectPath, platform::finderSyncInterface, G_DBUS_SIGNAL_FLAGS_NONE,
      [](GDBusConnection *, const char *, const char *, const char *, const char *,
         GVariant *parameters, gpointer self) {
        const VariantHandle changed(g_variant_get_child_value(parameters, 1));
        const VariantHandle urls(
            g_variant_lookup_value(changed.get(), "DirectoryURLs", G_VARIANT_TYPE_STRING_ARRAY));
        if (urls != nullptr) {
          static_cast<BadgeClient *>(self)->takeDirectories(urls.get());
        }
      },
      this, nullptr);
  using ClosedSignal = void (*)(GDBusConnection *, gboolean, GError *, BadgeClient *);
  const ClosedSignal busWentAway = [](GDBusConnection *, gboolean, GError *, BadgeClient *self) {
    self->hasEnded_ = true;
  };
  closedHandler_ = g_signal_connect(connection_.get(), "closed", G_CALLBACK(busWentAway), this);
}

BadgeClient::~BadgeClient() {
  g_signal_handler_disconnect(proxy_.get(), answersHandler_);
  g_signal_handler_disconnect(proxy_.get(), changesHandler_);
  g_signal_handler_disconnect(connection_.get(), closedHandler_);
  g_dbus_connection_signal_unsubscribe(connection_.get(), propertiesSubscription_);
}

const char *BadgeClient::processName() const {
  return g_dbus_proxy_get_name(G_DBUS_PROXY(proxy_.get()));
}

Result<std::vector<std::string>> BadgeClient::directoryPaths() {
  using Paths = Result<std::vector<std::string>>;
  if (directoryPaths_) {
    return *directoryPaths_;
  }
  ErrorHandle error;
  const VariantHandle reply = callOverBus(
      connection_.get(),
      {processName(), platform::finderSyncObjectPath, platform::propertiesInterface, "Get"},
      g_variant_new("(ss)", platform::finderSyncInterface, "DirectoryURLs"), limits_.patience,
      limits_.shouldStop, error);
  if (reply == nullptr) {
    return Paths::failure(whyUnanswered(error, limits_.patience));
  }
  const VariantHandle boxed(g_variant_get_child_value(reply.get(), 0));
  const VariantHandle value(g_variant_get_variant(boxed.get()));
  if (g_variant_is_of_type(value.get(), G_VARIANT_TYPE_STRING_ARRAY) == FALSE) {
    return Paths::failure(notReachable("what answers in its name is something else"));
  }
  // A change that was told meanwhile may be newer than the answer. If it is older, there is another
  // one on its way.
  if (!directoryPaths_) {
    directoryPaths_ = pathsOfURLs(value.get());
  }
  return *directoryPaths_;
}

void BadgeClient::takeDirectories(GVariant *urls) {
  directoryPaths_ = pathsOfURLs(urls);
  news_.directoriesChanged();
}

std::optional<std::string> BadgeClient::ask(const std::vector<std::string> &paths,
                                            BadgesHandler onAnswers) {
  onAnswers_ = std::move(onAnswers);
  waiting_.clear();
  std::vector<std::string> urls;
  std::size_t size = 0;
  for (const std::string &path : paths) {
    const auto [entry, isNew] = waiting_.try_emplace(FileURL::fromPath(path).text(), path);
    if (isNew) {
      urls.push_back(entry->first);
      size += entry->first.size();
    }
    const bool isFull = urls.size() >= greatestChunkCount || size >= greatestChunkSize;
    if (isFull || (&path == &paths.back() && !urls.empty())) {
      if (std::optional<std::string> failure = askChunk(urls)) {
        return failure;
      }
      urls.clear();
      size = 0;
    }
  }
  return std::nullopt;
}

std::optional<std::string> BadgeClient::askChunk(const std::vector<std::string> &urls) {
  GVariantBuilder builder;
  g_variant_builder_init(&builder, G_VARIANT_TYPE_STRING_ARRAY);
  for (const std::string &url : urls) {
    g_variant_builder_add(&builder, "s", url.c_str());
  }
  ErrorHandle error;
  const VariantHandle reply =
      callOverBus(connection_.get(),
                  {processName(), platform::finderSyncObjectPath, platform::finderSyncInterface,
                   "RequestBadgeIdentifiers"},
                  g_variant_new("(as)", &builder), limits_.patience, limits_.shouldStop, error);
  if (reply == nullptr) {
    return whyUnanswered(error, limits_.patience);
  }

  lastAnswer_ = g_get_monotonic_time();
  const auto silenceEnd = [this] {
    return lastAnswer_ + limits_.patience.count() * G_USEC_PER_SEC;
  };
  MainLoopWait wait;
  bool isSilent = false;
  while (!waiting_.empty() && !hasEnded_ && !isSilent && !limits_.shouldStop()) {
    isSilent = !wait.turnBefore(silenceEnd());
  }
  if (waiting_.empty()) {
    return std::nullopt;
  }
  return isSilent ? silenceMessage(limits_.patience) : endedMessage;
}

void BadgeClient::takeAnswers(GVariant *badges) {
  Badges answers;
  GVariantIter iterator;
  g_variant_iter_init(&iterator, badges);
  const char *url = nullptr;
  const char *badge = nullptr;
  while (g_variant_iter_next(&iterator, "(&s&s)", &url, &badge) != FALSE) {
    if (const auto found = waiting_.find(url); found != waiting_.end()) {
      answers.emplace_back(std::move(found->second), badge);
      waiting_.erase(found);
    }
  }
  if (!answers.empty()) {
    lastAnswer_ = g_get_monotonic_time();
    onAnswers_(std::move(answers));
  }
}

}  // namespace companion
