// An input as a file that the code under test opens by its path.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <string>
#include <string_view>

#include "fuzz/fuzz.h"

namespace morvik::test {

/// A file in memory that holds the input for as long as it lives.
class InputFile {
 public:
  explicit InputFile(std::string_view input) : descriptor_(memfd_create("input", MFD_CLOEXEC)) {
    const ssize_t written = write(descriptor_, input.data(), input.size());
    require(written == static_cast<ssize_t>(input.size()), "the input is written");
  }
  ~InputFile() { close(descriptor_); }
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;

  [[nodiscard]] std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

 private:
  int descriptor_;
};

}  // namespace morvik::test
