#include "tests/support/Command.h"

#include <stdexcept>

#include "platform/linux/GLibHandles.h"

using platform::ErrorHandle;
using platform::ErrorOut;
using platform::Handle;
using platform::ObjectHandle;

namespace {

std::string textOfBytes(GBytes *bytes) {
  if (bytes == nullptr) {
    return {};
  }
  gsize length = 0;
  const auto *data = static_cast<const char *>(g_bytes_get_data(bytes, &length));
  return {data, length};
}

std::string joined(const std::vector<std::string> &arguments) {
  std::string text;
  for (const std::string &argument : arguments) {
    text += argument + " ";
  }
  return text;
}

}  // namespace

CommandResult runCommand(const std::vector<std::string> &arguments, const CommandOptions &options) {
  const ObjectHandle<GSubprocessLauncher> launcher(
      g_subprocess_launcher_new(static_cast<GSubprocessFlags>(G_SUBPROCESS_FLAGS_STDOUT_PIPE |
                                                              G_SUBPROCESS_FLAGS_STDERR_PIPE)));
  for (const auto &[name, value] : options.environment) {
    g_subprocess_launcher_setenv(launcher.get(), name.c_str(), value.c_str(), TRUE);
  }
  for (const std::string &name : options.unset) {
    g_subprocess_launcher_unsetenv(launcher.get(), name.c_str());
  }
  if (!options.directory.empty()) {
    g_subprocess_launcher_set_cwd(launcher.get(), options.directory.c_str());
  }
  std::vector<const char *> argv;
  argv.reserve(arguments.size() + 1);
  for (const std::string &argument : arguments) {
    argv.push_back(argument.c_str());
  }
  argv.push_back(nullptr);

  ErrorHandle error;
  const ObjectHandle<GSubprocess> process(
      g_subprocess_launcher_spawnv(launcher.get(), argv.data(), ErrorOut(error)));
  if (process == nullptr) {
    throw std::runtime_error(joined(arguments) + ": " + error->message);
  }
  GBytes *outputOut = nullptr;
  GBytes *errorsOut = nullptr;
  if (g_subprocess_communicate(process.get(), nullptr, nullptr, &outputOut, &errorsOut,
                               ErrorOut(error)) == FALSE) {
    throw std::runtime_error(joined(arguments) + ": " + error->message);
  }
  const Handle<GBytes, g_bytes_unref> output(outputOut);
  const Handle<GBytes, g_bytes_unref> errors(errorsOut);
  const int status = g_subprocess_get_if_exited(process.get()) != FALSE
                         ? g_subprocess_get_exit_status(process.get())
                         : 128 + g_subprocess_get_term_sig(process.get());
  return {status, textOfBytes(output.get()), textOfBytes(errors.get())};
}

std::string runSuccessfully(const std::vector<std::string> &arguments,
                            const CommandOptions &options) {
  CommandResult result = runCommand(arguments, options);
  if (result.status != 0) {
    throw std::runtime_error(joined(arguments) + "exited with " + std::to_string(result.status) +
                             ": " + result.output + result.errors);
  }
  return std::move(result.output);
}
