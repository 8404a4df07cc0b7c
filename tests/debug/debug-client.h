// A debugger: calls, and the events between them.
#pragma once

#include <cstdint>
#include <deque>
#include <string>

#include "page-client.h"

namespace morvik::test {

/// Attaches to a target's address, as an editor does.
class DebugClient : public SocketClient {
 public:
  DebugClient(Loop& loop, const std::string& address) : SocketClient(loop, address, "") {}

  /// Calls and gives the result; an answer that tells an error is a failure of the test.
  devkit::Json call(const std::string& method, const devkit::Json& parameters = nothing());
  /// Calls and gives the whole answer.
  devkit::Json answerTo(const std::string& method, const devkit::Json& parameters);
  /// Calls without waiting for the answer, which is dropped when it comes.
  void post(const std::string& method, const devkit::Json& parameters = nothing());
  /// The parameters of the next event of this name; others before it are dropped.
  devkit::Json waitFor(const std::string& event);

  /// The value of an expression.
  devkit::Json evaluate(const std::string& expression);
  /// The domains that every test wants.
  void enable();
  /// What a scope of a pause's frame holds, by its name; null when there is none.
  devkit::Json local(const devkit::Json& frame, const std::string& name);

 private:
  std::string nextEvent();
  static devkit::Json nothing() { return devkit::Json::object(); }

  // As they came: some are large, and most are never asked for.
  std::deque<std::string> events_;
  int lastCall_ = 0;
};

}  // namespace morvik::test
