// A fixture for what scripts call, in process: each claim is a table of rows.
#pragma once

#include <string>
#include <vector>

#include "features/feature.h"
#include "support/unit/script-test.h"

namespace morvik::test {

class FeatureTest : public ScriptTest {
 protected:
  /// Calls in rows are functions of this feature's object, or whole expressions where there is
  /// none.
  explicit FeatureTest(std::string feature = "");

  /// The log without what the channel writes about any message.
  [[nodiscard]] Lines ownLines() const;

  /// The object has these functions when its access is granted, and is not there when all others
  /// are.
  void expectFunctions(const std::string& names);

  void expectSends(const std::vector<SentRow>& rows);
  void expectRefuses(const std::vector<RefusedRow>& rows);
  void expectReads(const std::vector<ReadRow>& rows);
  void expectAnswered(const std::vector<AnsweredRow>& rows);
  void expectHears(const std::vector<HeardRow>& rows,
                   const std::string& addListener = "addListener");

  /// A listener goes unless its function returned exactly true when it heard `event`; one that
  /// throws goes as well, and does not keep the message from the next one.
  void expectStaysOnlyForTrue(const std::string& event,
                              const std::string& addListener = "addListener");

  /// In interactive mode: the function `kept` that the call hands over lives until its request has
  /// this answer, and no longer.
  void expectForgets(const std::string& call, const std::string& answer);

  /// One message with a fresh id, interactive id "granted" and this payload has been sent.
  void expectOneMessage(const std::string& payload);

 private:
  [[nodiscard]] std::string called(const std::string& call) const;
  void expectRefusal(const std::string& call, const std::string& text, const Lines& lines);
  void expectHeardTimes(const std::string& event, int times, const std::string& result);

  std::string feature_;
};

}  // namespace morvik::test
