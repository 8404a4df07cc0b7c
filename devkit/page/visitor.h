// One open page: what it was sent, what it is owed, and what was left out because it did not keep
// up.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "page/send-window.h"

namespace morvik::devkit {

/// What was left out.
struct Missed {
  std::uint64_t log = 0;  // lines
  std::uint64_t events = 0;
  bool any() const { return log != 0 || events != 0; }
};

/// Knows no socket. Bodies are the members of a JSON object without its braces; a number is put in
/// front of each.
class Visitor {
 public:
  /// Gets each whole frame.
  using Send = std::function<void(const std::string& frame)>;
  /// What is shown as it is now, and need not be told for every change.
  enum class Part { kView, kApplications, kTags };
  static constexpr int kParts = 3;
  /// Gives the body of a part as it is now.
  using BodyOf = std::function<std::string(Part)>;
  /// Gives the body that tells what was left out.
  using BodyOfMissed = std::function<std::string(const Missed&)>;

  explicit Visitor(Send send) : send_(std::move(send)) {}

  /// Sent whether there is room or not: the greeting, and answers to what the page asked.
  void tell(const std::string& body);
  /// Left out, and counted, when there is no room.
  void tellEvent(const std::string& body);
  void tellLog(const std::string& body, std::uint64_t lines);
  /// The part has changed. It is sent by `settle`.
  void owe(Part part) { owed_[static_cast<int>(part)] = true; }

  /// Sends what is owed, as far as there is room.
  void settle(const BodyOf& bodyOf, const BodyOfMissed& bodyOfMissed);

  /// The page has seen everything up to this number. False when that was never sent.
  [[nodiscard]] bool acknowledge(std::uint64_t number) { return window_.acknowledge(number); }

  /// It asks and never reads, and is to be shown out.
  bool isOverrun() const { return window_.isOverrun(); }

 private:
  bool offer(const std::string& body);

  Send send_;
  SendWindow window_;
  Missed missed_;
  bool owed_[kParts] = {};
};

}  // namespace morvik::devkit
