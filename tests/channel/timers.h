// The main loop's timers as tests see them. Those of stop notices have no user data.
#pragma once

#include <glib.h>

#include <array>

namespace morvik::test {

/// Removes the timers that stop notices have armed, and tells how many there were.
inline int removeTimers() {
  int count = 0;
  while (g_source_remove_by_funcs_user_data(&g_timeout_funcs, nullptr)) ++count;
  return count;
}

/// Milliseconds until the main loop's next timer; -1 when there is none.
inline int nextTimer() {
  GMainContext* loop = g_main_context_default();
  if (!g_main_context_acquire(loop)) return -1;
  int priority = 0;
  int milliseconds = -1;
  std::array<GPollFD, 8> descriptors{};
  g_main_context_prepare(loop, &priority);
  g_main_context_query(loop, G_MAXINT, &milliseconds, descriptors.data(), descriptors.size());
  g_main_context_release(loop);
  return milliseconds;
}

}  // namespace morvik::test
