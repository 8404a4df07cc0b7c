// The names that a descriptor may grant, and what an exception tells of one that is missing.
#pragma once

#include <optional>
#include <string>

#include "run/exception-report.h"

namespace morvik::devkit {

struct MissingAccess {
  std::string object;  ///< as a script writes it, "morvik.led"
  std::string access;  ///< "led"
};

/// The object that an exception's text and source line show to be missing for want of an access.
/// Nothing when they show no such thing.
std::optional<MissingAccess> missingAccess(const ExceptionReport& report);

/// The object of `morvik` that a script used as if it were global, "led".
std::optional<std::string> misplacedObject(const ExceptionReport& report);

}  // namespace morvik::devkit
