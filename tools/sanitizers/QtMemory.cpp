// What the address sanitizer must not lay to our charge: the screen of Qt's platform without a
// display, which that never frees. The stacks show no more than the library that made it.

extern "C" const char *__lsan_default_suppressions() {  // NOLINT: the sanitizer's name
  return "leak:libqoffscreen.so\nleak:libQt5Gui.so\nleak:libQt5Core.so\n";
}

// Reports are failures, and this would be one.
extern "C" const char *__lsan_default_options() {  // NOLINT: the sanitizer's name
  return "print_suppressions=0";
}
