// What a client hands over in a call, checked before anything is done with it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/FileURL.h"
#include "platform/linux/GLibHandles.h"

// What one call may carry; beyond it the whole call is refused.
constexpr std::size_t greatestCallURLCount = 100'000;
constexpr std::size_t greatestCallSize = 16 << 20;  // bytes

// Null if the call's arguments are within the limits, else the error to answer with.
platform::ErrorHandle checkCallSize(GVariant *arguments);

// As much of a client's text as an error message shows.
std::string beginningOf(const char *text);

// None and the error to answer with if it is not valid.
std::optional<platform::FileURL> urlFromArgument(const char *text, platform::ErrorHandle &error);

// The URLs of a call, which may be so many that they are checked and used some at a time. They are
// made anew each time, from the call's own text: made at once they would take several times the
// memory.
class URLArguments {
 public:
  // `texts` is an array of strings.
  explicit URLArguments(GVariant *texts);

  // Checks the next few; an error if one of them is not valid or they are too many.
  bool checkSome(platform::ErrorHandle &error);
  bool areChecked() const { return checkedCount_ == count_; }

  std::size_t size() const { return count_; }
  // Of one that has been checked.
  platform::FileURL at(std::size_t index) const;
  std::vector<platform::FileURL> all() const;

 private:
  const platform::VariantHandle array_;
  std::size_t count_ = 0;
  const platform::Handle<const char *, g_free> texts_;
  std::size_t checkedCount_ = 0;
};
