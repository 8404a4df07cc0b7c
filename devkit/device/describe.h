// Messages in words, for people who read along.
#pragma once

#include <zeph-message.pb.h>

#include <string>
#include <string_view>
#include <vector>

#include "device/work.h"

namespace morvik::devkit {

// One line for the payload of a message, such as "led fade blue 500 ms". A payload without words of
// its own is shown field by field, and cut when it is long.
std::string describe(const net::quelta::zeph::message::ZephMsg& message);

// A text that may hold anything, fit for one line of a terminal: what cannot be printed is
// replaced.
std::string printable(std::string_view text);

// The same, and cut when it is long.
std::string shortened(std::string_view text);

// A word that somebody wrote, fit to stand in a sentence: in quotes when it is empty, cut when it
// is long.
std::string cited(const std::string& word);

// "a, b, c", or "none".
std::string listed(const std::vector<std::string>& names);

// "app 2", wherever an application is shown.
std::string appName(AppNumber application);

}  // namespace morvik::devkit
