#include "companion/conversation/DialogProgram.h"

#include <cerrno>
#include <string_view>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>

#include "companion/conversation/ItemList.h"
#include "companion/conversation/KeptMessage.h"
#include "companion/conversation/Markup.h"
#include "companion/conversation/MessageText.h"
#include "platform/linux/FileDescriptor.h"
#include "platform/linux/GLibHandles.h"

namespace companion {

using platform::ErrorHandle;
using platform::ErrorOut;
using platform::Handle;
using platform::ObjectHandle;
using platform::Result;
using platform::StringHandle;

namespace {

constexpr std::size_t mostItems = 15;  // so that the buttons stay on a small screen

bool isSet(const char *variable) {
  const char *value = g_getenv(variable);
  return value != nullptr && *value != '\0';
}

// The variable is a list of names, separated by colons.
bool isDesktop(std::string_view name) {
  const char *desktops = g_getenv("XDG_CURRENT_DESKTOP");
  const std::string list = ":" + std::string(desktops == nullptr ? "" : desktops) + ":";
  return list.find(":" + std::string(name) + ":") != std::string::npos;
}

struct Answer {
  int status;
  std::string output;
};

// A file without a name that holds the text: a program may read all of it or nothing.
platform::FileDescriptor fileHolding(const std::string &text) {
  platform::FileDescriptor file(memfd_create("halvern", MFD_CLOEXEC));
  if (file >= 0 && (write(file, text.data(), text.size()) != static_cast<ssize_t>(text.size()) ||
                    lseek(file, 0, SEEK_SET) != 0)) {
    return platform::FileDescriptor(-1);
  }
  return file;
}

// Runs the program with that input to its end.
Result<Answer> run(const std::vector<std::string> &arguments, const std::string &input) {
  const auto failure = [&arguments](const std::string &reason) {
    return Result<Answer>::failure("cannot ask: " + arguments.front() + ": " + reason);
  };
  std::vector<const char *> argv;
  argv.reserve(arguments.size() + 1);
  for (const std::string &argument : arguments) {
    argv.push_back(argument.c_str());
  }
  argv.push_back(nullptr);

  platform::FileDescriptor inputFile = fileHolding(input);
  if (inputFile < 0) {
    return failure(g_strerror(errno));
  }
  const ObjectHandle<GSubprocessLauncher> launcher(
      g_subprocess_launcher_new(G_SUBPROCESS_FLAGS_STDOUT_PIPE));
  g_subprocess_launcher_take_stdin_fd(launcher.get(), inputFile.release());
  ErrorHandle error;
  const ObjectHandle<GSubprocess> process(
      g_subprocess_launcher_spawnv(launcher.get(), argv.data(), ErrorOut(error)));
  if (process == nullptr) {
    return failure(error->message);
  }
  GBytes *outputOut = nullptr;
  const bool isDone = g_subprocess_communicate(process.get(), nullptr, nullptr, &outputOut, nullptr,
                                               ErrorOut(error)) != FALSE;
  const Handle<GBytes, g_bytes_unref> output(outputOut);
  if (!isDone) {
    return failure(error->message);
  }
  if (g_subprocess_get_if_exited(process.get()) == FALSE) {
    return failure("it was ended by signal " +
                   std::to_string(g_subprocess_get_term_sig(process.get())));
  }
  // What they say when they are closed in one way or another; higher ones are trouble.
  constexpr int highestAnswer = 2;
  const int status = g_subprocess_get_exit_status(process.get());
  if (status > highestAnswer) {
    return failure("it ended with status " + std::to_string(status));
  }
  gsize length = 0;
  const auto *bytes = static_cast<const char *>(g_bytes_get_data(output.get(), &length));
  return Answer{status, bytes == nullptr ? "" : std::string(bytes, length)};
}

// The lines as one text of markup, in the form that each program takes.
std::string zenityText(const std::vector<std::string> &lines) {
  std::string text;
  for (const std::string &line : lines) {
    text += (text.empty() ? "" : "\n") + dialogMarkup(line);
  }
  return text;
}

// Its first tag says that it is markup, which kdialog guesses otherwise.
std::string kdialogText(const std::vector<std::string> &lines) {
  std::string text;
  for (const std::string &line : lines) {
    text += (text.empty() ? "" : "<br/>") + dialogMarkup(line);
  }
  return "<qt>" + text + "</qt>";
}

std::vector<std::string> withHeading(const std::string &heading,
                                     const std::vector<std::string> &items) {
  std::vector<std::string> lines = {heading, ""};
  const std::vector<std::string> shown = shortened(items, mostItems);
  lines.insert(lines.end(), shown.begin(), shown.end());
  return lines;
}

}  // namespace

bool hasDisplay() {
  return isSet("DISPLAY") || isSet("WAYLAND_DISPLAY");
}

Result<DialogProgram> DialogProgram::find() {
  if (!hasDisplay()) {
    return Result<DialogProgram>::failure("cannot ask: there is neither a terminal nor a display");
  }
  std::vector<std::pair<const char *, Kind>> programs = {{"zenity", Kind::zenity},
                                                         {"kdialog", Kind::kdialog}};
  if (isDesktop("KDE")) {
    std::swap(programs.front(), programs.back());
  }
  for (const auto &[name, kind] : programs) {
    if (const StringHandle path(g_find_program_in_path(name)); path != nullptr) {
      return DialogProgram(kind, path.get());
    }
  }
  return Result<DialogProgram>::failure(
      "cannot ask: there is no terminal, and neither zenity nor kdialog is installed");
}

Result<bool> DialogProgram::confirm(const std::string &question, const std::string &button,
                                    const std::vector<std::string> &items) const {
  const std::vector<std::string> lines = withHeading(question, items);
  const Result<Answer> answer =
      kind_ == Kind::zenity ? run({path_, "--question", "--title=Halvern",
                                   "--text=" + zenityText(lines), "--ok-label=" + button,
                                   "--cancel-label=Cancel", "--default-cancel", "--width=500"},
                                  "")
                            : run({path_, "--title", "Halvern", "--warningcontinuecancel",
                                   kdialogText(lines), "--continue-label", button},
                                  "");
  if (!answer) {
    return Result<bool>::failure(answer.reason());
  }
  return answer->status == 0;
}

Result<std::optional<std::string>> DialogProgram::askForMessage(
    const std::vector<std::string> &items) const {
  const Result<Answer> answer =
      kind_ == Kind::zenity
          ? run({path_, "--text-info", "--editable", "--title=Halvern: commit message",
                 "--ok-label=Commit", "--cancel-label=Cancel", "--width=700", "--height=450"},
                messageTemplate(items))
          : run({path_, "--title", "Halvern: commit message", "--textinputbox",
                 kdialogText(withHeading("Message for the commit of", items)), "", "700", "450"},
                "");
  if (!answer) {
    return Result<std::optional<std::string>>::failure(answer.reason());
  }
  if (answer->status != 0) {
    return std::optional<std::string>();
  }
  return messageOrKeptText(answer->output);
}

void DialogProgram::showError(const std::string &headline,
                              const std::vector<std::string> &lines) const {
  const std::vector<std::string> all = withHeading(headline, lines);
  // The lines are on standard error already: a window that cannot be shown loses nothing.
  if (kind_ == Kind::zenity) {
    run({path_, "--error", "--title=Halvern", "--text=" + zenityText(all), "--width=500"}, "");
  } else {
    run({path_, "--title", "Halvern", "--error", kdialogText(all)}, "");
  }
}

}  // namespace companion
