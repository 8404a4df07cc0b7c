// The one of several names that somebody may have meant.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace morvik::devkit {

/// The name that differs least from the word, and in a third of its letters at most.
std::optional<std::string> nearest(const std::string& word, const std::vector<std::string>& names);

}  // namespace morvik::devkit
