// Lines and messages to evidence.
#include "run/evidence.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <string_view>

#include "run/log-text.h"

namespace morvik::devkit {
namespace {

constexpr std::size_t kLinesKept = 12;
constexpr std::size_t kLongestLineKept = 2000;

constexpr std::array kStateWords = {
    "not yet started",
    "not connected",
    "connected, but not interactive",
    "waiting for interactive mode",
    "interactive",
    "after a stop notice",
};

// The rest of a text behind a beginning; nothing when it begins otherwise.
std::optional<std::string> behind(std::string_view text, std::string_view beginning) {
  if (!text.starts_with(beginning)) return std::nullopt;
  return std::string(text.substr(beginning.size()));
}

bool tellsNothing(const LogLine& line) {
  return line.kind == LineKind::kNoise || line.level == LogLevel::kDebug;
}

}  // namespace

const char* wordsOf(AppState state) { return kStateWords.at(static_cast<std::size_t>(state)); }

// No road leads back.
void EvidenceCollector::reach(AppState state) {
  if (state > evidence_.state) evidence_.state = state;
}

void EvidenceCollector::hear(const LogLine& line) {
  if (line.kind != LineKind::kOutput) hearConnecting(line.text);
  if (const auto report = reports_.take(line)) hearReport(*report);
  if (line.kind == LineKind::kHost || line.kind == LineKind::kNoise) hearHost(line);
  keep(line);
}

// The host says that it connects, and further only when that fails: whatever comes next tells.
void EvidenceCollector::hearConnecting(std::string_view text) {
  if (!connecting_) return;
  const bool failed = text.starts_with("connect failed on ") || text.starts_with("nslookup failed");
  connecting_ = false;
  if (failed) {
    evidence_.connectTrouble = text;
  } else {
    evidence_.connectTrouble.clear();
    reach(AppState::kConnected);
  }
}

void EvidenceCollector::hearHost(const LogLine& line) {
  if (line.level == LogLevel::kForeign) return hearForeign(line.text);
  if (line.level == LogLevel::kFatal || isReadFailure(line.text)) hearFatal(line.text);
  hearSteps(line.text);
  hearEnds(line.text);
  evidence_.lastText = firstLine(line.text);
  if (const auto message = factsOfDump(line.text)) hearMessage(*message);
}

// The system log does not set apart what ends an application: a system's text behind the name of a
// script file does.
bool EvidenceCollector::isReadFailure(const std::string& text) const {
  constexpr std::array kErrors = {ENOENT, EACCES, EISDIR,       ENOTDIR,
                                  ELOOP,  EIO,    ENAMETOOLONG, EMFILE};
  return evidence_.lastText.starts_with("loading source: ") &&
         std::ranges::any_of(kErrors, [&text](int error) { return text == std::strerror(error); });
}

void EvidenceCollector::hearForeign(const std::string& text) {
  Evidence& known = evidence_;
  const bool ofDescriptor = known.readDescriptor && !known.hasDescriptor;
  if (ofDescriptor && known.descriptorComplaint.empty()) known.descriptorComplaint = text;
  known.playMemory |= text == "Memoire insuffisante";
}

void EvidenceCollector::hearFatal(const std::string& text) {
  evidence_.fatalText = text;
  evidence_.fatalWhileReading = evidence_.lastText.starts_with("loading source: ");
}

// The way that every application takes.
void EvidenceCollector::hearSteps(const std::string& text) {
  Evidence& known = evidence_;
  if (const auto path = behind(text, "searching descriptor: ")) known.descriptorPath = *path;
  if (const auto path = behind(text, "loading source: ")) known.lastSource = *path;
  if (text.starts_with("running app: ") && known.hasDescriptor) reach(AppState::kStarted);
  if (text.starts_with("connecting to: ")) connecting_ = true;
  if (text.starts_with("starting interactiveMode: ")) reach(AppState::kWaiting);
  if (text == "calling interactiveMode function") reach(AppState::kInteractive);
  if (text.starts_with("interactive mode stopped, autokill in ")) reach(AppState::kStopping);
  known.readDescriptor |= text == "loading descriptor";
  known.hasDescriptor |= text == "decriptor loaded";
}

// What stands in the log before one kind of end.
void EvidenceCollector::hearEnds(const std::string& text) {
  Evidence& known = evidence_;
  known.calledExit |= text == "EXIT";
  known.autokill |= text.starts_with("/!\\ AUTOKILL, ");
  known.stopAutokill |= text == "interactive mode stopped, autokill";
  known.startRefused |= text == "Interactive mode is not valid: EXIT !";
}

void EvidenceCollector::hearReport(const ExceptionReport& report) {
  evidence_.report = report;
  reach(AppState::kStarted);
}

void EvidenceCollector::connected() {
  reach(AppState::kConnected);
  left(ServerLoss::kNone, "");
}

void EvidenceCollector::left(ServerLoss loss, const std::string& why) {
  evidence_.serverLoss = loss;
  evidence_.serverLeft = why;
}

void EvidenceCollector::hearMessage(const MessageFacts& message) {
  if (message.direction == Direction::kFromApplication) {
    if (message.action == "START") startId_ = message.id;
    return;
  }
  for (const std::string& payload : message.payloads) ++evidence_.heard[payload];
  const bool answersStart = !startId_.empty() && message.correlationId == startId_;
  if (answersStart) evidence_.startAnswer = message.code.empty() ? "no code" : message.code;
}

void EvidenceCollector::keep(const LogLine& line) {
  if (tellsNothing(line)) return;
  auto& lines = evidence_.lastLines;
  lines.push_back(line);
  std::string& text = lines.back().text;
  if (text.size() > kLongestLineKept) text = harmless(text.substr(0, kLongestLineKept)) + " ...";
  if (lines.size() > kLinesKept) lines.pop_front();
}

}  // namespace morvik::devkit
