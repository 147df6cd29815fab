#include "bench/Machine.h"

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/utsname.h>
#include <thread>
#include <unistd.h>

#include "platform/linux/GLibHandles.h"

std::string machineText() {
  utsname system{};
  uname(&system);
  const platform::Handle<GDateTime, g_date_time_unref> now(g_date_time_new_now_utc());
  const platform::StringHandle date(g_date_time_format(now.get(), "%F"));
  std::string model = "unknown processor";
  std::ifstream processors("/proc/cpuinfo");
  for (std::string line; std::getline(processors, line);) {
    if (line.starts_with("model name")) {
      model = line.substr(line.find(':') + 2);
      break;
    }
  }
  const char *commit = std::getenv("HALVERN_COMMIT");
  std::ostringstream text;
  text << date.get() << ", commit " << (commit == nullptr ? "unknown" : commit) << "; "
       << std::thread::hardware_concurrency() << " × " << model << ", Linux " << system.release;
  return text.str();
}

std::optional<std::string> temporaryDirectoryInMemory() {
  constexpr const char *path = "/dev/shm";
  if (access(path, W_OK) == 0) {
    return path;
  }
  const char *usual = std::getenv("TMPDIR");
  return usual == nullptr ? std::nullopt : std::optional<std::string>(usual);
}

std::string fileSystemOf(const std::string &path) {
  struct stat status {};
  stat(path.c_str(), &status);
  const std::string device =
      std::to_string(major(status.st_dev)) + ":" + std::to_string(minor(status.st_dev));
  // Each line: two numbers, the device, fields up to a "-", the type of the file system.
  std::ifstream mounts("/proc/self/mountinfo");
  for (std::string line; std::getline(mounts, line);) {
    std::istringstream fields(line);
    std::string field;
    fields >> field >> field >> field;
    const bool isIt = field == device;
    while (isIt && fields >> field) {
      if (field == "-" && fields >> field) {
        return field;
      }
    }
  }
  return "unknown";
}
