// Owns a file descriptor.
#pragma once

#include <unistd.h>

#include <utility>

namespace morvik::devkit {

class FileDescriptor {
 public:
  FileDescriptor() = default;
  /// Takes what a system call gave; -1 stands for none.
  explicit FileDescriptor(int number) : number_(number) {}
  FileDescriptor(FileDescriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ~FileDescriptor() { close(); }

  int get() const { return number_; }
  bool valid() const { return number_ >= 0; }
  void close() {
    if (valid()) ::close(std::exchange(number_, -1));
  }

 private:
  int number_ = -1;
};

}  // namespace morvik::devkit
