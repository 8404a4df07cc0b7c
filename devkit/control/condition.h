// A state of the device that somebody waits for: "led=red".
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "device/json.h"

namespace morvik::devkit {

/// A value of the view by its path, such as "ears.left" or "applications.0.interactiveId", and what
/// it is to be. Short names stand for the paths that are asked for most.
struct Condition {
  std::string path;                  ///< whole, without short names
  std::string name;                  ///< as it was written
  bool equal = true;                 ///< false for !=
  std::optional<std::string> value;  ///< nothing for a name alone: it is to be there
};

/// Reads NAME=VALUE, NAME!=VALUE or NAME. Nothing when it is none of them.
std::optional<Condition> conditionIn(const std::string& text);

/// The value at a path as text: a list stands for its length, an object for its JSON, and what is
/// not there for the empty text.
std::string valueAt(const Json& view, const std::string& path);

bool holds(const Condition& condition, const Json& view);

/// What a message says of a condition that does not hold: "led is blue, not red".
std::string unmet(const Condition& condition, const Json& view);

struct ShortName {
  const char* name;
  const char* path;
  const char* meaning;
};
/// The short names, in the order in which help lists them.
const std::vector<ShortName>& shortNames();

/// What is wrong with a name that begins with nothing of the view; nothing for others.
std::optional<std::string> strangeName(const Condition& condition, const Json& view);

}  // namespace morvik::devkit
