// A fixture for what scripts do with the files of their application's folder.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/app-files.h"
#include "support/file-content.h"
#include "support/unit/feature-test.h"

namespace morvik::test {

class FilesTest : public FeatureTest {
 protected:
  FilesTest() { options.app_folder = files.root(); }

  [[nodiscard]] std::string path(const std::string& name) const { return files.path(name); }

  void put(const std::string& name, const std::string& content) const {
    std::filesystem::create_directories(std::filesystem::path(path(name)).parent_path());
    files.write(name, content);
  }

  [[nodiscard]] std::string contentOf(const std::string& name) const {
    return test::contentOf(path(name));
  }

  /// Each call throws the text and leaves these lines.
  void expectAllThrow(const std::vector<std::string>& calls, const std::string& text,
                      const Lines& lines = {}) {
    for (const std::string& call : calls) {
      SCOPED_TRACE(call);
      expectThrows(call, text);
      EXPECT_EQ(ownLines(), lines);
    }
  }

  AppFiles files;
};

}  // namespace morvik::test
