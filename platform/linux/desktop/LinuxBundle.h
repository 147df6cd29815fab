// The extension's bundle on Linux: the directory that holds the program, and the translations
// beside it.
#pragma once

#include <clocale>
#include <string>

#include "platform/Bundle.h"

namespace platform {

class LinuxBundle final : public Bundle {
 public:
  // `localePath` is where the translations are, seen from the directory of the program. The
  // language is that of the environment now.
  explicit LinuxBundle(const std::string &localePath);
  ~LinuxBundle() override;
  LinuxBundle(const LinuxBundle &) = delete;
  LinuxBundle &operator=(const LinuxBundle &) = delete;

  FileURL bundleURL() const override { return bundleURL_; }
  std::string localizedStringForKey(const std::string &key) const override;

  // Always: menus have separators wherever the file manager can draw them.
  bool isSystemVersionAtLeast(int major, int minor, int patch) const override;

 private:
  const FileURL bundleURL_;
  // The user's language, for the look-ups alone: the process stays in the "C" locale, so that its
  // log does not change with the user. Null where the system does not know the user's locale.
  const locale_t userLocale_;
};

}  // namespace platform
