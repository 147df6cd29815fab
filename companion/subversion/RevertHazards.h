// What a revert would destroy although it is no local change that a user can be asked about.
#pragma once

#include <string>
#include <vector>

#include "companion/subversion/ClientSession.h"
#include "companion/subversion/ItemStatus.h"

namespace companion {

// Why undoing these changes would take something from the disk that they do not name, with the
// cure; empty if it would not. The library puts what it brings back in the place of whatever is
// there, and takes a copied folder away with all that is in it.
std::string reasonAgainstRevert(const std::vector<ItemStatus> &changes, ClientSession &session);

}  // namespace companion
