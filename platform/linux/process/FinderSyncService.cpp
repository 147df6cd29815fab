#include "platform/linux/process/FinderSyncService.h"

#include "platform/linux/BusNames.h"
#include "platform/linux/process/BadgeIcons.h"
#include "platform/linux/process/MenuMessage.h"
#include "platform/linux/process/RequestArguments.h"

using platform::ErrorHandle;
using platform::ErrorOut;
using platform::FileURL;
using platform::VariantHandle;

namespace {

// Of the bus's own method "RequestName".
constexpr guint32 doNotQueue = 4;
constexpr guint32 primaryOwner = 1;

// A handler that answers a call has dealt with it.
constexpr gboolean handled = TRUE;

gboolean answerError(GDBusMethodInvocation *invocation, const ErrorHandle &error) {
  g_dbus_method_invocation_return_gerror(invocation, error.get());
  return handled;
}

VariantHandle badgesVariant(const BadgeAnswers::Badges &badges) {
  GVariantBuilder builder;
  g_variant_builder_init(&builder, G_VARIANT_TYPE("a(ss)"));
  for (const auto &[url, identifier] : badges) {
    g_variant_builder_add(&builder, "(ss)", url.c_str(), identifier.c_str());
  }
  return VariantHandle(g_variant_ref_sink(g_variant_new("(a(ss))", &builder)));
}

}  // namespace

FinderSyncService::FinderSyncService() : skeleton_(halvern_finder_sync1_skeleton_new()) {
  const char *const noDirectories[] = {nullptr};
  halvern_finder_sync1_set_directory_urls(skeleton_.get(), noDirectories);
  halvern_finder_sync1_set_badges(skeleton_.get(),
                                  g_variant_new_array(G_VARIANT_TYPE("(sss)"), nullptr, 0));
  connectHandlers();
}

FinderSyncService::~FinderSyncService() {
  if (sendSource_ != 0) {
    g_source_remove(sendSource_);
  }
}

// What the skeleton calls for each method call. An answer is always given.
struct FinderSyncService::Handlers {
  using Skeleton = HalvernFinderSync1;
  using Invocation = GDBusMethodInvocation;
  using Texts = const char *const *;

  // The two calls that carry a directory's URL.
  template <auto request, auto complete>
  static gboolean directory(Skeleton *skeleton, Invocation *invocation, const char *text,
                            FinderSyncService *self) {
    ErrorHandle error = checkCallSize(invocation);
    const auto url = error ? std::nullopt : urlFromArgument(text, error);
    if (!url) {
      return answerError(invocation, error);
    }
    (self->principalObject_->*request)(*url);
    complete(skeleton, invocation);
    self->spareMemory_.noteWork();
    return handled;
  }

  static gboolean requestBadgeIdentifiers(Skeleton *skeleton, Invocation *invocation, Texts texts,
                                          FinderSyncService *self) {
    ErrorHandle error = checkCallSize(invocation);
    const auto urls = error ? std::nullopt : urlsFromArgument(texts, error);
    if (!urls) {
      return answerError(invocation, error);
    }
    self->requestBadges(g_dbus_method_invocation_get_sender(invocation), *urls);
    halvern_finder_sync1_complete_request_badge_identifiers(skeleton, invocation);
    return handled;
  }

  static gboolean menuForMenuKind(Skeleton *skeleton, Invocation *invocation, guint kind,
                                  Texts selected, const char *targeted, FinderSyncService *self) {
    ErrorHandle error;
    auto request = menuRequestFromArguments(invocation, selected, targeted, nullptr, error);
    if (!request) {
      return answerError(invocation, error);
    }
    const MenuScope scope(*self, *std::move(request));
    halvern_finder_sync1_complete_menu_for_menu_kind(
        skeleton, invocation,
        menuVariant(self->principalObject_->menuForMenuKind(platform::FIMenuKind{kind})));
    return handled;
  }

  static gboolean performMenuAction(Skeleton *skeleton, Invocation *invocation, const char *action,
                                    Texts selected, const char *targeted, GVariant *platformData,
                                    FinderSyncService *self) {
    ErrorHandle error;
    auto request = menuRequestFromArguments(invocation, selected, targeted, platformData, error);
    if (!request) {
      return answerError(invocation, error);
    }
    const MenuScope scope(*self, *std::move(request));
    if (!self->principalObject_->performAction(action)) {
      error.reset(g_error_new(G_DBUS_ERROR, G_DBUS_ERROR_INVALID_ARGS,
                              "There is no menu action “%s”", action));
      return answerError(invocation, error);
    }
    halvern_finder_sync1_complete_perform_menu_action(skeleton, invocation);
    return handled;
  }

  // The principal object can ask for the selection while this lives.
  class MenuScope {
   public:
    MenuScope(FinderSyncService &service, MenuRequest request) : service_(service) {
      service_.menuRequest_ = std::move(request);
    }
    ~MenuScope() { service_.menuRequest_ = {}; }
    MenuScope(const MenuScope &) = delete;
    MenuScope &operator=(const MenuScope &) = delete;

   private:
    FinderSyncService &service_;
  };
};

