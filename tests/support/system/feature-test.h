// A fixture for what scripts call, on the real program: each claim is a table of rows that one or
// two applications run through.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "features/feature.h"
#include "support/system/system-test.h"

namespace morvik::test {

/// An expression, what its value is as text, and the lines that it writes. What it throws stands as
/// "throws string Wrong arguments".
struct Step {
  std::string call;
  std::string result;
  Lines lines = {};
};

class FeatureTest : public DeviceTest {
 protected:
  /// Calls in rows are functions of this feature's object.
  explicit FeatureTest(std::string feature) : feature_(std::move(feature)) {}

  /// The object has these functions when its access is granted, and is not there when all others
  /// are.
  void expectFunctions(const std::string& names);

  void expectSends(const std::vector<SentRow>& rows);
  void expectRefuses(const std::vector<RefusedRow>& rows);
  void expectReads(const std::vector<ReadRow>& rows);
  void expectAnswered(const std::vector<AnsweredRow>& rows);
  void expectHears(const std::vector<HeardRow>& rows);
  /// A listener stays only while it returns true; one that throws goes, and the others still hear.
  void expectStaysOnlyForTrue(const std::string& event);

  /// The script with the globals of features, for `interactive` and `connect`.
  [[nodiscard]] static std::string withGlobals(const std::string& script);
  /// The steps as a script that ends by saying so, and what each of them has left.
  [[nodiscard]] static std::string scriptOf(const std::vector<Step>& steps);
  [[nodiscard]] std::vector<Lines> stepsTillEnd() const;
  /// Waits until the application has read and handled all that was sent.
  void settle();
  /// What the messages left, each beginning with its reception.
  [[nodiscard]] std::vector<Lines> receptions() const;

  /// Sends a fresh message with this payload in text form.
  void deliver(const std::string& payload);
  /// Sends an answer with this payload in text form.
  void answer(const zeph::ZephMsg& request, const std::string& payload);

  [[nodiscard]] std::vector<std::string> access() const { return {feature_}; }

 private:
  [[nodiscard]] std::string called(const std::string& call) const;
  [[nodiscard]] std::string refusals(const std::vector<RefusedRow>& rows,
                                     std::string RefusedRow::*text) const;
  [[nodiscard]] std::vector<Lines> groups(std::string_view beginning, std::string_view end) const;
  void expectReceptions(const std::vector<Lines>& expected);

  std::string feature_;
};

}  // namespace morvik::test
