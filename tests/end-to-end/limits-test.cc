// What an application may use, and that it harms nobody but itself.
#include <signal.h>
#include <syslog.h>

#include <algorithm>
#include <string>
#include <vector>

#include "support/matchers.h"
#include "support/system/system-test.h"

namespace morvik::test {
namespace {

constexpr char kTellAlive[] = "log('alive');";

class LimitsTest : public DeviceTest {
 protected:
  static void expectAlive(Guest& guest) {
    guest.grant();
    EXPECT_EQ(guest.app.logged(), "alive");
  }
};

struct Glutton {
  std::string name;
  std::string script;
};

void PrintTo(const Glutton& row, std::ostream* stream) { *stream << row.name; }

class GluttonTest : public LimitsTest, public testing::WithParamInterface<Glutton> {};

TEST_P(GluttonTest, endsAloneAndSaysSo) {
  Guest glutton = invite(GetParam().script);
  Guest neighbour = invite(kTellAlive);
  glutton.grant();
  waitUntilReaped(glutton.app, 1);
  const LogRecord last = glutton.app.records().back();
  EXPECT_THAT(last.text, ContainsRegex("[Mm]emory"));
  EXPECT_EQ(last.priority, LOG_DEBUG);
  expectAlive(neighbour);
  host().killAll();
  EXPECT_EQ(host().output().awaitEnd(), "");
}

TEST_P(GluttonTest, isEndedByAFatalLog) {
  Guest glutton = invite(GetParam().script);
  EXPECT_EQ(endOf(glutton.app, [&] { glutton.grant(); }), killedBy(SIGTRAP));
}

INSTANTIATE_TEST_SUITE_P(
    Memory, GluttonTest,
    testing::Values(Glutton{"objects", "var all = []; for (;;) all.push({a: {}, b: [1, 2, 3]});"},
                    Glutton{"texts",
                            "var all = []; for (var i = 0;; ++i)"
                            " all.push('some text ' + i + new Array(100).join('x' + i));"},
                    Glutton{"functions",
                            "var f = null; for (;;) f = (function(g) {"
                            " return function() { return g; }; })(f);"}),
    [](const auto& row) { return row.param.name; });

// Each of these arrays is one mebibyte.
TEST_F(LimitsTest, scriptsHaveAboutTenMebibytes) {
  Guest glutton = invite(
      "var all = []; for (var i = 1;; ++i)"
      " { all.push(new Array(131072).fill(i + 0.5)); log(i); }");
  glutton.grant();
  waitUntilReaped(glutton.app, 0);
  const auto last = static_cast<int>(std::ranges::count_if(
      glutton.app.texts(), [](const std::string& text) { return text.starts_with("JSLOG: "); }));
  EXPECT_GE(last, 6);
  EXPECT_LE(last, 12);
}

constexpr char kTooLarge[] = "object: RangeError: Array buffer allocation failed";

TEST_F(LimitsTest, arrayBuffersHaveTenMebibytesInAll) {
  expectThrown({"new ArrayBuffer(10485760)"}, "nothing");
  expectThrown({"new ArrayBuffer(10485761)"}, kTooLarge);
  expectThrown({"new ArrayBuffer(5e8)"}, kTooLarge);
}

TEST_F(LimitsTest, otherBuffersCountToo) {
  expectLogged({{"caught(function() { new Uint8Array(1e8); })", kTooLarge},
                {"caught(function() { new Float64Array(2e6); })", kTooLarge},
                {"caught(function() { new SharedArrayBuffer(5e8); })",
                 "object: RangeError: Array buffer allocation failed"},
                {"typeof new Uint8Array(1e6)", "object"}});
}

TEST_F(LimitsTest, manyBuffersCountTogetherAndTheApplicationGoesOn) {
  app =
      run("var all = [];\n"
          "log(caught(function() { for (;;) all.push(new ArrayBuffer(1048576)); }));\n"
          "log(all.length);\n"
          "setTimeout(0, function() { log('alive'); });");
  EXPECT_EQ(app.logged(), kTooLarge);
  EXPECT_THAT(app.logged(2), testing::ElementsAre("10", "alive"));
}

TEST_F(LimitsTest, droppedBuffersMakeRoom) {
  app =
      run("log(caught(function() {"
          " for (var i = 0; i < 200; ++i) new ArrayBuffer(1048576); }));");
  EXPECT_EQ(app.logged(), "nothing");
}

TEST_F(LimitsTest, webAssemblyIsNotOffered) { expectLogged({{"typeof WebAssembly", "undefined"}}); }

TEST_F(LimitsTest, aScriptThatSpinsBlocksOnlyItself) {
  app = run("log('spinning'); for (;;);");
  EXPECT_EQ(app.logged(), "spinning");
  Guest one = invite(kTellAlive);
  Guest two = invite(kTellAlive);
  expectAlive(one);
  expectAlive(two);
  host().line("one too many");
  host().output().await("too many mvm ignore request\n");
  kill(app.pid(), SIGKILL);
  waitUntilReaped(app, 2);
  Guest three = invite(kTellAlive);
  expectAlive(three);
}

// Months of callbacks must not fill the heap. Each of these results is 16 KB, so a heap that kept
// them would be full long before the end.
TEST_F(LimitsTest, repliesLeaveNothingBehind) {
  interactive(
      "var left = 1500; ping(function again() {"
      " if (--left > 0) ping(again); else log('end'); return new Array(2000).fill(0.5); });");
  for (int i = 0; i < 1500; ++i) receiveAndReply("OK");
  EXPECT_EQ(app.logged(), "end");
}

TEST_F(LimitsTest, timersLeaveNothingBehind) {
  runToEnd(
      "var left = 1500; setTimeout(0, function again() {"
      " if (--left > 0) setTimeout(0, again); else log('end');"
      " return new Array(2000).fill(0.5); });");
}

TEST_F(LimitsTest, infoObjectsLeaveNothingBehind) {
  interactive(
      "var left = 300; morvik.info(function again(info) {"
      " if (--left > 0) morvik.info(again); else log('end'); });");
  for (int i = 0; i < 300; ++i) {
    zeph::ZephMsg reply = replyTo(device.receive());
    zeph::KeyValue* info = reply.mutable_morvikinfo_response()->add_infos();
    info->set_key("text");
    info->set_value(std::string(1000, 'x'));
    device.send(reply);
  }
  EXPECT_EQ(app.logged(), "end");
}

}  // namespace
}  // namespace morvik::test
