// Times in words.
#pragma once

#include <string>

#include "run/log-line.h"

namespace morvik::devkit {

/// "3 ms", "10.0 s", "5 min 2 s", "3 h 20 min".
std::string inWords(TimePoint::duration duration);

/// The time of day in the local zone, "12:00:01.123".
std::string timeOfDay(TimePoint time);

/// The day as well, in UTC: "2026-01-01T12:00:01.123Z".
std::string isoTime(TimePoint time);

}  // namespace morvik::devkit
