// The page's form for any stimulus, in the hand of a test.
#pragma once

#include <nlohmann/json.hpp>

#include "support/browser/web-driver.h"

namespace morvik::test {

/// Chooses the stimulus {"stimulus": NAME, "arguments": ..., "app": NUMBER} under "Everything",
/// fills its form as a hand does, and sends it. The outcome of the one before is gone then.
void fillAndSend(const WebDriver& driver, const nlohmann::json& stimulus);

/// An expression: "yes" or "no" once the last stimulus has its outcome.
inline constexpr const char* kOutcome = "document.getElementById('outcome').dataset.done";

}  // namespace morvik::test
