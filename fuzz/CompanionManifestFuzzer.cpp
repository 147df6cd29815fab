// Manifest.plist, as the companion reads and edits it.
#include "companion/list/ListedPlace.h"
#include "companion/list/ManifestEditor.h"
#include "fuzz/support/Input.h"
#include "fuzz/support/OwnHome.h"
#include "fuzz/support/Promise.h"
#include "platform/linux/values/PropertyListCoding.h"

using platform::Array;
using platform::Dictionary;
using platform::valueForKey;

namespace {

void checkPlaces(const Array &entries) {
  for (const platform::PropertyList &entry : entries) {
    const companion::ListedPlace place = companion::placeOfEntry(entry);
    mustHold(place.currentPath.has_value() == place.reason.empty(),
             "a place is somewhere, or there is a reason");
    for (const auto &path : {place.currentPath, place.recordedPath}) {
      mustHold(!path || path->starts_with('/'), "a place's path is absolute");
    }
    companion::textInEntry(entry, "wcID");
  }
}

// The list less its generation and its entries, which an edit changes.
Dictionary rest(Dictionary dictionary) {
  dictionary.erase("generation");
  dictionary.erase("entries");
  return dictionary;
}

void checkEdit(const Dictionary &earlier, const Array &entries, const std::string &file) {
  const auto published = platform::dictionaryFromPropertyList(readWholeFile(file));
  mustHold(static_cast<bool>(published), "what was published can be read");
  mustHold(platform::xmlPropertyList(rest(*published)) == platform::xmlPropertyList(rest(earlier)),
           "an edit keeps what it does not know");
  const auto *generation = valueForKey<std::int64_t>(*published, "generation");
  mustHold(generation != nullptr, "what was published has a generation");
  if (const auto *before = valueForKey<std::int64_t>(earlier, "generation")) {
    mustHold(*generation > *before, "what was published has a greater generation");
  }
  const auto *publishedEntries = valueForKey<Array>(*published, "entries");
  mustHold(publishedEntries != nullptr && publishedEntries->size() == entries.size(),
           "what was published has all entries");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
  const std::string_view input = textOfInput(bytes, size);
  static const std::string file = OwnHome::get().sharedDirectory() + "/Manifest.plist";
  writeWholeFile(file, input);

  const auto dictionary = platform::dictionaryFromPropertyList(input);
  const auto editor = companion::ManifestEditor::open();
  if (!editor) {
    mustHold(!dictionary || dictionary->contains("entries"), "a list can be edited");
    mustHold(!editor.reason().empty(), "a refusal has a reason");
    mustHold(readWholeFile(file) == input, "a list that cannot be read stays as it is");
    return 0;
  }
  mustHold(static_cast<bool>(dictionary), "what can be edited can be read");
  checkPlaces(editor->entries());

  Array entries = editor->entries();
  entries.emplace_back(Dictionary{{"wcID", "a new one"}});
  if (editor->publish(entries)) {
    mustHold(readWholeFile(file) == input, "a list that cannot be written stays as it is");
  } else {
    checkEdit(*dictionary, entries, file);
  }
  return 0;
}
