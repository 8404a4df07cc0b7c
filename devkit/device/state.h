// What the virtual device remembers. Plain records; a feature's own file says what happens to them.
#pragma once

#include <zeph-message.pb.h>

#include <chrono>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "device/doubt.h"
#include "device/work.h"

namespace morvik::devkit {

struct Led {
  std::string color;             ///< as the application wrote it; empty until the first command
  std::string effect = "light";  ///< how it comes to that colour, in the script's word
  std::string from;              ///< the colour before
  std::chrono::milliseconds period{0};
  int count = 0;  ///< of periods
};

/// Positions in steps, from 0, where an ear points after a reset, to kMostEarSteps.
struct Ears {
  int left = 0;
  int right = 0;
};
inline constexpr int kMostEarSteps = 16;
inline constexpr std::chrono::milliseconds kTimeOfAnEarStep{100};

struct Dock {
  Led led;
  zeph::Dock::Type moving = zeph::Dock::STOP;
  /// What the world told last of its state.
  std::optional<int> status;
  std::optional<int> change;
};

struct Speech {
  std::string text;  ///< what is being spoken, or was last
  std::string lang;
};

/// What the device listens for, or did last.
struct Listening {
  std::string grammar;
  std::string lang;
};

struct Player {
  enum class Mode { kStopped, kPlaying, kPaused };
  Mode mode = Mode::kStopped;
  std::string url;  ///< what is being played, or was last
};

struct Library {
  std::vector<std::string> artists = {"The Tin Whistles", "Clara Doe"};
  std::vector<std::string> folders = {"/music/morning", "/music/evening"};
  std::vector<std::string> playlists = {"breakfast", "rain"};
  std::vector<std::string> genres = {"folk", "jazz"};
  std::vector<std::string> songs = {"/music/morning/kettle.mp3", "/music/evening/lamp.mp3"};
};

struct SerialPort {
  struct Line {
    bool written;  ///< by an application; otherwise it came in
    std::string text;
  };

  bool open = false;
  int baud = 0;
  std::string base;        ///< how lines are to be told; empty until somebody asked for one
  std::deque<Line> lines;  ///< the last kKeptLines
};
inline constexpr std::size_t kKeptLines = 20;

/// A file of the user's that the camera or the microphone gives in the place of its own.
struct ChosenFile {
  std::string path;                          ///< empty for the device's own
  std::shared_ptr<const std::string> bytes;  ///< as it was when it was chosen; null likewise
};

struct DeviceState {
  /// What `morvik.info` gives, in this order.
  std::vector<std::pair<std::string, std::string>> infos = {
      {"name", "Virtual Morvik"}, {"model", "virtual"}, {"serial", "VM-0000-0001"},
      {"firmware", "1.0.0"},      {"lang", "en"},
  };
  Led led;
  Ears ears;         ///< where they stood when they last stopped
  Ears earsTowards;  ///< where they turn to
  Dock dock;
  Speech speech;
  Listening listening;
  Player player;
  std::string recording;  ///< what the last recording was asked for with
  Library library;
  ChosenFile recordingFile;
  std::string photo;  ///< what the last photo was asked for with
  ChosenFile picture;
  std::map<std::string, SerialPort> ports;
  bool credentialsWithheld = false;
};

/// An application's telephone.
struct Call {
  enum class State { kNone, kCalling, kRinging, kTalking };
  State state = State::kNone;
  std::string correspondant;  ///< the other end, spelled as on the wire
  AppNumber peer = 0;         ///< the application at the other end, or 0 for somebody outside
  unsigned turn = 0;          ///< changes with the state: how a late timer knows
};

struct Application {
  AppNumber number = 0;
  std::chrono::milliseconds came{0};  ///< by the clock of the device
  std::string interactiveId;          ///< what was granted; empty without interactive mode
  std::string sipId;                  ///< its address for calls, once it told one
  std::string sipDomain;
  Call call;
  std::vector<Doubt> doubts;  ///< what was told of it, oldest first
};

}  // namespace morvik::devkit
