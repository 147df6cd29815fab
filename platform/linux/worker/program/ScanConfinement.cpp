#include "platform/linux/worker/program/ScanConfinement.h"

#include <filesystem>

#include <svn_config.h>

#include "platform/linux/confinement/FileView.h"
#include "scanner/SVNError.h"
#include "scanner/SVNPool.h"

namespace {

void allowConfiguration(const std::optional<std::string> &configDir, platform::FileView &view) {
  if (configDir) {
    view.allowReading(*configDir);
    return;
  }
  const SVNPool pool;
  const char *path = nullptr;
  const SVNError error(svn_config_get_user_config_path(&path, nullptr, nullptr, pool));
  if (error == nullptr && path != nullptr) {
    view.allowReading(path);
  }
  view.allowReading("/etc/subversion");
}

}  // namespace

void confineScan(const ScanRequest &request, const std::string &database) {
  platform::FileView view;
  view.allowReading(request.targetPath);
  view.allowReadingAndWriting(std::filesystem::path(database).parent_path());
  allowConfiguration(request.configDir, view);
  view.allowReading("/sys/devices/system/cpu/online");  // how many threads are of use
  view.enforce();
}
