#include "fuzz/support/FilesInMemory.h"

#include "platform/linux/values/PropertyListCoding.h"

using platform::Dictionary;
using platform::FileURL;
using platform::Outcome;
using platform::Result;

Result<Dictionary> FilesInMemory::dictionaryWithContentsOfURL(const FileURL &url) {
  const auto found = contents.find(url.path());
  return found == contents.end() ? Result<Dictionary>::failure("no such file")
                                 : platform::dictionaryFromPropertyList(found->second);
}

Outcome FilesInMemory::writeDictionary(const Dictionary &dictionary, const FileURL &url) {
  std::optional<std::string> xml = platform::xmlPropertyList(dictionary);
  if (!xml) {
    return Outcome::failure("no property list");
  }
  contents.insert_or_assign(url.path(), *std::move(xml));
  return platform::Done();
}
