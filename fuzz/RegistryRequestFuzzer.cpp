// A RecoveryRequest.plist that is there already, to which the extension adds.
#include "fuzz/support/Input.h"
#include "fuzz/support/Promise.h"
#include "fuzz/support/RegistryInMemory.h"
#include "platform/linux/values/PropertyListCoding.h"

using platform::Array;
using platform::Dictionary;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
  const std::string_view input = textOfInput(bytes, size);
  static const std::string manifest = *platform::xmlPropertyList(Dictionary{
      {"generation", 7},
      {"entries",
       Array{Dictionary{{"wcID", "lost"}, {"bookmark", bookmarkOfPath("/gone", false)}}}}});

  RegistryInMemory memory({});
  memory.files.contents[RegistryInMemory::manifestPath] = manifest;
  memory.files.contents[RegistryInMemory::requestPath] = input;
  memory.registry.reloadManifest();
  const std::string &file = memory.files.contents[RegistryInMemory::requestPath];

  const auto earlier = platform::dictionaryFromPropertyList(input);
  Dictionary expected = earlier ? *earlier : Dictionary();
  expected.insert_or_assign("lost", 7);
  if (const std::optional<std::string> xml = platform::xmlPropertyList(expected)) {
    mustHold(file == *xml, "a request keeps what it held, and gets what is new");
  } else {
    mustHold(file == input, "a request that cannot be written again stays as it is");
  }
  return 0;
}
