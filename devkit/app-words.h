// What can be done to the applications of `morvik-dev run` by a line of words, beside what can be
// done to their device.
#pragma once

#include <optional>
#include <span>
#include <string_view>

#include "run/session.h"

namespace morvik::devkit {

struct AppWord {
  const char* name;
  const char* usage;  ///< the words behind it
  const char* help;
};

/// In the order in which help lists them.
std::span<const AppWord> appWords();

/// Does what such a line says; nothing when the line begins with none of these words. The name of
/// the application may be left out where the session has one.
std::optional<Outcome> actOnApps(Session& session, std::string_view line);

}  // namespace morvik::devkit
