// Writes the seeds that are messages into a directory, each kind into a folder of its own.
#include <filesystem>
#include <iostream>

#include "fuzz/support/OwnHome.h"
#include "platform/linux/process/MenuMessage.h"
#include "platform/linux/worker/ScanMessages.h"

namespace {

using platform::Menu;
using platform::VariantHandle;

std::string bytesOf(GVariant *floating) {
  const VariantHandle value(g_variant_ref_sink(floating));
  return {static_cast<const char *>(g_variant_get_data(value.get())),
          g_variant_get_size(value.get())};
}

std::string menuMessage() {
  Menu submenu;
  submenu.items = {{false, "Update", "updateItems:", nullptr},
                   {true, "", "", nullptr},
                   {false, "Commit Changes…", "commitItems:", nullptr}};
  return bytesOf(menuVariant(Menu{"", {{false, "Halvern", "", std::make_shared<Menu>(submenu)}}}));
}

std::string busMessage(const char *method, GVariant *arguments, GDBusMessageByteOrder order) {
  const platform::ObjectHandle<GDBusMessage> message(g_dbus_message_new_method_call(
      "com.morvane.v3.finder", "/com/morvane/v3/finder", "com.morvane.v3.FinderSync1", method));
  g_dbus_message_set_body(message.get(), arguments);
  g_dbus_message_set_serial(message.get(), 7);
  g_dbus_message_set_sender(message.get(), ":1.42");
  g_dbus_message_set_byte_order(message.get(), order);
  gsize size = 0;
  const platform::Handle<guchar, g_free> blob(
      g_dbus_message_to_blob(message.get(), &size, G_DBUS_CAPABILITY_FLAGS_NONE, nullptr));
  return {reinterpret_cast<const char *>(blob.get()), size};
}

std::string spawnerMessage() {
  const char *const texts[] = {"com.morvane.v3", "halvern://finder-sync-command?id=0", nullptr};
  return bytesOf(g_variant_new("(s^aay)", "launch", texts));
}

}  // namespace

int main(int argumentCount, char **arguments) {
  if (argumentCount != 2) {
    std::cerr << "Usage: message_seeds DIRECTORY\n";
    return 2;
  }
  const auto write = [&](const std::string &folder, const std::string &name,
                         const std::string &contents) {
    const std::string path = arguments[1] + ("/" + folder);
    std::filesystem::create_directories(path);
    writeWholeFile(path + "/" + name, contents);
  };
  write("scan-message", "request",
        encode(
            ScanRequest{"/wc", "/configuration", {svn_depth_infinity, false, false, false, true}}));
  write("scan-message", "reports",
        encode(
            ScanMessage(ScanReports{{"/wc/changed.txt", svn_wc_status_modified, false, true, false},
                                    {"/wc/new", svn_wc_status_unversioned, false, false, false},
                                    {"/wc/t", svn_wc_status_conflicted, true, false, true}})));
  write("scan-message", "database",
        encode(ScanMessage(ScanDatabase{"/wc/.svn/wc.db", "1 2 3.000000004"})));
  write("scan-message", "beat", encode(ScanMessage(ScanBeat())));
  write("scan-message", "end", encode(ScanMessage(ScanEnd{155007, "not a working copy"})));
  write("scan-message", "exit", encode(ScanExit{true, 9}));
  const char *const urls[] = {"file:///wc/a", "file:///wc/b", nullptr};
  const std::string request = busMessage("RequestBadgeIdentifiers", g_variant_new("(^as)", urls),
                                         G_DBUS_MESSAGE_BYTE_ORDER_LITTLE_ENDIAN);
  write("bus-message", "two", request + request);
  write("bus-message", "big-endian",
        busMessage("PerformMenuAction",
                   g_variant_new_parsed("('updateItems:', @as [], '', {'token': <[1, 2]>})"),
                   G_DBUS_MESSAGE_BYTE_ORDER_BIG_ENDIAN));
  write("menu", "menu", menuMessage());
  write("spawner-message", "launch", spawnerMessage());
  return 0;
}
