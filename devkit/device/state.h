// What the virtual device remembers.
#pragma once

#include <zeph-message.pb.h>

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "device/work.h"

namespace morvik::devkit {

struct Led {
  enum class Effect { kLight, kFade, kPulse };
  std::string color;  // as the application wrote it; empty until the first command
  Effect effect = Effect::kLight;
};

// Positions in steps, from 0, where an ear points after a reset, to kMostEarSteps.
struct Ears {
  int left = 0;
  int right = 0;
};
inline constexpr int kMostEarSteps = 16;

struct Dock {
  Led led;
  zeph::Dock::Type moving = zeph::Dock::STOP;
};

struct Speech {
  std::string text;  // what is being spoken, or was last
  std::string lang;
};

// What the device listens for.
struct Listening {
  std::string grammar;
  std::string lang;
};

struct Player {
  enum class Mode { kStopped, kPlaying, kPaused };
  Mode mode = Mode::kStopped;
  std::string url;  // what is being played, or was last
};

struct Library {
  std::vector<std::string> artists = {"The Tin Whistles", "Clara Doe"};
  std::vector<std::string> folders = {"/music/morning", "/music/evening"};
  std::vector<std::string> playlists = {"breakfast", "rain"};
  std::vector<std::string> genres = {"folk", "jazz"};
  std::vector<std::string> songs = {"/music/morning/kettle.mp3", "/music/evening/lamp.mp3"};
};

struct SerialPort {
  bool open = false;
  int baud = 0;
  std::string base;     // how lines are to be told; empty until somebody asked for one
  std::string written;  // last
};

// Commands that get an answer of the world's choice in place of the device's own.
struct Refusal {
  static constexpr int kAlways = -1;
  zeph::VReturnCode code = zeph::ERROR;
  int field = 0;                  // the payload that is refused; 0 for any
  std::optional<AppNumber> only;  // whose commands; nothing for everybody's
  int left = 1;                   // how often, or kAlways
};

struct DeviceState {
  // What `morvik.info` gives, in this order.
  std::vector<std::pair<std::string, std::string>> infos = {
      {"name", "Virtual Morvik"}, {"model", "virtual"}, {"serial", "VM-0000-0001"},
      {"firmware", "1.0.0"},      {"lang", "en"},
  };
  Led led;
  Ears ears;
  Dock dock;
  Speech speech;
  Listening listening;
  Player player;
  Library library;
  std::string photo;  // what the last photo was asked for with
  std::map<std::string, SerialPort> ports;
  bool credentialsWithheld = false;
  std::vector<Refusal> refusals;
  std::map<int, std::chrono::milliseconds> delays;  // by payload; 0 stands for all
};

// An application's telephone.
struct Call {
  enum class State { kNone, kCalling, kRinging, kTalking };
  State state = State::kNone;
  std::string correspondant;  // the other end, spelled as on the wire
  AppNumber peer = 0;         // the application at the other end, or 0 for somebody outside
  unsigned turn = 0;          // changes with the state: how a late timer knows
};

// How a message travels: in one piece, or in several with pauses between them.
struct Delivery {
  std::size_t pieceSize = 0;  // bytes; 0 for one piece
  std::chrono::milliseconds pause{0};
};

struct Application {
  AppNumber number = 0;
  std::string interactiveId;  // what was granted; empty without interactive mode
  std::string sipId;          // its address for calls, once it told one
  std::string sipDomain;
  Call call;
  Delivery delivery;  // of the next message to it
};

}  // namespace morvik::devkit
