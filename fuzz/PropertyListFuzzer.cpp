// Property lists of either form. What is read and written again is the same.
#include "fuzz/support/Input.h"
#include "fuzz/support/Promise.h"
#include "platform/linux/values/PropertyListCoding.h"

using platform::Dictionary;
using platform::dictionaryFromPropertyList;
using platform::PropertyList;

namespace {

std::string_view textOfData(const platform::Data &data) {
  return {reinterpret_cast<const char *>(data.data()), data.size()};
}

// A text is written as XML exactly if it may be, and is read back as it was.
void tryText(std::string_view text) {
  const Dictionary dictionary{{"text", std::string(text)}};
  const std::optional<std::string> xml = platform::xmlPropertyList(dictionary);
  mustHold(xml.has_value() == platform::isPropertyListText(text),
           "a text can be written exactly if it is one of a property list");
  if (xml) {
    const auto again = dictionaryFromPropertyList(*xml);
    mustHold(again && *again == dictionary, "a text survives being written as XML");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
  const std::string_view input = textOfInput(bytes, size);
  tryText(input);

  const auto list = dictionaryFromPropertyList(input);
  if (!list) {
    mustHold(!list.reason().empty(), "a refusal has a reason");
    return 0;
  }
  // Dates and numbers may lose what the form does not hold; what one writing leaves, the next one
  // leaves, too.
  if (const std::optional<std::string> xml = platform::xmlPropertyList(*list)) {
    const auto again = dictionaryFromPropertyList(*xml);
    mustHold(static_cast<bool>(again), "what was written as XML can be read");
    mustHold(platform::xmlPropertyList(*again) == xml, "writing as XML again changes nothing");
  }
  const platform::Data binary = platform::binaryPropertyList(*list);
  const auto again = dictionaryFromPropertyList(textOfData(binary));
  mustHold(static_cast<bool>(again), "what was written as binary can be read");
  mustHold(platform::binaryPropertyList(*again) == binary,
           "writing as binary again changes nothing");
  return 0;
}
