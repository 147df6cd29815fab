// A command file with anything in it, as the companion reads it.
#include <filesystem>

#include "companion/open/CommandFile.h"
#include "companion/open/CommandRequest.h"
#include "fuzz/support/Input.h"
#include "fuzz/support/OwnHome.h"
#include "fuzz/support/Promise.h"
#include "platform/linux/files/LinuxPaths.h"

namespace {

constexpr const char *identifier = "0B9C6D7E-5A41-4F0C-9C3B-2D1E0F9A8B7C";

// The file's contents, taken from its place as `halvern open` does.
std::string takenContents(std::string_view input) {
  static const std::string directory = OwnHome::get().sharedDirectory();
  static const std::string commands = directory + "/Commands";
  std::filesystem::create_directory(commands);
  writeWholeFile(commands + "/" + identifier + ".plist", input);

  const auto file = companion::CommandFile::open(
      platform::FileURL::fromPath(directory, /*isDirectory=*/true), identifier);
  mustHold(static_cast<bool>(file), "a command file can be opened, whatever is in it");
  const auto contents = file->read();
  mustHold(contents && *contents == input, "a command file is read as it is");
  const auto first = file->take();
  const auto second = file->take();
  mustHold(first && *first && second && !*second, "a command is taken once");
  mustHold(std::filesystem::is_empty(commands), "a command that was taken is gone");
  return *contents;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
  const auto request = companion::requestFromPropertyList(takenContents(textOfInput(bytes, size)));
  if (!request) {
    mustHold(!request.reason().empty(), "a refusal has a reason");
    return 0;
  }
  mustHold(!request->paths.empty(), "a command names a path");
  for (const std::string &path : request->paths) {
    mustHold(path.starts_with('/') && path.find('\0') == std::string::npos,
             "a command's paths are absolute");
    mustHold(platform::LinuxPaths().standardizedPath(path) == path,
             "a command's paths are standardised");
  }
  return 0;
}
