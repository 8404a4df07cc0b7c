// What the device does for an application over some time: an LED fades, ears turn, a text is
// spoken.
#pragma once

#include <zeph-message.pb.h>

#include <array>
#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace morvik::devkit {

namespace zeph = net::quelta::zeph::message;

/// Applications are numbered 1, 2, 3 in the order in which they came. A number is never used again.
using AppNumber = unsigned;

/// The device does one thing of each kind at a time.
enum class Work { kLed, kEars, kTts, kAsr, kSound, kRecord, kPhoto, kDockLed, kDockMove };

/// As people name them, in the order of `Work`.
inline constexpr std::array kWorkNames = {"led",    "ears",  "tts",      "asr",      "sound",
                                          "record", "photo", "dock-led", "dock-move"};
inline constexpr std::size_t kWorkKinds = kWorkNames.size();
inline const char* nameOf(Work work) { return kWorkNames[static_cast<std::size_t>(work)]; }

/// However long something is asked to take, its end is told within this time.
inline constexpr std::chrono::milliseconds kLongestWork = std::chrono::minutes(1);

/// Who asked for a work, and what becomes of it at its end.
struct Order {
  /// Sees the event that tells of the end before it is sent, and may change it. Its code tells how
  /// the work ended: TERMINATED in its own time, CANCELLED when it was cut short.
  using AtEnd = std::function<void(zeph::ZephMsg& event)>;

  AppNumber application = 0;
  std::string request;  ///< the command's id
  AtEnd atEnd;
};

/// A work that goes on, as those see it who look on.
struct Underway {
  Work work = Work::kLed;
  AppNumber application = 0;
  std::string request;                              ///< the command's id
  std::chrono::milliseconds begun{0};               ///< by the clock of the device
  std::optional<std::chrono::milliseconds> length;  ///< from `begun`; nothing while it rests
};

}  // namespace morvik::devkit
