// Tells the thread sanitizer of GLib's locks and of the sources of its main loops, which it cannot
// see: GLib is not instrumented, and waits with futexes of its own and not by functions of the C
// library. Without this, what is handed to another thread under such a lock looks like a race.
//
// A program's functions come before those of libraries, so GIO and GObject call these, too; what
// GLib does inside itself does not come by here. All that is told is what the lock promises: what
// was done before it was given back has been done for whoever takes it next.
#include <atomic>
#include <cstdint>
#include <dlfcn.h>

extern "C" {
void __tsan_acquire(void *address);  // NOLINT: the sanitizer's names
void __tsan_release(void *address);  // NOLINT
}

namespace {

using Lock = void;  // of any kind

// The function that is hidden by the one of the same name below.
template <typename Function>
Function *inGLib(const char *name) {
  return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));  // NOLINT: how it is had
}

void lockWith(void (*function)(Lock *), Lock *lock) {
  function(lock);
  __tsan_acquire(lock);
}

int tryWith(int (*function)(Lock *), Lock *lock) {
  const int isLocked = function(lock);
  if (isLocked != 0) {
    __tsan_acquire(lock);
  }
  return isLocked;
}

void unlockWith(void (*function)(Lock *), Lock *lock) {
  __tsan_release(lock);
  function(lock);
}

// Readers wait for writers and not for each other: what they have done is told to writers alone, by
// another address within the lock.
Lock *toldByReaders(Lock *lock) {
  return static_cast<char *>(lock) + sizeof(void *);
}

// What a source calls, which asks for it as often as it calls. GIO hands work to its thread by
// that.
struct Callback {
  std::atomic<int> users = 1;
  void *function;
  void *data;
  void (*forget)(void *data);
};

struct CallbackFunctions {
  void (*keep)(void *callback);
  void (*release)(void *callback);
  void (*get)(void *callback, void *source, void **function, void **data);
};

// The source, by which it is had, passes from thread to thread under locks inside GLib.
void keepCallback(void *callback) {
  __tsan_acquire(callback);
  ++static_cast<Callback *>(callback)->users;
}

void releaseCallback(void *data) {
  __tsan_acquire(data);
  auto *callback = static_cast<Callback *>(data);
  if (--callback->users == 0) {
    if (callback->forget != nullptr) {
      callback->forget(callback->data);
    }
    delete callback;  // NOLINT: its users own it
  }
}

// What was done before the source was attached has been done for whoever runs it.
void getCallback(void *data, void *source, void **function, void **argument) {
  __tsan_acquire(source);
  const auto &callback = *static_cast<const Callback *>(data);
  *function = callback.function;
  *argument = callback.data;
}

constexpr CallbackFunctions callbackFunctions = {keepCallback, releaseCallback, getCallback};

}  // namespace

extern "C" {

void g_source_set_callback(void *source, void *callback, void *data, void (*forget)(void *)) {
  static auto *const function =
      inGLib<void(void *, void *, const CallbackFunctions *)>("g_source_set_callback_indirect");
  auto *const counted = new Callback{1, callback, data, forget};  // NOLINT: its users own it
  __tsan_release(counted);
  function(source, counted, &callbackFunctions);
}

unsigned g_source_attach(void *source, void *context) {
  static auto *const function = inGLib<unsigned(void *, void *)>("g_source_attach");
  __tsan_release(source);
  return function(source, context);
}

void g_mutex_lock(Lock *lock) {
  static auto *const function = inGLib<void(Lock *)>("g_mutex_lock");
  lockWith(function, lock);
}

int g_mutex_trylock(Lock *lock) {
  static auto *const function = inGLib<int(Lock *)>("g_mutex_trylock");
  return tryWith(function, lock);
}

void g_mutex_unlock(Lock *lock) {
  static auto *const function = inGLib<void(Lock *)>("g_mutex_unlock");
  unlockWith(function, lock);
}

void g_rec_mutex_lock(Lock *lock) {
  static auto *const function = inGLib<void(Lock *)>("g_rec_mutex_lock");
  lockWith(function, lock);
}

int g_rec_mutex_trylock(Lock *lock) {
  static auto *const function = inGLib<int(Lock *)>("g_rec_mutex_trylock");
  return tryWith(function, lock);
}

void g_rec_mutex_unlock(Lock *lock) {
  static auto *const function = inGLib<void(Lock *)>("g_rec_mutex_unlock");
  unlockWith(function, lock);
}

void g_rw_lock_writer_lock(Lock *lock) {
  static auto *const function = inGLib<void(Lock *)>("g_rw_lock_writer_lock");
  lockWith(function, lock);
  __tsan_acquire(toldByReaders(lock));
}

void g_rw_lock_writer_unlock(Lock *lock) {
  static auto *const function = inGLib<void(Lock *)>("g_rw_lock_writer_unlock");
  unlockWith(function, lock);
}

void g_rw_lock_reader_lock(Lock *lock) {
  static auto *const function = inGLib<void(Lock *)>("g_rw_lock_reader_lock");
  lockWith(function, lock);
}

void g_rw_lock_reader_unlock(Lock *lock) {
  static auto *const function = inGLib<void(Lock *)>("g_rw_lock_reader_unlock");
  __tsan_release(toldByReaders(lock));
  function(lock);
}

void g_cond_wait(void *condition, Lock *lock) {
  static auto *const function = inGLib<void(void *, Lock *)>("g_cond_wait");
  __tsan_release(lock);
  function(condition, lock);
  __tsan_acquire(lock);
}

int g_cond_wait_until(void *condition, Lock *lock, std::int64_t end) {
  static auto *const function = inGLib<int(void *, Lock *, std::int64_t)>("g_cond_wait_until");
  __tsan_release(lock);
  const int isSignalled = function(condition, lock, end);
  __tsan_acquire(lock);
  return isSignalled;
}

}  // extern "C"
