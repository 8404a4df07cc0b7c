// A fixture for the script functions, each claim a table of rows that one or two applications of
// the real host run through. Scripts find three globals more:
//   f     a function
//   bad   an object that throws 'no text' when it becomes a text or a number
//   tell  a function that logs its arguments with their types and returns true
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "support/system/system-test.h"

namespace morvik::test {

// Lines of the log with their levels, as in "MESSAGE TTS: say[x]".
using Lines = std::vector<std::string>;

// A message as text: messageOf("response { code: OK }").
zeph::ZephMsg messageOf(const std::string& text);

// An expression, what its value is as text, and the lines that it writes. What it throws stands as
// "throws string Wrong arguments".
struct Step {
  std::string call;
  std::string result;
  Lines lines = {};
};

// A call, the payload that it sends in text form, none when it sends nothing, and its lines.
struct SentRow {
  std::string call;
  std::string payload;
  Lines lines = {};
};

inline constexpr char kWrong[] = "Wrong arguments";
inline constexpr char kMode[] = "Must be in interactive mode";

// A call, the text that it throws outside and inside interactive mode, and its lines there. With no
// text for the inside it is not called there.
struct RefusedRow {
  std::string call;
  std::string outside = kWrong;
  std::string inside = kWrong;
  Lines lines = {};
};

// The same refusal for many calls: of their arguments; for want of interactive mode.
std::vector<RefusedRow> wrong(const std::vector<std::string>& calls);
std::vector<RefusedRow> needMode(const std::vector<std::string>& calls);
std::vector<RefusedRow> operator+(std::vector<RefusedRow> rows,
                                  const std::vector<RefusedRow>& more);

// A call, the answer to its request in text form, and the lines that it leaves. Without a call, it
// is a further answer to the request of the row before.
struct AnsweredRow {
  std::string call;
  std::string answer;
  Lines lines = {};
};

// A message in text form, and the lines that hearing it leaves.
struct HeardRow {
  std::string message;
  Lines lines = {};
};

class FeatureTest : public DeviceTest {
 protected:
  // The name of an access and of its object in `morvik`. Calls in rows are that object's functions.
  explicit FeatureTest(std::string feature) : feature_(std::move(feature)) {}

  // The object has these functions when its access is granted, and is not there when all others
  // are.
  void expectFunctions(const std::string& names);
  // In interactive mode each call gives undefined, writes its lines and sends its payload with a
  // fresh id, the interactive id and nothing else.
  void expectSends(const std::vector<SentRow>& rows);
  // Each call throws its text as a plain String and sends nothing.
  void expectRefuses(const std::vector<RefusedRow>& rows);
  void expectAnswered(const std::vector<AnsweredRow>& rows);
  // A listener `tell`, added outside interactive mode, hears the messages.
  void expectHears(const std::vector<HeardRow>& rows);
  // A listener stays only while it returns true; one that throws goes, and the others still hear.
  void expectStaysOnlyForTrue(const std::string& event);

  // The script with the globals, for `interactive` and `connect`.
  [[nodiscard]] static std::string withGlobals(const std::string& script);
  // One expression as a step of a script, and what all the steps have left up to the text "end".
  [[nodiscard]] static std::string step(const std::string& call);
  [[nodiscard]] std::vector<Lines> stepsTillEnd() const;
  // Waits until the application has read and handled all that was sent.
  void settle();
  // What the messages left, each beginning with its reception.
  [[nodiscard]] std::vector<Lines> receptions() const;

  [[nodiscard]] std::vector<std::string> access() const { return {feature_}; }

 private:
  [[nodiscard]] std::string called(const std::string& call) const;
  [[nodiscard]] std::string refusals(const std::vector<RefusedRow>& rows, bool inside) const;
  [[nodiscard]] std::vector<Lines> groups(std::string_view beginning, std::string_view end) const;
  void expectReceptions(const std::vector<Lines>& expected);

  std::string feature_;
};

}  // namespace morvik::test
