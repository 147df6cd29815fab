// The badges of a working copy as the rules have them, worked out from what `svn status --xml`
// says. Shares no code with the product, and is written for plainness, not for speed.
#pragma once

#include <map>
#include <set>
#include <string>

struct OracleBadges {
  std::map<std::string, std::string> badges;  // absolute path to badge
  std::set<std::string> kinds;  // what the status showed, such as "item deleted" or "locked"
};

// `xml` is the output of `svn status --xml` for `root`, an absolute path; throws if it is no XML.
OracleBadges badgesByStatusCommand(const std::string &root, const std::string &xml);
