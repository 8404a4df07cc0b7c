// A system log that keeps nothing: what stands behind /dev/log in every comparison, so that no
// reader of the log is slow enough to be measured.
//
//   bench-log-daemon PATH    takes datagrams at PATH until it is killed
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace {

constexpr std::size_t kAtOnce = 64;
constexpr std::size_t kRecordSize = 2048;  // of a longer one the rest is dropped by the system

struct Records {
  std::array<std::array<char, kRecordSize>, kAtOnce> bytes;
  std::array<iovec, kAtOnce> places;
  std::array<mmsghdr, kAtOnce> headers;
};

bool bindTo(int socket, const char* path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  const std::size_t length = std::strlen(path);
  if (length >= sizeof address.sun_path) return false;
  std::memcpy(address.sun_path, path, length);
  return bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

void prepare(Records& records) {
  for (std::size_t i = 0; i < kAtOnce; ++i) {
    records.places[i] = {records.bytes[i].data(), kRecordSize};
    records.headers[i] = {};
    records.headers[i].msg_hdr.msg_iov = &records.places[i];
    records.headers[i].msg_hdr.msg_iovlen = 1;
  }
}

}  // namespace

int main(int argc, char** argv) {
  static Records records;
  const int socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (argc != 2 || !bindTo(socket, argv[1])) {
    std::fprintf(stderr, "usage: bench-log-daemon PATH, where nothing is yet\n");
    return 2;
  }
  std::puts("listening");
  std::fflush(stdout);
  prepare(records);
  while (recvmmsg(socket, records.headers.data(), kAtOnce, MSG_WAITFORONE, nullptr) >= 0 ||
         errno == EINTR) {
  }
  return 1;
}
