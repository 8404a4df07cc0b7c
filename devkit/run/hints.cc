// Lines to hints: reports of exceptions, and the rounds in which listeners are offered messages.
#include "run/hints.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>

#include "run/access-names.h"

namespace morvik::devkit {
namespace {

constexpr std::string_view kAdding = "adding listener : ";
constexpr std::string_view kCalling = "calling listener : ";

struct KindName {
  HintKind kind;
  const char* name;
};
constexpr KindName kNames[] = {
    {HintKind::kThrew, "threw"},
    {HintKind::kNotGranted, "not-granted"},
    {HintKind::kListenerEnded, "listener-ended"},
    {HintKind::kNotInteractive, "not-interactive"},
    {HintKind::kConnectFirst, "connect-first"},
    {HintKind::kWrongArguments, "wrong-arguments"},
    {HintKind::kArrayBuffers, "array-buffers"},
    {HintKind::kAccessDenied, "access-denied"},
    {HintKind::kBrokenConfig, "broken-config"},
};

struct KnownText {
  std::string_view beginning;
  HintKind kind;
  const char* advice;
};
// What the host throws, and what to do about it.
constexpr KnownText kKnownTexts[] = {
    {"Must be in interactive mode", HintKind::kNotInteractive,
     "Interactive mode is not there yet: do this in the function that morvik.start calls."},
    {"Connect first", HintKind::kConnectFirst,
     "morvik.connect(host, port) comes before morvik.start."},
    {"Wrong arguments", HintKind::kWrongArguments,
     "The call has too few, too many or other arguments than it takes."},
    {"Must be setTimeout(int,function)", HintKind::kWrongArguments,
     "The milliseconds come first: setTimeout(100, function() { ... });"},
    {"Must contain only one file", HintKind::kWrongArguments,
     "include takes the name of one file."},
    {"RangeError: Array buffer allocation failed", HintKind::kArrayBuffers,
     "All array buffers of an application may have 10 MiB together."},
    {"access denied: ", HintKind::kAccessDenied,
     "A file's name holds letters, digits, _, -, / and single dots, and is not descriptor.xml."},
};

const KnownText* knownText(const std::string& text) {
  const auto* found = std::ranges::find_if(
      kKnownTexts, [&text](const KnownText& row) { return text.starts_with(row.beginning); });
  return found != std::end(kKnownTexts) ? found : nullptr;
}

std::string threw(const ExceptionReport& report) {
  return report.place() + " threw \"" + report.text + "\". ";
}

// "rfid" of "rfidCallback".
std::string featureOf(const std::string& payload) {
  constexpr std::string_view kEnd = "Callback";
  return payload.ends_with(kEnd) ? payload.substr(0, payload.size() - kEnd.size()) : payload;
}

}  // namespace

const char* nameOf(HintKind kind) { return std::ranges::find(kNames, kind, &KindName::kind)->name; }

std::vector<Hint> Hints::take(const LogLine& line) {
  hints_.clear();
  if (const auto report = reports_.take(line)) takeReport(*report);
  if (line.kind == LineKind::kHost && line.level <= LogLevel::kDebug) takeHost(line.text);
  return std::move(hints_);
}

void Hints::give(HintKind kind, const std::string& place, const std::string& text) {
  const std::string key = nameOf(kind) + (' ' + (place.empty() ? text : place));
  if (given_.size() >= kMostHints || !given_.insert(key).second) return;
  hints_.push_back({kind, "", place, text});
}

void Hints::takeReport(const ExceptionReport& report) {
  const std::string place = report.place();
  if (const auto missing = missingAccess(report)) {
    return give(HintKind::kNotGranted, place,
                '`' + missing->object + "` is undefined: `" + place + "`. Grant it: `<access>" +
                    missing->access + "</access>` in descriptor.xml.");
  }
  if (const KnownText* known = knownText(report.text)) {
    return give(known->kind, place, threw(report) + known->advice);
  }
  if (const auto object = misplacedObject(report)) {
    return give(HintKind::kThrew, place,
                threw(report) + "It stands on morvik: write `morvik." + *object + "`.");
  }
  give(HintKind::kThrew, place,
       threw(report) +
           "The application lives on with what it had set up; a timer or listener that threw is "
           "gone.");
}

void Hints::takeHost(const std::string& text) {
  if (text == "message received") return endRound();
  if (const auto message = factsOfDump(text)) return takeMessage(*message);
  if (text.starts_with(kAdding)) return added(text.substr(kAdding.size()));
  if (text.starts_with(kCalling)) offered(text.substr(kCalling.size()));
}

// Listeners are not offered what is about interactive mode.
void Hints::takeMessage(const MessageFacts& message) {
  if (message.direction == Direction::kFromApplication) return;
  if (message.has("interactiveMode")) return;
  startRound(message.payloads.empty() ? "" : message.payloads.front());
}

void Hints::startRound(const std::string& payload) {
  inRound_ = true;
  next_ = 0;
  old_ = listeners_.size();
  message_ = payload;
}

// An address that is given again was free.
void Hints::added(const std::string& address) {
  for (std::size_t i = 0; i < listeners_.size(); ++i) {
    if (listeners_[i].address == address) {
      removeListener(i);
      break;
    }
  }
  listeners_.push_back({address, ""});
}

// They are offered a message in the order of their registration.
void Hints::offered(const std::string& address) {
  if (!inRound_) startRound("social");  // a message with credentials is not logged
  const auto found =
      std::find_if(listeners_.begin() + static_cast<std::ptrdiff_t>(next_), listeners_.end(),
                   [&address](const Listener& listener) { return listener.address == address; });
  if (found == listeners_.end()) return;
  auto index = static_cast<std::size_t>(found - listeners_.begin());
  for (; next_ < index; --index) removeListener(next_);
  listeners_[next_].heardLast = message_;
  ++next_;
}

// Who was there when the round began and was left out has ended before.
void Hints::endRound() {
  while (inRound_ && next_ < old_ && next_ < listeners_.size()) removeListener(next_);
  inRound_ = false;
}

void Hints::removeListener(std::size_t index) {
  const std::string feature = featureOf(listeners_[index].heardLast);
  listeners_.erase(listeners_.begin() + static_cast<std::ptrdiff_t>(index));
  if (index < old_) --old_;
  if (index < next_) --next_;
  give(HintKind::kListenerEnded, "",
       "The listener that heard " + (feature.empty() ? "a message" : feature) +
           " has ended: it stays only for as long as its function returns true.");
}

}  // namespace morvik::devkit
