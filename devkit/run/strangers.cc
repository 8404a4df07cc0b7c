// xdg-open, and what becomes a child of a process that adopts orphans.
#include "run/strangers.h"

#include <sys/wait.h>
#include <unistd.h>

#include "device/owned.h"

namespace morvik::devkit {
namespace {

constexpr guint kSecondsBetweenLooks = 5;

// A browser's processes lose their parents and become this one's children. Their group tells them
// from launchers and applications, whose ends others wait for.
gboolean reapEnded(gpointer group) {
  pid_t ended = 0;
  do ended = waitpid(-GPOINTER_TO_INT(group), nullptr, WNOHANG);
  while (ended > 0);
  return ended < 0 ? G_SOURCE_REMOVE : G_SOURCE_CONTINUE;
}

void leadGroup(gpointer /*nothing*/) { setpgid(0, 0); }

}  // namespace

std::string openInBrowser(const std::string& address) {
  char opener[] = "xdg-open";
  std::string argument = address;
  char* words[] = {opener, argument.data(), nullptr};
  constexpr auto kQuiet =
      static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_DO_NOT_REAP_CHILD |
                               G_SPAWN_STDOUT_TO_DEV_NULL | G_SPAWN_STDERR_TO_DEV_NULL);
  GErrorOwned error;
  GPid group = 0;
  if (g_spawn_async(nullptr, words, nullptr, kQuiet, leadGroup, nullptr, &group, error.out()) ==
      FALSE) {
    return error.text();
  }
  g_timeout_add_seconds(kSecondsBetweenLooks, reapEnded, GINT_TO_POINTER(group));
  return "";
}

}  // namespace morvik::devkit
