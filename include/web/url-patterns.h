// Which URLs may carry a token: the services' own domains, as patterns.
#pragma once

#include <regex.h>

#include <string>

namespace morvik {

/// A POSIX extended regular expression.
class CompiledPattern {
 public:
  CompiledPattern() = default;
  ~CompiledPattern();
  CompiledPattern(const CompiledPattern&) = delete;
  CompiledPattern& operator=(const CompiledPattern&) = delete;

  /// Once for each object. False, and a line in the log, for a text that is no expression.
  [[nodiscard]] bool compile(const char* text);
  /// What regexec says: 0 for a match.
  [[nodiscard]] int match(const std::string& text) const;

 private:
  regex_t regex_{};
  bool compiled_ = false;
};

/// The patterns of the program.
enum class UrlPattern { kFacebook, kSoundcloud, kQuery };

/// Whether the whole URL matches, with a line in the log. The first call in a process compiles all
/// patterns; while that fails, no URL is authorised.
bool isUrlAuthorised(const std::string& url, UrlPattern pattern);

/// Whether the URL has a "?" anywhere, in a fragment too. Only after isUrlAuthorised gave true in
/// this process: that compiles the patterns.
bool hasQuery(const std::string& url);

}  // namespace morvik
