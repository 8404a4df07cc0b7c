// The options of the development host about its debugger; all others are the host's own.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace morvik::devkit {

/// The port where developer tools and editors look by themselves.
inline constexpr std::uint16_t kUsualDebugPort = 9229;

struct InspectOptions {
  /// Where a debugger can attach; 0 takes any free port. Nothing when none was asked for, and the
  /// host is as the one that ships.
  std::optional<std::uint16_t> port;
  bool breakFirst = false;  ///< wait for a debugger and stop before the first line
  std::string id;           ///< the last part of the target's address; empty for a random one
};

/// Reads `--inspect[=PORT]`, `--inspect-brk[=PORT]` and `--inspect-id=ID`. What makes no sense is
/// told in `trouble`, and nothing is given.
[[nodiscard]] std::optional<InspectOptions> readInspectOptions(int count, char** vector,
                                                               std::string& trouble);

}  // namespace morvik::devkit
