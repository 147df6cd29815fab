// The GLib, GIO and libplist handles that this folder uses, each owned by one unique pointer.
#pragma once

#include <memory>

#include <gio/gio.h>
#include <glib.h>

namespace platform {

template <auto release>
struct ReleaseWith {
  template <typename T>
  void operator()(T *handle) const {
    release(handle);  // NOLINT: this is the owner
  }
};

template <typename T, auto release>
using Handle = std::unique_ptr<T, ReleaseWith<release>>;

template <typename T>
using ObjectHandle = Handle<T, g_object_unref>;
using StringHandle = Handle<char, g_free>;
using ErrorHandle = Handle<GError, g_error_free>;
using VariantHandle = Handle<GVariant, g_variant_unref>;

// Takes an error by its out-parameter: `call(..., ErrorOut(error))`.
class ErrorOut {
 public:
  explicit ErrorOut(ErrorHandle &target) : target_(target) {}
  ~ErrorOut() { target_.reset(error_); }
  ErrorOut(const ErrorOut &) = delete;
  ErrorOut &operator=(const ErrorOut &) = delete;
  operator GError **() { return &error_; }  // NOLINT: it stands for the out-parameter

 private:
  ErrorHandle &target_;
  GError *error_ = nullptr;
};

}  // namespace platform
