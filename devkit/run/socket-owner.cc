// The kernel's table of connections, and the descriptors of processes.
#include "run/socket-owner.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>

namespace morvik::devkit {
namespace {

namespace fs = std::filesystem;

// The port in "0100007F:1CF2", an address and a port in hexadecimal digits.
unsigned portOf(std::string_view end) {
  unsigned port = 0;
  const std::size_t digits = end.find(':') + 1;
  std::from_chars(end.data() + digits, end.data() + end.size(), port, 16);
  return port;
}

// The number of the socket in the table's row; empty when the row is of another connection.
std::string inodeIn(const std::string& row, std::uint16_t port, std::uint16_t serverPort) {
  constexpr int kFieldsBetween = 6;  // state, queues, timer, retransmits, user, timeout
  std::istringstream fields(row);
  std::string number;
  std::string local;
  std::string remote;
  if (!(fields >> number >> local >> remote)) return "";
  if (portOf(local) != port || portOf(remote) != serverPort) return "";
  std::string field;
  for (int skipped = 0; skipped < kFieldsBetween; ++skipped) fields >> field;
  return fields >> field ? field : "";
}

std::string inodeOf(std::uint16_t port, std::uint16_t serverPort) {
  std::ifstream table("/proc/net/tcp");
  std::string row;
  std::getline(table, row);  // the heading
  while (std::getline(table, row)) {
    std::string inode = inodeIn(row, port, serverPort);
    if (!inode.empty()) return inode;
  }
  return "";
}

bool holds(pid_t process, const std::string& link) {
  std::error_code error;
  fs::directory_iterator entries("/proc/" + std::to_string(process) + "/fd", error);
  return std::any_of(fs::begin(entries), fs::end(entries),
                     [&link](const fs::directory_entry& entry) {
                       std::error_code gone;
                       return fs::read_symlink(entry.path(), gone) == link;
                     });
}

}  // namespace

pid_t ownerOfConnection(std::uint16_t port, std::uint16_t serverPort,
                        std::span<const pid_t> processes) {
  const std::string inode = inodeOf(port, serverPort);
  if (inode.empty()) return 0;
  const std::string link = "socket:[" + inode + "]";
  const auto found = std::find_if(processes.begin(), processes.end(),
                                  [&link](pid_t process) { return holds(process, link); });
  return found != processes.end() ? *found : 0;
}

}  // namespace morvik::devkit
