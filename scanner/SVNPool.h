// An APR pool with an allocator of its own: what it held goes back to the system when it ends.
// For one thread at a time.
#pragma once

#include <svn_pools.h>

class SVNPool {
 public:
  // The allocator is made with a pool that owns it.
  SVNPool() : pool_(apr_allocator_owner_get(svn_pool_create_allocator(FALSE))) {}
  ~SVNPool() { svn_pool_destroy(pool_); }
  SVNPool(const SVNPool &) = delete;
  SVNPool &operator=(const SVNPool &) = delete;

  operator apr_pool_t *() const { return pool_; }  // NOLINT: it is the pool

 private:
  apr_pool_t *const pool_;
};
