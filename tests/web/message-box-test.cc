// morvik.message: arguments, queries, the messages that a script gets, and what `new` sends.
#include <unistd.h>

#include <cstdio>

#include "support/unit/feature-test.h"
#include "support/unit/text-message.h"

namespace morvik::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string kHeard = "DEBUG MessageCallbackFunction";
const std::string kNoResponse = "WARNING MessageCallbackFunction: has_response false";
const std::string kAbort =
    "WARNING MessageCallbackFunction : has_morvikmessageresponse false or list empty. abort";

class MessageBoxTest : public FeatureTest {
 protected:
  // What a script gets for one message in text form.
  void expectHeard(const std::string& message, const std::string& json) {
    expectAnswered("morvik.message.list(tell)",
                   {{"morvikMessageResponse { morvikMessageList {" + message + "} }",
                     {kHeard, kNoResponse, "MESSAGE JSLOG: object [" + json + "]"}}});
  }

  // The ids that a query goes out with.
  void expectIds(const std::string& ids, const std::vector<std::string>& expected) {
    SCOPED_TRACE(ids);
    EXPECT_EQ(run("morvik.message.get(" + ids + ", f)"), "undefined");
    const auto message = sent();
    ASSERT_TRUE(message);
    const auto& query = message->morvikmessagequery();
    EXPECT_THAT(std::vector<std::string>(query.id().begin(), query.id().end()), expected);
  }

  // Throws this text, outside and in interactive mode as told, and sends and prints nothing.
  void expectThrowsSilently(const std::string& call, const std::string& text,
                            const Lines& lines = {}) {
    SCOPED_TRACE(call);
    testing::internal::CaptureStdout();
    expectThrows(call, text);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(ownLines(), lines);
    EXPECT_FALSE(sent());
  }
};

class MessageBoxDeathTest : public MessageBoxTest {};

TEST_F(MessageBoxTest, eachFunctionHasItsAction) {
  expectSends({
      {"morvik.message.list(f)", "morvikMessageQuery { action: LIST }", {}},
      {"morvik.message.get(['a'], f)", "morvikMessageQuery { action: GET id: \"a\" }", {}},
      {"morvik.message.delete(['a'], f)", "morvikMessageQuery { action: DELETE id: \"a\" }", {}},
      {"morvik.message.markAsRead(['a'], f)", "morvikMessageQuery { action: READ id: \"a\" }", {}},
      {"morvik.message.get([], f)", "morvikMessageQuery { action: GET }", {}},
      {"morvik.message.list(5)", "morvikMessageQuery { action: LIST }", {}},
      {"morvik.message.list(undefined)", "morvikMessageQuery { action: LIST }", {}},
      {"morvik.message.list(f, 6)", "morvikMessageQuery { action: LIST }", {}},
      {"morvik.message.list(f, f, 7)", "morvikMessageQuery { action: LIST }", {}},
  });
}

TEST_F(MessageBoxTest, theActionsHaveTheirNumbers) {
  EXPECT_EQ(zeph::MorvikMessageQuery::NEW, 1);
  EXPECT_EQ(zeph::MorvikMessageQuery::LIST, 2);
  EXPECT_EQ(zeph::MorvikMessageQuery::GET, 3);
  EXPECT_EQ(zeph::MorvikMessageQuery::DELETE, 4);
  EXPECT_EQ(zeph::MorvikMessageQuery::READ, 5);
}

TEST_F(MessageBoxTest, valuesAreIdsAndNamesDoNotCount) {
  becomeInteractive();
  const struct {
    const char* ids;
    std::vector<std::string> expected;
  } rows[] = {
      {"['a', 'b']", {"a", "b"}},
      {"({x: 'a'})", {"a"}},
      {"({z: 'first', a: 'second', 1: 'number'})", {"number", "first", "second"}},
      {"[]", {}},
      {"({})", {}},
      {"[1]", {"1"}},
      {"[null, undefined, true, {}, [1, 2]]",
       {"null", "undefined", "true", "[object Object]", "1,2"}},
      {"['', 'a\\0b', '\\u0141']", {"", "a b", "A"}},
      {"['\\u00e9']", {"\xe9"}},
      {"[ , 'b']", {"b"}},
      {"f", {}},
      {"new String('ab')", {"a", "b"}},
      {"Object.create({inherited: 'i'})", {"i"}},
      {"Object.defineProperty({a: '1'}, 'hidden', {value: '2'})", {"1"}},
      {"({[Symbol()]: 's', get got() { return 'g'; }})", {"g"}},
      {"new Proxy(['p'], {})", {"p"}},
  };
  for (const auto& row : rows) expectIds(row.ids, row.expected);
}

