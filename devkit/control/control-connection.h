// One process that controls the tool: lines in, lines out.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "device/events.h"
#include "device/owned.h"

namespace morvik::devkit {

/// What the tool has to offer.
struct ControlSource {
  std::string title;  ///< what runs, such as "run hello"
  Events& events;     ///< for those who watch
  /// The answer to a line, as answerTo in device/requests.h gives it.
  std::function<std::string(std::string_view line)> answer;
};

/// A line of a process that runs wild, or what waits for one that does not read, in bytes. A
/// connection that goes beyond ends.
inline constexpr std::size_t kLongestControl = std::size_t{16} * 1024 * 1024;

/// Reads and writes without blocking. Each pending read and write holds it alive.
class ControlConnection : public std::enable_shared_from_this<ControlConnection>, private Observer {
 public:
  /// Whose connection it is.
  class Owner {
   public:
    virtual ~Owner() = default;
    virtual const ControlSource& source() const = 0;
    /// The other side is gone, or sent away.
    virtual void ended(ControlConnection* connection) = 0;
  };

  /// The owner must outlive it, or close it before.
  ControlConnection(Owner& owner, GSocketConnection* connection);
  ~ControlConnection() override = default;
  ControlConnection(const ControlConnection&) = delete;
  ControlConnection& operator=(const ControlConnection&) = delete;

  /// Tells the first line and begins to read.
  void start();
  /// The other side sees the end; the owner is told nothing any more.
  void close();

 private:
  using Kept = std::shared_ptr<ControlConnection>;
  static Kept takeKept(void* kept);
  void* keep() { return new Kept(shared_from_this()); }
  static void onRead(GObject* stream, GAsyncResult* result, void* kept);
  static void onWritten(GObject* stream, GAsyncResult* result, void* kept);
  void happened(const Event& event) override;

  void read();
  void take(std::size_t count);
  void obey(const std::string& line);
  void say(const std::string& line);
  void write();
  void end();

  Owner* owner_;  // null once the connection has ended
  GOwned<GSocketConnection> connection_;
  GOwned<GCancellable> cancellable_;
  std::array<char, std::size_t{4}* 1024> input_ = {};
  std::string unread_;   // the beginning of a line
  std::string writing_;  // on its way
  std::string unsent_;   // behind it
  std::optional<Observation> watches_;
};

}  // namespace morvik::devkit
