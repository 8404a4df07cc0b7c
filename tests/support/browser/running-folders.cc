// Folders, and the tool that runs them.
#include "support/browser/running-folders.h"

#include "support/browser/said.h"

namespace morvik::test {
namespace {

std::vector<std::string> commandOf(const std::string& own, const std::string& morvikDev,
                                   const std::vector<std::string>& words) {
  std::vector<std::string> command{"/usr/bin/env", "XDG_STATE_HOME=" + own, "TMPDIR=" + own,
                                   morvikDev, "run"};
  command.insert(command.end(), words.begin(), words.end());
  return command;
}

}  // namespace

RunningFolders::RunningFolders(const std::filesystem::path& own, const std::string& morvikDev,
                               const std::vector<std::string>& words)
    : program_(commandOf(own, morvikDev, words)),
      page_(saidBehind("The device is on this page: ", program_)) {}

}  // namespace morvik::test
