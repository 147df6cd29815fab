#include "companion/programs/ProgramWithInput.h"

#include <cerrno>
#include <sys/mman.h>
#include <unistd.h>

#include "companion/programs/ProgramArguments.h"
#include "companion/programs/ProgramEnd.h"
#include "platform/linux/GLibHandles.h"
#include "platform/linux/files/FileDescriptor.h"

namespace companion {

using platform::ErrorHandle;
using platform::ErrorOut;
using platform::FileDescriptor;
using platform::Handle;
using platform::ObjectHandle;
using platform::Result;

namespace {

// A file without a name that holds the text: there is no pipe to fill that nobody empties.
FileDescriptor fileHolding(const std::string &text) {
  FileDescriptor file(memfd_create("halvern", MFD_CLOEXEC));
  if (file >= 0 && (write(file, text.data(), text.size()) != static_cast<ssize_t>(text.size()) ||
                    lseek(file, 0, SEEK_SET) != 0)) {
    return FileDescriptor(-1);
  }
  return file;
}

using BytesHandle = Handle<GBytes, g_bytes_unref>;

std::string textOf(const BytesHandle &bytes) {
  gsize length = 0;
  const auto *data = static_cast<const char *>(g_bytes_get_data(bytes.get(), &length));
  return data == nullptr ? "" : std::string(data, length);
}

Result<ProgramAnswer> failure(const std::string &reason) {
  return Result<ProgramAnswer>::failure(reason);
}

}  // namespace

Result<ProgramAnswer> runWithInput(const std::vector<std::string> &arguments,
                                   const std::string &input) {
  FileDescriptor inputFile = fileHolding(input);
  if (inputFile < 0) {
    return failure(g_strerror(errno));
  }
  const ObjectHandle<GSubprocessLauncher> launcher(
      g_subprocess_launcher_new(static_cast<GSubprocessFlags>(
          static_cast<unsigned>(G_SUBPROCESS_FLAGS_STDOUT_PIPE) | G_SUBPROCESS_FLAGS_STDERR_PIPE)));
  g_subprocess_launcher_take_stdin_fd(launcher.get(), inputFile.release());
  ErrorHandle error;
  const ObjectHandle<GSubprocess> process(g_subprocess_launcher_spawnv(
      launcher.get(), argumentPointers(arguments).data(), ErrorOut(error)));
  if (process == nullptr) {
    return failure(error->message);
  }
  GBytes *outputOut = nullptr;
  GBytes *errorsOut = nullptr;
  const bool isDone = g_subprocess_communicate(process.get(), nullptr, nullptr, &outputOut,
                                               &errorsOut, ErrorOut(error)) != FALSE;
  const BytesHandle output(outputOut);
  const BytesHandle errors(errorsOut);
  if (!isDone) {
    return failure(error->message);
  }
  ProgramAnswer answer;
  if (g_subprocess_get_if_exited(process.get()) != FALSE) {
    answer.status = g_subprocess_get_exit_status(process.get());
  } else {
    answer.signal = g_subprocess_get_term_sig(process.get());
  }
  answer.output = textOf(output);
  answer.errors = textOf(errors);
  return answer;
}

}  // namespace companion
