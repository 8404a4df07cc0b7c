// morvik.message: its queries, the messages that a script gets, and what `new` writes to standard
// output, in whatever way the application ends.
#include <gmock/gmock.h>

#include <csignal>
#include <string>

#include "support/system/feature-test.h"

namespace morvik::test {
namespace {

class MessageBoxTest : public FeatureTest {
 protected:
  MessageBoxTest() : FeatureTest("message") {}
};

constexpr char kHeard[] = "DEBUG MessageCallbackFunction";
constexpr char kNoResponse[] = "WARNING MessageCallbackFunction: has_response false";
constexpr char kOk[] = "DEBUG MessageCallbackFunction: response : OK";
constexpr char kError[] = "WARNING MessageCallbackFunction: response : ERROR";
constexpr char kAbort[] =
    "WARNING MessageCallbackFunction : has_morvikmessageresponse false or list empty. abort";
constexpr char kEmptyList[] = "MESSAGE JSLOG: object []";

SentRow query(const std::string& call, const std::string& fields) {
  return {call, "morvikMessageQuery { " + fields + " }"};
}

// What a list of one message is to a script.
AnsweredRow message(const std::string& wire, const std::string& json) {
  return {"list(tell)",
          "response { code: OK } morvikMessageResponse { morvikMessageList { " + wire + " } }",
          {kHeard, kOk, "MESSAGE JSLOG: object [" + json + "]"}};
}

AnsweredRow answered(const std::string& call, const std::string& answer, Lines lines) {
  lines.insert(lines.begin(), kHeard);
  return {call, answer, lines};
}

TEST_F(MessageBoxTest, isThereOnlyWithItsAccess) {
  expectFunctions("list,get,delete,new,markAsRead");
}

TEST_F(MessageBoxTest, aQueryTellsItsActionAndItsIds) {
  expectSends({
      query("list(f)", "action: LIST"),
      query("list(5)", "action: LIST"),
      query("list(f, 6)", "action: LIST"),
      query("get(['a', 'b'], f)", R"(action: GET id: "a" id: "b")"),
      query("get({x: 'a'}, f)", R"(action: GET id: "a")"),
      query("get([], f)", "action: GET"),
      query("get([1], f)", R"(action: GET id: "1")"),
      query("delete(['a'], f)", R"(action: DELETE id: "a")"),
      query("markAsRead(['a'], f)", R"(action: READ id: "a")"),
  });
}

TEST_F(MessageBoxTest, newSendsAPlainText) {
  const auto sent = [](const std::string& to, const std::string& text) {
    return "action: NEW message { header { to { " + to + " } } content { type: TEXT content: \"" +
           text + "\" } }";
  };
  const std::string u = R"(uuid: "u")";
  expectSends({
      query("new({uuid: 'u', objects: ['1', '2']}, 'hi')",
            sent(R"(objects { idDB: "1" } objects { idDB: "2" } uuid: "u")", "hi")),
      query("new({uuid: 'u', objects: []}, 'hi', f)", sent(u, "hi")),
      query("new({uuid: 'u', objects: 5}, '')", sent(u, "")),
      query("new({uuid: 'u'}, 'hi', 5, 6)", sent(u, "hi")),
      query("new({objects: []}, 'hi')", sent(R"(uuid: "undefined")", "hi")),
      query("new({uuid: 'u', objects: [{id: '1', name: 'n'}]}, 'hi')",
            sent(R"(objects { idDB: "[object Object]" } uuid: "u")", "hi")),
  });
}

TEST_F(MessageBoxTest, refusesOtherArguments) {
  std::vector<RefusedRow> rows;
  for (const std::string name : {"get", "delete", "markAsRead"})
    for (const char* list : {"()", "(['a'])", "(f)", "(['a'], f, f)", "(['a'], 5)", "('a', f)"})
      rows.push_back({.call = name + list, .lines = {"WARNING Wrong arguments"}});
  rows = rows + wrong({"list()", "list(5, 6)", "new()", "new({})", "new({uuid: 'u'}, 'x', 5)"}) +
         needMode({"list(f)", "list(5)", "get([], f)", "delete([], f)", "markAsRead([], f)",
                   "new({uuid: 'u'}, 'x')"});
  rows.push_back({"new('u', 'x')", kMode, "Arg[0] Must be object"});
  rows.push_back({"new({}, 5)", kMode, "Arg[0] Must be string"});
  expectRefuses(rows);
}

TEST_F(MessageBoxTest, aMessageHoldsItsHeaderAndItsContent) {
  expectAnswered({
      message("content { header: 'h' content: 'c' type: SOUND } header { to { uuid: 't' } from { "
              "alias: 'a' } status: READ date: 12 id: 'i' }",
              R"({"header":{"id":"i","date":12,"status":1,"from":{"alias":"a","objects":[]},)"
              R"("to":{"uuid":"t","objects":[]}},)"
              R"("content":{"type":"SOUND","content":"c","header":"h"}})"),
      message("header { to { } }",
              R"({"header":{"id":"","date":0,"status":0,"to":{"objects":[]}},"content":{}})"),
      message("header { to { } } content { type: XML content: 'a\\000b' }",
              R"({"header":{"id":"","date":0,"status":0,"to":{"objects":[]}},)"
              R"("content":{"type":"XML","content":"a"}})"),
  });
}

TEST_F(MessageBoxTest, theListReachesTheScriptWhateverTheCode) {
  const std::string list = "morvikMessageResponse { }";
  expectAnswered({
      answered("list(tell)", "response { code: OK } " + list, {kOk, kEmptyList}),
      answered("get(['a'], tell)", "response { code: ERROR } " + list, {kError, kEmptyList}),
      answered("delete(['a'], tell)", "response { code: BUSY } " + list, {kEmptyList}),
      answered("markAsRead(['a'], tell)", list, {kNoResponse, kEmptyList}),
  });
}

TEST_F(MessageBoxTest, withoutAListNothingIsCalledUntilOneComes) {
  expectAnswered({
      answered("list(tell)", "response { code: ERROR }", {kError, kAbort}),
      answered("", "response { code: OK }", {kOk, kAbort}),
      answered("", "event { code: OK }", {kNoResponse, kAbort}),
      answered("", "response { code: OK } morvikMessageResponse { }", {kOk, kEmptyList}),
      answered("", "response { code: OK } morvikMessageResponse { }", {kOk}),
  });
}

TEST_F(MessageBoxTest, aListForNoFunctionIsOnlyLogged) {
  expectAnswered({answered("list(5)", "response { code: OK } morvikMessageResponse { }",
                           {kOk,
                            "WARNING MessageCallbackFunction: the callback is not a "
                            "function"})});
}

TEST_F(MessageBoxTest, nobodyHearsTheAnswerToNew) {
  interactive(withGlobals("morvik.message.new({uuid: 'u'}, 'hi', tell);"), access());
  zeph::ZephMsg answer = responseTo(device.receive(), "OK");
  answer.mutable_morvikmessageresponse();
  device.send(answer);
  settle();
  EXPECT_THAT(app.warnings(), testing::Contains("NO CORRELATION FOUND"));
  EXPECT_THAT(app.texts(), testing::Not(testing::Contains(testing::StartsWith("JSLOG"))));
}

class MessageBoxOutputTest : public DeviceTest {
 protected:
  void sendOne() {
    interactive("morvik.message.new({uuid: 'u', objects: ['1']}, 'hi')", {"message"});
    sent = device.receive();
  }

  zeph::ZephMsg sent;
};

TEST_F(MessageBoxOutputTest, isOutWhenTheApplicationDiesOfItsConnection) {
  sendOne();
  ASSERT_EQ(sent.morvikmessagequery().message().content().content(), "hi");
  EXPECT_EQ(endOf(app, [this] { device.close(); }), killedBy(SIGTRAP));
  EXPECT_EQ(host().output().awaitEnd(), sent.DebugString());
}

TEST_F(MessageBoxOutputTest, isOutWhileTheApplicationLivesOn) {
  sendOne();
  host().output().await(sent.DebugString());
  EXPECT_TRUE(app.alive());
}

}  // namespace
}  // namespace morvik::test
