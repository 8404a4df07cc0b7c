// Stands in front of GLib in a program under test and shortens its long timers by a factor of 100,
// from the interval in SHORT_TIMERS_FROM (10000 ms when it is not set) upwards. Each shortened one
// is told on standard error with its real interval: "short-timers: 10000\n".
#include <dlfcn.h>
#include <glib.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace {

constexpr guint kFactor = 100;
constexpr guint kUsualShortest = 10000;

guint shortestToShorten() {
  const char* from = std::getenv("SHORT_TIMERS_FROM");
  return from == nullptr ? kUsualShortest : static_cast<guint>(std::strtoul(from, nullptr, 10));
}

guint shortened(guint interval) {
  if (interval < shortestToShorten()) return interval;
  dprintf(STDERR_FILENO, "short-timers: %u\n", interval);
  return interval / kFactor;
}

}  // namespace

extern "C" guint g_timeout_add_full(gint priority, guint interval, GSourceFunc function,
                                    gpointer data, GDestroyNotify notify) {
  using TimeoutAddFull = decltype(&g_timeout_add_full);
  static const auto real = reinterpret_cast<TimeoutAddFull>(dlsym(RTLD_NEXT, "g_timeout_add_full"));
  return real(priority, shortened(interval), function, data, notify);
}

extern "C" guint g_timeout_add(guint interval, GSourceFunc function, gpointer data) {
  return g_timeout_add_full(G_PRIORITY_DEFAULT, interval, function, data, nullptr);
}
