// What the address sanitizer must not take for a leak: the cache that the Subversion library keeps
// for repositories on this machine. It is held by memory that APR maps by itself, in which the
// sanitizer does not look, and it serves until the process ends.

extern "C" const char *__lsan_default_suppressions() {  // NOLINT: the sanitizer's name
  return "leak:apr_allocator_create\n";
}

// Standard error belongs to the program.
extern "C" const char *__lsan_default_options() {  // NOLINT: the sanitizer's name
  return "print_suppressions=0";
}
