// All that can be seen of the device.
#pragma once

#include <chrono>
#include <map>
#include <string>
#include <vector>

#include "device/faults.h"
#include "device/json.h"
#include "device/state.h"
#include "device/store.h"

namespace morvik::devkit {

class Device;

/// A picture of the device at one moment. It is a copy, and stays what it is.
struct DeviceView {
  /// The version of the JSON form: raised when a member goes or changes its meaning, and not when
  /// one is added.
  static constexpr int kVersion = 1;

  std::chrono::milliseconds time{0};  ///< of the picture, by the clock of the device
  DeviceState state;
  std::map<AppNumber, Application> applications;
  std::vector<Underway> works;  ///< what goes on
  Store::Messages messages;     ///< oldest first
  Store::Contacts contacts;
  std::vector<std::string> credentials;  ///< the names of those that are kept, never a value
  Faults faults;
  std::string trouble;  ///< why the store could not be read; empty when it could
};

DeviceView viewOf(const Device& device);

/// Null when none of the kind goes on.
const Underway* underwayIn(const DeviceView& view, Work work);
/// How long it still goes on: "300 ms more"; "at rest" for a work without an end of its own.
std::string timeLeftOf(const DeviceView& view, const Underway& underway);

/// docs/device-json.md describes it.
Json toJson(const DeviceView& view);
/// One work, as the view and the events have it.
void show(const Underway& underway, JsonObject shown);
/// One doubt, likewise.
void show(const Doubt& doubt, JsonObject shown);

}  // namespace morvik::devkit
