// An APR pool with an allocator of its own: what it held goes back to the system when it ends.
// For one thread at a time.
#pragma once

#include <svn_pools.h>

class SVNPool {
 public:
  SVNPool() : pool_(svn_pool_create_ex(nullptr, svn_pool_create_allocator(FALSE))) {
    apr_allocator_owner_set(apr_pool_allocator_get(pool_), pool_);
  }
  ~SVNPool() { svn_pool_destroy(pool_); }
  SVNPool(const SVNPool &) = delete;
  SVNPool &operator=(const SVNPool &) = delete;

  operator apr_pool_t *() const { return pool_; }  // NOLINT: it is the pool

 private:
  apr_pool_t *const pool_;
};
