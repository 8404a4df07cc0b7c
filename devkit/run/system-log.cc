// A datagram socket in the file system.
#include "run/system-log.h"

#include <gio/gunixsocketaddress.h>
#include <sys/stat.h>
#include <unistd.h>

namespace morvik::devkit {
namespace {

constexpr std::size_t kLongestRecord = std::size_t{256} * 1024;

GOwned<GSocket> datagramSocket(GErrorOwned& error) {
  return GOwned<GSocket>(g_socket_new(G_SOCKET_FAMILY_UNIX, G_SOCKET_TYPE_DATAGRAM,
                                      G_SOCKET_PROTOCOL_DEFAULT, error.out()));
}

std::optional<ino_t> socketAt(const std::string& path) {
  struct stat status {};
  if (lstat(path.c_str(), &status) != 0 || !S_ISSOCK(status.st_mode)) return std::nullopt;
  return status.st_ino;
}

bool somebodyListens(GSocketAddress* address) {
  GErrorOwned ignored;
  const GOwned<GSocket> probe = datagramSocket(ignored);
  return probe && g_socket_connect(probe.get(), address, nullptr, nullptr) != FALSE;
}

}  // namespace

std::optional<std::string> SystemLog::listen(const std::string& path) {
  const GOwned<GSocketAddress> address(g_unix_socket_address_new(path.c_str()));
  if (somebodyListens(address.get())) return "somebody else listens there already";
  if (socketAt(path)) unlink(path.c_str());
  GErrorOwned error;
  socket_ = datagramSocket(error);
  if (!socket_ || g_socket_bind(socket_.get(), address.get(), FALSE, error.out()) == FALSE) {
    return error.text();
  }
  path_ = path;
  inode_ = socketAt(path).value_or(0);
  chmod(path.c_str(), S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH);
  source_.reset(g_socket_create_source(socket_.get(), G_IO_IN, nullptr));
  g_source_set_callback(source_.get(), G_SOURCE_FUNC(onReadable), this, nullptr);
  g_source_attach(source_.get(), nullptr);
  return std::nullopt;
}

SystemLog::~SystemLog() {
  if (source_) g_source_destroy(source_.get());
  if (!path_.empty() && socketAt(path_) == inode_) unlink(path_.c_str());
}

gboolean SystemLog::onReadable(GSocket* socket, GIOCondition /*condition*/, gpointer log) {
  std::string record(kLongestRecord, '\0');
  const gssize size = g_socket_receive(socket, record.data(), record.size(), nullptr, nullptr);
  if (size > 0) {
    static_cast<SystemLog*>(log)->sink_(
        std::string_view(record).substr(0, static_cast<std::size_t>(size)));
  }
  return G_SOURCE_CONTINUE;
}

}  // namespace morvik::devkit
