#include "compare/system-log.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace morvik::bench {

// The tests' own log keeps and takes apart every record, which would be measured. Its namespace is
// what is wanted of it; the daemon takes the place of its socket.
SystemLog::SystemLog(const std::string& daemon) : place_(folder_.path()) {
  std::filesystem::remove(path());
  daemon_ = std::make_unique<Program>(Command{.words = {daemon, path()}});
  daemon_->output().await("listening");
}

test::Descriptor SystemLog::connected() const {
  test::Descriptor socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, path().c_str(), sizeof address.sun_path - 1);
  if (connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
    throw std::system_error(errno, std::generic_category(), path());
  return socket;
}

}  // namespace morvik::bench
