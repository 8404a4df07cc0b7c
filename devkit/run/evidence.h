// What is known of one application when it ends: all that an explanation of the end may rest on.
#pragma once

#include <sys/types.h>

#include <deque>
#include <map>
#include <optional>
#include <string>

#include "device/event.h"
#include "run/exception-report.h"
#include "run/log-line.h"
#include "run/message-facts.h"

namespace morvik::devkit {

/// How far an application has come.
enum class AppState {
  kLaunched,     ///< its process is there or about to be
  kStarted,      ///< main.js is being run or has been
  kConnected,    ///< connected to a device server
  kWaiting,      ///< has asked for interactive mode
  kInteractive,  ///< may use the device
  kStopping,     ///< the server has stopped interactive mode
};

/// "waiting for interactive mode", to stand in a sentence.
const char* wordsOf(AppState state);

/// Who ended it.
enum class EndedBy {
  kItself,   ///< or the system, or anybody but this program
  kRestart,  ///< this program, to launch it again
  kQuit,     ///< this program, at its own end or when told
};

/// Why there was no application at all.
enum class LaunchProblem {
  kNone,
  kHostMissing,        ///< no such program
  kHostNotExecutable,  ///< a file that cannot be run
  kLineRefused,        ///< no launch line can be made of it
  kLauncherFull,       ///< three applications were there already
  kNoProcess,          ///< the launcher got no process for it, or ended early
};

struct Evidence {
  std::string app;
  TimePoint launchedAt;
  TimePoint endedAt;
  std::string problemText;  ///< what is wrong, for the problems that have more to tell

  // What its log has told.
  std::string descriptorPath;             ///< where it looked for descriptor.xml
  std::string descriptorComplaint;        ///< the first thing that libxml2 said of it
  std::string lastSource;                 ///< the script file that it read last, as a path
  std::string fatalText;                  ///< the text that ended it
  std::string connectTrouble;             ///< why the last attempt to connect failed
  std::string lastText;                   ///< the last host line
  std::optional<ExceptionReport> report;  ///< the last exception that nobody caught

  // What its messages have told.
  std::string startAnswer;           ///< the code of the answer to the last start request
  std::map<std::string, int> heard;  ///< how many messages of each payload it got

  /// Why the device server left it; empty when that is not known.
  std::string serverLeft;
  /// The last lines of its log, noise and debug lines left out.
  std::deque<LogLine> lastLines;

  pid_t pid = 0;
  AppState state = AppState::kLaunched;
  EndedBy endedBy = EndedBy::kItself;
  ServerLoss serverLoss = ServerLoss::kNone;  ///< as whoever stands at the server's side saw it
  LaunchProblem problem = LaunchProblem::kNone;
  /// As waitpid gives it; nothing when somebody else was told, such as a launcher that still ran.
  std::optional<int> waitStatus;

  // What its log has told, as well.
  bool readDescriptor = false;     ///< began to read descriptor.xml
  bool hasDescriptor = false;      ///< has read it
  bool calledExit = false;         ///< called exit, with whatever arguments
  bool autokill = false;           ///< not interactive in time
  bool stopAutokill = false;       ///< its time after a stop notice was over
  bool startRefused = false;       ///< the server refused interactive mode
  bool fatalWhileReading = false;  ///< fatalText came of reading lastSource
  bool playMemory = false;         ///< no memory for the name given to play
  /// Whether its config.bin is there and is none.
  bool configIsBroken = false;
};

/// Puts the evidence together from lines and messages as they come.
class EvidenceCollector {
 public:
  /// A line of its log. At the debug level the log shows its messages as well.
  void hear(const LogLine& line);
  /// Its connection has been accepted; what became of one before is over.
  void connected();
  /// It has lost its device server; `why` may be empty.
  void left(ServerLoss loss, const std::string& why);

  const Evidence& evidence() const { return evidence_; }
  Evidence& evidence() { return evidence_; }

 private:
  void reach(AppState state);
  void hearHost(const LogLine& line);
  bool isReadFailure(const std::string& text) const;
  void hearForeign(const std::string& text);
  void hearFatal(const std::string& text);
  void hearSteps(const std::string& text);
  void hearEnds(const std::string& text);
  void hearReport(const ExceptionReport& report);
  void hearConnecting(std::string_view text);
  void hearMessage(const MessageFacts& message);
  void keep(const LogLine& line);

  Evidence evidence_;
  ReportReader reports_;
  bool connecting_ = false;
  std::string startId_;  // the last start request
};

}  // namespace morvik::devkit
