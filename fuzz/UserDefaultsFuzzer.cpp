// The extension's user defaults, with anything in the file.
#include <filesystem>

#include "fuzz/support/Input.h"
#include "fuzz/support/OwnHome.h"
#include "fuzz/support/Promise.h"
#include "platform/linux/values/LinuxUserDefaults.h"
#include "platform/linux/values/PropertyListCoding.h"

using platform::Dictionary;
using platform::PropertyList;

namespace fs = std::filesystem;

namespace {

constexpr const char *key = "KTRFinderSyncScopedBookmarks";

// Whether a value is to be found under the key, in whatever is there under it.
bool holds(const Dictionary &dictionary, const std::optional<PropertyList> &value) {
  const auto found = dictionary.find(key);
  return found == dictionary.end()
             ? !value
             : value && platform::xmlPropertyList({{"value", *value}}) ==
                            platform::xmlPropertyList({{"value", found->second}});
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
  const std::string_view input = textOfInput(bytes, size);
  OwnHome::get();
  platform::LinuxUserDefaults defaults("com.morvane.v3.finder");
  static const std::string directory = *defaults.directoryPath();
  static const std::string file = directory + "/defaults.plist";
  static const std::string putAside = file + ".unreadable";
  fs::create_directories(directory);
  fs::remove(putAside);
  writeWholeFile(file, input);

  const auto earlier = platform::dictionaryFromPropertyList(input);
  mustHold(holds(earlier ? *earlier : Dictionary(), defaults.objectForKey(key)),
           "a value is the one in the file");
  mustHold(readWholeFile(file) == input, "reading changes nothing");

  const PropertyList value = Dictionary{{"identifier", true}};
  defaults.setObject(value, key);
  Dictionary expected = earlier ? *earlier : Dictionary();
  expected.insert_or_assign(key, value);
  const std::optional<std::string> xml = platform::xmlPropertyList(expected);
  mustHold(readWholeFile(file) == xml.value_or(std::string(input)),
           "a new value changes no other, or stays out");
  mustHold(earlier || readWholeFile(putAside) == input, "a file that cannot be read is put aside");
  return 0;
}
