#include "tests/support/bus/ExtensionStandIn.h"

#include <chrono>
#include <future>
#include <stdexcept>

#include "platform/FileURL.h"
#include "tests/support/bus/PublicNames.h"

using platform::ErrorHandle;
using platform::ErrorOut;
using platform::FileURL;
using platform::VariantHandle;

namespace {

std::string pathOf(const std::string &url) {
  const auto decoded = FileURL::fromText(url);
  return decoded ? decoded->path() : "not a file: " + url;
}

void publishDirectories(HalvernFinderSync1 *skeleton, const ExtensionStandIn::Paths &directories) {
  std::vector<std::string> urls;
  for (const std::string &directory : directories) {
    urls.push_back(FileURL::fromPath(directory, true).text());
  }
  std::vector<const char *> texts;
  for (const std::string &url : urls) {
    texts.push_back(url.c_str());
  }
  texts.push_back(nullptr);
  halvern_finder_sync1_set_directory_urls(skeleton, texts.data());
  g_dbus_interface_skeleton_flush(G_DBUS_INTERFACE_SKELETON(skeleton));
}

}  // namespace

ExtensionStandIn::ExtensionStandIn(const PrivateBus &bus, const Paths &directories,
                                   OnRequest onRequest)
    : onRequest_(onRequest),
      context_(g_main_context_new()),
      loop_(g_main_loop_new(context_.get(), FALSE)),
      queue_(context_.get(), G_PRIORITY_DEFAULT, {}) {
  // Calls are handled in the context that is the thread's own when the object is exported.
  g_main_context_push_thread_default(context_.get());
  connection_ = bus.connect();
  skeleton_.reset(halvern_finder_sync1_skeleton_new());
  publishDirectories(skeleton_.get(), directories);
  halvern_finder_sync1_set_badges(
      skeleton_.get(), g_variant_new_parsed("[('modified', 'Modified', 'emblem-halvern-modified'),"
                                            " ('added', 'Added', 'emblem-halvern-added'),"
                                            " ('locked', 'Locked', 'emblem-halvern-locked')]"));
  connectHandlers();
  ErrorHandle error;
  VariantHandle reply;
  if (g_dbus_interface_skeleton_export(G_DBUS_INTERFACE_SKELETON(skeleton_.get()),
                                       connection_.get(), objectPath, ErrorOut(error)) != FALSE) {
    reply.reset(g_dbus_connection_call_sync(
        connection_.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
        "RequestName", g_variant_new("(su)", busName, 4U), G_VARIANT_TYPE("(u)"),
        G_DBUS_CALL_FLAGS_NONE, -1, nullptr, ErrorOut(error)));
  }
  g_main_context_pop_thread_default(context_.get());
  guint32 answer = 0;
  if (reply != nullptr) {
    g_variant_get(reply.get(), "(u)", &answer);
  }
  if (answer != 1) {
    throw std::runtime_error(error == nullptr ? "the name is taken" : error->message);
  }
  thread_ = std::thread([this] {
    g_main_context_push_thread_default(context_.get());
    g_main_loop_run(loop_.get());
    g_main_context_pop_thread_default(context_.get());
  });
}

ExtensionStandIn::~ExtensionStandIn() {
  resume();
  runInThread([this] { g_main_loop_quit(loop_.get()); });
  thread_.join();
  g_dbus_connection_close_sync(connection_.get(), nullptr, nullptr);
}

// What the skeleton calls for each method call.
struct ExtensionStandIn::Handlers {
  using Skeleton = HalvernFinderSync1;
  using Invocation = GDBusMethodInvocation;

  static gboolean requestBadges(Skeleton *skeleton, Invocation *invocation,
                                const char *const *texts, ExtensionStandIn *self) {
    Paths urls;
    Paths paths;
    for (; *texts != nullptr; ++texts) {
      urls.emplace_back(*texts);
      paths.push_back(pathOf(*texts));
    }
    {
      const std::lock_guard lock(self->mutex_);  // noted before anybody can see an answer
      self->requests_.push_back(std::move(paths));
    }
    const std::string client = g_dbus_method_invocation_get_sender(invocation);
    halvern_finder_sync1_complete_request_badge_identifiers(skeleton, invocation);
    switch (self->onRequest_) {
      case OnRequest::answers:
        if (self->holdsAnswers_) {
          self->heldAnswers_.emplace_back(client, std::move(urls));
        } else {
          self->emit(client.c_str(), "BadgeIdentifiersSet", urls);
        }
        break;
      case OnRequest::staysSilent:
        break;
      case OnRequest::leavesTheBus:
        g_dbus_connection_flush_sync(self->connection_.get(), nullptr, nullptr);
        g_dbus_connection_close_sync(self->connection_.get(), nullptr, nullptr);
        break;
    }
    self->hasRequest_.notify_all();
    return TRUE;
  }

