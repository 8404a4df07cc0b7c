// The request pattern through functions made here: the order of the checks, the conversions, what
// a refused request still does (nothing), and who hears the answer.
#include "channel/request.h"

#include <sys/socket.h>
#include <unistd.h>

#include <array>

#include "channel/answered-once.h"
#include "host/morvik-data.h"
#include "support/text-message.h"
#include "support/unit/log-texts.h"
#include "support/unit/script-test.h"

namespace morvik::test {
namespace {

using namespace std::string_literals;

std::string read;  // what a function read of its arguments

// Two fixed arguments, the ordinary way.
void ordinary(const Args& args) {
  Request request(args, "LABEL", 2);
  read = request.ascii(0);
  read += "," + std::to_string(request.int32(1));
  if (request.refused()) return;
  request.message().mutable_ping();
  request.send();
}

// Reads one argument in each way, without any check.
template <auto method>
void reading(const Args& args) {
  Request request(args);
  if constexpr (requires { std::to_string((request.*method)(0)); }) {
    read = std::to_string((request.*method)(0));
  } else {
    read = (request.*method)(0);
  }
  if (request.refused()) read += " refused";
}

// An order of its own: interactive mode first, then a condition, then the arguments.
void reversed(const Args& args) {
  Request request(args);
  request.expectInteractive();
  request.expect(args.Length() > 0 && args[0]->IsString());
  request.expectArguments(1);
  if (!request.refused()) request.instance().instanceName = "not refused";
}

void hearData(void* data, const zeph::ZephMsg& message) {
  *static_cast<std::string*>(data) += message.id() + ";";
}

std::shared_ptr<std::string> heardData;

void withData(const Args& args) {
  Request request(args, "LABEL", 0);
  if (!request.refused()) request.sendFor(hearData, heardData);
}

void withReply(const Args& args) {
  Request request(args, "LABEL", 0);
  if (!request.refused()) request.send(EventWithParams);
}

void callFirst(void* data, const zeph::ZephMsg& message) {
  const auto function = static_cast<AnsweredOnce<ScriptFunction>*>(data)->take();
  if (function) function->call({toScript(message.id())});
}

// One fixed argument and a function that must be there and hears the first answer.
void withFunction(const Args& args) {
  Request request(args);
  request.expectFunction(1);
  if (!request.refused()) request.sendForFirst(callFirst);
}

class RequestTest : public ScriptTest {
 protected:
  RequestTest() {
    run("var f = function() {};");
    expose("ordinary", ordinary);
    expose("ascii", reading<&Request::ascii>);
    expose("utf8", reading<&Request::utf8>);
    expose("int32", reading<&Request::int32>);
    expose("uint32", reading<&Request::uint32>);
    expose("reversed", reversed);
    expose("withData", withData);
    expose("withReply", withReply);
    expose("withFunction", withFunction);
    read.clear();
  }
};

TEST_F(RequestTest, anyOtherCountAndALastOneThatIsNoFunctionAreRefused) {
  const char* const wrong[] = {"",
                               "'a'",
                               "'a', 1, 2",
                               "'a', 1, {}",
                               "'a', 1, null",
                               "'a', 1, 'f'",
                               "'a', 1, undefined",
                               "'a', 1, f, f",
                               "'a', 1, 2, f"};
  for (const bool interactive : {false, true}) {
    if (interactive) becomeInteractive();
    for (const char* arguments : wrong) {
      EXPECT_EQ(run(std::string("ordinary(") + arguments + ")"), "throws: Wrong arguments")
          << arguments;
      EXPECT_EQ(read, ",0");
    }
  }
  EXPECT_EQ(run("try { ordinary(); } catch (e) { typeof e; }"), "string");
  EXPECT_FALSE(sent());
  EXPECT_THAT(log.texts(), ElementsAre());
}

TEST_F(RequestTest, interactiveModeComesSecondAndBeforeAnyReading) {
  const std::string spy = "{toString: function() { log('read'); }}";
  for (const std::string& arguments : {"'a', 1"s, "'a', 1, f"s, "f, f"s, spy + ", 1"}) {
    EXPECT_EQ(run("ordinary(" + arguments + ")"), "throws: Must be in interactive mode");
  }
  EXPECT_EQ(run("try { ordinary('a', 1); } catch (e) { typeof e; }"), "string");
  EXPECT_FALSE(sent());
  EXPECT_THAT(log.texts(), ElementsAre());
}

TEST_F(RequestTest, theMessageHasAFreshIdAndTheInteractiveIdOnly) {
  becomeInteractive("granted");
  std::string lastId;
  for (const char* arguments : {"'a', 1", "'a', 1, f", "f, f"}) {
    EXPECT_EQ(run(std::string("ordinary(") + arguments + ")"), "undefined");
    auto message = sent();
    ASSERT_TRUE(message);
    EXPECT_THAT(message->id(), testing::MatchesRegex("[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}"));
    EXPECT_NE(message->id(), std::exchange(lastId, message->id()));
    message->clear_id();
    EXPECT_EQ(message->ShortDebugString(), "interactiveId: \"granted\" ping { }");
  }
}

TEST_F(RequestTest, conversionsRunInOrderAndTheFirstThatThrowsEndsThem) {
  becomeInteractive();
  run("function speaks(text) { return {toString: function() { log(text); return '7'; }}; }"
      "function throws(text) { return {toString: function() { throw text; }}; }");
  EXPECT_EQ(run("ordinary(speaks('first'), speaks('second'))"), "undefined");
  EXPECT_EQ(read, "7,7");
  EXPECT_EQ(run("ordinary(throws('one'), speaks('never'))"), "throws: one");
  EXPECT_EQ(run("ordinary(speaks('third'), throws('two'))"), "throws: two");
  EXPECT_THAT(logged(), ElementsAre("first", "second", "third"));
  EXPECT_TRUE(sent());
  EXPECT_FALSE(sent());
}

struct Reading {
  const char* value;
  const char* ascii;
  const char* utf8;
  const char* int32;
  const char* uint32;
};

TEST_F(RequestTest, argumentsAreConvertedAndNotTested) {
  const Reading rows[] = {
      {"", "undefined", "undefined", "0", "0"},
      {"null", "null", "null", "0", "0"},
      {"true", "true", "true", "1", "1"},
      {"-1", "-1", "-1", "-1", "4294967295"},
      {"2.9", "2.9", "2.9", "2", "2"},
      {"-2.9", "-2.9", "-2.9", "-2", "4294967294"},
      {"NaN", "NaN", "NaN", "0", "0"},
      {"Infinity", "Infinity", "Infinity", "0", "0"},
      {"3000000000", "3000000000", "3000000000", "-1294967296", "3000000000"},
      {"4294967297", "4294967297", "4294967297", "1", "1"},
      {"'abc'", "abc", "abc", "0", "0"},
      {"' 12 '", " 12 ", " 12 ", "12", "12"},
      {"'0x10'", "0x10", "0x10", "16", "16"},
      {"''", "", "", "0", "0"},
      {"{}", "[object Object]", "[object Object]", "0", "0"},
      {"[5]", "5", "5", "5", "5"},
      {"'\\u00e9'", "\xe9", "\xc3\xa9", "0", "0"},
      {"'\\u0141'", "A", "\xc5\x81", "0", "0"},
      {"Symbol()", " refused", " refused", "0 refused", "0 refused"},
  };
  for (const Reading& row : rows) {
    const std::pair<const char*, const char*> ways[] = {
        {"ascii", row.ascii}, {"utf8", row.utf8}, {"int32", row.int32}, {"uint32", row.uint32}};
    for (const auto& [way, expected] : ways) {
      run(std::string(way) + "(" + row.value + ")");
      EXPECT_EQ(read, expected) << way << " " << row.value;
    }
  }
}

TEST_F(RequestTest, aCallMayHaveAnOrderOfItsOwnAndItsFirstRefusalStays) {
  EXPECT_EQ(run("reversed(1, 2, 3)"), "throws: Must be in interactive mode");
  becomeInteractive();
  EXPECT_EQ(run("reversed(1, 2, 3)"), "throws: Wrong arguments");
  EXPECT_EQ(run("reversed('a', 2)"), "throws: Wrong arguments");
  EXPECT_EQ(instance.instanceName, "");
  EXPECT_EQ(run("reversed('a', f)"), "undefined");
  EXPECT_EQ(instance.instanceName, "not refused");
}

TEST_F(RequestTest, withAFunctionTheReplyHearsItUnderTheLabel) {
  becomeInteractive();
  run("withReply(function(o) { log(JSON.stringify(o)); })");
  const auto request = sent();
  ASSERT_TRUE(request);
  answer(*request, zephMsg("response { code: OK description: 'd' }"));
  EXPECT_THAT(logged(), ElementsAre(R"({"type":"OK","description":"d"})"));
  EXPECT_TRUE(log.has(G_LOG_LEVEL_DEBUG, "EventWithParams: LABEL"));
}

TEST_F(RequestTest, theOrdinaryReplyIsTheCodesName) {
  becomeInteractive();
  run("ordinary('a', 1, log)");
  respond(sent().value_or(zeph::ZephMsg()), zeph::NOT_CONNECTED);
  EXPECT_THAT(logged(), ElementsAre("NOT_CONNECTED"));
  EXPECT_TRUE(log.has(G_LOG_LEVEL_DEBUG, "Event: LABEL"));
}

TEST_F(RequestTest, withoutAFunctionNobodyWaits) {
  becomeInteractive();
  for (const char* source : {"ordinary('a', 1)", "ordinary(f, f)", "withReply()"}) {
    log.clear();
    run(source);
    respond(sent().value_or(zeph::ZephMsg()), zeph::OK);
    EXPECT_TRUE(log.has(G_LOG_LEVEL_WARNING, "NO CORRELATION FOUND")) << source;
  }
}

TEST_F(RequestTest, aRequestThatDoesNotAskForInteractiveModeCarriesNoInteractiveId) {
  expose("unchecked", [](const Args& args) { Request(args).send(); });
  EXPECT_EQ(run("unchecked()"), "undefined");
  EXPECT_FALSE(sent().value_or(zephMsg("interactiveId: 'none sent'")).has_interactiveid());
}

TEST_F(RequestTest, aReplyMayHaveDataOfItsOwn) {
  becomeInteractive();
  heardData = std::make_shared<std::string>();
  run("withData()");
  const auto request = sent();
  ASSERT_TRUE(request);
  for (int time = 0; time < 2; ++time) respond(*request, zeph::OK);
  EXPECT_EQ(*heardData, "answer;answer;");
  heardData.reset();
}

TEST_F(RequestTest, aCallThatIsNothingWithoutItsFunctionRefusesAllElse) {
  for (const char* arguments : {"", "f", "1", "1, 2", "1, null", "f, 1", "1, f, f", "1, 2, f"}) {
    EXPECT_EQ(run(std::string("withFunction(") + arguments + ")"), "throws: Wrong arguments")
        << arguments;
  }
  EXPECT_FALSE(sent());
}

TEST_F(RequestTest, aFunctionThatWaitsForOneAnswerHearsTheFirstAlone) {
  EXPECT_EQ(run("withFunction(1, function(id) { log(arguments.length + id); })"), "undefined");
  const auto request = sent();
  ASSERT_TRUE(request);
  answer(*request, zephMsg("ping { }"));
  answer(*request, zephMsg("ping { }"));
  EXPECT_THAT(logged(), ElementsAre("1answer"));
}

// Looks at the table and the wire at the moment when sending is announced.
struct SendingWatch {
  zeph::ZephMsg reply;
  int server = -1;
  bool registered = false;
  bool nothingSent = false;

