// A fixture for the device features: what a call sends, what it refuses and what it lets a script
// hear, each as a table of rows. Scripts find three globals:
//   f     a function
//   bad   an object that throws 'no text' when it becomes a text or a number
//   tell  a function that logs its arguments with their types and returns `result`, true at first
#pragma once

#include <string>
#include <vector>

#include "support/unit/script-test.h"

namespace morvik::test {

/// Lines of the log with their levels, as in "MESSAGE TTS: say[x]".
using Lines = std::vector<std::string>;

/// A call, the payload that it sends in text form, and the lines that it writes.
struct SentRow {
  std::string call;
  std::string payload;
  Lines lines;
};

/// A message in text form, and the lines that hearing it leaves.
struct HeardRow {
  std::string message;
  Lines lines;
};

class FeatureTest : public ScriptTest {
 protected:
  FeatureTest();

  /// The log without what the channel writes about any message.
  [[nodiscard]] Lines ownLines() const;

  /// In interactive mode: each call gives undefined, writes its lines and sends one message, which
  /// holds a fresh id, the interactive id, the payload and nothing else.
  void expectSends(const std::vector<SentRow>& rows);

  /// In and outside interactive mode: each call throws the text as a plain String, sends nothing
  /// and writes nothing.
  void expectRefused(const std::vector<std::string>& calls,
                     const std::string& text = "Wrong arguments");

  /// Outside interactive mode, each call says so, sends nothing and writes nothing.
  void expectNeedsInteractive(const std::vector<std::string>& calls);

  /// In interactive mode: each call throws what `bad` throws, sends nothing and writes its lines.
  void expectPassesExceptions(const std::vector<std::string>& calls, const Lines& lines = {});

  /// In interactive mode: the call reads the places that it names in this order. `read('x')` in it
  /// stands for an argument and notes its name when it becomes a text or a number.
  void expectReads(const std::string& call, const std::string& order);

  /// In interactive mode: the function `kept` that the call hands over lives until its request has
  /// this answer, and no longer.
  void expectForgets(const std::string& call, const std::string& answer);

  /// Sends the call's request anew for each row, and answers it with the row's message.
  void expectAnswered(const std::string& call, const std::vector<HeardRow>& rows);

  /// Outside interactive mode: adds `tell` by `addListener` and delivers each row's message; then
  /// hands `addListener` what it must refuse.
  void expectListens(const std::string& addListener, const std::vector<HeardRow>& rows);

  /// A listener goes unless its function returned exactly true when it heard `event`; one that
  /// throws goes as well, and does not keep the message from the next one.
  void expectStaysOnlyForTrue(const std::string& addListener, const std::string& event);

  /// One message with a fresh id, interactive id "granted" and this payload has been sent.
  void expectOneMessage(const std::string& payload);
};

}  // namespace morvik::test
