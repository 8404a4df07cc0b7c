// What the device can do with one of its features: rows of tables, which stand with the feature.
#pragma once

#include <zeph-message.pb.h>

#include <span>
#include <string>

#include "device/stimulus.h"

namespace morvik::devkit {

class Device;
class Exchange;
class JsonObject;
struct Application;
struct DeviceView;

/// A payload that applications send, and the function that answers it.
struct Command {
  /// Most commands must carry the interactive id that was granted.
  enum class Needs { kNothing, kGrant };

  int field;  ///< the payload, as a field of a message
  Needs needs;
  void (*answer)(const Exchange& exchange);
};

/// A payload and its words for a reader.
struct Words {
  int field;
  std::string (*of)(const net::quelta::zeph::message::ZephMsg& message);
};

/// A line of the device's state in words.
struct Glance {
  const char* label;  ///< "LED"
  /// Empty when there is nothing to tell.
  std::string (*of)(const DeviceView& view);
};

/// One feature, as the rest of the device sees it. What a feature does not have is left out.
struct Feature {
  std::span<const Command> commands = {};
  std::span<const Stimulus> stimuli = {};
  std::span<const Words> words = {};
  std::span<const Glance> glances = {};
  /// Adds the feature's parts to the JSON form of the view.
  void (*show)(const DeviceView& view, JsonObject& whole) = nullptr;
  /// Adds what the feature knows of an application.
  void (*showApplication)(const Application& application, JsonObject& shown) = nullptr;
  /// Takes leave of an application, which is on no list any more.
  void (*applicationLeft)(Device& device, const Application& gone) = nullptr;
};

}  // namespace morvik::devkit
