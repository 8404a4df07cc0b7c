// The way to the system log: records in the form of its daemon, handed to the daemon's socket one
// by one or several at a time.
#pragma once

#include <cstddef>
#include <string_view>

namespace morvik {

/// The most that `text` and `tail` of a record may have together, in bytes. The socket's send
/// buffer is 212,992 bytes where nobody has changed it, and what is larger is refused.
inline constexpr std::size_t kMaxRecordSize = 131072 + 256;

/// The daemon's socket on every system.
inline constexpr const char* kSystemLogPath = "/dev/log";

/// Connects to the system log at once, as openlog does with LOG_NDELAY: ident "MorvikVM", with the
/// process's number, facility LOG_LOCAL1. A daemon that is not there, or that starts anew, is
/// looked for again at the next record. What no daemon takes goes to the console. `path` must
/// outlive the last record.
void openSystemLog(const char* path = kSystemLogPath);

/// Hands over what is held, and closes the connection.
void closeSystemLog();

/// One record: `text`, and `tail` right behind it, without any zero byte. Reaches the daemon before
/// this returns, unless a HeldRecords lives. Takes no memory.
void writeRecord(int priority, std::string_view text, std::string_view tail = "");

/// Hands over what is held, in its order. To be called before anything that may block, that others
/// can see, or that runs script: until then nobody can tell that a record has waited. A signal's
/// handler may call it.
void sendHeldRecords();

/// While one lives, records wait for the last one's end, for sendHeldRecords, for the end of the
/// process by exit, or until there is no more room for them; then one system call takes them all.
/// For a stretch of work that takes some microseconds.
class HeldRecords {
 public:
  HeldRecords();
  ~HeldRecords();
  HeldRecords(const HeldRecords& /*other*/) : HeldRecords() {}
  HeldRecords& operator=(const HeldRecords&) = delete;
};

/// While one lives, no record waits that is not held by a HeldRecords made later. Around script,
/// which may run for ever, and for a signal's handler. Hands over what is held when it begins.
class PromptRecords {
 public:
  PromptRecords();
  ~PromptRecords();
  PromptRecords(const PromptRecords&) = delete;
  PromptRecords& operator=(const PromptRecords&) = delete;

 private:
  int given_;
};

}  // namespace morvik
