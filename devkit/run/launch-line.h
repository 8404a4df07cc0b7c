// The line that launches an application: "name type instance".
#pragma once

#include <optional>
#include <string>

namespace morvik::devkit {

struct LaunchLine {
  std::string app;       ///< the folder's name
  std::string type;      ///< "RFID;...", "ASR;...", or a word; may be empty
  std::string instance;  ///< may hold blanks; may be empty

  std::string text() const;
};

/// What keeps the host from understanding the line as it is meant, as half a sentence; nothing when
/// it can be launched.
std::optional<std::string> troubleWith(const LaunchLine& line);

/// The same for a line that somebody wrote.
std::optional<std::string> troubleWithLine(const std::string& line);

/// The name that a line launches: its first word.
std::string appOf(const std::string& line);

}  // namespace morvik::devkit
