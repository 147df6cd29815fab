// The few things that every use of the Subversion libraries needs.
#pragma once

#include <memory>
#include <string>

#include <svn_client.h>
#include <svn_error.h>
#include <svn_pools.h>

namespace companion {

// Once, before the first use.
void initializeSubversion();

// Memory that the library works in, freed as a whole.
class SubversionPool {
 public:
  SubversionPool() : pool_(svn_pool_create(nullptr)) {}
  ~SubversionPool() { svn_pool_destroy(pool_); }
  SubversionPool(const SubversionPool &) = delete;
  SubversionPool &operator=(const SubversionPool &) = delete;

  operator apr_pool_t *() const { return pool_; }  // NOLINT: it is the pool

 private:
  apr_pool_t *const pool_;
};

struct ClearSubversionError {
  void operator()(svn_error_t *error) const { svn_error_clear(error); }
};
using SubversionError = std::unique_ptr<svn_error_t, ClearSubversionError>;

// The library's own words for this error alone, with its number: "E155011: …".
std::string messageOf(const svn_error_t &error);

// A client that knows no configuration: nothing that this program asks depends on one.
SubversionError createClientContext(svn_client_ctx_t **context, const SubversionPool &pool);

// Why the library must not be given the path, over which it might end the process; empty if it may
// be.
std::string reasonAgainstPath(const std::string &path);

}  // namespace companion
