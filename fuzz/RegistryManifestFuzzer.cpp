// Manifest.plist, as the extension's registry reads it.
#include <set>

#include "fuzz/support/Input.h"
#include "fuzz/support/Promise.h"
#include "fuzz/support/RegistryInMemory.h"
#include "platform/linux/values/LinuxBookmarks.h"
#include "platform/linux/values/PropertyListCoding.h"

using platform::Array;
using platform::Data;
using platform::Dictionary;
using platform::valueForKey;

namespace {

const Dictionary &earlierStore() {
  static const Dictionary store{{"kept", bookmarkOfPath("/kept", true)},
                                {"moved", bookmarkOfPath("/moved/there", true)},
                                {"lost", bookmarkOfPath("/gone/lost", true)},
                                {"unscoped", bookmarkOfPath("/unscoped", false)}};
  return store;
}

// What the manifest says, read without the registry.
struct Listed {
  std::set<std::string> identifiers;
  std::set<std::string> paths;  // where its bookmarks lead, and those of the store

  explicit Listed(const Array &entries) {
    for (const platform::PropertyList &entry : entries) {
      const auto *dictionary = entry.as<Dictionary>();
      const auto *identifier =
          dictionary != nullptr ? valueForKey<std::string>(*dictionary, "wcID") : nullptr;
      if (identifier == nullptr || !platform::isPropertyListText(*identifier)) {
        continue;
      }
      identifiers.insert(*identifier);
      note(valueForKey<Data>(*dictionary, "bookmark"));
      note(valueForKey<Data>(earlierStore(), *identifier));
    }
  }

  void note(const Data *bookmark) {
    const auto path = bookmark != nullptr ? platform::pathInBookmarkData(*bookmark) : std::nullopt;
    if (path) {
      paths.insert(*path);
    }
  }
};

void checkReload(const RegistryInMemory &memory, const Listed &listed, bool hasGeneration) {
  for (const platform::FileURL &root : memory.registry.resolvedRootURLs()) {
    mustHold(listed.paths.contains(root.path()), "a root is where a bookmark leads");
    mustHold(root.text().ends_with('/'), "a root is a directory");
  }
  const Dictionary store = memory.store();
  for (const auto &[identifier, bookmark] : store) {
    mustHold(listed.identifiers.contains(identifier), "what is stored is in the manifest");
  }
  mustHold(platform::xmlPropertyList(store).has_value(), "the store can be written");

  const auto file = memory.files.contents.find(RegistryInMemory::requestPath);
  mustHold(hasGeneration || file == memory.files.contents.end(),
           "without a generation nothing is requested");
  const auto request = file != memory.files.contents.end()
                           ? platform::dictionaryFromPropertyList(file->second)
                           : platform::Result<Dictionary>(Dictionary());
  mustHold(static_cast<bool>(request), "a request can be read");
  for (const auto &[identifier, generation] : *request) {
    mustHold(listed.identifiers.contains(identifier), "what is requested is in the manifest");
  }
  for (const std::string &identifier : listed.identifiers) {
    mustHold(!hasGeneration || store.contains(identifier) || request->contains(identifier),
             "what cannot be reached is requested");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
  const std::string_view input = textOfInput(bytes, size);
  const auto manifest = platform::dictionaryFromPropertyList(input);
  const auto *entries = manifest ? valueForKey<Array>(*manifest, "entries") : nullptr;

  RegistryInMemory memory(earlierStore());
  memory.files.contents[RegistryInMemory::manifestPath] = input;
  memory.registry.reloadManifest();
  mustHold(memory.files.contents[RegistryInMemory::manifestPath] == input,
           "a manifest is only read");
  if (entries == nullptr) {
    mustHold(memory.registry.resolvedRootURLs().empty(), "without entries there are no roots");
    mustHold(memory.store() == earlierStore(), "without entries no bookmark is forgotten");
    mustHold(memory.files.contents.size() == 1, "without entries nothing is requested");
    return 0;
  }
  const bool hasGeneration = valueForKey<std::int64_t>(*manifest, "generation") != nullptr ||
                             valueForKey<double>(*manifest, "generation") != nullptr;
  checkReload(memory, Listed(*entries), hasGeneration);

  const auto roots = memory.registry.resolvedRootURLs();
  const Dictionary store = memory.store();
  const auto files = memory.files.contents;
  memory.registry.reloadManifest();
  mustHold(memory.registry.resolvedRootURLs() == roots && memory.store() == store &&
               memory.files.contents == files,
           "the same manifest changes nothing");
  return 0;
}
