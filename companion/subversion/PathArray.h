// Paths as the Subversion library takes several of them.
#pragma once

#include <string>
#include <vector>

#include <apr_strings.h>
#include <apr_tables.h>

namespace companion {

// Copied into the pool.
inline apr_array_header_t *pathArray(const std::vector<std::string> &paths, apr_pool_t *pool) {
  apr_array_header_t *array =
      apr_array_make(pool, static_cast<int>(paths.size()), sizeof(const char *));
  for (const std::string &path : paths) {
    *static_cast<const char **>(apr_array_push(array)) = apr_pstrdup(pool, path.c_str());
  }
  return array;
}

}  // namespace companion
