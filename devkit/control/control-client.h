// The other end of a ControlServer: says lines and waits for what comes.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "device/json.h"
#include "run/file-descriptor.h"

namespace morvik::devkit {

/// Blocks, unlike the rest of the tool: it is all that its process does.
class ControlClient {
 public:
  using Clock = std::chrono::steady_clock;
  /// The end of waiting; nothing for never.
  using Deadline = std::optional<Clock::time_point>;

  /// Nothing when nobody of this user listens there.
  static std::optional<ControlClient> connect(const std::filesystem::path& socket);

  /// What runs there, as it calls itself.
  const std::string& title() const { return title_; }

  /// Gets each event that comes, as a line and read.
  void onEvent(std::function<void(const std::string& line, const Json& event)> hear) {
    hear_ = std::move(hear);
  }

  /// Says a line and gives its answer; nothing when the other end has gone or it is late.
  std::optional<Json> ask(const std::string& line, const Deadline& deadline = {});
  /// Hears one event. False when the other end has gone or nothing comes in time.
  bool hearOne(const Deadline& deadline = {});
  /// The other end has gone.
  bool isOver() const { return over_; }

 private:
  explicit ControlClient(FileDescriptor socket) : socket_(std::move(socket)) {}
  std::optional<std::string> nextLine(const Deadline& deadline);
  bool say(const std::string& line);

  FileDescriptor socket_;
  std::string title_;
  std::string unread_;
  std::function<void(const std::string& line, const Json& event)> hear_;
  bool over_ = false;
};

}  // namespace morvik::devkit
