// A RecoveryRequest.plist with anything in it, as `halvern recover` answers it.
#include <filesystem>

#include "companion/Output.h"
#include "companion/list/ListCommands.h"
#include "fuzz/support/Input.h"
#include "fuzz/support/OwnHome.h"
#include "fuzz/support/Promise.h"
#include "platform/linux/values/LinuxBookmarks.h"
#include "platform/linux/values/PropertyListCoding.h"

using platform::Array;
using platform::Data;
using platform::Dictionary;
using platform::FileURL;

namespace fs = std::filesystem;

namespace {

struct Files {
  std::string directory = OwnHome::get().sharedDirectory();
  std::string manifest = directory + "/Manifest.plist";
  std::string request = directory + "/RecoveryRequest.plist";
  std::string taken = directory + "/RecoveryRequest.taken.plist";
  std::string unreadable = taken + ".unreadable";
};

// Two working copies, of which one is there and one has gone.
std::string manifestOfTwo() {
  const auto bookmarkOf = [](const std::string &path) {
    fs::create_directory(path);
    return *platform::LinuxBookmarks().bookmarkDataForURL(
        FileURL::fromPath(path, /*isDirectory=*/true), platform::BookmarkCreationOptions::none);
  };
  const std::string gone = OwnHome::get() / "gone";
  const Data there = bookmarkOf(OwnHome::get() / "there");
  const Data lost = bookmarkOf(gone);
  fs::remove(gone);
  return *platform::xmlPropertyList(
      Dictionary{{"generation", 3},
                 {"entries", Array{Dictionary{{"wcID", "there"}, {"bookmark", there}},
                                   Dictionary{{"wcID", "gone"}, {"bookmark", lost}}}}});
}

companion::ExitStatus recover() {
  companion::Output output;
  return companion::recoverWorkingCopies(output);
}

void checkAnswer(const Files &files, const Dictionary &request, companion::ExitStatus status,
                 const std::string &manifest) {
  const auto list = platform::dictionaryFromPropertyList(readWholeFile(files.manifest));
  mustHold(static_cast<bool>(list), "the list can be read after an answer");
  const auto *generation = platform::valueForKey<std::int64_t>(*list, "generation");
  const auto *entries = platform::valueForKey<Array>(*list, "entries");
  mustHold(generation != nullptr && *generation == (request.contains("there") ? 4 : 3),
           "a list is published exactly if something could be reached");
  mustHold(entries != nullptr && entries->size() == 2, "an answer loses no working copy");
  mustHold(request.contains("there") || readWholeFile(files.manifest) == manifest,
           "without an answer the list stays as it is");
  mustHold(status == (request.contains("gone") ? companion::exitFailed : companion::exitDone),
           "what could not be reached is told");
  mustHold(!fs::exists(files.request) && !fs::exists(files.taken),
           "a request that was answered is gone");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
  const std::string_view input = textOfInput(bytes, size);
  static const Files files;
  static const std::string manifest = manifestOfTwo();
  const auto request = platform::dictionaryFromPropertyList(input);

  // As the extension left it, and as a run that did not come to its end left it.
  for (const std::string &place : {files.request, files.taken}) {
    writeWholeFile(files.manifest, manifest);
    writeWholeFile(place, input);
    const companion::ExitStatus status = recover();
    if (request) {
      checkAnswer(files, *request, status, manifest);
      continue;
    }
    mustHold(status == companion::exitFailed, "a request that cannot be read is told");
    mustHold(readWholeFile(files.manifest) == manifest, "it changes nothing");
    const std::string &left = place == files.taken ? files.unreadable : place;
    mustHold(readWholeFile(left) == input, "a request that cannot be read is not lost");
    fs::remove(left);
  }
  return 0;
}
