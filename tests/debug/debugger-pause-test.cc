// What the lines of a log make of a pause.
#include "run/debugger-pause.h"

#include "support/matchers.h"

namespace morvik::test {

using namespace devkit;
namespace {

LogLine lineAt(int second, const std::string& text, LineKind kind = LineKind::kHost) {
  LogLine line;
  line.time = TimePoint(std::chrono::seconds(second));
  line.kind = kind;
  line.text = text;
  return line;
}

TEST(DebuggerPause, beginsAndEndsWithTheHostsLines) {
  DebuggerPause pause;
  EXPECT_FALSE(pause.take(lineAt(1, "debugger: attached")));
  EXPECT_EQ(pause.place(), "");
  EXPECT_FALSE(pause.take(lineAt(2, "debugger: paused at main.js:12")));
  EXPECT_EQ(pause.place(), "at main.js:12");
  EXPECT_EQ(pause.take(lineAt(7, "debugger: goes on after 5000 ms")), std::chrono::seconds(5));
  EXPECT_EQ(pause.place(), "");
}

TEST(DebuggerPause, isNotMadeByAScript) {
  DebuggerPause pause;
  EXPECT_FALSE(pause.take(lineAt(1, "debugger: paused at main.js:1", LineKind::kScript)));
  EXPECT_FALSE(pause.take(lineAt(2, "debugger: goes on after 5000 ms")));
  EXPECT_EQ(pause.place(), "");
}

}  // namespace
}  // namespace morvik::test