TEST_F(MessageBoxTest, queriesOfIdsRefuseWithALine) {
  const char* const arguments[] = {
      "()",          "(['a'])",  "(f)",    "(['a'], f, f)", "(['a'], f, 1)",  "(['a'], 5)",
      "(['a'], {})", "('a', f)", "(5, f)", "(null, f)",     "(undefined, f)", "(f, ['a'])",
  };
  for (const bool interactive : {false, true}) {
    if (interactive) becomeInteractive();
    for (const char* name : {"get", "delete", "markAsRead"}) {
      for (const char* list : arguments) {
        expectThrowsSilently(std::string("morvik.message.") + name + list, "Wrong arguments",
                             {"WARNING Wrong arguments"});
      }
    }
  }
}

TEST_F(MessageBoxTest, listAndNewRefuseWithoutALine) {
  expectRefused({
      "morvik.message.list()",
      "morvik.message.list(5, 6)",
      "morvik.message.list(5, f)",
      "morvik.message.list({}, f)",
      "morvik.message.new()",
      "morvik.message.new({})",
      "morvik.message.new(f)",
      "morvik.message.new({}, 'x', 5)",
      "morvik.message.new({}, 'x', {})",
      "morvik.message.new(1, 2, 3)",
      "morvik.message.new(1, 2, undefined)",
  });
}

TEST_F(MessageBoxTest, needsInteractiveMode) {
  expectNeedsInteractive({
      "morvik.message.list(f)",
      "morvik.message.list(5)",
      "morvik.message.get([], f)",
      "morvik.message.get([bad], f)",
      "morvik.message.delete([], f)",
      "morvik.message.markAsRead([], f)",
      "morvik.message.new({}, 'x')",
      "morvik.message.new(1, 2)",
      "morvik.message.new(1, 2, f)",
  });
}

TEST_F(MessageBoxTest, whatTheScriptsObjectsThrowReachesIt) {
  expectPassesExceptions({
      "morvik.message.get([bad], f)",
      "morvik.message.get(['a', bad, 'b'], f)",
      "morvik.message.delete({get a() { throw 'no text'; }}, f)",
      "morvik.message.markAsRead(new Proxy({}, {ownKeys() { throw 'no text'; }}), f)",
      "morvik.message.get(new Proxy({a: 1}, {get() { throw 'no text'; }}), f)",
      "morvik.message.new({uuid: bad}, 'x')",
      "morvik.message.new({get uuid() { throw 'no text'; }}, 'x')",
      "morvik.message.new({get objects() { throw 'no text'; }}, 'x')",
      "morvik.message.new({objects: [bad]}, 'x')",
      "morvik.message.new({objects: ['a', bad]}, 'x')",
  });
  EXPECT_EQ(run("morvik.message.get([Symbol()], f)"),
            "throws: TypeError: Cannot convert a Symbol value to a string");
}

TEST_F(MessageBoxTest, idsBeyondAllMeasureAreRefused) {
  becomeInteractive();
  // 10485760 bytes on the wire, two of them for each id's tag and length.
  const char* const kMost = "Array(102801).fill('x'.repeat(100)).concat('x'.repeat(56))";
  // All of them are taken: the next one, which has no text, comes to its turn.
  expectThrowsSilently(std::string("morvik.message.get(") + kMost + ".concat([bad]), f)",
                       "no text");
  const std::string tooMany = std::string(kMost) + ".concat('')";
  for (const char* name : {"get", "delete", "markAsRead"}) {
    expectThrowsSilently(std::string("morvik.message.") + name + "(" + tooMany + ", f)",
                         "Too many ids");
  }
  // There an id goes out within an object: four bytes for both tags and lengths, and six with
  // lengths beyond 127.
  for (const char* most : {"Array(100824).fill('x'.repeat(100)).concat('x'.repeat(60))",
                           "Array(50901).fill('x'.repeat(200)).concat('x'.repeat(148))"}) {
    const std::string call = std::string("morvik.message.new({objects: ") + most;
    expectThrowsSilently(call + ".concat([bad])}, 'x')", "no text");
    expectThrowsSilently(call + ".concat('')}, 'x')", "Too many ids");
  }
  expectThrowsSilently("morvik.message.new({objects: new Array(4294967295)}, 'x')", "Too many ids");
}

