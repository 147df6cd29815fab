// The desktop entry through which the desktop finds the program for the extension's URLs.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/files/TemporaryDirectory.h"
#include "tests/support/processes/Command.h"

using testing::HasSubstr;

TEST(DesktopEntry, IsValid) {
  const CommandResult result = runCommand({"desktop-file-validate", DESKTOP_ENTRY});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors, "");
}

TEST(DesktopEntry, HasTheProgramOpenTheExtensionsURLs) {
  const std::string entry = readFileForTest(DESKTOP_ENTRY);
  EXPECT_THAT(entry, HasSubstr("\nExec=\"" PROGRAM "\" open %u\n"));
  EXPECT_THAT(entry, HasSubstr("\nMimeType=x-scheme-handler/halvern;\n"));
}
