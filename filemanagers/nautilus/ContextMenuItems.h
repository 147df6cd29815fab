// The extension's menu as items of the file manager.
#pragma once

#include <glib.h>

#include "filemanagers/client/ExtensionLink.h"
#include "platform/Menu.h"

namespace filemanagers {

// A list of new items, as the file manager takes it over; null for no menu. An item that is
// activated has its action performed with that selection.
GList *makeMenuItems(const platform::Menu *menu, MenuSelection selection);

}  // namespace filemanagers
