// Records for the system log. The C library's syslog makes three system calls of each line; here
// all lines of a stretch of work cost one.
#include "host/system-log.h"

#include <pthread.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string_view>
#include <utility>

namespace morvik {
namespace {

constexpr const char* kIdent = "MorvikVM";
constexpr int kFacility = LOG_LOCAL1;

// "<143>Feb 28 12:00:01 MorvikVM[4194304]: "
constexpr std::size_t kHeadRoom = 64;

// A turn of the main loop has some ten records of some hundred bytes. Behind this much, any one
// record has room still.
constexpr unsigned kMostHeld = 32;
constexpr std::size_t kFull = 16384;
constexpr std::size_t kRoom = kFull + kHeadRoom + kMaxRecordSize + 1;

// A text in a piece of memory that has room for it.
char* append(char* end, std::string_view text) {
  std::memcpy(end, text.data(), text.size());
  return end + text.size();
}

char* append(char* end, int number) { return std::to_chars(end, end + kHeadRoom, number).ptr; }

// The part of a record's head that is the same for a whole second: date, program and process.
class RecordHead {
 public:
  std::string_view now() {
    const std::time_t time = std::time(nullptr);
    if (time != time_ || length_ == 0) write(time);
    return {text_.data(), length_};
  }
  void forget() { length_ = 0; }

 private:
  void write(std::time_t time) {
    std::tm parts{};
    localtime_r(&time, &parts);
    char* end = text_.data() + std::strftime(text_.data(), text_.size(), "%b %e %T ", &parts);
    end = append(append(append(append(end, kIdent), "["), getpid()), "]: ");
    length_ = static_cast<std::size_t>(end - text_.data());
    time_ = time;
  }

  std::time_t time_ = 0;
  std::array<char, 2 * kHeadRoom> text_{};
  std::size_t length_ = 0;
};

// A socket to the daemon, which is looked for again as long as there is none.
class LogConnection {
 public:
  void open(const char* path) {
    path_ = path;
    connect();
  }
  void close() {
    if (socket_ >= 0) ::close(socket_);
    socket_ = -1;
  }

  // How many of the records were taken, from the first one on. Blocks while the daemon is behind.
  // A daemon that has started anew is met at the second attempt.
  unsigned send(mmsghdr* records, unsigned count) {
    for (int attempt = 0; attempt < 2 && isConnected(); ++attempt) {
      const int taken = sendmmsg(socket_, records, count, MSG_NOSIGNAL);
      if (taken > 0) return static_cast<unsigned>(taken);
      if (errno != EINTR) close();
    }
    return 0;
  }

 private:
  bool isConnected() { return socket_ >= 0 || connect(); }

  bool connect() {
    if (path_ == nullptr) return false;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path_, sizeof address.sun_path - 1);
    socket_ = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const auto* generic = reinterpret_cast<const sockaddr*>(&address);
    if (socket_ >= 0 && ::connect(socket_, generic, sizeof address) == 0) return true;
    close();
    return false;
  }

  const char* path_ = nullptr;
  int socket_ = -1;
};

// The C library knows the way to the console, and to a daemon with a socket of another kind.
void passToLibrary(int priority, std::string_view text, std::string_view tail = "") {
  syslog(priority, "%.*s%.*s", static_cast<int>(text.size()), text.data(),
         static_cast<int>(tail.size()), tail.data());
}

// Set for as long as it lives.
class Busy {
 public:
  explicit Busy(volatile std::sig_atomic_t& flag) : flag_(flag) { flag_ = 1; }
  ~Busy() { flag_ = 0; }
  Busy(const Busy&) = delete;
  Busy& operator=(const Busy&) = delete;

 private:
  volatile std::sig_atomic_t& flag_;
};

// One per process, in static memory alone: it serves where no memory is left. A signal's handler
// that interrupts it is kept out of what is half done.
class SystemLog {
 public:
  LogConnection connection;
  RecordHead head;
  int holds = 0;

  void write(int priority, std::string_view text, std::string_view tail) {
    if (busy_ != 0) return passToLibrary(priority, text, tail);
    if (count_ == kMostHeld || used_ > kFull) send();
    add(priority, text, tail);
    if (holds == 0) send();
  }

  void send() {
    if (busy_ != 0) return;
    const Busy busy(busy_);
    for (unsigned sent = 0; sent < count_;) {
      const unsigned taken = connection.send(&messages_[sent], count_ - sent);
      if (taken == 0) passToLibrary(records_[sent].priority, records_[sent].text);
      sent += taken > 0 ? taken : 1;
    }
    count_ = 0;
    used_ = 0;
  }

 private:
  struct Record {
    int priority;
    const char* text;
  };

  void add(int priority, std::string_view text, std::string_view tail) {
    const Busy busy(busy_);
    char* const start = room_.data() + used_;
    char* const body =
        append(append(append(append(start, "<"), kFacility | priority), ">"), head.now());
    char* const end = append(append(body, text), tail);
    *end = '\0';
    hold({priority, body}, {start, static_cast<std::size_t>(end - start)});
  }

  void hold(Record record, iovec whole) {
    records_[count_] = record;
    pieces_[count_] = whole;
    messages_[count_].msg_hdr.msg_iov = &pieces_[count_];
    messages_[count_].msg_hdr.msg_iovlen = 1;
    used_ += whole.iov_len + 1;
    ++count_;
  }

  volatile std::sig_atomic_t busy_ = 0;

  std::array<char, kRoom> room_{};
  std::size_t used_ = 0;
  std::array<Record, kMostHeld> records_{};
  std::array<iovec, kMostHeld> pieces_{};
  std::array<mmsghdr, kMostHeld> messages_{};
  unsigned count_ = 0;
};

SystemLog systemLog;

// Nothing is locked: a thread that a library has started goes by the C library, as does a process
// that has not opened the log.
thread_local bool isOpen = false;

void forgetParent() { systemLog.head.forget(); }

// Once in a process: what is registered stays.
void watchProcess() {
  static const bool watches =
      pthread_atfork(nullptr, nullptr, forgetParent) == 0 && std::atexit(sendHeldRecords) == 0;
  if (!watches) std::abort();
}

}  // namespace

void openSystemLog(const char* path) {
  openlog(kIdent, LOG_PID | LOG_CONS, kFacility);
  systemLog.connection.open(path);
  isOpen = true;
  watchProcess();
}

void closeSystemLog() {
  sendHeldRecords();
  systemLog.connection.close();
  closelog();
  isOpen = false;
}

void writeRecord(int priority, std::string_view text, std::string_view tail) {
  if (isOpen) return systemLog.write(priority, text, tail);
  passToLibrary(priority, text, tail);
}

void sendHeldRecords() { systemLog.send(); }

HeldRecords::HeldRecords() { ++systemLog.holds; }

HeldRecords::~HeldRecords() {
  if (--systemLog.holds == 0) systemLog.send();
}

PromptRecords::PromptRecords() : given_(std::exchange(systemLog.holds, 0)) { systemLog.send(); }

PromptRecords::~PromptRecords() { systemLog.holds = given_; }

}  // namespace morvik
