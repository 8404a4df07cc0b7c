// Durations and moments as text.
#include "run/duration.h"

#include <array>
#include <cstdio>

#include "device/owned.h"

namespace morvik::devkit {
namespace {

using std::chrono::duration_cast;
using Milliseconds = std::chrono::milliseconds;

constexpr long kSecond = 1000;
constexpr long kMinute = 60 * kSecond;
constexpr long kHour = 60 * kMinute;

// A number, a unit, and the same of the next smaller unit.
std::string twoUnits(long ms, long unit, const char* name, long smaller, const char* smallName) {
  return std::to_string(ms / unit) + ' ' + name + ' ' + std::to_string(ms % unit / smaller) + ' ' +
         smallName;
}

using Zone = GDateTime* (*)(gint64);

std::string formatted(TimePoint time, Zone zone, const char* format) {
  const auto ms = duration_cast<Milliseconds>(time.time_since_epoch()).count();
  const GDate date(zone(ms / kSecond));
  std::array<char, 8> tail{};
  std::snprintf(tail.data(), tail.size(), ".%03d", static_cast<int>(ms % kSecond));
  return GText(g_date_time_format(date.get(), format)).get() + std::string(tail.data());
}

}  // namespace

std::string inWords(TimePoint::duration duration) {
  const long ms = static_cast<long>(duration_cast<Milliseconds>(duration).count());
  if (ms < kSecond) return std::to_string(ms) + " ms";
  if (ms >= kHour) return twoUnits(ms, kHour, "h", kMinute, "min");
  if (ms >= kMinute) return twoUnits(ms, kMinute, "min", kSecond, "s");
  return std::to_string(ms / kSecond) + '.' + std::to_string(ms % kSecond / 100) + " s";
}

std::string timeOfDay(TimePoint time) {
  return formatted(time, g_date_time_new_from_unix_local, "%H:%M:%S");
}

std::string isoTime(TimePoint time) {
  return formatted(time, g_date_time_new_from_unix_utc, "%Y-%m-%dT%H:%M:%S") + 'Z';
}

}  // namespace morvik::devkit
