#include "platform/linux/values/LinuxPropertyListFiles.h"

#include "platform/linux/files/AtomicFile.h"
#include "platform/linux/values/PropertyListCoding.h"

namespace platform {

Result<Dictionary> LinuxPropertyListFiles::dictionaryWithContentsOfURL(const FileURL &url) {
  const Result<std::string> contents = readFile(url.path());
  if (!contents) {
    return Result<Dictionary>::failure(contents.reason());
  }
  return dictionaryFromPropertyList(*contents);
}

Outcome LinuxPropertyListFiles::writeDictionary(const Dictionary &dictionary, const FileURL &url) {
  const std::optional<std::string> xml = xmlPropertyList(dictionary);
  if (!xml) {
    return Outcome::failure("It holds a text or a date that a property list cannot hold");
  }
  return replaceFile(url.path(), *xml);
}

}  // namespace platform
