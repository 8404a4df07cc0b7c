// Folders, and the tool that runs them.
#include "support/browser/running-folders.h"

#include <fstream>

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

void writeApplication(const std::filesystem::path& folder, const std::string& script,
                      const std::string& accesses) {
  std::filesystem::create_directories(folder);
  if (!std::filesystem::exists(folder / "descriptor.xml")) {
    std::ofstream(folder / "descriptor.xml")
        << "<descriptor><accesses>" << accesses << "</accesses></descriptor>";
  }
  std::ofstream(folder / "main.js") << script;
}

std::string interactiveScript(const std::string& onGrant) {
  return "var at = instanceName.split(':');\n"
         "morvik.connect(at[0], Number(at[1]));\n"
         "morvik.start(function () {\n" +
         onGrant + "\n});\n";
}

}  // namespace morvik::test
