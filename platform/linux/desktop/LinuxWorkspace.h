// Other applications on Linux: desktop entries, found and launched by the spawner. On the main
// thread.
#pragma once

#include <functional>
#include <string>

#include "platform/Workspace.h"
#include "platform/linux/spawner/Spawner.h"

namespace platform {

class LinuxWorkspace final : public Workspace {
 public:
  // The token with which the desktop lets an application come forward, as it came with the request
  // that is dealt with at the moment; empty for none.
  using ActivationToken = std::function<std::string()>;

  // `spawner` must outlive this.
  LinuxWorkspace(const Spawner &spawner, ActivationToken activationToken);

  // The desktop entry of that name. None also if it takes longer than 5 s to find out.
  std::optional<FileURL> urlForApplicationWithBundleIdentifier(
      const std::string &bundleIdentifier) override;

  // An application URL that is no desktop entry stands for the one of the containing application.
  // What is launched belongs to the session and not to this process: neither the end of this
  // process nor a signal to its group or its unit ends it, and nothing that restricts this process
  // restricts it. Waits until it is on its way, half a
  // second at the most.
  void openURLs(const std::vector<std::string> &urls, const FileURL &applicationURL,
                bool activates) override;

 private:
  const Spawner &spawner_;
  const ActivationToken activationToken_;
};

}  // namespace platform
