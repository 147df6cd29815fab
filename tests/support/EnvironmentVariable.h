// A variable of the process's environment, set or removed for the life of the object. On the main
// thread, while no other thread reads the environment.
#pragma once

#include <cstdlib>
#include <optional>
#include <string>
#include <utility>

class EnvironmentVariable {
 public:
  // No value removes the variable.
  EnvironmentVariable(std::string name, const std::optional<std::string> &value)
      : name_(std::move(name)) {
    if (const char *earlier = std::getenv(name_.c_str())) {
      earlier_ = earlier;
    }
    apply(value);
  }
  ~EnvironmentVariable() { apply(earlier_); }
  EnvironmentVariable(const EnvironmentVariable &) = delete;
  EnvironmentVariable &operator=(const EnvironmentVariable &) = delete;

 private:
  void apply(const std::optional<std::string> &value) const {
    if (value) {
      setenv(name_.c_str(), value->c_str(), 1);
    } else {
      unsetenv(name_.c_str());
    }
  }

  const std::string name_;
  std::optional<std::string> earlier_;
};
