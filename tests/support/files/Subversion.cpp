#include "tests/support/files/Subversion.h"

#include "tests/support/processes/Command.h"

namespace {

std::string newRepository(const std::string &base, const std::string &name) {
  const std::string path = base + "/" + name + "-repository";
  runSuccessfully({"svnadmin", "create", path});
  return "file://" + path;
}

}  // namespace

WorkingCopy::WorkingCopy(const TemporaryDirectory &directory, const std::string &name)
    : WorkingCopy(directory.path(), newRepository(directory.path(), name), name) {}

WorkingCopy::WorkingCopy(std::string base, std::string repositoryURL, const std::string &name)
    : base_(std::move(base)), repositoryURL_(std::move(repositoryURL)), path_(base_ + "/" + name) {
  std::filesystem::create_directories(path_);
  svn({"checkout", "--quiet", repositoryURL_, path_});
}

std::string WorkingCopy::svn(std::vector<std::string> arguments) const {
  // The test's own configuration directory, so that the user's neither counts nor changes.
  std::vector<std::string> command = {"svn", "--non-interactive", "--config-dir",
                                      base_ + "/svn-configuration"};
  command.insert(command.end(), arguments.begin(), arguments.end());
  CommandOptions options;
  options.directory = path_;
  options.environment["LC_ALL"] = "C.UTF-8";
  return runSuccessfully(command, options);
}

WorkingCopy WorkingCopy::checkOutAgain(const std::string &name) const {
  return {base_, repositoryURL_, name};
}

void WorkingCopy::addFile(std::string_view relative, std::string_view contents) const {
  writeFile(*this / relative, contents);
  svn({"add", "--force", "--parents", "--quiet", std::string(relative)});
  commit();
}
