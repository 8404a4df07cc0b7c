// `morvik-dev run` on folders of applications, beside a test that blocks.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "support/application-folder.h"
#include "support/program.h"

namespace morvik::test {

class RunningFolders {
 public:
  /// Starts the tool with these folders and options. What it keeps, for ever or for a while, goes
  /// into the folder `own`. Throws when it does not tell its page's address in time.
  RunningFolders(const std::filesystem::path& own, const std::string& morvikDev,
                 const std::vector<std::string>& words);

  /// The address of its page.
  const std::string& page() const { return page_; }
  Program& program() { return program_; }

 private:
  Program program_;
  std::string page_;
};

}  // namespace morvik::test
