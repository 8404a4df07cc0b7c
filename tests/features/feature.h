// What a feature promises a script, as tables of rows: one file a feature, run in process by
// unit-tests and on the real program by system-tests. Calls in rows are functions of the feature's
// object. Scripts find the globals of prelude.h.
#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace morvik::test {

/// Lines of the log with their levels, as in "MESSAGE TTS: say[x]", without what the channel writes
/// about every message.
using Lines = std::vector<std::string>;

/// In interactive mode the call gives undefined, writes the lines, and sends one message: a fresh
/// id, the interactive id, and this payload in text form. Without a payload it sends nothing.
struct SentRow {
  std::string call;
  std::string payload;
  Lines lines = {};
};

inline constexpr char kWrong[] = "Wrong arguments";
inline constexpr char kMode[] = "Must be in interactive mode";
inline constexpr char kNoText[] = "no text";  ///< what `bad` throws

/// The call throws the text as a plain String outside and inside interactive mode, writes the lines
/// and sends nothing. Where there is no text it is not made.
struct RefusedRow {
  std::string call;
  std::string outside = kWrong;
  std::string inside = kWrong;
  Lines lines = {};
};

/// In interactive mode the call reads `read('x')` in the order of these names.
struct ReadRow {
  std::string call;
  std::string order;
};

/// The answer to the call's request, in text form, leaves the lines. Without a call it is a further
/// answer to the request of the row before.
struct AnsweredRow {
  std::string call;
  std::string answer;
  Lines lines = {};
};

/// Outside interactive mode a listener `tell` hears the message, in text form, and leaves the
/// lines.
struct HeardRow {
  std::string message;
  Lines lines = {};
};

/// A table without rows claims nothing, and is run by no test.
struct Feature {
  std::string name;       ///< of its access, and of its object in `morvik`
  std::string functions;  ///< the names of its object, in order, between commas
  std::vector<SentRow> sends = {};
  std::vector<RefusedRow> refuses = {};
  std::vector<ReadRow> reads = {};
  std::vector<AnsweredRow> answers = {};
  std::vector<HeardRow> hears = {};
  /// A message that its listeners hear, in text form. They stay only while they return true.
  std::string event = {};
};

/// By its name wherever a test shows one, not by its bytes.
inline void PrintTo(const Feature& feature, std::ostream* stream) { *stream << feature.name; }

/// The same refusal for many calls: of their arguments; for want of interactive mode; inside it for
/// what `bad` throws.
std::vector<RefusedRow> wrong(const std::vector<std::string>& calls, const Lines& lines = {});
std::vector<RefusedRow> needMode(const std::vector<std::string>& calls, const Lines& lines = {});
std::vector<RefusedRow> throwing(const std::vector<std::string>& calls, const Lines& lines = {});

/// Values that a listener's function may return, and goes for.
inline const std::vector<std::string> kNotTrue{"false", "undefined",        "null", "1", "'true'",
                                               "({})",  "new Boolean(true)"};

/// The calls of `addListener` that every feature with listeners refuses.
std::vector<RefusedRow> wrongListeners();

/// What a call that hands over `tell` leaves when its request is answered by a code, and then by an
/// event, for a feature that names itself by this label.
std::vector<AnsweredRow> hearsCodes(const std::string& call, const std::string& label);

/// Nothing waits for the answers to these calls' requests.
std::vector<AnsweredRow> nobodyWaits(const std::vector<std::string>& calls);

template <class Row>
std::vector<Row> operator+(std::vector<Row> rows, const std::vector<Row>& more) {
  rows.insert(rows.end(), more.begin(), more.end());
  return rows;
}

}  // namespace morvik::test
