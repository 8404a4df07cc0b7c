// What the runner of tests and the clock inside of an application under test tell each other, over
// a local socket that keeps messages apart. Times are nanoseconds since 1970.
#pragma once

#include <cstdint>
#include <limits>

namespace morvik::devkit {

/// The variable of the environment that names the runner's socket.
inline constexpr const char* kClockVariable = "MORVIK_TEST_CLOCK";

/// A time that does not come.
inline constexpr std::int64_t kNever = std::numeric_limits<std::int64_t>::max();

/// To the application: it is that late now. The first one answers the application's connecting.
struct ClockOrder {
  std::uint64_t number;
  std::int64_t time;
};

/// To the runner.
struct ClockReport {
  std::uint64_t number;  ///< of the last order that was heard
  std::int64_t time;     ///< by the application's clock
  std::int64_t next;     ///< when its next timer is due; kNever without one
  std::uint64_t atRest;  ///< 1 when nothing goes on in it; 0 when something has for a good while
};

}  // namespace morvik::devkit
