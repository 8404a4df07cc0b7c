// morvik.m2m: placing and answering calls, and what is heard of them.
#include "support/system/feature-test.h"

namespace morvik::test {
namespace {

class M2mTest : public FeatureTest {
 protected:
  M2mTest() : FeatureTest("m2m") {}
};

TEST_F(M2mTest, isThereOnlyWithItsAccess) {
  expectFunctions("call,answer,hangup,account,addListener");
}

TEST_F(M2mTest, callsSendTheirField) {
  expectSends(
      {{"call('sip:a@b')", R"(m2m { call { address: "sip:a@b" } })", {"DEBUG call"}},
       {"call('\\u00e9')", R"(m2m { call { address: "\303\251" } })", {"DEBUG call"}},
       {"call(undefined)", R"(m2m { call { address: "undefined" } })", {"DEBUG call"}},
       {"answer(true)", "m2m { answer { accept: true } }"},
       {"answer('no')", "m2m { answer { accept: true } }"},
       {"answer(f)", "m2m { answer { accept: true } }"},
       {"answer(0)", "m2m { answer { accept: false } }"},
       {"answer('')", "m2m { answer { accept: false } }"},
       {"hangup()", "m2m { hangup { } }"},
       {"account('a', 'b', 3, '\\u00e9')",
        R"(m2m { account { sipId: "a" sipDomain: "b" sipPassword: "3" stunServer: "\303\251" } })"}});
}

// No function here takes one of the script's in the last place. A refused call is logged too.
TEST_F(M2mTest, callsAreRefusedInTheirOrder) {
  const Lines called{"DEBUG call"};
  expectRefuses(wrong({"hangup(1)", "hangup(f)", "answer()", "answer(true, f)",
                       "account('a', 'b', 'c')", "account('a', 'b', 'c', 'd', f)", "addListener()",
                       "addListener(1)", "addListener(f, f)"}) +
                needMode({"answer(true)", "hangup()", "account('a', 'b', 'c', 'd')"}) +
                std::vector<RefusedRow>{{"call()", kWrong, kWrong, called},
                                        {"call('x', f)", kWrong, kWrong, called},
                                        {"call('x')", kMode, "", called},
                                        {"call(bad)", kMode, "no text", called},
                                        {"account('a', bad, 'c', 'd')", kMode, "no text"}});
}

TEST_F(M2mTest, nobodyWaitsForAnAnswer) {
  expectAnswered({{"hangup()", "response { code: OK }", {"WARNING NO CORRELATION FOUND"}}});
}

TEST_F(M2mTest, listenersHearHowACallGoes) {
  const auto told = [](const std::string& object) {
    return Lines{"MESSAGE M2m: M2mMsgCallback", "MESSAGE JSLOG: object " + object};
  };
  expectHears({{"m2mCallback { type: INCOMING correspondant: 'caf\303\251' }",
                told("{\"type\":\"INCOMING\",\"correspondant\":\"caf\351\"}")},
               {"m2mCallback { type: BEGINNING correspondant: 'bob' }",
                told(R"({"type":"BEGINNING","correspondant":"bob"})")},
               {"m2mCallback { type: TERMINATED correspondant: '' }",
                told(R"({"type":"TERMINATED","correspondant":""})")},
               {"m2m { hangup { } }", {}}});
}

TEST_F(M2mTest, listenersStayOnlyForTrue) {
  expectStaysOnlyForTrue("m2mCallback { type: INCOMING correspondant: 'bob' }");
}

TEST_F(M2mTest, anEventIsNoObjectOfTheApplicationsOwn) {
  connect(
      "Object.prototype.mark = 1; morvik.m2m.addListener(function(call) {"
      " log([call instanceof Object, call.mark].join()); });",
      access());
  zeph::ZephMsg message = newMessage();
  message.MergeFrom(messageOf("m2mCallback { type: INCOMING correspondant: 'bob' }"));
  device.send(message);
  EXPECT_EQ(app.logged(), "false,");
}

}  // namespace
}  // namespace morvik::test
