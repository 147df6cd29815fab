#include "companion/BadgeClient.h"

#include <set>
#include <utility>

#include "platform/FileURL.h"
#include "platform/linux/BusNames.h"
#include "platform/linux/LinuxPaths.h"

namespace companion {

using platform::ErrorHandle;
using platform::ErrorOut;
using platform::FileURL;
using platform::Handle;
using platform::ObjectHandle;
using platform::Result;
using platform::VariantHandle;

namespace {

constexpr const char *driverName = "org.freedesktop.DBus";
constexpr const char *driverPath = "/org/freedesktop/DBus";

// Well within what one call may carry, 100,000 urls and 16 MiB, and small enough that answers come
// soon after the first question.
constexpr std::size_t greatestChunkCount = 10'000;
constexpr std::size_t greatestChunkSize = 4 << 20;  // bytes

std::string notReachable(const std::string &reason) {
  return "the extension is not reachable: " + reason;
}

std::string notReachable(const ErrorHandle &error) {
  g_dbus_error_strip_remote_error(error.get());
  return notReachable(std::string(error->message));
}

std::string silenceMessage(std::chrono::seconds patience) {
  return "the extension has not answered for " + std::to_string(patience.count()) + " s";
}

constexpr const char *endedMessage =
    "the extension is not reachable: it ended before it had answered";

// Why a call to the extension, which had been reached before, has no answer.
std::string whyUnanswered(const ErrorHandle &error, std::chrono::seconds patience) {
  if (g_error_matches(error.get(), G_IO_ERROR, G_IO_ERROR_TIMED_OUT) != FALSE) {
    return silenceMessage(patience);
  }
  for (const GDBusError gone : {G_DBUS_ERROR_SERVICE_UNKNOWN, G_DBUS_ERROR_NAME_HAS_NO_OWNER,
                                G_DBUS_ERROR_NO_REPLY, G_DBUS_ERROR_DISCONNECTED}) {
    if (g_error_matches(error.get(), G_DBUS_ERROR, gone) != FALSE) {
      return endedMessage;
    }
  }
  return notReachable(error);
}

int milliseconds(std::chrono::seconds duration) {
  return static_cast<int>(std::chrono::milliseconds(duration).count());
}

// The process that has the extension's name, started if there is none.
std::optional<std::string> startedOwner(GDBusConnection *connection, std::chrono::seconds patience,
                                        ErrorHandle &error) {
  const auto call = [&](const char *name, const char *path, const char *interface,
                        const char *method, GVariant *arguments) {
    return VariantHandle(g_dbus_connection_call_sync(
        connection, name, path, interface, method, arguments, nullptr, G_DBUS_CALL_FLAGS_NONE,
        milliseconds(patience), nullptr, ErrorOut(error)));
  };
  // Any call to a name makes the bus start what has it. Asking the bus itself to do so would fail
  // where the extension was started by hand and is not installed.
  if (call(platform::finderSyncBusName, platform::finderSyncObjectPath, "org.freedesktop.DBus.Peer",
           "Ping", nullptr) == nullptr) {
    return std::nullopt;
  }
  const VariantHandle reply = call(driverName, driverPath, driverName, "GetNameOwner",
                                   g_variant_new("(s)", platform::finderSyncBusName));
  if (reply == nullptr) {
    return std::nullopt;
  }
  const char *owner = nullptr;
  g_variant_get(reply.get(), "(&s)", &owner);
  return owner;
}

}  // namespace

Result<std::unique_ptr<BadgeClient>> BadgeClient::connect(std::chrono::seconds patience) {
  using Connected = Result<std::unique_ptr<BadgeClient>>;
  ErrorHandle error;
  ObjectHandle<GDBusConnection> connection(
      g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, ErrorOut(error)));
  if (connection == nullptr) {
    return Connected::failure(notReachable(error));
  }
  g_dbus_connection_set_exit_on_close(connection.get(), FALSE);
  const std::optional<std::string> owner = startedOwner(connection.get(), patience, error);
  if (!owner) {
    return Connected::failure(g_error_matches(error.get(), G_IO_ERROR, G_IO_ERROR_TIMED_OUT) !=
                                      FALSE
                                  ? silenceMessage(patience)
                                  : notReachable(error));
  }
  // Subscribes to the signals of that process and of no other.
  ObjectHandle<HalvernFinderSync1> proxy(halvern_finder_sync1_proxy_new_sync(
      connection.get(), G_DBUS_PROXY_FLAGS_DO_NOT_LOAD_PROPERTIES, owner->c_str(),
      platform::finderSyncObjectPath, nullptr, ErrorOut(error)));
  if (proxy == nullptr) {
    return Connected::failure(notReachable(error));
  }
  return Connected(std::unique_ptr<BadgeClient>(
      new BadgeClient(std::move(connection), std::move(proxy), patience)));
}

