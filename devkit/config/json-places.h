// Where the members of a JSON text stand, for those who find something wrong with one of them.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>

namespace morvik::devkit {

class JsonPlaces {
 public:
  struct Error {
    std::size_t offset;  ///< in bytes
    std::string text;
  };

  explicit JsonPlaces(const std::string& text);

  /// Why the text is no JSON; nothing when it is.
  const std::optional<Error>& error() const { return error_; }

  /// The byte at which a member's name, or an element of a list, begins, under a path such as
  /// "configInstance[0].name"; the empty path is the whole. Nothing where there is none.
  std::optional<std::size_t> of(const std::string& path) const;

 private:
  std::map<std::string, std::size_t> places_;
  std::optional<Error> error_;
};

}  // namespace morvik::devkit
