#include "platform/linux/LinuxPropertyListFiles.h"

#include "platform/linux/AtomicFile.h"
#include "platform/linux/PropertyListCoding.h"

namespace platform {

Result<Dictionary> LinuxPropertyListFiles::dictionaryWithContentsOfURL(const FileURL &url) {
  const Result<std::string> contents = readFile(url.path());
  if (!contents) {
    return Result<Dictionary>::failure(contents.reason());
  }
  return dictionaryFromPropertyList(*contents);
}

bool LinuxPropertyListFiles::writeDictionary(const Dictionary &dictionary, const FileURL &url) {
  const std::optional<std::string> xml = xmlPropertyList(dictionary);
  return xml && replaceFile(url.path(), *xml);
}

}  // namespace platform
