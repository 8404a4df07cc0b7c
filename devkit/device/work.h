// What the device does for an application over some time: an LED fades, ears turn, a text is
// spoken.
#pragma once

#include <zeph-message.pb.h>

#include <array>
#include <chrono>
#include <functional>
#include <optional>
#include <string>

namespace morvik::devkit {

namespace zeph = net::quelta::zeph::message;

// Applications are numbered 1, 2, 3 in the order in which they came. A number is never used again.
using AppNumber = unsigned;

// The device does one thing of each kind at a time.
enum class Work { kLed, kEars, kTts, kAsr, kSound, kRecord, kPhoto, kDockLed, kDockMove };

inline constexpr std::size_t kWorkKinds = 9;

// As the command input names them, in the order of `Work`.
inline constexpr std::array<const char*, kWorkKinds> kWorkNames = {
    "led", "ears", "tts", "asr", "sound", "record", "photo", "dock-led", "dock-move"};

// However long something is asked to take, its end is told within this time.
inline constexpr std::chrono::milliseconds kLongestWork = std::chrono::minutes(1);

// Who asked for a work, and what becomes of it at its end.
struct Order {
  // Sees the event that tells of the end before it is sent, and may change it. Its code tells how
  // the work ended: TERMINATED in its own time, CANCELLED when it was cut short.
  using AtEnd = std::function<void(zeph::ZephMsg& event)>;

  AppNumber application = 0;
  std::string request;  // the command's id
  AtEnd atEnd;
};

// A place for one work of a kind.
struct Workplace {
  std::optional<Order> order;  // nothing while nothing is done
  unsigned turn = 0;           // changes with every begin and end: how a late timer knows
};

}  // namespace morvik::devkit
