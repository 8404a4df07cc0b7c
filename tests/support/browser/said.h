// What a program tells of itself on a line of its own, such as "listening on 127.0.0.1:7410".
#pragma once

#include <string>

#include "support/program.h"

namespace morvik::test {

/// Waits for the words, and gives the rest of their line. Throws when they do not come.
inline std::string saidBehind(const std::string& words, const Program& program) {
  const std::size_t at = program.waitFor(words).find(words) + words.size();
  std::size_t end = std::string::npos;
  waitUntil("the end of that line", [&] {
    end = program.output().find('\n', at);
    return end != std::string::npos;
  });
  return program.output().substr(at, end - at);
}

}  // namespace morvik::test
