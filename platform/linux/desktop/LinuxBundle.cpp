#include "platform/linux/desktop/LinuxBundle.h"

#include <filesystem>
#include <libintl.h>

namespace platform {

namespace {

constexpr const char *textDomain = "halvern-finder-sync";

FileURL directoryOfThisProgram() {
  std::error_code error;
  const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
  // Without the answer there are neither translations nor an application around the program.
  return FileURL::fromPath(error ? "/" : program.parent_path().native(), /*isDirectory=*/true);
}

// Only where both are known do messages come with the characters of the user's locale; they are
// told to come as UTF-8 anyway.
locale_t localeOfUser() {
  const locale_t locale = newlocale(LC_CTYPE_MASK | LC_MESSAGES_MASK, "", nullptr);
  return locale != nullptr ? locale : newlocale(LC_MESSAGES_MASK, "", nullptr);
}

// Lets this thread speak the language while it lives.
class LocaleScope {
 public:
  explicit LocaleScope(locale_t locale) : previous_(uselocale(locale)) {}
  ~LocaleScope() { uselocale(previous_); }
  LocaleScope(const LocaleScope &) = delete;
  LocaleScope &operator=(const LocaleScope &) = delete;

 private:
  const locale_t previous_;
};

}  // namespace

LinuxBundle::LinuxBundle(const std::string &localePath)
    : bundleURL_(directoryOfThisProgram()), userLocale_(localeOfUser()) {
  const std::filesystem::path directory =
      (std::filesystem::path(bundleURL_.path()) / localePath).lexically_normal();
  bindtextdomain(textDomain, directory.c_str());
  bind_textdomain_codeset(textDomain, "UTF-8");
}

LinuxBundle::~LinuxBundle() {
  if (userLocale_ != nullptr) {
    freelocale(userLocale_);
  }
}

std::string LinuxBundle::localizedStringForKey(const std::string &key) const {
  if (userLocale_ == nullptr || key.empty()) {
    return key;  // the translation of "" is the table's own description
  }
  const LocaleScope scope(userLocale_);
  return dgettext(textDomain, key.c_str());
}

bool LinuxBundle::isSystemVersionAtLeast(int /*major*/, int /*minor*/, int /*patch*/) const {
  return true;
}

}  // namespace platform