  static gboolean menu(Skeleton *skeleton, Invocation *invocation, guint /*kind*/,
                       const char *const * /*selected*/, const char * /*targeted*/,
                       ExtensionStandIn * /*self*/) {
    halvern_finder_sync1_complete_menu_for_menu_kind(
        skeleton, invocation,
        g_variant_new_parsed("[('Stand-in', [('item', 'Update', 'updateItems:')])]"));
    return TRUE;
  }

  template <Paths ExtensionStandIn::*folders, auto complete>
  static gboolean noteFolder(Skeleton *skeleton, Invocation *invocation, const char *url,
                             ExtensionStandIn *self) {
    {
      const std::lock_guard lock(self->mutex_);
      (self->*folders).push_back(pathOf(url));
    }
    complete(skeleton, invocation);
    return TRUE;
  }
};

void ExtensionStandIn::connectHandlers() {
  const auto connect = [this](const char *signal, auto *handler) {
    g_signal_connect(skeleton_.get(), signal, G_CALLBACK(handler), this);
  };
  connect("handle-request-badge-identifiers", &Handlers::requestBadges);
  connect("handle-menu-for-menu-kind", &Handlers::menu);
  connect("handle-begin-observing-directory",
          &Handlers::noteFolder<&ExtensionStandIn::begunFolders_,
                                halvern_finder_sync1_complete_begin_observing_directory>);
  connect("handle-end-observing-directory",
          &Handlers::noteFolder<&ExtensionStandIn::endedFolders_,
                                halvern_finder_sync1_complete_end_observing_directory>);
}

// Returns when the work is done there, before any message that arrives from now on is handled.
void ExtensionStandIn::runInThread(const std::function<void()> &work) {
  std::packaged_task<void()> task(work);
  queue_.async([&task] { task(); });
  task.get_future().get();
}

void ExtensionStandIn::stop() {
  {
    const std::lock_guard lock(mutex_);
    isStopped_ = true;
  }
  queue_.async([this] {
    std::unique_lock lock(mutex_);
    isResumed_.wait(lock, [this] { return !isStopped_; });
  });
}

void ExtensionStandIn::resume() {
  {
    const std::lock_guard lock(mutex_);
    isStopped_ = false;
  }
  isResumed_.notify_all();
}

void ExtensionStandIn::setBadge(const std::string &path, const std::string &badge) {
  const std::lock_guard lock(mutex_);
  badges_[path] = badge;
}

void ExtensionStandIn::announceChange(const Paths &paths) {
  Paths urls;
  for (const std::string &path : paths) {
    urls.push_back(FileURL::fromPath(path).text());
  }
  runInThread([&] { emit(nullptr, "BadgeIdentifiersChanged", urls); });
}

void ExtensionStandIn::setDirectories(const Paths &directories) {
  runInThread([&] { publishDirectories(skeleton_.get(), directories); });
}

void ExtensionStandIn::holdAnswers() {
  runInThread([this] { holdsAnswers_ = true; });
}

void ExtensionStandIn::releaseAnswers() {
  runInThread([this] {
    holdsAnswers_ = false;
    for (const auto &[client, urls] : std::exchange(heldAnswers_, {})) {
      emit(client.c_str(), "BadgeIdentifiersSet", urls);
    }
  });
}

void ExtensionStandIn::emit(const char *client, const char *signal, const Paths &urls) {
  GVariantBuilder builder;
  g_variant_builder_init(&builder, G_VARIANT_TYPE("a(ss)"));
  {
    const std::lock_guard lock(mutex_);
    for (const std::string &url : urls) {
      const auto found = badges_.find(pathOf(url));
      g_variant_builder_add(&builder, "(ss)", url.c_str(),
                            found == badges_.end() ? "" : found->second.c_str());
    }
  }
  g_dbus_connection_emit_signal(connection_.get(), client, objectPath, interfaceName, signal,
                                g_variant_new("(a(ss))", &builder), nullptr);
  g_dbus_connection_flush_sync(connection_.get(), nullptr, nullptr);
}

std::vector<ExtensionStandIn::Paths> ExtensionStandIn::requests() const {
  const std::lock_guard lock(mutex_);
  return requests_;
}

ExtensionStandIn::Paths ExtensionStandIn::begunFolders() const {
  const std::lock_guard lock(mutex_);
  return begunFolders_;
}

ExtensionStandIn::Paths ExtensionStandIn::endedFolders() const {
  const std::lock_guard lock(mutex_);
  return endedFolders_;
}

bool ExtensionStandIn::waitForRequests(std::size_t count) const {
  constexpr std::chrono::seconds patience{30};  // only a broken client takes them
  std::unique_lock lock(mutex_);
  return hasRequest_.wait_for(lock, patience, [&] { return requests_.size() >= count; });
}
