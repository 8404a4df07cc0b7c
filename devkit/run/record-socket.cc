// A pair of local sockets whose reading end is given each writer's process id by the kernel.
#include "run/record-socket.h"

#include <sys/socket.h>

#include <array>
#include <cstring>
#include <string>

namespace morvik::devkit {
namespace {

// Above what a local socket takes in one piece.
constexpr std::size_t kLongestRead = std::size_t{256} * 1024;

pid_t writerOf(msghdr& message) {
  const cmsghdr* header = CMSG_FIRSTHDR(&message);
  if (header == nullptr || header->cmsg_type != SCM_CREDENTIALS) return 0;
  ucred credentials{};
  std::memcpy(&credentials, CMSG_DATA(header), sizeof(credentials));
  return credentials.pid;
}

}  // namespace

RecordSocket::RecordSocket(Kind kind, Sink sink, Ended ended)
    : sink_(std::move(sink)), endedSink_(std::move(ended)), buffer_(kLongestRead, '\0') {
  const int type = kind == Kind::kRecords ? SOCK_SEQPACKET : SOCK_STREAM;
  std::array<int, 2> ends{-1, -1};
  if (socketpair(AF_UNIX, type | SOCK_CLOEXEC, 0, ends.data()) != 0) return;
  reader_ = FileDescriptor(ends[0]);
  writer_ = FileDescriptor(ends[1]);
  const int yes = 1;
  setsockopt(reader_.get(), SOL_SOCKET, SO_PASSCRED, &yes, sizeof(yes));
  source_ = whenReadable(reader_.get(), [this] { return take(); });
}

bool RecordSocket::take() {
  readOnce();
  if (!hasEnded_) return true;
  endedSink_();
  return false;
}

void RecordSocket::drain() {
  while (!hasEnded_ && readOnce()) {
  }
}

bool RecordSocket::readOnce() {
  std::array<char, CMSG_SPACE(sizeof(ucred))> control{};
  iovec vector{buffer_.data(), buffer_.size()};
  msghdr message{};
  message.msg_iov = &vector;
  message.msg_iovlen = 1;
  message.msg_control = control.data();
  message.msg_controllen = control.size();
  const ssize_t count = recvmsg(reader_.get(), &message, MSG_DONTWAIT | MSG_CMSG_CLOEXEC);
  if (count < 0) return false;
  hasEnded_ = count == 0;
  if (count > 0) {
    sink_(writerOf(message), std::string_view(buffer_).substr(0, static_cast<std::size_t>(count)));
  }
  return true;
}

}  // namespace morvik::devkit
