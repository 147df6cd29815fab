#include "companion/conversation/DialogProgram.h"

#include <cstdio>
#include <string_view>
#include <utility>

#include "companion/PathText.h"
#include "companion/conversation/ItemList.h"
#include "companion/conversation/KeptMessage.h"
#include "companion/conversation/Markup.h"
#include "companion/conversation/MessageText.h"
#include "companion/programs/FirstProgram.h"
#include "companion/programs/ProgramEnd.h"
#include "companion/programs/ProgramWithInput.h"
#include "platform/linux/GLibHandles.h"

namespace companion {

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

// Why the program's end is not an answer of the user; empty if it is one.
std::string troubleOf(const ProgramAnswer &answer) {
  if (!answer.status) {
    return endedBySignal(answer.signal);
  }
  // What they say when they are closed in one way or another; higher ones are trouble.
  constexpr int highestAnswer = 2;
  if (*answer.status > highestAnswer) {
    return endedWithStatus(*answer.status);
  }
  const bool mayBeClosed = *answer.status != 1 || !answer.output.empty();
  return mayBeClosed || !isWithoutDisplay(answer.errors) ? "" : oneLine(answer.errors);
}

// Has the program ask and waits until its window is closed.
Result<Answer> run(const std::vector<std::string> &arguments, const std::string &input) {
  const std::string beginning = "cannot ask: " + arguments.front() + ": ";
  Result<ProgramAnswer> answer = runWithInput(arguments, input);
  if (!answer) {
    return Result<Answer>::failure(beginning + answer.reason());
  }
  // For the log of whoever started this program.
  std::fwrite(answer->errors.data(), 1, answer->errors.size(), stderr);
  const std::string trouble = troubleOf(*answer);
  return Answer{answer->status == 0, std::move((*answer).output),
                trouble.empty() ? "" : beginning + trouble};
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
  std::vector<std::string> names = {"zenity", "kdialog"};
  if (isDesktop("KDE")) {
    std::swap(names.front(), names.back());
  }
  if (std::optional<FoundProgram> program = firstProgramOf(names)) {
    return DialogProgram(names[program->index] == "zenity" ? Kind::zenity : Kind::kdialog,
                         std::move(program->path));
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
