// What a debugger says, on its way from the server's thread to the application's.
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <string>

namespace morvik::devkit {

/// Something that a debugger did, or that concerns a pause.
struct ClientEvent {
  enum class Kind {
    kCame,
    kSaid,
    kLeft,
    kForsaken,  ///< nobody reads what the application says any more
  };
  Kind kind = Kind::kSaid;
  std::string text;  ///< a message of the protocol, when it said something
};

/// Whether an event that is next may be taken now.
using MayTake = std::function<bool(const ClientEvent&)>;

/// Safe to use from several threads.
class ClientQueue {
 public:
  /// `wake` makes the application's thread look, whatever it does; called in the thread that puts,
  /// and not again before a call of `looks`.
  void setWake(std::function<void()> wake);
  void put(ClientEvent event);

  /// The application's thread begins to look.
  void looks();
  /// Takes the next one when there is one that may be taken. False otherwise.
  [[nodiscard]] bool take(const MayTake& may, ClientEvent& event);
  /// The same, and waits for it.
  ClientEvent await(const MayTake& may);

 private:
  bool isReady(const MayTake& may) const { return !events_.empty() && may(events_.front()); }
  ClientEvent pop();

  std::mutex mutex_;
  std::condition_variable came_;
  std::deque<ClientEvent> events_;
  std::function<void()> wake_;
  bool woken_ = false;
};

}  // namespace morvik::devkit
