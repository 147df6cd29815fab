#include "tests/support/bus/BusClient.h"

#include <algorithm>
#include <stdexcept>

#include "tests/support/bus/PublicNames.h"

using platform::ErrorHandle;
using platform::ErrorOut;
using platform::Handle;
using platform::StringHandle;
using platform::VariantHandle;

namespace {

// For an answer, in milliseconds. The bus's usual 25 s are too few for an extension with a
// sanitizer in it that loads thousands of working copies from a busy disk.
constexpr int patience = 120'000;

void appendBadges(GVariant *parameters, BusClient::Badges &badges) {
  GVariantIter *iteratorOut = nullptr;
  g_variant_get(parameters, "(a(ss))", &iteratorOut);
  const Handle<GVariantIter, g_variant_iter_free> iterator(iteratorOut);
  const char *url = nullptr;
  const char *identifier = nullptr;
  while (g_variant_iter_next(iterator.get(), "(&s&s)", &url, &identifier) != FALSE) {
    badges.emplace_back(url, identifier);
  }
}

std::vector<std::string> stringsOfVariant(GVariant *strings) {
  const Handle<const char *, g_free> texts(g_variant_get_strv(strings, nullptr));
  std::vector<std::string> result;
  for (const char *const *text = texts.get(); *text != nullptr; ++text) {
    result.emplace_back(*text);
  }
  return result;
}

void badgesArrived(GDBusConnection *, const char *, const char *, const char *, const char *signal,
                   GVariant *parameters, gpointer data) {
  auto &client = *static_cast<BusClient *>(data);
  ++client.messageCount;
  appendBadges(parameters,
               std::string(signal) == "BadgeIdentifiersSet" ? client.set : client.changed);
}

void propertiesChanged(GDBusConnection *, const char *, const char *, const char *, const char *,
                       GVariant *parameters, gpointer data) {
  const VariantHandle changed(g_variant_get_child_value(parameters, 1));
  const VariantHandle urls(
      g_variant_lookup_value(changed.get(), "DirectoryURLs", G_VARIANT_TYPE_STRING_ARRAY));
  if (urls != nullptr) {
    static_cast<BusClient *>(data)->directoryURLChanges.push_back(stringsOfVariant(urls.get()));
  }
}

}  // namespace

BusClient::BusClient(const PrivateBus &bus) : connection_(bus.connect()) {
  subscriptions_.push_back(g_dbus_connection_signal_subscribe(
      connection_.get(), nullptr, interfaceName, nullptr, objectPath, nullptr,
      G_DBUS_SIGNAL_FLAGS_NONE, badgesArrived, this, nullptr));
  subscriptions_.push_back(g_dbus_connection_signal_subscribe(
      connection_.get(), nullptr, "org.freedesktop.DBus.Properties", "PropertiesChanged",
      objectPath, nullptr, G_DBUS_SIGNAL_FLAGS_NONE, propertiesChanged, this, nullptr));
}

BusClient::~BusClient() {
  for (const guint subscription : subscriptions_) {
    g_dbus_connection_signal_unsubscribe(connection_.get(), subscription);
  }
  g_dbus_connection_close_sync(connection_.get(), nullptr, nullptr);
}

std::string BusClient::call(const char *method, GVariant *arguments) {
  ErrorHandle error;
  const VariantHandle reply(g_dbus_connection_call_sync(
      connection_.get(), busName, objectPath, interfaceName, method, arguments, nullptr,
      G_DBUS_CALL_FLAGS_NONE, patience, nullptr, ErrorOut(error)));
  if (error == nullptr) {
    return "";
  }
  const StringHandle name(g_dbus_error_get_remote_error(error.get()));
  return name == nullptr ? error->message : name.get();
}

VariantHandle BusClient::answer(const char *method, GVariant *arguments) {
  ErrorHandle error;
  VariantHandle reply(g_dbus_connection_call_sync(
      connection_.get(), busName, objectPath, interfaceName, method, arguments, nullptr,
      G_DBUS_CALL_FLAGS_NONE, patience, nullptr, ErrorOut(error)));
  if (reply == nullptr) {
    throw std::runtime_error(error->message);
  }
  return reply;
}

std::string BusClient::requestBadges(const std::vector<std::string> &urls) {
  GVariantBuilder builder;
  g_variant_builder_init(&builder, G_VARIANT_TYPE("as"));
  for (const std::string &url : urls) {
    g_variant_builder_add(&builder, "s", url.c_str());
  }
  return call("RequestBadgeIdentifiers", g_variant_new("(as)", &builder));
}

void BusClient::announceManifest() {
  g_dbus_connection_emit_signal(connection_.get(), nullptr, "/com/morvane/finderSync",
                                "com.morvane.finderSync", "manifestUpdated", nullptr, nullptr);
}

VariantHandle BusClient::property(const char *name) const {
  ErrorHandle error;
  const VariantHandle reply(g_dbus_connection_call_sync(
      connection_.get(), busName, objectPath, "org.freedesktop.DBus.Properties", "Get",
      g_variant_new("(ss)", interfaceName, name), G_VARIANT_TYPE("(v)"), G_DBUS_CALL_FLAGS_NONE,
      patience, nullptr, ErrorOut(error)));
  if (reply == nullptr) {
    throw std::runtime_error(error->message);
  }
  GVariant *value = nullptr;
  g_variant_get(reply.get(), "(v)", &value);
  return VariantHandle(value);
}

std::vector<std::string> BusClient::directoryURLs() const {
  return stringsOfVariant(property("DirectoryURLs").get());
}

bool BusClient::ownsName(const std::string &processIdentifier) const {
  const VariantHandle reply(g_dbus_connection_call_sync(
      connection_.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
      "GetConnectionUnixProcessID", g_variant_new("(s)", busName), G_VARIANT_TYPE("(u)"),
      G_DBUS_CALL_FLAGS_NONE, patience, nullptr, nullptr));
  guint32 owner = 0;
  if (reply != nullptr) {
    g_variant_get(reply.get(), "(u)", &owner);
  }
  return std::to_string(owner) == processIdentifier;
}

bool BusClient::waitForBadges(std::size_t count) {
  return turnMainLoopUntil([this, count] { return set.size() >= count; });
}

bool BusClient::waitForChange(const std::string &url) {
  return turnMainLoopUntil([&] {
    return std::any_of(changed.begin(), changed.end(),
                       [&url](const auto &badge) { return badge.first == url; });
  });
}

void BusClient::catchUp() {
  property("Badges");
  while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
  }
}
