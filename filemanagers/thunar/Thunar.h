// Thunar's extension interface, which does not say by itself that it is written in C.
#pragma once

#include <gtk/gtk.h>

#include <gio/gio.h>

extern "C" {
#include <thunarx/thunarx.h>
}
