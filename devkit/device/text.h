// Texts for people who read along.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "device/work.h"

namespace morvik::devkit {

/// A text that may hold anything, fit for one line of a terminal: what cannot be printed is
/// replaced.
std::string printable(std::string_view text);

/// The same, and cut when it is long.
std::string shortened(std::string_view text);

/// The same for a text that is printable already.
std::string cutShort(const std::string& text);

/// A word that somebody wrote, fit to stand in a sentence: in quotes when it is empty, cut when it
/// is long.
std::string cited(const std::string& word);

/// A text in quotes behind other words, or nothing when it is empty.
std::string quotedIfAny(const std::string& text);

/// "a, b, c", or "none".
std::string listed(const std::vector<std::string>& names);

/// "a|b|c" for the separator |.
std::string joined(const std::vector<std::string>& names, char separator);

/// What a refusal says of a name that nothing has, and which names there are: "command wings" and
/// the names of all commands.
std::string thereIsNo(const std::string& what, const std::vector<std::string>& names);

/// "app 2", wherever an application is shown.
std::string appName(AppNumber application);

/// "500 ms".
std::string inMilliseconds(int length);

}  // namespace morvik::devkit
