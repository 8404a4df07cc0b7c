// morvik.m2m: calls between devices, which no request function reports back on.
#include "support/unit/feature-test.h"
#include "support/unit/text-message.h"

namespace morvik::test {
namespace {

using testing::ElementsAre;

class M2mTest : public FeatureTest {};

TEST_F(M2mTest, sendsItsArgumentsConverted) {
  const Lines none;
  const Lines call = {"DEBUG call"};
  expectSends({
      {"morvik.m2m.call('sip:a@b')", R"(m2m { call { address: "sip:a@b" } })", call},
      {"morvik.m2m.call('')", R"(m2m { call { address: "" } })", call},
      {"morvik.m2m.call(undefined)", R"(m2m { call { address: "undefined" } })", call},
      {"morvik.m2m.call(12.5)", R"(m2m { call { address: "12.5" } })", call},
      {"morvik.m2m.call({})", R"(m2m { call { address: "[object Object]" } })", call},
      {"morvik.m2m.call('\\u00e9\\u0141')", R"(m2m { call { address: "\303\251\305\201" } })",
       call},
      {"morvik.m2m.answer(true)", "m2m { answer { accept: true } }", none},
      {"morvik.m2m.answer(false)", "m2m { answer { accept: false } }", none},
      {"morvik.m2m.answer('no')", "m2m { answer { accept: true } }", none},
      {"morvik.m2m.answer('')", "m2m { answer { accept: false } }", none},
      {"morvik.m2m.answer(0)", "m2m { answer { accept: false } }", none},
      {"morvik.m2m.answer(-1)", "m2m { answer { accept: true } }", none},
      {"morvik.m2m.answer(NaN)", "m2m { answer { accept: false } }", none},
      {"morvik.m2m.answer(undefined)", "m2m { answer { accept: false } }", none},
      {"morvik.m2m.answer({})", "m2m { answer { accept: true } }", none},
      {"morvik.m2m.answer(f)", "m2m { answer { accept: true } }", none},
      // A truth value needs no conversion that could throw.
      {"morvik.m2m.answer(bad)", "m2m { answer { accept: true } }", none},
      {"morvik.m2m.hangup()", "m2m { hangup { } }", none},
      {"morvik.m2m.account('a', 'b', 'c', 'd')",
       R"(m2m { account { sipId: "a" sipDomain: "b" sipPassword: "c" stunServer: "d" } })", none},
      {"morvik.m2m.account(1, null, '', '\\u00e9')",
       R"(m2m { account { sipId: "1" sipDomain: "null" sipPassword: "" stunServer: "\303\251" } })",
       none},
  });
}

TEST_F(M2mTest, refusesEveryOtherCountAndTakesNoCallback) {
  expectRefused({
      "morvik.m2m.answer()",
      "morvik.m2m.answer(true, f)",
      "morvik.m2m.answer(true, 1)",
      "morvik.m2m.hangup(1)",
      "morvik.m2m.hangup(f)",
      "morvik.m2m.account()",
      "morvik.m2m.account('a', 'b', 'c')",
      "morvik.m2m.account('a', 'b', 'c', 'd', f)",
      "morvik.m2m.account('a', 'b', 'c', 'd', 'e')",
  });
}

TEST_F(M2mTest, callLogsBeforeItRefuses) {
  for (const bool interactive : {false, true}) {
    if (interactive) becomeInteractive();
    for (const char* call : {"call()", "call('x', f)", "call('x', 1)", "call('x', f, f)"}) {
      SCOPED_TRACE(call);
      log.clear();
      EXPECT_EQ(run(std::string("morvik.m2m.") + call), "throws: Wrong arguments");
      EXPECT_EQ(ownLines(), Lines{"DEBUG call"});
    }
  }
  EXPECT_FALSE(sent());
}

TEST_F(M2mTest, anAccountIsReadFromLeftToRight) {
  expectReads("morvik.m2m.account(read('i'), read('d'), read('p'), read('s'))", "idps");
}

TEST_F(M2mTest, needsInteractiveMode) {
  expectNeedsInteractive({"morvik.m2m.answer(true)", "morvik.m2m.hangup()",
                          "morvik.m2m.account('a', 'b', 'c', 'd')",
                          "morvik.m2m.account(bad, 1, 2, 3)"});
  log.clear();
  EXPECT_EQ(run("morvik.m2m.call('x')"), "throws: Must be in interactive mode");
  EXPECT_EQ(ownLines(), Lines{"DEBUG call"});
  EXPECT_FALSE(sent());
}

TEST_F(M2mTest, aConversionThatThrowsReachesTheScript) {
  expectPassesExceptions({"morvik.m2m.call(bad)"}, {"DEBUG call"});
  expectPassesExceptions({
      "morvik.m2m.account(bad, 'b', 'c', 'd')",
      "morvik.m2m.account('a', bad, 'c', 'd')",
      "morvik.m2m.account('a', 'b', bad, 'd')",
      "morvik.m2m.account('a', 'b', 'c', bad)",
  });
}

TEST_F(M2mTest, nobodyWaitsForAnAnswer) {
  becomeInteractive();
  run("morvik.m2m.hangup()");
  respond(*sent(), zeph::OK);
  EXPECT_TRUE(log.has(G_LOG_LEVEL_WARNING, "NO CORRELATION FOUND"));
}

TEST_F(M2mTest, tellsHowACallGoes) {
  const std::string first = "MESSAGE M2m: M2mMsgCallback";
  const auto shown = [](const std::string& type, const std::string& who) {
    return "MESSAGE JSLOG: object {\"type\":\"" + type + "\",\"correspondant\":\"" + who + "\"}";
  };
  expectListens(
      "morvik.m2m.addListener",
      {
          {"m2mCallback { type: INCOMING correspondant: 'sip:a@b' }",
           {first, shown("INCOMING", "sip:a@b")}},
          {"m2mCallback { type: BEGINNING correspondant: 'sip:a@b' }",
           {first, shown("BEGINNING", "sip:a@b")}},
          {"m2mCallback { type: TERMINATED correspondant: '' }", {first, shown("TERMINATED", "")}},
          {"m2mCallback {}", {first, shown("INCOMING", "")}},
          {"m2m { hangup {} }", {}},
          {"response { code: OK }", {}},
      });
}

TEST_F(M2mTest, hearsUntilItsFunctionReturnsSomethingElseThanTrue) {
  expectStaysOnlyForTrue("morvik.m2m.addListener",
                         "m2mCallback { type: INCOMING correspondant: 'a' }");
}

TEST_F(M2mTest, aListenerCanAnswerTheCall) {
  becomeInteractive("granted");
  run("morvik.m2m.addListener(c => { if (c.type === 'INCOMING') morvik.m2m.answer(true); })");
  deliver(zephMsg("m2mCallback { type: INCOMING correspondant: 'a' }"));
  const auto answered = sent();
  ASSERT_TRUE(answered);
  EXPECT_TRUE(answered->m2m().answer().accept());
}

TEST_F(M2mTest, hasItsFunctions) {
  EXPECT_EQ(run("Object.keys(morvik.m2m).join()"), "call,answer,hangup,account,addListener");
}

}  // namespace
}  // namespace morvik::test
