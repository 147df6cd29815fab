// A menu as the bus carries it.
#pragma once

#include "platform/Menu.h"
#include "platform/linux/GLibHandles.h"

namespace filemanagers {

// `menu` is of the type a(sa(sss)).
platform::Menu menuOfVariant(GVariant *menu);

}  // namespace filemanagers
