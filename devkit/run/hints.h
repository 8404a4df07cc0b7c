// What an author should know of an application that still runs.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "run/exception-report.h"
#include "run/log-line.h"
#include "run/message-facts.h"

namespace morvik::devkit {

enum class HintKind {
  kThrew,           ///< an exception that nobody caught; the application lives on
  kNotGranted,      ///< an object that is not there for want of an access
  kListenerEnded,   ///< a listener is gone, as it did not return true or threw
  kNotInteractive,  ///< a request before interactive mode was there
  kConnectFirst,    ///< morvik.start before morvik.connect
  kWrongArguments,  ///< a call that the host does not take
  kArrayBuffers,    ///< more array buffers than an application may have
  kAccessDenied,    ///< a file name that no script may use
  kBrokenConfig,    ///< config.bin is there and is none
};

/// "not-granted", the name of a kind in files.
const char* nameOf(HintKind kind);

struct Hint {
  HintKind kind = HintKind::kThrew;
  std::string app;
  std::string place;  ///< "main.js:12"; empty where there is none
  std::string text;   ///< what is the matter and what to do, for a person
};

/// Hears the lines of one application in order. A hint is given once for each kind and place, or
/// for each text where there is no place.
///
/// A listener's end is not logged. But the host logs each listener that it offers a message to, so
/// one that was offered a message and is left out at a later one has ended at the former. That
/// shows at the next message, and when no listener at all is left, at the one behind it.
class Hints {
 public:
  std::vector<Hint> take(const LogLine& line);

 private:
  struct Listener {
    std::string address;    // as in the log
    std::string heardLast;  // the payload of the last message that it was offered
  };
  // What an application that fails in ever new places may take here.
  static constexpr std::size_t kMostHints = 200;

  void takeReport(const ExceptionReport& report);
  void takeHost(const std::string& text);
  void takeMessage(const MessageFacts& message);
  void startRound(const std::string& payload);
  void endRound();
  void added(const std::string& address);
  void offered(const std::string& address);
  void removeListener(std::size_t index);
  void give(HintKind kind, const std::string& place, const std::string& text);

  ReportReader reports_;
  std::set<std::string> given_;
  std::vector<Hint> hints_;

  std::vector<Listener> listeners_;  // in the order of their registration
  bool inRound_ = false;             // a message is being offered
  std::string message_;              // its payload
  std::size_t next_ = 0;             // whose turn it is
  std::size_t old_ = 0;              // how many were there when the round began
};

}  // namespace morvik::devkit
