// What the explanation of an end needs to know of a message, from its text form in the log.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace morvik::devkit {

enum class Direction { kFromApplication, kToApplication };

struct MessageFacts {
  Direction direction = Direction::kFromApplication;
  std::string id = {};
  std::string correlationId = {};
  std::vector<std::string> payloads = {};  ///< names of the payload fields that are set
  std::string code = {};                   ///< of its response or event; empty without one
  std::string action = {};  ///< of its interactiveMode: START, STOP; empty without one

  bool has(std::string_view payload) const;
};

/// From a message as the host logs it, "Sending MSG\n..." or "Received MSG\n..."; nothing for any
/// other text.
std::optional<MessageFacts> factsOfDump(std::string_view text);

}  // namespace morvik::devkit
