// Lines over a socket, with a deadline.
#include "control/control-client.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <limits>

#include <nlohmann/json.hpp>

#include "control/control-folder.h"

namespace morvik::devkit {
namespace {

// For poll: -1 for no end.
int millisecondsTo(const ControlClient::Deadline& deadline) {
  if (!deadline) return -1;
  const auto left =
      std::chrono::ceil<std::chrono::milliseconds>(*deadline - ControlClient::Clock::now());
  return static_cast<int>(
      std::clamp<std::int64_t>(left.count(), 0, std::numeric_limits<int>::max()));
}

bool isAnswer(const Json& line) {
  const std::string kind = line.value("event", "");
  return kind == "outcome" || kind == "view" || kind == "stimuli";
}

}  // namespace

std::optional<ControlClient> ControlClient::connect(const std::filesystem::path& socket) {
  FileDescriptor connection(connectTo(socket));
  if (!connection.valid() || !isOwnPeer(connection.get())) return std::nullopt;
  ControlClient client(std::move(connection));
  constexpr std::chrono::seconds kPatience{10};
  const auto first = client.nextLine(Clock::now() + kPatience);
  if (!first) return std::nullopt;
  const Json greeting = Json::parse(*first, nullptr, /*allow_exceptions=*/false);
  if (!greeting.is_object() || greeting.value("event", "") != "running") return std::nullopt;
  client.title_ = greeting.value("title", "");
  return client;
}

bool ControlClient::say(const std::string& line) {
  const std::string bytes = line + '\n';
  for (std::size_t at = 0; at < bytes.size();) {
    const ssize_t count = send(socket_.get(), bytes.data() + at, bytes.size() - at, MSG_NOSIGNAL);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return !(over_ = true);
    at += static_cast<std::size_t>(count);
  }
  return true;
}

std::optional<std::string> ControlClient::nextLine(const Deadline& deadline) {
  std::array<char, std::size_t{64} * 1024> bytes{};
  std::size_t end = 0;
  for (std::size_t from = 0; (end = unread_.find('\n', from)) == std::string::npos;) {
    from = unread_.size();
    pollfd waits{socket_.get(), POLLIN, 0};
    const int ready = poll(&waits, 1, millisecondsTo(deadline));
    if (ready < 0 && errno == EINTR) continue;
    if (ready <= 0) return std::nullopt;
    const ssize_t count = recv(socket_.get(), bytes.data(), bytes.size(), 0);
    over_ = count <= 0;
    if (over_) return std::nullopt;
    unread_.append(bytes.data(), static_cast<std::size_t>(count));
  }
  std::string line = unread_.substr(0, end);
  unread_.erase(0, end + 1);
  return line;
}

std::optional<Json> ControlClient::ask(const std::string& line, const Deadline& deadline) {
  if (!say(line)) return std::nullopt;
  while (const auto came = nextLine(deadline)) {
    Json json = Json::parse(*came, nullptr, /*allow_exceptions=*/false);
    if (!json.is_object()) continue;
    if (isAnswer(json)) return json;
    if (hear_) hear_(*came, json);
  }
  return std::nullopt;
}

bool ControlClient::hearOne(const Deadline& deadline) {
  const auto line = nextLine(deadline);
  if (!line) return false;
  const Json json = Json::parse(*line, nullptr, /*allow_exceptions=*/false);
  if (hear_ && json.is_object()) hear_(*line, json);
  return true;
}

}  // namespace morvik::devkit
