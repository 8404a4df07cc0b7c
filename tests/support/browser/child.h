// A program beside a test that blocks: what it says is read in the background.
#pragma once

#include <gio/gio.h>

#include <memory>
#include <string>
#include <vector>

#include "support/waiting.h"

namespace morvik::test {

class Child {
 public:
  /// Starts it; throws when that cannot be. It is terminated when the test program dies.
  explicit Child(const std::vector<std::string>& command);
  /// Terminates it, and ends it by force when that does not help in time.
  ~Child();
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  /// Waits for the text in what it has said on both outputs, and gives all that; throws when it
  /// does not come.
  std::string await(const std::string& text) const { return output_->await(text); }
  std::string output() const { return output_->soFar(); }
  void say(const std::string& text) const;
  pid_t pid() const;

 private:
  struct Unref {
    void operator()(void* object) const { g_object_unref(object); }
  };
  std::unique_ptr<GSubprocess, Unref> process_;
  std::unique_ptr<Stream> output_;
};

}  // namespace morvik::test
