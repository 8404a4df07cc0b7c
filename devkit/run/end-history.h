// The last ends of applications, kept on disk for whoever asks later.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "run/ends.h"

namespace morvik::devkit {

/// A file with the last kEndsKept ends, ends.json. Several programs may use it at once.
class EndHistory {
 public:
  static constexpr std::size_t kEndsKept = 10;

  /// Where the programs of this user keep such things: $XDG_STATE_HOME/morvik.
  static std::string usualFolder();

  /// Nothing is looked at yet; the folder need not be there.
  explicit EndHistory(std::string folder) : folder_(std::move(folder)) {}

  struct Content {
    std::vector<End> ends;  ///< the latest last
    /// Why there is nothing to read, or what was done about a damaged file; empty when all is well.
    std::string trouble;
  };
  /// A damaged file is moved aside.
  Content read() const;

  /// Adds an end, and forgets the oldest beyond kEndsKept. Gives what a person should be told:
  /// that a damaged file was moved aside, or why the end could not be kept.
  std::optional<std::string> add(const End& end) const;

 private:
  std::string path() const { return folder_ + "/ends.json"; }

  std::string folder_;
};

/// Ends as JSON, the latest last; see docs/ends.md.
std::string toJson(const std::vector<End>& ends);

}  // namespace morvik::devkit
