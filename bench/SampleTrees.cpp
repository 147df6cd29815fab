#include "bench/SampleTrees.h"

#include <filesystem>

void writeTree(const std::string &path, int fileCount, int filesInOne) {
  for (int i = 0; i < fileCount; ++i) {
    writeFile(path + "/d" + std::to_string(i / filesInOne) + "/f" + std::to_string(i),
              "file " + std::to_string(i) + "\n");
  }
}

WorkingCopy makeWorkingCopy(const TemporaryDirectory &directory, int fileCount) {
  WorkingCopy wc(directory, "wc" + std::to_string(fileCount));
  const std::string source = directory / ("source" + std::to_string(fileCount));
  writeTree(source, fileCount, filesInDirectory);
  wc.svn({"import", "--quiet", "-m", "a tree", source, wc.repositoryURL()});
  std::filesystem::remove_all(source);
  wc.svn({"update", "--quiet"});
  return wc;
}

std::string processOfExtension(const PrivateBus &bus) {
  const auto connection = bus.connect();
  const platform::VariantHandle reply(g_dbus_connection_call_sync(
      connection.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
      "GetConnectionUnixProcessID", g_variant_new("(s)", "com.morvane.v3.finder"), nullptr,
      G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
  guint32 process = 0;
  g_variant_get(reply.get(), "(u)", &process);
  return std::to_string(process);
}
