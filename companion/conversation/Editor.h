// The user's editor for texts.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "companion/conversation/EditingPlace.h"
#include "platform/Result.h"

namespace companion {

// What SVN_EDITOR, VISUAL or EDITOR says, the first of them that says anything, and may hold
// arguments of its own; else the first of the usual ones that there is. The editor-cmd of
// Subversion's configuration does not count. Fails where there is none.
platform::Result<std::vector<std::string>> editorCommand(const std::string &file);

// Has the user write a commit message in the editor, on the terminal, and blocks until the editor
// ends. None if nothing was written.
// What was written is not lost where this fails: the reason then says where it is kept. Nor is it
// if this program is ended, as long as `place` lives, in which it was written.
platform::Result<std::optional<std::string>> messageFromEditor(
    const std::vector<std::string> &items, std::optional<EditingPlace> &place);

}  // namespace companion
