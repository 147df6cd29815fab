// Errors of the Subversion library as C++ has them.
#pragma once

#include <exception>
#include <memory>

#include <svn_error.h>

struct SVNErrorClearing {
  void operator()(svn_error_t *error) const { svn_error_clear(error); }
};

// Cleared when nobody takes it. Null on success. May pass from one thread to another.
using SVNError = std::unique_ptr<svn_error_t, SVNErrorClearing>;

// Makes an error of an exception that leaves the call. The library calls back through C frames,
// through which none may pass.
template <typename Call>
svn_error_t *withoutExceptions(const Call &call) {
  try {
    return call();
  } catch (const std::exception &exception) {
    return svn_error_create(SVN_ERR_BASE, nullptr, exception.what());
  } catch (...) {
    return svn_error_create(SVN_ERR_BASE, nullptr, "The entry block has failed");
  }
}
