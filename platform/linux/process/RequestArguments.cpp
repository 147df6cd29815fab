#include "platform/linux/process/RequestArguments.h"

#include <algorithm>
#include <cstring>

using platform::ErrorHandle;
using platform::FileURL;

namespace {

// How many URLs are checked in one go: a fraction of a millisecond.
constexpr std::size_t checkedAtOnce = 200;

}  // namespace

std::string beginningOf(const char *text) {
  constexpr std::ptrdiff_t greatestSize = 200;
  const char *end = text + strnlen(text, greatestSize);
  if (*end == '\0') {
    return text;
  }
  if (const char *boundary = g_utf8_find_prev_char(text, end + 1)) {
    end = boundary;
  }
  return std::string(text, end) + "…";
}

ErrorHandle checkCallSize(GVariant *arguments) {
  if (g_variant_get_size(arguments) <= greatestCallSize) {
    return nullptr;
  }
  return ErrorHandle(g_error_new_literal(G_DBUS_ERROR, G_DBUS_ERROR_LIMITS_EXCEEDED,
                                         "A call may carry 16 MiB at the most"));
}

std::optional<FileURL> urlFromArgument(const char *text, ErrorHandle &error) {
  std::optional<FileURL> url = FileURL::fromText(text);
  if (!url) {
    error.reset(g_error_new(G_DBUS_ERROR, G_DBUS_ERROR_INVALID_ARGS,
                            "“%s” is not a file URL on this host", beginningOf(text).c_str()));
  }
  return url;
}

URLArguments::URLArguments(GVariant *texts)
    : array_(g_variant_ref(texts)), texts_(g_variant_get_strv(texts, &count_)) {}

bool URLArguments::checkSome(ErrorHandle &error) {
  if (count_ > greatestCallURLCount) {
    error.reset(g_error_new_literal(G_DBUS_ERROR, G_DBUS_ERROR_LIMITS_EXCEEDED,
                                    "A call may carry 100,000 urls at the most"));
    return false;
  }
  const std::size_t end = std::min(count_, checkedCount_ + checkedAtOnce);
  while (checkedCount_ < end && urlFromArgument(texts_.get()[checkedCount_], error)) {
    ++checkedCount_;
  }
  return checkedCount_ == end;
}

FileURL URLArguments::at(std::size_t index) const {
  return *FileURL::fromText(texts_.get()[index]);
}

std::vector<FileURL> URLArguments::all() const {
  std::vector<FileURL> urls;
  urls.reserve(count_);
  for (std::size_t i = 0; i < count_; ++i) {
    urls.push_back(at(i));
  }
  return urls;
}
