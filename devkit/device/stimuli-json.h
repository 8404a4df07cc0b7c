// Stimuli in JSON; docs/device-json.md describes the form.
#pragma once

#include <string_view>

#include "device/json.h"
#include "device/stimuli.h"

namespace morvik::devkit {

/// Does what an object such as {"stimulus": "ear", "arguments": {"side": "LEFT", "step": 5}} says.
/// "arguments" may be left out, and "app" names the one application that is meant. Everything that
/// is wrong is told in the outcome.
Outcome stimulateByName(Device& device, const Json& request);

/// The table, for whoever draws forms.
Json stimuliJson();

Json toJson(const Outcome& outcome);

}  // namespace morvik::devkit
