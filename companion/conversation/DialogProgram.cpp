#include "companion/conversation/DialogProgram.h"

#include <string_view>
#include <utility>

#include <glib.h>

#include "companion/conversation/ItemList.h"
#include "companion/conversation/KeptMessage.h"
#include "companion/conversation/Markup.h"
#include "companion/conversation/MessageText.h"
#include "companion/programs/FirstProgram.h"
#include "companion/programs/ProgramEnd.h"
#include "companion/programs/ProgramWithInput.h"

namespace companion {

using platform::Result;

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

// Has the program ask and waits until its window is closed.
Result<ProgramAnswer> run(const std::vector<std::string> &arguments, const std::string &input) {
  // What they say when they are closed in one way or another; higher ones are trouble.
  constexpr int highestAnswer = 2;
  Result<ProgramAnswer> answer = runWithInput(arguments, input);
  if (answer && answer->status <= highestAnswer) {
    return answer;
  }
  return Result<ProgramAnswer>::failure(
      "cannot ask: " + arguments.front() + ": " +
      (answer ? endedWithStatus(answer->status) : answer.reason()));
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
  const Result<ProgramAnswer> answer =
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
  const Result<ProgramAnswer> answer =
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
