// The badge images as icons of the user's icon theme, where file managers find them by name.
//
// Blocking; for one thread. Files that hold the right bytes already are left alone. Where a file
// cannot be written there is none, and nobody is told: a badge without an icon is still a badge.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/Drawing.h"

std::string badgeIconName(std::string_view badgeIdentifier);

// What the path of every icon begins with, also while it is being written.
std::vector<std::string> badgeIconPathPrefixes();

// Writes the image's 16- and 32-pixel rasters, and the artwork that the badge's symbol is drawn
// from.
void writeBadgeIcon(const platform::Image &image, std::string_view badgeIdentifier);
