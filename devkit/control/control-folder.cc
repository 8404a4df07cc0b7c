// The rights of the folder, and the sockets in it.
#include "control/control-folder.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <cstring>

namespace morvik::devkit {
namespace {

namespace fs = std::filesystem;

constexpr const char* kSocketEnd = ".sock";

bool isPrivate(const fs::path& folder) {
  struct stat status {};
  constexpr mode_t kOthers = S_IRWXG | S_IRWXO;
  return lstat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
         status.st_uid == geteuid() && (status.st_mode & kOthers) == 0;
}

fs::path wantedFolder() {
  const char* runtime = std::getenv("XDG_RUNTIME_DIR");
  if (runtime != nullptr && *runtime == '/') return fs::path(runtime) / "morvik-dev";
  return fs::temp_directory_path() / ("morvik-dev-" + std::to_string(geteuid()));
}

// The number in "4711.sock"; 0 for other names.
pid_t processIn(const fs::path& name) {
  if (name.extension() != kSocketEnd) return 0;
  const std::string digits = name.stem();
  pid_t process = 0;
  const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), process);
  return read.ptr == digits.data() + digits.size() && process > 0 ? process : 0;
}

// Nobody takes connections any more at a socket whose process is gone.
bool isReachable(const fs::path& socket) {
  const int connection = connectTo(socket);
  if (connection >= 0) {
    close(connection);
    return true;
  }
  if (errno == ECONNREFUSED) unlink(socket.c_str());
  return false;
}

}  // namespace

std::optional<fs::path> controlFolder(std::string& trouble) {
  const fs::path folder = wantedFolder();
  constexpr mode_t kOwner = S_IRWXU;
  if (mkdir(folder.c_str(), kOwner) != 0 && errno != EEXIST) {
    trouble = folder.string() + ": " + std::strerror(errno);
    return std::nullopt;
  }
  if (!isPrivate(folder)) {
    trouble = folder.string() + " is not a folder of this user alone";
    return std::nullopt;
  }
  return folder;
}

std::vector<RunningTool> runningTools(const fs::path& folder) {
  std::vector<RunningTool> tools;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(folder, error)) {
    const pid_t process = processIn(entry.path().filename());
    if (process > 0 && isReachable(entry.path())) tools.push_back({process, entry.path()});
  }
  std::ranges::sort(tools, {}, &RunningTool::process);
  return tools;
}

int connectTo(const fs::path& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.string().size() >= sizeof address.sun_path) {
    errno = ENAMETOOLONG;
    return -1;
  }
  path.string().copy(address.sun_path, sizeof address.sun_path - 1);
  const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (socket < 0) return -1;
  if (connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
    return socket;
  const int why = errno;
  close(socket);
  errno = why;
  return -1;
}

bool isOwnPeer(int socket) {
  ucred peer{};
  socklen_t size = sizeof peer;
  return getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == geteuid();
}

}  // namespace morvik::devkit
