// An application with a live script engine, for fuzzers of what reaches scripts.
#pragma once

#include <string>
#include <string_view>

#include "support/unit/script-test.h"

namespace morvik::test {

/// The fixture of the unit tests, without a test in it.
class LiveScript : public ScriptTest {
 public:
  using ScriptTest::context;
  using ScriptTest::instance;
  using ScriptTest::isolate;
  using ScriptTest::log;
  using ScriptTest::run;
  using ScriptTest::sent;
  using ScriptTest::server;

 private:
  void TestBody() override {}
};

/// One for the whole process, with every access granted.
LiveScript& liveScriptKeptForLife();

/// One turn of its main loop, with its context entered: what is made for the script, and the lines
/// of the log, go with it.
class Turn {
 public:
  Turn() : run_(live_.isolate()), entered_(live_.context()) {}
  ~Turn() { live_.log.clear(); }
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;

 private:
  LiveScript& live_ = liveScriptKeptForLife();
  ScriptRun run_;
  v8::Context::Scope entered_;
};

/// The text of a property of the object's, which has one.
std::string textOf(v8::Local<v8::Object> object, const char* property);

/// What JSON makes of the text, or an empty handle for a text that is none.
v8::MaybeLocal<v8::Value> fromJson(std::string_view text);

}  // namespace morvik::test
