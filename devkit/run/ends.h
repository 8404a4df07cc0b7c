// Every end of an application explained: what happened, why most likely, and what cures it.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "run/evidence.h"

namespace morvik::devkit {

/// In docs/ends.md each has its line.
enum class EndKind {
  // There was no application.
  kHostMissing,
  kHostNotExecutable,
  kLineRefused,
  kLauncherFull,
  kNoProcess,
  // This program ended it.
  kRestarted,
  kQuit,
  // The files of its folder.
  kPathTooLong,
  kNoDescriptor,
  kBrokenDescriptor,
  kDescriptorUnread,
  kEmptyAccess,
  kNoMainScript,
  kUnreadableMainScript,
  kIncludeMissing,
  // The device server.
  kServerMissing,
  kServerReset,
  kServerClosed,
  kServerBrokeOff,
  kSendFailed,
  kSentToNobody,
  kTooManyFiles,
  kEmptyRecognition,
  kInteractiveRefused,
  kStopNotice,
  // Memory and the script engine.
  kEventsKept,
  kHeapFull,
  kMemoryLimit,
  kEngineFailed,
  kWebMemory,
  kPlayMemory,
  // Not interactive in time.
  kExitTooEarly,
  kConnectionRefused,
  kArrayBuffers,
  kBrokenConfig,
  kScriptFailed,
  kNeverConnected,
  kNeverStarted,
  kStartAnsweredWithoutCode,
  kStartNotAnswered,
  // The rest.
  kKilled,
  kToldToEnd,
  kCrashed,
  kScriptExit,
  kFatal,
  kUnknown,
};

/// "never-connected", the name of a kind in files.
const char* nameOf(EndKind kind);
/// The kind of a name; kUnknown for a name that is none.
EndKind endKindOf(std::string_view name);
/// All kinds, in their order.
std::span<const EndKind> endKinds();

struct End {
  EndKind kind = EndKind::kUnknown;
  std::string app;
  pid_t pid = 0;  ///< 0 when there was no process
  TimePoint launchedAt;
  TimePoint endedAt;
  std::string state;     ///< in words
  std::string status;    ///< "status 255", "killed by SIGTRAP", or why that is not known
  std::string sentence;  ///< what happened and why, one sentence
  std::string cure;      ///< what to do; empty when there is nothing to cure
  std::vector<std::string> lastLines;
};

End explain(const Evidence& evidence);

/// Nobody but the author wanted it: neither a failure nor a surprise.
bool isWanted(EndKind kind);

/// "clock ended after 10.0 s, not connected, status 255" and the like.
std::string headlineOf(const End& end);

}  // namespace morvik::devkit