TEST_F(MessageBoxTest, newSendsAPlainText) {
  const std::string head = "morvikMessageQuery { action: NEW message { header { to { ";
  const std::string tail = " } } content { type: TEXT content: \"hi\" } } }";
  testing::internal::CaptureStdout();
  const struct {
    const char* receiver;
    const char* to;
  } rows[] = {
      {"{uuid: 'u', objects: ['1', '2']}",
       "objects { idDB: \"1\" } objects { idDB: \"2\" } uuid: \"u\""},
      {"{uuid: 'u', objects: []}", "uuid: \"u\""},
      {"{uuid: 'u'}", "uuid: \"u\""},
      {"{}", "uuid: \"undefined\""},
      {"[]", "uuid: \"undefined\""},
      {"f", "uuid: \"undefined\""},
      {"{uuid: null, objects: 5}", "uuid: \"null\""},
      {"{uuid: 1, objects: 'ab'}", "uuid: \"1\""},
      {"{uuid: 'u', objects: {0: 'a', length: 1}}", "uuid: \"u\""},
      {"{uuid: 'u', objects: null}", "uuid: \"u\""},
      {"{uuid: 'u', objects: [{id: '1', name: 'n'}]}",
       "objects { idDB: \"[object Object]\" } uuid: \"u\""},
      {"{uuid: 'u', objects: [ , 3]}",
       "objects { idDB: \"undefined\" } objects { idDB: \"3\" } uuid: \"u\""},
      {"{uuid: 'a\\0b\\u0141'}", "uuid: \"a bA\""},
  };
  for (const auto& row : rows) {
    expectSends({{std::string("morvik.message.new(") + row.receiver + ", 'hi')",
                  head + row.to + tail,
                  {}}});
  }
  testing::internal::GetCapturedStdout();
}

TEST_F(MessageBoxTest, newConvertsItsTextAndIgnoresWhatFollows) {
  testing::internal::CaptureStdout();
  const std::string head =
      "morvikMessageQuery { action: NEW message { header { to { uuid: \"u\" } "
      "} content { type: TEXT content: \"";
  const std::string tail = "\" } } }";
  expectSends({
      {"morvik.message.new({uuid: 'u'}, '')", head + tail, {}},
      {"morvik.message.new({uuid: 'u'}, 'a\\0b')", head + "a b" + tail, {}},
      {"morvik.message.new({uuid: 'u'}, '\\u00e9')", head + "\\351" + tail, {}},
      {"morvik.message.new({uuid: 'u'}, 'x', f)", head + "x" + tail, {}},
      {"morvik.message.new({uuid: 'u'}, 'x', 5, 6)", head + "x" + tail, {}},
      {"morvik.message.new({uuid: 'u'}, 'x', f, f, f)", head + "x" + tail, {}},
  });
  testing::internal::GetCapturedStdout();
}

TEST_F(MessageBoxTest, newThrowsInItsOrder) {
  becomeInteractive();
  expectThrowsSilently("morvik.message.new(5, 5)", "Arg[0] Must be object");
  expectThrowsSilently("morvik.message.new('to', 'text')", "Arg[0] Must be object");
  expectThrowsSilently("morvik.message.new(null, 'text')", "Arg[0] Must be object");
  expectThrowsSilently("morvik.message.new(undefined, 'text', f)", "Arg[0] Must be object");
  expectThrowsSilently("morvik.message.new({}, 5)", "Arg[0] Must be string");
  expectThrowsSilently("morvik.message.new({}, {}, f)", "Arg[0] Must be string");
  expectThrowsSilently("morvik.message.new({}, new String('x'))", "Arg[0] Must be string");
  expectThrowsSilently("morvik.message.new({}, undefined)", "Arg[0] Must be string");
  expectThrowsSilently("morvik.message.new({uuid: bad}, 5)", "no text");
  expectThrowsSilently("morvik.message.new({objects: [bad]}, 5)", "no text");
  expectThrowsSilently(
      "morvik.message.new({get uuid() { throw 'uuid'; }, get objects() { throw 'no'; }}, 5)",
      "uuid");
}