  static void look(const gchar* /*domain*/, GLogLevelFlags /*level*/, const gchar* text,
                   gpointer self) {
    auto& watch = *static_cast<SendingWatch*>(self);
    if (!g_str_has_prefix(text, "Sending MSG\n")) return;
    char byte = 0;
    watch.registered = findCallback(watch.reply) != nullptr;
    watch.nothingSent = recv(watch.server, &byte, 1, MSG_DONTWAIT) == -1;
  }
};

TEST(SendZephMsgCallbackTest, theEntryIsRegisteredBeforeAnyByteLeaves) {
  std::array<int, 2> ends{};
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()), 0);
  SendingWatch watch{zephMsg("correlationId: 'some-id'"), ends[1]};
  g_log_set_default_handler(SendingWatch::look, &watch);
  zeph::ZephMsg message;
  message.set_id("some-id");
  sendZephMsgCallback(ends[0], message, awaiting(hearData, std::make_shared<std::string>()));
  EXPECT_TRUE(watch.registered);
  EXPECT_TRUE(watch.nothingSent);
  char byte = 1;
  EXPECT_EQ(recv(ends[1], &byte, 1, MSG_DONTWAIT), 1);
  for (const int end : ends) close(end);
  g_log_set_default_handler(g_log_default_handler, nullptr);
  releaseCallbacks();
}

}  // namespace
}  // namespace morvik::test
