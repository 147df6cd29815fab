// What the registry is given in place of files: their bytes in memory, in the forms that they have
// on disk.
#pragma once

#include <map>
#include <string>

#include "platform/PropertyList.h"

class FilesInMemory final : public platform::PropertyListFiles {
 public:
  platform::Result<platform::Dictionary> dictionaryWithContentsOfURL(
      const platform::FileURL &url) override;
  platform::Outcome writeDictionary(const platform::Dictionary &dictionary,
                                    const platform::FileURL &url) override;

  std::map<std::string, std::string> contents;  // by path
};
