// Messages in words, for people who read along.
#pragma once

#include <zeph-message.pb.h>

#include <string>

namespace morvik::devkit {

/// One line for the payload of a message, such as "led fade blue 500 ms". A payload without words
/// of its own is shown field by field, and cut when it is long.
std::string describe(const net::quelta::zeph::message::ZephMsg& message);

}  // namespace morvik::devkit
