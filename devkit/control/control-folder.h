// Where running tools of this user can be reached: a folder with a socket for each, named by its
// process id.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace morvik::devkit {

/// The folder, made when it is not there: in $XDG_RUNTIME_DIR, or a private one in the folder for
/// temporary files. Nothing when there is none that belongs to this user alone, with the reason in
/// `trouble`.
std::optional<std::filesystem::path> controlFolder(std::string& trouble);

struct RunningTool {
  pid_t process;
  std::filesystem::path socket;
};

/// The tools that can be reached, by process id. Sockets that killed ones have left are removed.
std::vector<RunningTool> runningTools(const std::filesystem::path& folder);

/// Connects to a socket in the folder. -1 when nobody listens there, `errno` telling why.
int connectTo(const std::filesystem::path& socket);

/// Whether the process at the other end of a local connection is this user's.
bool isOwnPeer(int socket);

}  // namespace morvik::devkit
