// The shared reply functions: which fields of an answer reach the script, how, and in which order.
#include "channel/event-callback.h"

#include "channel/callback-table.h"
#include "host/data-object.h"
#include "support/text-message.h"
#include "support/unit/log-texts.h"
#include "support/unit/script-test.h"

namespace morvik::test {
namespace {

using Lines = std::vector<std::string>;

// Hands a script the path behind a data object.
void pathOf(const Args& args) {
  const auto path = dataPath(args[0]);
  if (path) args.GetReturnValue().Set(*path);
}

// Tells a script how many internal fields an object has, and what the first one holds.
void fieldsOf(const Args& args) {
  const auto object = args[0].As<v8::Object>();
  const bool unset = object->GetInternalField(0)->IsUndefined();
  args.GetReturnValue().Set(
      toScript(std::to_string(object->InternalFieldCount()) + (unset ? " unset" : " set")));
}

class EventCallbackTest : public ScriptTest {
 protected:
  EventCallbackTest() { expose("pathOf", pathOf); }

  // Runs a reply function on the message for a script function; gives the log.
  Lines heard(ReplyFunction reply, const std::string& function, const std::string& message) {
    log.clear();
    auto record = newRecord(function);
    reply(record.get(), zephMsg(message));
    return levelled(log.lines());
  }

