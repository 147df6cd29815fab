// Bookmarks: data that finds a directory again after it was renamed, with or without a security
// scope that carries access to it. Blocking, from any thread.
#pragma once

#include "platform/FileURL.h"
#include "platform/PropertyList.h"
#include "platform/Result.h"

namespace platform {

// The values are those of the platform's option sets, in whose declarations they are fixed.
enum class BookmarkResolutionOptions : unsigned {
  none = 0,
  withSecurityScope = 1U << 10,
};
enum class BookmarkCreationOptions : unsigned {
  none = 0,
  withSecurityScope = 1U << 11,
};

struct ResolvedBookmark {
  FileURL url;           // a directory URL
  bool isStale = false;  // still resolvable, but should be created anew
};

class Bookmarks {
 public:
  virtual ~Bookmarks() = default;

  virtual Result<ResolvedBookmark> resolveBookmarkData(const Data &data,
                                                       BookmarkResolutionOptions options) = 0;

  virtual Result<Data> bookmarkDataForURL(const FileURL &url, BookmarkCreationOptions options) = 0;

  // Starts access to the security scope of a URL resolved with one. Never stopped again.
  virtual void startAccessingSecurityScopedResource(const FileURL &url) = 0;
};

}  // namespace platform
