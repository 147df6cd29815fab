#include "tests/support/processes/Command.h"

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

ObjectHandle<GSubprocess> startProcess(const std::vector<std::string> &arguments,
                                       const CommandOptions &options) {
  const ObjectHandle<GSubprocessLauncher> launcher = launcherFor(options);
  g_subprocess_launcher_set_flags(launcher.get(),
                                  static_cast<GSubprocessFlags>(G_SUBPROCESS_FLAGS_STDOUT_PIPE |
                                                                G_SUBPROCESS_FLAGS_STDERR_PIPE));
  return spawn(launcher.get(), arguments);
}

}  // namespace

ObjectHandle<GSubprocessLauncher> launcherFor(const CommandOptions &options) {
  ObjectHandle<GSubprocessLauncher> launcher(g_subprocess_launcher_new(G_SUBPROCESS_FLAGS_NONE));
  for (const auto &[name, value] : options.environment) {
    g_subprocess_launcher_setenv(launcher.get(), name.c_str(), value.c_str(), TRUE);
  }
  for (const std::string &name : options.unset) {
    g_subprocess_launcher_unsetenv(launcher.get(), name.c_str());
  }
  if (!options.directory.empty()) {
    g_subprocess_launcher_set_cwd(launcher.get(), options.directory.c_str());
  }
  return launcher;
}

ObjectHandle<GSubprocess> spawn(GSubprocessLauncher *launcher,
                                const std::vector<std::string> &arguments) {
  std::vector<const char *> argv;
  argv.reserve(arguments.size() + 1);
  for (const std::string &argument : arguments) {
    argv.push_back(argument.c_str());
  }
  argv.push_back(nullptr);

  ErrorHandle error;
  ObjectHandle<GSubprocess> process(
      g_subprocess_launcher_spawnv(launcher, argv.data(), ErrorOut(error)));
  if (process == nullptr) {
    throw std::runtime_error(joined(arguments) + ": " + error->message);
  }
  return process;
}

StartedCommand::StartedCommand(const std::vector<std::string> &arguments,
                               const CommandOptions &options)
    : process_(startProcess(arguments, options)), name_(joined(arguments)) {}

StartedCommand::~StartedCommand() {
  g_subprocess_force_exit(process_.get());
}

std::string StartedCommand::processIdentifier() const {
  const char *identifier = g_subprocess_get_identifier(process_.get());
  return identifier == nullptr ? "" : identifier;
}

void StartedCommand::sendSignal(int signal) const {
  g_subprocess_send_signal(process_.get(), signal);
}

CommandResult StartedCommand::waitForEnd() const {
  GBytes *outputOut = nullptr;
  GBytes *errorsOut = nullptr;
  ErrorHandle error;
  if (g_subprocess_communicate(process_.get(), nullptr, nullptr, &outputOut, &errorsOut,
                               ErrorOut(error)) == FALSE) {
    throw std::runtime_error(name_ + ": " + error->message);
  }
  const Handle<GBytes, g_bytes_unref> output(outputOut);
  const Handle<GBytes, g_bytes_unref> errors(errorsOut);
  const int status = g_subprocess_get_if_exited(process_.get()) != FALSE
                         ? g_subprocess_get_exit_status(process_.get())
                         : 128 + g_subprocess_get_term_sig(process_.get());
  return {status, textOfBytes(output.get()), textOfBytes(errors.get())};
}

CommandResult runCommand(const std::vector<std::string> &arguments, const CommandOptions &options) {
  return StartedCommand(arguments, options).waitForEnd();
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