void FinderSyncService::connectHandlers() {
  using platform::FIFinderSync;
  const auto connect = [this](const char *signal, auto *handler) {
    g_signal_connect(skeleton_.get(), signal, G_CALLBACK(handler), this);
  };
  connect("handle-begin-observing-directory",
          &Handlers::directory<&FIFinderSync::beginObservingDirectoryAtURL,
                               halvern_finder_sync1_complete_begin_observing_directory>);
  connect("handle-end-observing-directory",
          &Handlers::directory<&FIFinderSync::endObservingDirectoryAtURL,
                               halvern_finder_sync1_complete_end_observing_directory>);
  connect("handle-request-badge-identifiers", &Handlers::requestBadgeIdentifiers);
  connect("handle-menu-for-menu-kind", &Handlers::menuForMenuKind);
  connect("handle-perform-menu-action", &Handlers::performMenuAction);
}

bool FinderSyncService::exportObject(GDBusConnection *connection, std::string &reason) {
  ErrorHandle error;
  if (g_dbus_interface_skeleton_export(G_DBUS_INTERFACE_SKELETON(skeleton_.get()), connection,
                                       platform::finderSyncObjectPath, ErrorOut(error)) == FALSE) {
    reason = error->message;
    return false;
  }
  connection_.reset(G_DBUS_CONNECTION(g_object_ref(connection)));
  return true;
}

FinderSyncService::NameRequest FinderSyncService::requestName(std::string &reason) {
  ErrorHandle error;
  const VariantHandle reply(g_dbus_connection_call_sync(
      connection_.get(), platform::busDaemonName, platform::busDaemonPath, platform::busDaemonName,
      "RequestName", g_variant_new("(su)", platform::finderSyncBusName, doNotQueue),
      G_VARIANT_TYPE("(u)"), G_DBUS_CALL_FLAGS_NONE, -1, nullptr, ErrorOut(error)));
  if (reply == nullptr) {
    reason = error->message;
    return NameRequest::failed;
  }
  guint32 answer = 0;
  g_variant_get(reply.get(), "(u)", &answer);
  return answer == primaryOwner ? NameRequest::owned : NameRequest::taken;
}

void FinderSyncService::requestBadges(const char *client, const std::vector<FileURL> &urls) {
  for (const FileURL &url : urls) {
    answers_.noteRequest(client, url.text());
    principalObject_->requestBadgeIdentifierForURL(url);
  }
}

void FinderSyncService::setDirectoryURLs(const platform::FileURLSet &directoryURLs) {
  std::vector<const char *> texts;
  texts.reserve(directoryURLs.size() + 1);
  for (const FileURL &url : directoryURLs) {
    texts.push_back(url.text().c_str());
  }
  texts.push_back(nullptr);
  // The skeleton tells the bus when the value differs from the last one.
  halvern_finder_sync1_set_directory_urls(skeleton_.get(), texts.data());
}

void FinderSyncService::setBadgeImage(const platform::Image &image, std::string_view label,
                                      std::string_view badgeIdentifier) {
  writeBadgeIcon(image, badgeIdentifier);
  badges_.push_back(
      {std::string(badgeIdentifier), std::string(label), badgeIconName(badgeIdentifier)});

  GVariantBuilder builder;
  g_variant_builder_init(&builder, G_VARIANT_TYPE("a(sss)"));
  for (const Badge &badge : badges_) {
    g_variant_builder_add(&builder, "(sss)", badge.identifier.c_str(), badge.label.c_str(),
                          badge.iconName.c_str());
  }
  halvern_finder_sync1_set_badges(skeleton_.get(), g_variant_builder_end(&builder));
}

void FinderSyncService::setBadgeIdentifier(std::string_view badgeIdentifier,
                                           const FileURL &itemURL) {
  const bool isAnswer = answers_.setBadge(badgeIdentifier, itemURL.text());
  sendSoon(answers_.isAwaited() || !isAnswer);
}

void FinderSyncService::sendSoon(bool expectsMore) {
  // While more badges are on their way, those that are there wait for them a little: the look-ups
  // of a burst may be slower than this loop, and each would be sent by itself. One frame of a
  // screen, and far longer than a look-up takes.
  constexpr guint gatheringTime = 16;  // milliseconds

  if (sendSource_ != 0 && (expectsMore || !isGathering_)) {
    return;
  }
  if (sendSource_ != 0) {
    g_source_remove(sendSource_);
  }
  const GSourceFunc send = [](gpointer data) -> gboolean {
    static_cast<FinderSyncService *>(data)->sendMessages();
    return G_SOURCE_REMOVE;
  };
  // Both below everything else on the main loop: they run when the main queue has run empty.
  isGathering_ = expectsMore;
  sendSource_ = expectsMore ? g_timeout_add_full(G_PRIORITY_LOW, gatheringTime, send, this, nullptr)
                            : g_idle_add_full(G_PRIORITY_LOW, send, this, nullptr);
}

void FinderSyncService::sendMessages() {
  sendSource_ = 0;
  for (const BadgeAnswers::Message &message : answers_.takeMessages()) {
    const bool isAnswer = !message.client.empty();
    const VariantHandle badges = badgesVariant(message.badges);
    g_dbus_connection_emit_signal(connection_.get(), isAnswer ? message.client.c_str() : nullptr,
                                  platform::finderSyncObjectPath, platform::finderSyncInterface,
                                  isAnswer ? "BadgeIdentifiersSet" : "BadgeIdentifiersChanged",
                                  badges.get(), nullptr);
  }
  spareMemory_.noteWork();
}