  std::unique_ptr<EventCallbackData> newRecord(const std::string& function) {
    const v8::HandleScope handles(isolate());
    const v8::Context::Scope entered(context());
    const auto value = v8::Script::Compile(context(), toScript("(" + function + ")"))
                           .ToLocalChecked()
                           ->Run(context())
                           .ToLocalChecked();
    return std::make_unique<EventCallbackData>("LABEL", value.As<v8::Function>());
  }
};

struct Answer {
  const char* message;
  Lines log;
};

void expectAll(auto&& heard, std::span<const Answer> answers) {
  for (const Answer& answer : answers)
    EXPECT_EQ(heard(answer.message), answer.log) << answer.message;
}

// ---- EventCallback

constexpr const char* kTellCode =
    "function(code) { log(arguments.length + ' ' + typeof code + ' ' + code + ' ' +"
    "                     (this === arguments.callee)); }";

const char* const kEvent = "DEBUG Event: LABEL";
const char* const kCallsResponse = "DEBUG calling response function";
const char* const kCallsEvent = "DEBUG calling event function";

const Answer kCodes[] = {
    {"", {kEvent}},
    {"id: 'i' buttonCallback { type: SIMPLE }", {kEvent}},
    {"response { }", {kEvent}},
    {"response { description: 'd' }", {kEvent}},
    {"event { }", {kEvent}},
    {"event { description: 'd' }", {kEvent}},
    {"response { code: OK }", {kEvent, kCallsResponse, "MESSAGE JSLOG: 1 string OK true"}},
    {"response { code: BUSY description: 'd' }",
     {kEvent, kCallsResponse, "MESSAGE JSLOG: 1 string BUSY true"}},
    {"event { code: TERMINATED }",
     {kEvent, kCallsEvent, "MESSAGE JSLOG: 1 string TERMINATED true"}},
    {"event { code: ERROR description: 'd' }",
     {kEvent, kCallsEvent, "MESSAGE JSLOG: 1 string ERROR true"}},
    {"event { code: TERMINATED } response { code: OK }",
     {kEvent, kCallsResponse, "MESSAGE JSLOG: 1 string OK true", kCallsEvent,
      "MESSAGE JSLOG: 1 string TERMINATED true"}},
    {"response { } event { code: TIMEOUT }",
     {kEvent, kCallsEvent, "MESSAGE JSLOG: 1 string TIMEOUT true"}},
    {"response { code: CANCELLED } event { }",
     {kEvent, kCallsResponse, "MESSAGE JSLOG: 1 string CANCELLED true"}},
};

TEST_F(EventCallbackTest, aCodeReachesTheScriptAsItsName) {
  expectAll([this](const char* message) { return heard(EventCallback, kTellCode, message); },
            kCodes);
}

TEST_F(EventCallbackTest, everyCodeHasItsName) {
  const char* const names[] = {"OK",           "ERROR", "TIMEOUT",           "TERMINATED",
                               "CANCELLED",    "BUSY",  "BAD_INTERACTIVEID", "SCHEDULE_EVENT",
                               "NOT_CONNECTED"};
  for (const std::string name : names) {
    EXPECT_EQ(heard(EventCallback, "log", "response { code: " + name + " }").back(),
              "MESSAGE JSLOG: " + name);
  }
}

TEST_F(EventCallbackTest, oneRecordHearsAnyNumberOfAnswers) {
  const auto record = newRecord("log");
  for (const char* text : {"response { code: OK }", "event { code: BUSY }", "event { code: OK }"}) {
    EventCallback(record.get(), zephMsg(text));
  }
  EXPECT_THAT(logged(), testing::ElementsAre("OK", "BUSY", "OK"));
}

// ---- the functions that hand over an object

constexpr const char* kTellObject =
    "function(o) { log(arguments.length + ' ' + (this === arguments.callee) + ' ' +"
    "  Object.keys(o).map(function(key) {"
    "    return key + '=' + (typeof o[key] === 'string' ? o[key] : 'file:' + pathOf(o[key]));"
    "  }).join(' ')); }";

const char* const kWebcam = "DEBUG EventCallbackWebcam Webcam";
const char* const kWebcamResponse = "DEBUG has_response Webcam";
const char* const kWebcamEvent = "DEBUG has_event Webcam";

const Answer kPictures[] = {
    {"", {kWebcam}},
    {"response { }", {kWebcam, kWebcamResponse, "MESSAGE JSLOG: 1 true "}},
    {"response { description: 'd' }", {kWebcam, kWebcamResponse, "MESSAGE JSLOG: 1 true "}},
    {"response { code: OK description: 'd' }",
     {kWebcam, kWebcamResponse, "MESSAGE JSLOG: 1 true type=OK"}},
    {"event { }", {kWebcam, kWebcamEvent, "MESSAGE JSLOG: 1 true data=file:/tmp/picture.jpg"}},
    {"event { code: TERMINATED }",
     {kWebcam, kWebcamEvent, "MESSAGE JSLOG: 1 true type=TERMINATED data=file:/tmp/picture.jpg"}},
    {"event { code: ERROR description: 'x' }",
     {kWebcam, kWebcamEvent,
      "MESSAGE JSLOG: 1 true type=ERROR description=x data=file:/tmp/picture.jpg"}},
    {"event { code: ERROR description: '' }",
     {kWebcam, kWebcamEvent,
      "MESSAGE JSLOG: 1 true type=ERROR description= data=file:/tmp/picture.jpg"}},
    {"event { description: 'x' }",
     {kWebcam, kWebcamEvent, "MESSAGE JSLOG: 1 true description=x data=file:/tmp/picture.jpg"}},
    {"event { code: TERMINATED } response { code: OK }",
     {kWebcam, kWebcamResponse, "MESSAGE JSLOG: 1 true type=OK", kWebcamEvent,
      "MESSAGE JSLOG: 1 true type=TERMINATED data=file:/tmp/picture.jpg"}},
};

TEST_F(EventCallbackTest, aWebcamsAnswerIsAnObject) {
  expectAll([this](const char* text) { return heard(EventCallbackWebcam, kTellObject, text); },
            kPictures);
}

const char* const kResponse = "DEBUG has_response";
const char* const kHasEvent = "DEBUG has_event";

const Answer kRecordings[] = {
    {"", {}},
    {"response { }", {kResponse, "MESSAGE JSLOG: 1 true "}},
    {"response { code: OK description: 'd' }", {kResponse, "MESSAGE JSLOG: 1 true type=OK"}},
    {"event { }", {kHasEvent, "MESSAGE JSLOG: 1 true data=file:/tmp/record.flac"}},
    {"event { code: ERROR description: 'x' }",
     {kHasEvent, "MESSAGE JSLOG: 1 true type=ERROR description=x data=file:/tmp/record.flac"}},
    {"event { code: TERMINATED } response { code: OK }",
     {kResponse, "MESSAGE JSLOG: 1 true type=OK", kHasEvent,
      "MESSAGE JSLOG: 1 true type=TERMINATED data=file:/tmp/record.flac"}},
};

TEST_F(EventCallbackTest, aRecordingsAnswerIsAnObject) {
  expectAll([this](const char* text) { return heard(EventCallbackRecord, kTellObject, text); },
            kRecordings);
}

const char* const kWithParams = "DEBUG EventWithParams: LABEL";

const Answer kParams[] = {
    {"", {kWithParams}},
    {"response { }", {kWithParams, kResponse, "MESSAGE JSLOG: 1 true "}},
    {"response { code: OK }", {kWithParams, kResponse, "MESSAGE JSLOG: 1 true type=OK"}},
    {"response { code: OK description: 'd' }",
     {kWithParams, kResponse, "MESSAGE JSLOG: 1 true type=OK description=d"}},
    {"response { description: 'd' }",
     {kWithParams, kResponse, "MESSAGE JSLOG: 1 true description=d"}},
    {"event { }", {kWithParams, kHasEvent, "MESSAGE JSLOG: 1 true "}},
    {"event { code: BUSY description: 'e' }",
     {kWithParams, kHasEvent, "MESSAGE JSLOG: 1 true type=BUSY description=e"}},
    {"event { code: BUSY description: 'e' } response { code: OK description: 'd' }",
     {kWithParams, kResponse, "MESSAGE JSLOG: 1 true type=OK description=d", kHasEvent,
      "MESSAGE JSLOG: 1 true type=BUSY description=e"}},
};

TEST_F(EventCallbackTest, anAnswerWithParametersIsAnObjectWithoutAFile) {
  expectAll([this](const char* text) { return heard(EventWithParams, kTellObject, text); },
            kParams);
}

constexpr ReplyFunction kAll[] = {EventCallback, EventCallbackWebcam, EventCallbackRecord,
                                  EventWithParams};

TEST_F(EventCallbackTest, aFunctionThatThrowsMissesOnlyThatCall) {
  for (const ReplyFunction reply : kAll) {
    const Lines lines =
        heard(reply, "function() { throw 'oops'; }", "response { code: OK } event { code: OK }");
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "WARNING undefined:1: oops"), 2);
  }
}

TEST_F(EventCallbackTest, theFunctionsResultDoesNotMatter) {
  for (const ReplyFunction reply : kAll) {
    const Lines lines = heard(reply, "function() { log('called'); return false; }",
                              "response { code: OK } event { code: OK }");
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "MESSAGE JSLOG: called"), 2);
  }
}

TEST_F(EventCallbackTest, aFileObjectHasTwoFieldsAndLeavesTheFirstUnset) {
  expose("fieldsOf", fieldsOf);
  for (const ReplyFunction reply : {EventCallbackWebcam, EventCallbackRecord}) {
    EXPECT_THAT(
        heard(reply, "function(answer) { log(fieldsOf(answer.data)); }", "event { code: OK }"),
        testing::Contains("MESSAGE JSLOG: 2 unset"));
  }
}

TEST_F(EventCallbackTest, aFileObjectShowsAScriptNothing) {
  EXPECT_EQ(heard(EventCallbackWebcam,
                  "function(o) { log(Object.getOwnPropertyNames(o.data).length + ' ' +"
                  "                  typeof o.data + ' ' + o.data.text); }",
                  "event { code: OK }")
                .back(),
            "MESSAGE JSLOG: 0 object undefined");
}

}  // namespace
}  // namespace morvik::test
