// morvik-dev's virtual device as a program, which tells what happens at it as data.
#pragma once

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "support/program.h"
#include "support/temporary-folder.h"

namespace morvik::test {

/// With a state of its own that nothing outlives. Everything that waits throws when patience ends.
class VirtualDevice {
 public:
  VirtualDevice();

  /// Where it listens, as host:port.
  [[nodiscard]] const std::string& address() const { return address_; }

  /// A line for its command input; throws what the device says when it refuses it.
  void happens(const std::string& stimulus);

  /// Waits until an application has sent it this message, or it has sent one this message: in text
  /// form and without ids. Only what happens behind the one that was waited for last counts.
  void receives(const std::string& message) { awaitMessage("received", message); }
  void sends(const std::string& message) { awaitMessage("sent", message); }

  /// All its events so far.
  [[nodiscard]] std::string transcript() const { return program_.output(); }

 private:
  using Json = nlohmann::json;

  void awaitMessage(const std::string& event, const std::string& message);
  // The first event of that kind from an index on, which moves behind it.
  const Json& next(const std::string& kind, std::size_t& from);
  const Json& event(std::size_t index);

  TemporaryFolder state_;
  Program program_;
  std::vector<Json> events_;   // those that were read
  std::size_t readBytes_ = 0;  // of the program's output
  std::size_t answered_ = 0;   // events up to and with the outcome of the last line
  std::size_t awaited_ = 0;    // events up to and with the last message that was waited for
  std::string address_;
};

}  // namespace morvik::test
