// An application's folder on disk, named "app", made by a test and removed with it.
#pragma once

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>

#include "support/temporary-folder.h"

namespace morvik::test {

/// One per test. The process in which a death test starts anew shares the folder of the test that
/// started it, because nothing of its own is cleaned up when it dies.
class AppFiles {
 public:
  AppFiles() {
    if (const char* inherited = std::getenv(kVariable)) {
      root_ = inherited;
      return;
    }
    root_ = owned_.emplace().path();
    setenv(kVariable, root_.c_str(), 1);
    std::filesystem::create_directory(path(""));
  }
  ~AppFiles() {
    if (owned_) unsetenv(kVariable);
  }
  AppFiles(const AppFiles&) = delete;
  AppFiles& operator=(const AppFiles&) = delete;

  /// The parent of the application's folder.
  [[nodiscard]] const char* root() const { return root_.c_str(); }
  [[nodiscard]] std::string path(const std::string& name) const { return root_ + "/app/" + name; }

  void write(const std::string& name, std::string_view bytes) const {
    std::ofstream file(path(name), std::ios::binary);
    file << bytes << std::flush;
    ASSERT_TRUE(file) << name;
  }

  /// Puts something there that exists and can be opened by nobody, not even by root: a socket.
  void writeUnopenable(const std::string& name) const {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path(name).copy(address.sun_path, sizeof address.sun_path - 1);
    unlink(address.sun_path);
    const int end = socket(AF_UNIX, SOCK_STREAM, 0);
    EXPECT_EQ(bind(end, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    close(end);
  }

 private:
  static constexpr const char* kVariable = "MORVIK_UNIT_TEST_APPS";
  std::string root_;
  std::optional<TemporaryFolder> owned_;
};

}  // namespace morvik::test
