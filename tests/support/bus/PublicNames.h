// The names under which other programs find the extension on the bus. Written out here, not taken
// from the program, because others rely on them: a test that goes by these notices a change.
#pragma once

constexpr const char *busName = "com.morvane.v3.finder";
constexpr const char *objectPath = "/com/morvane/v3/finder";
constexpr const char *interfaceName = "com.morvane.v3.FinderSync1";
