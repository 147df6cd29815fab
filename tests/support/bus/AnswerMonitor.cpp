#include "tests/support/bus/AnswerMonitor.h"

#include <chrono>

#include "platform/FileURL.h"

using platform::FileURL;
using platform::VariantHandle;

AnswerMonitor::AnswerMonitor(const PrivateBus &bus) : connection_(bus.connect()) {
  filter_ = g_dbus_connection_add_filter(connection_.get(), messagePasses, this, nullptr);
  PrivateBus::makeMonitor(connection_.get(), "type='signal',member='BadgeIdentifiersSet'");
}

AnswerMonitor::~AnswerMonitor() {
  g_dbus_connection_remove_filter(connection_.get(), filter_);
  g_dbus_connection_close_sync(connection_.get(), nullptr, nullptr);
}

GDBusMessage *AnswerMonitor::messagePasses(GDBusConnection * /*connection*/, GDBusMessage *message,
                                           gboolean isIncoming, gpointer self) {
  const char *member = g_dbus_message_get_member(message);
  if (isIncoming != FALSE && member != nullptr && std::string(member) == "BadgeIdentifiersSet") {
    static_cast<AnswerMonitor *>(self)->note(message);
  }
  return message;
}

void AnswerMonitor::note(GDBusMessage *message) {
  const VariantHandle badges(g_variant_get_child_value(g_dbus_message_get_body(message), 0));
  GVariantIter iterator;
  g_variant_iter_init(&iterator, badges.get());
  const char *text = nullptr;
  const char *badge = nullptr;
  {
    const std::lock_guard lock(mutex_);
    while (g_variant_iter_next(&iterator, "(&s&s)", &text, &badge) != FALSE) {
      if (const auto url = FileURL::fromText(text)) {
        answeredPaths_.insert(url->path());
      }
    }
  }
  hasAnswer_.notify_all();
}

bool AnswerMonitor::waitForAnswer(const std::string &path) {
  constexpr std::chrono::seconds patience{30};  // only a broken system takes them
  std::unique_lock lock(mutex_);
  return hasAnswer_.wait_for(lock, patience, [&] { return answeredPaths_.contains(path); });
}

void AnswerMonitor::forget() {
  const std::lock_guard lock(mutex_);
  answeredPaths_.clear();
}