TEST_F(MessageBoxTest, newWritesTheMessageToStandardOutput) {
  becomeInteractive("granted");
  testing::internal::CaptureStdout();
  run("morvik.message.new({uuid: 'u', objects: ['1']}, 'hi')");
  const std::string written = testing::internal::GetCapturedStdout();
  const auto message = sent();
  ASSERT_TRUE(message);
  EXPECT_EQ(written, "id: \"" + message->id() +
                         "\"\n"
                         "interactiveId: \"granted\"\n"
                         "morvikMessageQuery {\n"
                         "  action: NEW\n"
                         "  message {\n"
                         "    header {\n"
                         "      to {\n"
                         "        objects {\n"
                         "          idDB: \"1\"\n"
                         "        }\n"
                         "        uuid: \"u\"\n"
                         "      }\n"
                         "    }\n"
                         "    content {\n"
                         "      type: TEXT\n"
                         "      content: \"hi\"\n"
                         "    }\n"
                         "  }\n"
                         "}\n");
}

TEST_F(MessageBoxTest, theOthersWriteNothingToStandardOutput) {
  becomeInteractive();
  testing::internal::CaptureStdout();
  for (const char* call :
       {"list(f)", "get(['a'], f)", "delete(['a'], f)", "markAsRead(['a'], f)"}) {
    EXPECT_EQ(run(std::string("morvik.message.") + call), "undefined");
    EXPECT_TRUE(sent());
  }
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST_F(MessageBoxDeathTest, newSendsBeforeItWrites) {
  becomeInteractive();
  instance.socket = -1;
  const auto failToSend = [this] {
    dup2(STDERR_FILENO, STDOUT_FILENO);  // where the death test listens
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    run("morvik.message.new({uuid: 'u'}, 'hi')");
  };
  EXPECT_DEATH(failToSend(), testing::AllOf(testing::HasSubstr("send failed"),
                                            testing::Not(testing::HasSubstr("action: NEW"))));
}

TEST_F(MessageBoxTest, nothingOfAnAnsweredQueryIsKept) {
  expectForgets("morvik.message.list(kept)", "morvikMessageResponse { }");
  expectForgets("morvik.message.get(['a'], kept)", "morvikMessageResponse { }");
}

TEST_F(MessageBoxTest, nobodyWaitsForTheAnswerToNew) {
  becomeInteractive();
  testing::internal::CaptureStdout();
  run("morvik.message.new({uuid: 'u'}, 'hi', tell)");
  testing::internal::GetCapturedStdout();
  const auto request = sent();
  ASSERT_TRUE(request);
  answer(*request, zephMsg("response { code: OK } morvikMessageResponse { }"));
  EXPECT_TRUE(log.has(G_LOG_LEVEL_WARNING, "NO CORRELATION FOUND"));
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(MessageBoxTest, aMessageHoldsItsHeaderAndItsContentInOrder) {
  const struct {
    const char* wire;
    const char* json;
  } rows[] = {
      {"content { header: 'h' content: 'c' type: SOUND }"
       "header { to { uuid: 't' } from { alias: 'a' } status: READ date: 12 id: 'i' }",
       R"({"header":{"id":"i","date":12,"status":1,"from":{"alias":"a","objects":[]},)"
       R"("to":{"uuid":"t","objects":[]}},"content":{"type":"SOUND","content":"c","header":"h"}})"},
      {"", R"({"header":{},"content":{}})"},
      {"header { }", R"({"header":{"id":"","date":0,"status":0},"content":{}})"},
      {"header { to { } }",
       R"({"header":{"id":"","date":0,"status":0,"to":{"objects":[]}},"content":{}})"},
      {"header { status: UNREAD date: -1 }",
       R"({"header":{"id":"","date":-1,"status":0},"content":{}})"},
      {"header { from { objects { idDB: '1' name: 'n' } objects { idDB: '2' } } }",
       R"({"header":{"id":"","date":0,"status":0,"from":{"objects":)"
       R"([{"id":"1","name":"n"},{"id":"2","name":""}]}},"content":{}})"},
      {"content { }", R"({"header":{},"content":{"type":"TEXT","content":""}})"},
      {"content { type: XML content: '<a/>' }",
       R"({"header":{},"content":{"type":"XML","content":"<a/>"}})"},
      {"content { type: MIXED header: '' }",
       R"({"header":{},"content":{"type":"MIXED","content":"","header":""}})"},
      {"header { id: 'i\\000j' } content { content: 'c\\000d' header: 'h\\000i' }",
       R"({"header":{"id":"i","date":0,"status":0},)"
       R"("content":{"type":"TEXT","content":"c","header":"h"}})"},
  };
  for (const auto& row : rows) expectHeard(row.wire, row.json);
}

TEST_F(MessageBoxTest, messagesComeInTheOrderOfTheList) {
  const std::string list =
      "morvikMessageResponse {"
      " morvikMessageList { content { content: 'b' } } morvikMessageList { }"
      " morvikMessageList { content { content: 'a' } } }";
  const std::string heard =
      "MESSAGE JSLOG: object "
      R"([{"header":{},"content":{"type":"TEXT","content":"b"}},{"header":{},"content":{}},)"
      R"({"header":{},"content":{"type":"TEXT","content":"a"}}])";
  for (const char* call :
       {"list(tell)", "get(['a'], tell)", "delete(['a'], tell)", "markAsRead(['a'], tell)"}) {
    expectAnswered(std::string("morvik.message.") + call, {{list, {kHeard, kNoResponse, heard}}});
  }
}

TEST_F(MessageBoxTest, theCodeIsOnlyLogged) {
  const std::string ok = "DEBUG MessageCallbackFunction: response : OK";
  const std::string error = "WARNING MessageCallbackFunction: response : ERROR";
  const std::string empty = "MESSAGE JSLOG: object []";
  expectAnswered("morvik.message.list(tell)",
                 {
                     {"morvikMessageResponse { }", {kHeard, kNoResponse, empty}},
                     {"response { } morvikMessageResponse { }", {kHeard, empty}},
                     {"response { code: OK } morvikMessageResponse { }", {kHeard, ok, empty}},
                     {"response { code: ERROR } morvikMessageResponse { }", {kHeard, error, empty}},
                     {"response { code: BUSY } morvikMessageResponse { }", {kHeard, empty}},
                     {"event { code: OK } morvikMessageResponse { }", {kHeard, kNoResponse, empty}},
                     {"", {kHeard, kNoResponse, kAbort}},
                     {"response { }", {kHeard, kAbort}},
                     {"response { code: OK }", {kHeard, ok, kAbort}},
                     {"response { code: ERROR }", {kHeard, error, kAbort}},
                     {"response { code: TIMEOUT }", {kHeard, kAbort}},
                 });
}

TEST_F(MessageBoxTest, anAnswerWithoutAListLeavesTheQueryOpenAndAListEndsIt) {
  becomeInteractive();
  run("morvik.message.list(tell)");
  const auto request = sent();
  ASSERT_TRUE(request);
  respond(*request, zeph::ERROR);
  respond(*request, zeph::OK);
  EXPECT_THAT(logged(), IsEmpty());
  answer(*request, zephMsg("morvikMessageResponse { }"));
  EXPECT_THAT(logged(), ElementsAre("object []"));
  answer(*request, zephMsg("morvikMessageResponse { morvikMessageList { } }"));
  EXPECT_THAT(logged(), ElementsAre("object []"));
}

TEST_F(MessageBoxTest, aListForSomethingElseThanAFunctionIsAWarningOnce) {
  becomeInteractive();
  for (const char* call : {"list(5)", "list({})", "list('tell')", "list(undefined)"}) {
    SCOPED_TRACE(call);
    run(std::string("morvik.message.") + call);
    const auto request = sent();
    ASSERT_TRUE(request);
    respond(*request, zeph::OK);
    log.clear();
    for (int i = 0; i < 2; ++i) {
      answer(*request, zephMsg("response { code: OK } morvikMessageResponse { }"));
    }
    EXPECT_THAT(log.texts(G_LOG_LEVEL_WARNING),
                ElementsAre("MessageCallbackFunction: the callback is not a function"));
    EXPECT_THAT(logged(), IsEmpty());
  }
}

TEST_F(MessageBoxTest, whatItHandsOverStandsOutsideTheApplicationsGlobals) {
  becomeInteractive();
  run("morvik.message.list(all => log(Array.isArray(all) + ' ' + (all instanceof Array)))");
  answer(*sent(), zephMsg("morvikMessageResponse { }"));
  EXPECT_THAT(logged(), ElementsAre("true false"));
}

TEST_F(MessageBoxTest, hasFiveFunctions) {
  EXPECT_EQ(run("Object.keys(morvik.message).sort().join()"), "delete,get,list,markAsRead,new");
}

}  // namespace
}  // namespace morvik::test
