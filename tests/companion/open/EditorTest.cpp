// Which editor is the user's.
#include <filesystem>
#include <gtest/gtest.h>

#include "companion/conversation/Editor.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/files/TemporaryDirectory.h"

namespace {

using Strings = std::vector<std::string>;

class Editor : public testing::Test {
 protected:
  std::string install(const std::string &name) const {
    std::string path = directory / name;
    writeFile(path, "#!/bin/sh\n");
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    return path;
  }

  static Strings command() {
    const auto command = companion::editorCommand("/tmp/a file");
    return command ? *command : Strings{command.reason()};
  }

  const TemporaryDirectory directory;
  const EnvironmentVariable noSubversionEditor{"SVN_EDITOR", std::nullopt};
  const EnvironmentVariable noVisual{"VISUAL", std::nullopt};
  const EnvironmentVariable noEditor{"EDITOR", std::nullopt};
  const EnvironmentVariable programs{"PATH", directory.path()};
};

}  // namespace

TEST_F(Editor, IsTheOneThatTheEnvironmentNamesFirst) {
  const EnvironmentVariable editor("EDITOR", "third");
  EXPECT_EQ(command(),
            (Strings{"/bin/sh", "-c", "trap : INT QUIT; third \"$@\"", "third", "/tmp/a file"}));
  const EnvironmentVariable visual("VISUAL", "second -x 'y z'");
  EXPECT_EQ(command(), (Strings{"/bin/sh", "-c", "trap : INT QUIT; second -x 'y z' \"$@\"",
                                "second -x 'y z'", "/tmp/a file"}));
  const EnvironmentVariable subversion("SVN_EDITOR", "first");
  EXPECT_EQ(command()[3], "first");
}

TEST_F(Editor, IsNotAVariableThatIsEmpty) {
  const EnvironmentVariable subversion("SVN_EDITOR", "");
  const EnvironmentVariable visual("VISUAL", "second");
  EXPECT_EQ(command()[3], "second");
}

TEST_F(Editor, IsOneOfTheUsualOnesOtherwise) {
  EXPECT_EQ(command(), Strings{"there is no editor for the message; EDITOR may name one"});
  for (const std::string name : {"vi", "nano", "sensible-editor", "editor"}) {
    const std::string program = install(name);
    EXPECT_EQ(command(), (Strings{program, "/tmp/a file"}));
  }
}
