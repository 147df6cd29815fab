#include "platform/linux/process/FinderSyncService.h"

#include <utility>

#include "platform/linux/BusNames.h"
#include "platform/linux/process/BadgeIcons.h"

using platform::ErrorHandle;
using platform::ErrorOut;
using platform::FileURL;
using platform::ObjectHandle;
using platform::VariantHandle;

namespace {

// Of the bus's own method "RequestName".
constexpr guint32 doNotQueue = 4;
constexpr guint32 primaryOwner = 1;

GVariant *badgesVariant(const BadgeAnswers::Badges &badges) {
  GVariantBuilder builder;
  g_variant_builder_init(&builder, G_VARIANT_TYPE("a(ss)"));
  for (const auto &[url, identifier] : badges) {
    g_variant_builder_add(&builder, "(ss)", url.c_str(), identifier.c_str());
  }
  return g_variant_new("(a(ss))", &builder);
}

}  // namespace

FinderSyncService::FinderSyncService() : skeleton_(halvern_finder_sync1_skeleton_new()) {
  const char *const noDirectories[] = {nullptr};
  halvern_finder_sync1_set_directory_urls(skeleton_.get(), noDirectories);
  halvern_finder_sync1_set_badges(skeleton_.get(),
                                  g_variant_new_array(G_VARIANT_TYPE("(sss)"), nullptr, 0));
}

FinderSyncService::~FinderSyncService() {
  stopWaitingToSend();
}

bool FinderSyncService::exportObject(GDBusConnection *connection, std::string &reason) {
  ErrorHandle error;
  if (g_dbus_interface_skeleton_export(G_DBUS_INTERFACE_SKELETON(skeleton_.get()), connection,
                                       platform::finderSyncObjectPath, ErrorOut(error)) == FALSE) {
    reason = error->message;
    return false;
  }
  connection_.reset(G_DBUS_CONNECTION(g_object_ref(connection)));
  requests_.emplace(connection, G_DBUS_INTERFACE_SKELETON(skeleton_.get()), answers_, menuRequest_,
                    spareMemory_);
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
  requests_->takeOnMore();
  sendSoon(answers_.awaitedCount() > 0 || !isAnswer);
}

void FinderSyncService::sendSoon(bool expectsMore) {
  // While more badges are on their way, those that are there wait for them a little: the look-ups
  // of a burst may be slower than this loop, and each would be sent by itself. One frame of a
  // screen, and far longer than a look-up takes.
  constexpr guint gatheringTime = 16;  // milliseconds

  const GSourceFunc send = [](gpointer data) -> gboolean {
    static_cast<FinderSyncService *>(data)->sendMessages();
    return G_SOURCE_CONTINUE;  // it has removed the source
  };
  // Beside the calls, so that answers do not wait until nobody asks any more.
  if (latestSend_ == 0) {
    latestSend_ = g_timeout_add(gatheringTime, send, this);
  }
  // Below everything else on the main loop: it runs when the main queue has run empty.
  if (!expectsMore && idleSend_ == 0) {
    idleSend_ = g_idle_add_full(G_PRIORITY_LOW, send, this, nullptr);
  }
}

void FinderSyncService::stopWaitingToSend() {
  for (guint *source : {&latestSend_, &idleSend_}) {
    if (*source != 0) {
      g_source_remove(std::exchange(*source, 0));
    }
  }
}

void FinderSyncService::sendMessages() {
  stopWaitingToSend();
  for (const BadgeAnswers::Message &message : answers_.takeMessages()) {
    const bool isAnswer = !message.client.empty();
    ObjectHandle<GDBusMessage> signal(
        g_dbus_message_new_signal(platform::finderSyncObjectPath, platform::finderSyncInterface,
                                  isAnswer ? "BadgeIdentifiersSet" : "BadgeIdentifiersChanged"));
    if (isAnswer) {
      g_dbus_message_set_destination(signal.get(), message.client.c_str());
    }
    g_dbus_message_set_body(signal.get(), badgesVariant(message.badges));
    requests_->send(std::move(signal));
  }
  spareMemory_.noteWork();
}
