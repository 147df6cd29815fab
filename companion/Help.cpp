#include "companion/Help.h"

namespace companion {

namespace {

constexpr std::string_view programHelp = R"(Usage: halvern COMMAND [OPTION…] [PATH…]

Tells Halvern's file-manager extension which Subversion working copies there are,
shows the badges that it gives, and carries out the commands of its menu.

Commands:
  add PATH…        put working copies on the list
  remove PATH…     take them off the list
  list             print the list
  badges [PATH…]   print badges, as the file manager shows them
  watch [PATH…]    print badges when they change, until interrupted
  recover          renew access to the working copies that the extension cannot reach
  open URL         carry out a command of the file manager's context menu

Options:
  -h, --help       print this help; after a command, the help on that command
      --version    print the version

Exit status: 0 done, 1 failed, 2 wrong use.
)";

constexpr std::string_view addHelp = R"(Usage: halvern add PATH…

Puts the Subversion working copies that contain the PATHs on the list. From then on
the file manager shows badges in them. What cannot be added is reported; the others
are added all the same.
)";

constexpr std::string_view removeHelp = R"(Usage: halvern remove PATH…

Takes the working copies at the PATHs off the list. Nothing in them is changed, and
they need not exist any more.
)";

constexpr std::string_view listHelp = R"(Usage: halvern list

Prints the paths of the listed working copies, one on each line. Backslashes, tabs
and newlines in them are escaped as in C.
)";

constexpr std::string_view badgesHelp = R"(Usage: halvern badges [OPTION…] [PATH…]

Asks the running extension for the badges of the PATHs, as a file manager would, and
prints for each one a line: the badge or "-", a tab, the path. Backslashes, tabs and
newlines in paths are escaped as in C. A directory stands for itself alone. Without
a PATH, prints every item that has a badge in every listed working copy.

Options:
  -R, --recursive        print directories with all that is beneath them
      --tree             print a tree for people: of the items with a badge beneath the
                         PATHs or, with -R, of all items
      --color=WHEN       colour the tree: auto (on a terminal, unless NO_COLOR is set),
                         always or never
      --timeout=SECONDS  how long the extension may be silent before the program gives
                         up; 60 if not given
  -h, --help             print this help
)";

constexpr std::string_view watchHelp = R"(Usage: halvern watch [OPTION…] [PATH…]

Prints the badges of the PATHs, and of all that is beneath them, when they change: one
line each, as "halvern badges" prints them. Nothing is printed for the badges that are
there at the start. Without a PATH, watches every listed working copy. Runs until it is
interrupted or the reader of its output goes away. When the extension ends, starts it
again.

Options:
      --timeout=SECONDS  how long the extension may be silent when it is asked; 60 if not
                         given
  -h, --help             print this help
)";

constexpr std::string_view openHelp = R"(Usage: halvern open URL

Carries out a command of the file manager's context menu. The extension leaves it in a
file and has the desktop open a URL, halvern://finder-sync-command?id=UUID, with this
program. What has to be asked is asked in the terminal or, without one, in a window.
Without a terminal, a notification tells how it went.

Options:
      --in-terminal-window   opens no further window for asking, and waits for Enter at the
                             end; with this the program starts itself in a terminal window
  -h, --help                 print this help
)";

constexpr std::string_view recoverHelp = R"(Usage: halvern recover

Answers a request of the extension, which it makes when it cannot reach listed working
copies: renews the entries of those that can be reached again. Does so once.
)";

}  // namespace

std::string_view helpText(std::optional<Command> command) {
  if (!command) {
    return programHelp;
  }
  switch (*command) {
    case Command::add:
      return addHelp;
    case Command::remove:
      return removeHelp;
    case Command::list:
      return listHelp;
    case Command::badges:
      return badgesHelp;
    case Command::watch:
      return watchHelp;
    case Command::recover:
      return recoverHelp;
    case Command::open:
      return openHelp;
  }
  return programHelp;
}

}  // namespace companion
