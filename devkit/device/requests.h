// What a program says to the device, a line of text each, and what it is answered: the words of the
// command input, or JSON. docs/device-json.md describes both.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "device/device.h"
#include "device/json.h"
#include "device/stimuli.h"
#include "device/view.h"

namespace morvik::devkit {

/// The first words to such a program: where the device listens, and the version of all that
/// follows.
std::string greeting(const Device& device, const char* host, int port);

/// What a line may reach, of whatever kind of device.
struct RequestWays {
  std::function<std::chrono::milliseconds()> now;
  std::function<DeviceView()> view;
  std::function<Outcome(std::string_view line)> stimulate;
  std::function<Outcome(const Json& stimulus)> request;
};

/// Those of the virtual device, which must outlive them.
RequestWays waysTo(Device& device);

/// Does what the line says; every line is answered with one object on a line, whose "event"
/// tells its kind.
std::string answerTo(const RequestWays& ways, std::string_view line);
inline std::string answerTo(Device& device, std::string_view line) {
  return answerTo(waysTo(device), line);
}

}  // namespace morvik::devkit
