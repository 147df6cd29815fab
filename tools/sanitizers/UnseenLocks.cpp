// What the thread sanitizer must not judge: libraries that it has not instrumented. It sees them
// call functions such as memcpy and does not see how they keep their threads apart, with atomics
// and with futexes of their own. What our code does before and after is judged all the same.
//
// The Apache Portable Runtime is not among them, although it is not instrumented either: it locks
// with functions of the C library, and has its memory straight from the system. Where the sanitizer
// does not see that, memory that one thread has given back and another one gets looks like shared
// memory.
//
// Each library has a line of its own, since a line may match one of them only.

extern "C" const char *__tsan_default_suppressions() {  // NOLINT: the sanitizer's name
  return "called_from_lib:libglib-2.0.so\n"
         "called_from_lib:libgio-2.0.so\n"
         "called_from_lib:libgobject-2.0.so\n"
         "called_from_lib:libaprutil-1.so\n"
         "called_from_lib:libsqlite3.so\n"
         "called_from_lib:libsvn_client-1.so\n"
         "called_from_lib:libsvn_subr-1.so\n"
         "called_from_lib:libsvn_wc-1.so\n";
}
