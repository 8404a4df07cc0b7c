// One table: how each kind of end is recognised, what is said of it, and what cures it.
#include "run/ends.h"

#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstring>
#include <map>

#include "run/duration.h"
#include "run/log-text.h"

namespace morvik::devkit {
namespace {

// An event object that a script keeps holds about 160 KB, and some 60 fill the heap: with half of
// that heard they are the likely cause.
constexpr int kManyEvents = 30;

// The payloads that reach scripts as such objects, and the access that lets them.
struct EventPayload {
  const char* payload;
  const char* name;
};
constexpr EventPayload kEventPayloads[] = {
    {"rfidCallback", "rfid"},
    {"m2mCallback", "m2m"},
    {"event", "webcam and record"},
    {"morvikinfo_response", "info"},
    {"morvikMessageResponse", "message"},
    {"contactList", "contact"},
    {"asrCallback", "asr"},
};

int heardOf(const Evidence& evidence, const char* payload) {
  const auto found = evidence.heard.find(payload);
  return found != evidence.heard.end() ? found->second : 0;
}

int eventsHeard(const Evidence& evidence) {
  int sum = 0;
  for (const EventPayload& row : kEventPayloads) sum += heardOf(evidence, row.payload);
  return sum;
}

std::string eventsInWords(const Evidence& evidence) {
  std::string words;
  for (const EventPayload& row : kEventPayloads) {
    const int times = heardOf(evidence, row.payload);
    if (times == 0) continue;
    words += (words.empty() ? "" : ", ") + std::to_string(times) + " of " + row.name;
  }
  return words;
}

bool fatal(const Evidence& evidence, std::string_view beginning) {
  return evidence.fatalText.starts_with(beginning);
}

bool fatalSource(const Evidence& evidence, bool main) {
  return evidence.fatalWhileReading && main == evidence.lastSource.ends_with("/main.js");
}

bool isMissing(const Evidence& evidence) { return evidence.fatalText == std::strerror(ENOENT); }

std::optional<int> signalOf(const Evidence& evidence) {
  const auto status = evidence.waitStatus;
  if (!status || !WIFSIGNALED(*status)) return std::nullopt;
  return WTERMSIG(*status);
}

bool descriptorFailed(const Evidence& evidence) {
  return evidence.readDescriptor && !evidence.hasDescriptor && evidence.fatalText.empty() &&
         !signalOf(evidence);
}

bool descriptorMissing(const Evidence& evidence) {
  return evidence.descriptorComplaint.find("failed to load external entity") != std::string::npos;
}

// Ended for want of interactive mode, before it had come further than the state.
bool autokilledBefore(const Evidence& evidence, AppState state) {
  return evidence.autokill && evidence.state < state;
}

bool threw(const Evidence& evidence, std::string_view beginning = "") {
  return evidence.report && evidence.report->text.starts_with(beginning);
}

bool endedBySignal(const Evidence& evidence, std::initializer_list<int> signals) {
  const auto signal = signalOf(evidence);
  return signal && std::ranges::find(signals, *signal) != signals.end();
}

// An application may end by itself at the moment when it is told to.
bool endedByUs(const Evidence& evidence, EndedBy by) {
  return evidence.endedBy == by &&
         (!evidence.waitStatus || endedBySignal(evidence, {SIGTERM, SIGKILL}));
}

using Known = const Evidence&;

// What a relay that found no server breaks off ends like any connection that breaks.
bool lostMissingServer(Known known) {
  const bool lost = fatal(known, "Failed to receive bytes") || fatal(known, "send failed: ") ||
                    endedBySignal(known, {SIGPIPE});
  return lost && known.serverLoss == ServerLoss::kMissing;
}

// The host says the same of both, so that without somebody at the server's side neither is known.
const char* lossInWords(Known known) {
  return known.serverLoss == ServerLoss::kEnded ? "ended" : "ended or reset";
}

struct Explanation {
  EndKind kind;
  const char* name;
  bool (*applies)(Known);
  // What stands in braces is replaced by what the evidence tells, see factsOf.
  const char* sentence;
  const char* cure;
};

// In this order; the first that applies explains the end.
constexpr Explanation kExplanations[] = {
    {EndKind::kHostMissing, "host-missing",
     [](Known known) { return known.problem == LaunchProblem::kHostMissing; },
     "There is no program {problem}.",
     "Build it with script/build, or name the program that there is."},
    {EndKind::kHostNotExecutable, "host-not-executable",
     [](Known known) { return known.problem == LaunchProblem::kHostNotExecutable; }, "{problem}.",
     "Name the morvikvm of a build of this machine, and see that it may be run."},
    {EndKind::kLineRefused, "line-refused",
     [](Known known) { return known.problem == LaunchProblem::kLineRefused; },
     "No launch line can be made of it: {problem}.",
     "A launch line is \"name type instance\", at most 4093 characters long; name and type hold no "
     "blank."},
    {EndKind::kLauncherFull, "launcher-full",
     [](Known known) { return known.problem == LaunchProblem::kLauncherFull; },
     "The launcher had three applications already, and takes no fourth.", "End one of them first."},
    {EndKind::kNoProcess, "no-process",
     [](Known known) { return known.problem == LaunchProblem::kNoProcess; }, "{problem}.",
     "See what the launcher's lines say, and that the system has room for one more process."},

    {EndKind::kRestarted, "restarted",
     [](Known known) { return endedByUs(known, EndedBy::kRestart); },
     "It was ended to be launched again.", ""},
    {EndKind::kQuit, "quit", [](Known known) { return endedByUs(known, EndedBy::kQuit); },
     "It was ended because you asked for it.", ""},

    {EndKind::kEmptyAccess, "empty-access",
     [](Known known) { return fatal(known, "descriptor.xml: access element "); },
     "An access element of its descriptor.xml is empty: {fatal}.",
     "Write a name into the element, such as <access>led</access>, or remove it."},
    {EndKind::kServerMissing, "server-missing", lostMissingServer,
     "The device server refused the connection or cannot be reached{left}.",
     "Start the device server, and see that --device names its host and port."},
    {EndKind::kServerReset, "server-reset",
     [](Known known) {
       return fatal(known, "Failed to receive bytes") && known.serverLoss == ServerLoss::kReset;
     },
     "The device server broke off the connection{left}, and no application outlives that.",
     "A server that crashed, was killed or was restarted breaks off its connections: see its own "
     "log; then launch the application again."},
    {EndKind::kServerClosed, "server-closed",
     [](Known known) { return fatal(known, "Failed to receive bytes length from server"); },
     "The device server {lost} the connection{left}, and no application outlives that.",
     "See why the server ended or dropped it; then launch the application again."},
    {EndKind::kServerBrokeOff, "server-broke-off",
     [](Known known) { return fatal(known, "Failed to receive bytes from server"); },
     "The connection broke in the middle of a message{left}: the device server ended, or wrote the "
     "message's length in pieces, which the host cannot put together.",
     "Let the server write the four bytes of a length at once and then all of the message."},
    {EndKind::kTooManyFiles, "too-many-files",
     [](Known known) { return fatal(known, "Failed to select socket"); },
     "Its connection cannot be waited for: more than 1023 files were open.",
     "Let the script connect once: every further connection keeps the one before open."},
    {EndKind::kSendFailed, "send-failed", [](Known known) { return fatal(known, "send failed: "); },
     "A message did not reach the device server: {fatal}{left}.",
     "See why the server reset the connection; then launch the application again."},
    {EndKind::kEmptyRecognition, "empty-recognition",
     [](Known known) { return fatal(known, "ASR: AsrCallback: the server sent"); },
     "The device server sent a recognition result without a recognition.",
     "A server that understood nothing answers with a code and sends no asrCallback."},
    {EndKind::kEventsKept, "events-kept",
     [](Known known) {
       return fatal(known, "script engine out of memory: ") && eventsHeard(known) >= kManyEvents;
     },
     "Its memory was used up after it had heard {events}: each event object that a script keeps "
     "holds about 160 KB, and some 60 of them fill the heap.",
     "Keep a copy in place of the object that came: Object.assign({}, event)."},
    {EndKind::kHeapFull, "heap-full",
     [](Known known) {
       return fatal(known, "script engine out of memory: ") &&
              known.fatalText.find("heap") != std::string::npos;
     },
     "The script's heap has reached its limit of 10 MiB.",
     "Keep less: look for arrays and objects that only grow."},
    {EndKind::kMemoryLimit, "memory-limit",
     [](Known known) {
       return fatal(known, "script engine out of memory: ") ||
              known.fatalText.find("failed to allocate") != std::string::npos;
     },
     "The memory that the application may take beside its heap was used up: {fatal}.",
     "Look for very long texts, JSON.parse of deep nesting, and many objects of Intl."},
    {EndKind::kEngineFailed, "engine-failed",
     [](Known known) { return fatal(known, "script engine failed: "); },
     "The script engine could not go on: {fatal}.",
     "Look for what the script did last; very long texts and arrays can do this."},
    {EndKind::kNoMainScript, "no-main-script",
     [](Known known) { return fatalSource(known, true) && isMissing(known); },
     "There is no {source}.", "Put the script into the application's folder as main.js."},
    {EndKind::kUnreadableMainScript, "unreadable-main-script",
     [](Known known) { return fatalSource(known, true); }, "{source} cannot be read: {fatal}.",
     "See that main.js is a file and that the host's user may read it."},
    {EndKind::kIncludeMissing, "include-missing",
     [](Known known) { return fatalSource(known, false); },
     "The script includes {source}, which cannot be read: {fatal}.",
     "An include that fails ends the application and cannot be caught: put the file there."},

    {EndKind::kInteractiveRefused, "interactive-refused",
     [](Known known) { return known.startRefused; },
     "The device server refused interactive mode{code}.",
     "Launch it again when the device is free; a refused application does not live on."},
    {EndKind::kStopNotice, "stop-notice", [](Known known) { return known.stopAutokill; },
     "The device server had stopped interactive mode, and the five minutes behind that were over.",
     "Finish within five minutes and call exit(): a later morvik.start changes nothing."},

    {EndKind::kExitTooEarly, "exit-too-early",
     [](Known known) { return known.autokill && known.calledExit; },
     "It was not interactive in time: its exit() was lost, as it came before the first run of "
     "main.js was over, or had an argument.",
     "Call exit() from a timer or a reply: setTimeout(0, function() { exit(); });"},
    {EndKind::kConnectionRefused, "connection-refused",
     [](Known known) {
       return autokilledBefore(known, AppState::kConnected) && !known.connectTrouble.empty();
     },
     "It was not interactive in time, as it could not connect: {trouble}.",
     "Start the device server, and see that the script takes its host and port."},
    {EndKind::kArrayBuffers, "array-buffers",
     [](Known known) {
       return autokilledBefore(known, AppState::kWaiting) &&
              threw(known, "RangeError: Array buffer allocation failed");
     },
     "It was not interactive in time, as {place} asked for more than the 10 MiB that all array "
     "buffers of an application may have together.",
     "Make smaller arrays, and let go of those that are used up."},
    {EndKind::kBrokenConfig, "broken-config",
     [](Known known) {
       return autokilledBefore(known, AppState::kWaiting) && known.configIsBroken;
     },
     "It was not interactive in time; its config.bin is damaged, so params holds little or "
     "nothing{thrown}.",
     "Write config.bin anew, or remove it and run without."},
    {EndKind::kScriptFailed, "script-failed",
     [](Known known) { return autokilledBefore(known, AppState::kWaiting) && threw(known); },
     "It was not interactive in time, as the script failed before it asked: {place} threw "
     "{thrownText}.",
     "Mend that line: nothing behind it ran."},
    {EndKind::kNeverConnected, "never-connected",
     [](Known known) { return autokilledBefore(known, AppState::kConnected); },
     "It was not interactive within 10 seconds: the script never called morvik.connect.",
     "Connect and ask: morvik.connect(host, port); morvik.start(function() { ... }, {});"},
    {EndKind::kNeverStarted, "never-started",
     [](Known known) { return autokilledBefore(known, AppState::kWaiting); },
     "It was not interactive within 10 seconds: the script connected and never called "
     "morvik.start.",
     "Ask behind the connect: morvik.start(function() { ... }, {});"},
    {EndKind::kStartAnsweredWithoutCode, "start-answered-without-code",
     [](Known known) { return known.autokill && known.startAnswer == "no code"; },
     "It was not interactive within 10 seconds: the device server answered morvik.start without a "
     "code, which grants nothing.",
     "The server answers a start request with a response that holds the code OK."},
    {EndKind::kStartNotAnswered, "start-not-answered", [](Known known) { return known.autokill; },
     "It was not interactive within 10 seconds: the device server did not answer morvik.start.",
     "See what the server does; it must answer within 10 seconds of the end of main.js."},

    {EndKind::kSentToNobody, "sent-to-nobody",
     [](Known known) { return endedBySignal(known, {SIGPIPE}); },
     "It sent a message to a device server that had gone{left}.",
     "See why the server went; then launch the application again."},
    {EndKind::kKilled, "killed", [](Known known) { return endedBySignal(known, {SIGKILL}); },
     "It was killed from outside, by a person or by the system for want of memory.",
     "The system's log (dmesg) names processes that it killed for want of memory."},
    {EndKind::kToldToEnd, "told-to-end",
     [](Known known) {
       return endedBySignal(known, {SIGTERM, SIGINT, SIGHUP, SIGQUIT});
     },
     "It was told to end from outside, by {signal}.", ""},
    {EndKind::kFatal, "fatal", [](Known known) { return !known.fatalText.empty(); },
     "The host could not go on: {fatal}.", "See the last lines."},
    {EndKind::kCrashed, "crashed", [](Known known) { return signalOf(known).has_value(); },
     "It crashed by {signal}, which no script should be able to do.",
     "Keep the application as it is, and report it with its last lines."},
    {EndKind::kPathTooLong, "path-too-long",
     [](Known known) {
       return descriptorFailed(known) && !known.descriptorPath.empty() &&
              !known.descriptorPath.ends_with("/descriptor.xml");
     },
     "The path of its folder is too long: the host cuts what is longer than 254 characters.",
     "Move the folder to a shorter path."},
    {EndKind::kNoDescriptor, "no-descriptor",
     [](Known known) { return descriptorFailed(known) && descriptorMissing(known); },
     "There is no {descriptor} that can be read.",
     "See that the folder has the application's name and holds a descriptor.xml; the smallest is "
     "<descriptor><accesses/></descriptor>."},
    {EndKind::kBrokenDescriptor, "broken-descriptor",
     [](Known known) { return descriptorFailed(known) && !known.descriptorComplaint.empty(); },
     "Its descriptor.xml cannot be used: {complaint}.",
     "Mend the file at that place; morvik-dev check tells more of it."},
    {EndKind::kDescriptorUnread, "descriptor-unread", descriptorFailed,
     "Its {descriptor} is missing or not well-formed.",
     "xmllint tells what is wrong with it; libxml2 says it on the host's standard error."},
    {EndKind::kWebMemory, "web-memory",
     [](Known known) {
       return known.lastText == "realloc() failed" || known.lastText == "malloc fail";
     },
     "There was no memory for a web response or a posted file.", "Fetch and send less at a time."},
    {EndKind::kPlayMemory, "play-memory", [](Known known) { return known.playMemory; },
     "There was no memory for the file name given to play.", "See why the machine has no memory."},
    {EndKind::kScriptExit, "script-exit",
     [](Known known) { return known.calledExit && known.waitStatus.value_or(0) == 0; },
     "The script called exit().", ""},
    {EndKind::kUnknown, "unknown", [](Known /*known*/) { return true; },
     "It ended, and nothing tells why.", "See the last lines, and run it with all lines shown."},
};

const Explanation& rowOf(EndKind kind) {
  return *std::ranges::find(kExplanations, kind, &Explanation::kind);
}

std::string signalInWords(int signal) {
  const char* name = sigabbrev_np(signal);
  return name != nullptr ? std::string("SIG") + name : "signal " + std::to_string(signal);
}

std::string statusInWords(const Evidence& evidence) {
  if (evidence.pid == 0) return "no process";
  if (const auto signal = signalOf(evidence)) return "killed by " + signalInWords(*signal);
  if (!evidence.waitStatus) return "status not known";
  return "status " + std::to_string(WEXITSTATUS(*evidence.waitStatus));
}

// In front of a text that may be empty.
std::string led(const std::string& by, const std::string& text) {
  return text.empty() ? "" : by + text;
}

std::string codeInWords(const Evidence& evidence) {
  return evidence.startAnswer == "no code" ? "" : led(" with ", evidence.startAnswer);
}

using Facts = std::map<std::string, std::string, std::less<>>;

Facts factsOf(const Evidence& evidence) {
  const ExceptionReport report = evidence.report.value_or(ExceptionReport{});
  return {
      {"problem", evidence.problemText},
      {"fatal", evidence.fatalText},
      {"left", led(": ", evidence.serverLeft)},
      {"events", eventsInWords(evidence)},
      {"source", evidence.lastSource},
      {"code", codeInWords(evidence)},
      {"trouble", evidence.connectTrouble},
      {"lost", lossInWords(evidence)},
      {"place", report.place()},
      {"thrown", evidence.report ? "; " + report.place() + " threw " + report.text : ""},
      {"thrownText", report.text},
      {"signal", signalInWords(signalOf(evidence).value_or(0))},
      {"descriptor", evidence.descriptorPath.empty() ? "descriptor.xml" : evidence.descriptorPath},
      {"complaint", evidence.descriptorComplaint}};
}

// A word in braces that is no fact stays as it is.
std::string filled(std::string_view text, const Facts& facts) {
  std::string result;
  while (!text.empty()) {
    const std::size_t open = std::min(text.find('{'), text.size());
    result += text.substr(0, open);
    text.remove_prefix(open);
    const std::size_t close = text.find('}');
    const auto fact =
        close == std::string_view::npos ? facts.end() : facts.find(text.substr(1, close - 1));
    const std::size_t taken =
        fact != facts.end() ? close + 1 : std::min(text.size(), std::size_t{1});
    result += fact != facts.end() ? std::string_view(fact->second) : text.substr(0, taken);
    text.remove_prefix(taken);
  }
  return result;
}

std::vector<std::string> textsOf(const std::deque<LogLine>& lines) {
  std::vector<std::string> texts;
  for (const LogLine& line : lines) {
    const char* word = line.kind == LineKind::kScript ? "log" : wordOf(line.level);
    texts.push_back(*word != '\0' ? std::string(word) + ": " + line.text : line.text);
  }
  return texts;
}

constexpr auto kKinds = [] {
  std::array<EndKind, std::size(kExplanations)> kinds{};
  std::ranges::transform(kExplanations, kinds.begin(), &Explanation::kind);
  return kinds;
}();

}  // namespace

const char* nameOf(EndKind kind) { return rowOf(kind).name; }

EndKind endKindOf(std::string_view name) {
  const auto* found = std::ranges::find_if(
      kExplanations, [name](const Explanation& row) { return name == row.name; });
  return found != std::end(kExplanations) ? found->kind : EndKind::kUnknown;
}

std::span<const EndKind> endKinds() { return kKinds; }

End explain(const Evidence& evidence) {
  const Explanation& row = *std::ranges::find_if(
      kExplanations, [&evidence](const Explanation& each) { return each.applies(evidence); });
  const Facts facts = factsOf(evidence);
  End end;
  end.kind = row.kind;
  end.app = evidence.app;
  end.pid = evidence.pid;
  end.launchedAt = evidence.launchedAt;
  end.endedAt = evidence.endedAt;
  end.state = wordsOf(evidence.state);
  end.status = statusInWords(evidence);
  end.sentence = filled(row.sentence, facts);
  end.cure = filled(row.cure, facts);
  end.lastLines = textsOf(evidence.lastLines);
  return end;
}

bool isWanted(EndKind kind) {
  return kind == EndKind::kRestarted || kind == EndKind::kQuit || kind == EndKind::kScriptExit ||
         kind == EndKind::kToldToEnd;
}

std::string headlineOf(const End& end) {
  if (end.pid == 0) return end.app + " was not launched";
  return end.app + " ended after " + inWords(end.endedAt - end.launchedAt) + ", " + end.state +
         ", " + end.status;
}

}  // namespace morvik::devkit
