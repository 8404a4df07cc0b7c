// What a debugger learns of the application by plain requests, before it attaches.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace morvik::devkit {

/// One application as a debugger's target.
struct DebugTarget {
  std::string id;          ///< the last part of its address, hard to guess
  std::string title;       ///< the application's name
  std::string url;         ///< its main.js as a file: address
  std::uint16_t port = 0;  ///< of 127.0.0.1
};

/// The address that a debugger attaches to: "ws://127.0.0.1:PORT/ID".
std::string socketAddressOf(const DebugTarget& target);
/// The address that opens the developer tools of a Chrome browser on it.
std::string toolsAddressOf(const DebugTarget& target);

/// The protocol's answer, JSON, to a request for this path; nothing for a path that it does not
/// know. An attached target tells no addresses, as it takes one debugger at a time.
std::optional<std::string> discovered(std::string_view path, const DebugTarget& target,
                                      bool attached);

}  // namespace morvik::devkit
