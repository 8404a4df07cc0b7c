// Events and messages in JSON; docs/device-json.md describes the form.
#pragma once

#include <zeph-message.pb.h>

#include <string>

#include "device/event.h"
#include "device/json.h"

namespace morvik::devkit {

/// One event. Secrets are in none: see withoutSecrets.
Json toJson(const Event& event);
/// The same on a line.
std::string lineOf(const Event& event);

/// A message, decoded by the names of the schema. Bytes are in base64; secrets are left out as
/// below.
Json toJson(const zeph::ZephMsg& message);

}  // namespace morvik::devkit
