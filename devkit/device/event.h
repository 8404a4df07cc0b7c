// What happens at the device, as data.
#pragma once

#include <zeph-message.pb.h>

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "device/doubt.h"
#include "device/work.h"

namespace morvik::devkit {

/// A message that passed. Shared, since an event may be kept; never null.
using PassedMessage = std::shared_ptr<const zeph::ZephMsg>;

/// An application is connected.
struct Came {
  AppNumber application;
};

/// An application is gone. Nothing more is told of it.
struct Left {
  AppNumber application;
};

/// A message of an application, told before the device answers.
struct Received {
  AppNumber application;
  PassedMessage message;
};

/// A message to an application, told when it is on its way.
struct Sent {
  AppNumber application;
  PassedMessage message;
  /// All applications that are sent the same at once, each under an id of its own, in the order in
  /// which that is told; empty for a message to one alone.
  std::vector<AppNumber> together = {};
};

/// Of a message that goes to several applications, the first is enough for a reader.
inline bool isRepeated(const Sent& sent) {
  return !sent.together.empty() && sent.application != sent.together.front();
}

/// A part of the view is no longer what it was: one of the names at the top of the view's JSON
/// form, such as "led" or "applications". Told after the change.
struct Changed {
  std::string part;
};

/// The device began to do something for an application, or goes on with it after a pause.
struct Began {
  Underway underway;
};

/// What was begun is over. `code` tells how, as the event to the application does; nothing when the
/// application gets an answer of another kind.
struct Ended {
  Underway underway;
  std::optional<zeph::VReturnCode> code;
};

/// The world did something to the device, told before what follows from it.
struct Stimulated {
  std::string name;
  std::optional<AppNumber> only;  ///< nothing when it is for all
  /// The arguments that were given, as text. Those that are secret hold their names alone.
  std::map<std::string, std::vector<std::string>> arguments;
};

/// An application was given something that a real device may not give it. Told once for each fact.
struct Doubted {
  AppNumber application;
  Doubt doubt;
};

/// Something in words that no other event tells.
struct Noted {
  std::string text;
};

/// How an application lost its device server.
enum class ServerLoss {
  kNone,     ///< it did not, or nobody knows
  kMissing,  ///< behind a relay there was none, or none that took the connection
  kEnded,    ///< the server ended the connection in order
  kReset,    ///< the server broke it off
};

/// An application did what it must not do, its server left it, or an observer failed (then there is
/// no application).
struct Trouble {
  std::optional<AppNumber> application;
  std::string text;
  ServerLoss loss = ServerLoss::kNone;
  std::string why = {};  ///< the reason of the loss, to stand behind a colon; may be empty
};

/// One thing that happened.
struct Event {
  using What = std::variant<Came, Left, Received, Sent, Changed, Began, Ended, Stimulated, Doubted,
                            Noted, Trouble>;

  /// 1, 2, 3, ... without a gap, in the order in which things happened.
  std::uint64_t number = 0;
  /// By the clock of the device: milliseconds since 1970.
  std::chrono::milliseconds time{0};
  What what;
};

}  // namespace morvik::devkit
