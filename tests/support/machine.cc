#include "support/machine.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace morvik::test {
namespace {

bool writeFile(const char* path, std::string_view text) {
  const int file = open(path, O_WRONLY | O_CLOEXEC);
  if (file < 0) return false;
  const bool written = write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  close(file);
  return written;
}

// The user stays the same within.
bool mapItself(const char* path, unsigned id) {
  char line[64];
  const int length = std::snprintf(line, sizeof line, "%u %u 1", id, id);
  return writeFile(path, {line, static_cast<std::size_t>(length)});
}

// Tried by a process that ends at once, since there is no way back.
std::optional<std::string> tryMountNamespace() {
  const pid_t child = fork();
  if (child == 0) _exit(enterMountNamespace() == nullptr ? 0 : errno);
  int status = 0;
  if (child < 0 || waitpid(child, &status, 0) != child || status == 0) return {};
  return std::string("this machine gives no mount namespaces (") +
         std::strerror(WEXITSTATUS(status)) + ")";
}

}  // namespace

const char* enterMountNamespace() {
  const bool root = geteuid() == 0;
  const unsigned user = geteuid();
  const unsigned group = getegid();
  if (unshare(root ? CLONE_NEWNS : CLONE_NEWNS | CLONE_NEWUSER) != 0) return "unshare";
  if (!root) {
    if (!writeFile("/proc/self/setgroups", "deny")) return "setgroups";
    if (!mapItself("/proc/self/uid_map", user)) return "uid_map";
    if (!mapItself("/proc/self/gid_map", group)) return "gid_map";
  }
  if (mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) return "private mounts";
  return nullptr;
}

const std::optional<std::string>& lackOfMountNamespaces() {
  static const std::optional<std::string> lack = tryMountNamespace();
  return lack;
}

}  // namespace morvik::test
