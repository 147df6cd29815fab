#include "companion/conversation/DialogProgram.h"

#include <cerrno>
#include <cstdio>
#include <string_view>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>

#include "companion/PathText.h"
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
  bool isYes;
  std::string output;
  std::string trouble;  // why it is no answer; empty if it is one
};

// Whether the program says that it could open no window. It then ends as if its window had been
// closed, and its toolkit's other words on standard error, of which there are some in every run, do
// not matter. The words may be translated, but they name the display.
bool isWithoutDisplay(std::string_view errors) {
  const StringHandle folded(g_ascii_strdown(errors.data(), static_cast<gssize>(errors.size())));
  if (std::string_view(folded.get()).find("display") != std::string_view::npos) {
    return true;
  }
  const char *display = g_getenv("DISPLAY");
  return display != nullptr && *display != '\0' && oneLine(errors).ends_with(display);
}

std::string textOf(const Handle<GBytes, g_bytes_unref> &bytes) {
  gsize length = 0;
  const auto *data = static_cast<const char *>(g_bytes_get_data(bytes.get(), &length));
  return data == nullptr ? "" : std::string(data, length);
}

// Why the program's end is not an answer of the user.
std::string troubleOf(GSubprocess *process, const std::string &output, const std::string &errors) {
  if (g_subprocess_get_if_exited(process) == FALSE) {
    return "it was ended by signal " + std::to_string(g_subprocess_get_term_sig(process));
  }
  // What they say when they are closed in one way or another; higher ones are trouble.
  constexpr int highestAnswer = 2;
  const int status = g_subprocess_get_exit_status(process);
  if (status > highestAnswer) {
    return "it ended with status " + std::to_string(status);
  }
  return status == 1 && output.empty() && isWithoutDisplay(errors) ? oneLine(errors) : "";
}

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
      g_subprocess_launcher_new(static_cast<GSubprocessFlags>(G_SUBPROCESS_FLAGS_STDOUT_PIPE |  //
                                                              G_SUBPROCESS_FLAGS_STDERR_PIPE)));
  g_subprocess_launcher_take_stdin_fd(launcher.get(), inputFile.release());
  ErrorHandle error;
  const ObjectHandle<GSubprocess> process(
      g_subprocess_launcher_spawnv(launcher.get(), argv.data(), ErrorOut(error)));
  if (process == nullptr) {
    return failure(error->message);
  }
  GBytes *outputOut = nullptr;
  GBytes *errorsOut = nullptr;
  const bool isDone = g_subprocess_communicate(process.get(), nullptr, nullptr, &outputOut,
                                               &errorsOut, ErrorOut(error)) != FALSE;
  const Handle<GBytes, g_bytes_unref> output(outputOut);
  const Handle<GBytes, g_bytes_unref> errors(errorsOut);
  if (!isDone) {
    return failure(error->message);
  }
  Answer answer{g_subprocess_get_successful(process.get()) != FALSE, textOf(output), ""};
  const std::string words = textOf(errors);
  const std::string trouble = troubleOf(process.get(), answer.output, words);
  if (!trouble.empty()) {
    answer.trouble = failure(trouble).reason();
  }
  std::fwrite(words.data(), 1, words.size(), stderr);  // for the log of whoever started this one
  return answer;
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
  if (!answer || !answer->trouble.empty()) {
    return Result<bool>::failure(answer ? answer->trouble : answer.reason());
  }
  return answer->isYes;
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
  // The box of kdialog is empty at first.
  const std::vector<std::string> shown = kind_ == Kind::zenity ? items : std::vector<std::string>();
  if (!answer->trouble.empty()) {
    return Result<std::optional<std::string>>::failure(answer->trouble +
                                                       noteOfRest(answer->output, shown));
  }
  if (!answer->isYes) {
    return std::optional<std::string>();
  }
  return messageOrKeptText(answer->output, shown);
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