BadgeClient::BadgeClient(ObjectHandle<GDBusConnection> connection,
                         ObjectHandle<HalvernFinderSync1> proxy, std::chrono::seconds patience)
    : connection_(std::move(connection)), proxy_(std::move(proxy)), patience_(patience) {
  using AnswersHandler = void (*)(HalvernFinderSync1 *, GVariant *, BadgeClient *);
  const AnswersHandler answersArrived = [](HalvernFinderSync1 *, GVariant *badges,
                                           BadgeClient *self) { self->takeAnswers(badges); };
  answersHandler_ =
      g_signal_connect(proxy_.get(), "badge-identifiers-set", G_CALLBACK(answersArrived), this);

  g_dbus_proxy_set_default_timeout(G_DBUS_PROXY(proxy_.get()), milliseconds(patience));
  // A process's own name changes its owner once: when the process leaves the bus.
  ownerSubscription_ = g_dbus_connection_signal_subscribe(
      connection_.get(), driverName, driverName, "NameOwnerChanged", driverPath,
      g_dbus_proxy_get_name(G_DBUS_PROXY(proxy_.get())), G_DBUS_SIGNAL_FLAGS_NONE,
      [](GDBusConnection *, const char *, const char *, const char *, const char *, GVariant *,
         gpointer self) { static_cast<BadgeClient *>(self)->hasEnded_ = true; },
      this, nullptr);
  using ClosedHandler = void (*)(GDBusConnection *, gboolean, GError *, BadgeClient *);
  const ClosedHandler busWentAway = [](GDBusConnection *, gboolean, GError *, BadgeClient *self) {
    self->hasEnded_ = true;
  };
  closedHandler_ = g_signal_connect(connection_.get(), "closed", G_CALLBACK(busWentAway), this);
}

BadgeClient::~BadgeClient() {
  g_signal_handler_disconnect(proxy_.get(), answersHandler_);
  g_signal_handler_disconnect(connection_.get(), closedHandler_);
  g_dbus_connection_signal_unsubscribe(connection_.get(), ownerSubscription_);
}

Result<std::vector<std::string>> BadgeClient::directoryPaths() {
  using Paths = Result<std::vector<std::string>>;
  ErrorHandle error;
  const VariantHandle reply(
      g_dbus_proxy_call_sync(G_DBUS_PROXY(proxy_.get()), "org.freedesktop.DBus.Properties.Get",
                             g_variant_new("(ss)", platform::finderSyncInterface, "DirectoryURLs"),
                             G_DBUS_CALL_FLAGS_NONE, -1, nullptr, ErrorOut(error)));
  if (reply == nullptr) {
    return Paths::failure(whyUnanswered(error, patience_));
  }
  GVariant *valueOut = nullptr;
  g_variant_get(reply.get(), "(v)", &valueOut);
  const VariantHandle value(valueOut);
  if (g_variant_is_of_type(value.get(), G_VARIANT_TYPE_STRING_ARRAY) == FALSE) {
    return Paths::failure(notReachable("what answers in its name is something else"));
  }
  std::set<std::string> paths;
  const Handle<const char *, g_free> texts(g_variant_get_strv(value.get(), nullptr));
  for (const char *const *text = texts.get(); *text != nullptr; ++text) {
    if (const std::optional<FileURL> url = FileURL::fromText(*text)) {
      paths.insert(platform::LinuxPaths().standardizedPath(url->path()));
    }
  }
  return std::vector<std::string>(paths.begin(), paths.end());
}

Result<BadgesByPath> BadgeClient::badgesOfPaths(const std::vector<std::string> &paths) {
  answers_.clear();
  waiting_.clear();
  std::size_t size = 0;
  for (const std::string &path : paths) {
    const std::string &text =
        waiting_.try_emplace(FileURL::fromPath(path).text(), path).first->first;
    size += text.size();
    if (waiting_.size() >= greatestChunkCount || size >= greatestChunkSize ||
        &path == &paths.back()) {
      if (const std::optional<std::string> failure = askForWaiting()) {
        return Result<BadgesByPath>::failure(*failure);
      }
      size = 0;
    }
  }
  return std::exchange(answers_, {});
}

std::optional<std::string> BadgeClient::askForWaiting() {
  std::vector<const char *> urls;
  urls.reserve(waiting_.size() + 1);
  for (const auto &[text, path] : waiting_) {
    urls.push_back(text.c_str());
  }
  urls.push_back(nullptr);
  ErrorHandle error;
  if (halvern_finder_sync1_call_request_badge_identifiers_sync(proxy_.get(), urls.data(), nullptr,
                                                               ErrorOut(error)) == FALSE) {
    return whyUnanswered(error, patience_);
  }

  const gint64 patience = patience_.count() * G_USEC_PER_SEC;
  lastAnswer_ = g_get_monotonic_time();
  // Only there to end an iteration in which nothing else happens.
  const Handle<GSource, g_source_unref> alarm(
      g_timeout_source_new(static_cast<guint>(milliseconds(patience_))));
  g_source_set_callback(
      alarm.get(), [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr, nullptr);
  g_source_attach(alarm.get(), nullptr);
  bool isSilent = false;
  while (!waiting_.empty() && !hasEnded_ && !isSilent) {
    g_source_set_ready_time(alarm.get(), lastAnswer_ + patience);
    g_main_context_iteration(nullptr, TRUE);
    isSilent = g_get_monotonic_time() >= lastAnswer_ + patience;
  }
  g_source_destroy(alarm.get());
  if (waiting_.empty()) {
    return std::nullopt;
  }
  return hasEnded_ ? endedMessage : silenceMessage(patience_);
}

void BadgeClient::takeAnswers(GVariant *badges) {
  GVariantIter iterator;
  g_variant_iter_init(&iterator, badges);
  const char *url = nullptr;
  const char *identifier = nullptr;
  while (g_variant_iter_next(&iterator, "(&s&s)", &url, &identifier) != FALSE) {
    if (const auto found = waiting_.find(url); found != waiting_.end()) {
      answers_.insert_or_assign(std::move(found->second), identifier);
      waiting_.erase(found);
      lastAnswer_ = g_get_monotonic_time();
    }
  }
}

}  // namespace companion
