// A fixture for everything that scripts call: an application with its globals, a socket whose other
// end the test holds as the device server, and the log.
#pragma once

#include <v8.h>
#include <zeph-message.pb.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/launch-options.h"
#include "host/morvik-data.h"
#include "host/script.h"
#include "host/zeph-msg-listener.h"
#include "support/matchers.h"
#include "support/unit/captured-log.h"

namespace morvik::test {

class ScriptTest : public testing::Test {
 protected:
  ScriptTest();
  ~ScriptTest() override;

  /// Runs script text in the application's context, from the main loop. Gives its value as text, or
  /// "throws: " and the text of what it threw.
  std::string run(const std::string& source);

  /// What the script handed to log(), in order.
  [[nodiscard]] std::vector<std::string> logged() const;

  /// The object that an expression gives.
  v8::Local<v8::Object> object(const std::string& expression);

  /// What an expression is, as text, in a fresh context whose object tree these access names are
  /// granted.
  std::string inTree(const std::vector<std::string>& accesses, const std::string& expression);

  /// The call throws this text as a plain String. The log is cleared first.
  void expectThrows(const std::string& call, const std::string& text);

  /// Sets a global of the script.
  void setGlobal(const char* name, v8::Local<v8::Value> value);
  /// Makes a native function a global of the script.
  void expose(const char* name, v8::FunctionCallback function);

  /// Gives the application interactive mode under this id.
  void becomeInteractive(const std::string& id = "interactive-1");

  /// The next message that the application has sent, or nothing when it has sent none.
  std::optional<zeph::ZephMsg> sent();

  /// Hands the application a message as the pump does.
  void deliver(const zeph::ZephMsg& message);

  /// Delivers `message` as an answer to `request`.
  void answer(const zeph::ZephMsg& request, zeph::ZephMsg message);
  /// Delivers a response with this code.
  void respond(const zeph::ZephMsg& request, zeph::VReturnCode code);

  /// Runs turns of the main loop until `condition` holds; fails after a generous deadline.
  void runLoopUntil(const std::function<bool()>& condition);

  v8::Isolate* isolate();
  v8::Local<v8::Context> context();

  CapturedLog log;
  LaunchOptions options;
  MorvikData instance;
  int server = -1;  ///< the device server's end of the socket

 private:
  struct Engaged;
  std::unique_ptr<Engaged> engaged_;
};

}  // namespace morvik::test
