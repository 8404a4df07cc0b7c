// The table of the script API as TypeScript declarations, for editors.
#pragma once

#include <optional>
#include <set>
#include <string>

namespace morvik::devkit {

/// A declaration file for what a script can call. With `granted`, only what these access names
/// grant is declared.
std::string typings(const std::optional<std::set<std::string>>& granted = std::nullopt);

}  // namespace morvik::devkit
