// A menu as the bus carries it.
#pragma once

#include <optional>

#include "platform/Menu.h"
#include "platform/linux/GLibHandles.h"

// A floating value of type a(sa(sss)): each top item with its title and the entries of its submenu.
GVariant *menuVariant(const std::optional<platform::Menu> &menu);
