// One application's connection, seen from a device server that costs as little as it can: it builds
// one answer, and reads no more of a message than it must.
#pragma once

#include <zeph-message.pb.h>

#include <chrono>
#include <string>
#include <string_view>

#include "support/waiting.h"

namespace morvik::bench {

namespace zeph = net::quelta::zeph::message;
using test::Descriptor;
using Clock = std::chrono::steady_clock;
using Microseconds = std::chrono::duration<double, std::micro>;

/// How a server waits for the next bytes: asleep in poll, or looking again and again, which takes
/// the time to wake it out of every figure and a core of the machine.
enum class Waiting { kPolls, kSpins };

class Link {
 public:
  explicit Link(Descriptor socket);

  void wait(Waiting how) { waiting_ = how; }

  /// The next message; the reference is good until the next call. Throws std::runtime_error when
  /// none comes, or what comes is none.
  const zeph::ZephMsg& receive();
  /// Takes so many messages without looking into them.
  void skip(int messages);
  /// Answers what was received last with OK.
  void answer();
  void send(std::string_view bytes);

  /// Answers requests and gives the time from each answer to the next request, in microseconds: a
  /// round trip each, since the application sends as soon as it has its answer.
  std::vector<double> roundTrips(int count);

 private:
  std::string_view nextPayload();
  void readMore();

  Descriptor socket_;
  Waiting waiting_ = Waiting::kPolls;
  std::string buffer_;
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
  zeph::ZephMsg received_;
  zeph::ZephMsg answer_;
  std::string frame_;
};

/// The bytes of a message on the wire.
std::string frameOf(const zeph::ZephMsg& message);

/// Where applications connect: a port of the loopback interface.
class Server {
 public:
  Server();
  [[nodiscard]] int port() const { return port_; }
  /// The next application. Throws std::runtime_error when none comes.
  Link accept();

 private:
  Descriptor socket_;
  int port_ = 0;
};

}  // namespace morvik::bench
