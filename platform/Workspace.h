// Other applications: finding them and handing them URLs. From the main thread.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/FileURL.h"

namespace platform {

class Workspace {
 public:
  virtual ~Workspace() = default;

  // The installed application with that bundle identifier; none if there is none.
  virtual std::optional<FileURL> urlForApplicationWithBundleIdentifier(
      const std::string &bundleIdentifier) = 0;

  // Has the application open the URLs, launching it if need be, and brings it to the front if
  // `activates`. Returns at once; the outcome is not reported.
  virtual void openURLs(const std::vector<std::string> &urls, const FileURL &applicationURL,
                        bool activates) = 0;
};

}  // namespace platform
