// morvik.message: queries, and the messages that a script gets.
#include "features/features.h"

namespace morvik::test {
namespace {

SentRow query(const std::string& call, const std::string& fields) {
  return {call, "morvikMessageQuery { " + fields + " }"};
}

// The values are the ids, and their names do not count.
SentRow get(const std::string& ids, const std::vector<std::string>& expected) {
  std::string fields = "action: GET";
  for (const std::string& id : expected) fields += " id: \"" + id + "\"";
  return query("get(" + ids + ", f)", fields);
}

std::vector<SentRow> queries() {
  return {
      query("list(f)", "action: LIST"),
      query("list(5)", "action: LIST"),
      query("list(undefined)", "action: LIST"),
      query("list(f, 6)", "action: LIST"),
      query("list(f, f, 7)", "action: LIST"),
      query("delete(['a'], f)", R"(action: DELETE id: "a")"),
      query("markAsRead(['a'], f)", R"(action: READ id: "a")"),
      get("['a']", {"a"}),
      get("['a', 'b']", {"a", "b"}),
      get("{x: 'a'}", {"a"}),
      get("({z: 'first', a: 'second', 1: 'number'})", {"number", "first", "second"}),
      get("[]", {}),
      get("({})", {}),
      get("[1]", {"1"}),
      get("[null, undefined, true, {}, [1, 2]]",
          {"null", "undefined", "true", "[object Object]", "1,2"}),
      get("['', 'a\\0b', '\\u0141']", {"", "a b", "A"}),
      get("['\\u00e9']", {"\\351"}),
      get("[ , 'b']", {"b"}),
      get("f", {}),
      get("new String('ab')", {"a", "b"}),
      get("Object.create({inherited: 'i'})", {"i"}),
      get("Object.defineProperty({a: '1'}, 'hidden', {value: '2'})", {"1"}),
      get("({[Symbol()]: 's', get got() { return 'g'; }})", {"g"}),
      get("new Proxy(['p'], {})", {"p"}),
  };
}

SentRow newTo(const std::string& receiver, const std::string& to) {
  return query("new(" + receiver + ", 'hi')", "action: NEW message { header { to { " + to +
                                                  " } } content { type: TEXT content: \"hi\" } }");
}

SentRow newSaying(const std::string& arguments, const std::string& content) {
  return query("new({uuid: 'u'}, " + arguments + ")",
               "action: NEW message { header { to { uuid: \"u\" } } content { type: TEXT content: "
               "\"" +
                   content + "\" } }");
}

std::vector<SentRow> newMessages() {
  const std::string u = R"(uuid: "u")";
  const std::string undefined = R"(uuid: "undefined")";
  return {
      newTo("{uuid: 'u', objects: ['1', '2']}",
            R"(objects { idDB: "1" } objects { idDB: "2" } uuid: "u")"),
      newTo("{uuid: 'u', objects: []}", u),
      newTo("{uuid: 'u'}", u),
      newTo("{}", undefined),
      newTo("[]", undefined),
      newTo("f", undefined),
      newTo("{objects: []}", undefined),
      newTo("{uuid: null, objects: 5}", R"(uuid: "null")"),
      newTo("{uuid: 1, objects: 'ab'}", R"(uuid: "1")"),
      newTo("{uuid: 'u', objects: {0: 'a', length: 1}}", u),
      newTo("{uuid: 'u', objects: null}", u),
      newTo("{uuid: 'u', objects: 5}", u),
      newTo("{uuid: 'u', objects: [{id: '1', name: 'n'}]}",
            R"(objects { idDB: "[object Object]" } uuid: "u")"),
      newTo("{uuid: 'u', objects: [ , 3]}",
            R"(objects { idDB: "undefined" } objects { idDB: "3" } uuid: "u")"),
      newTo("{uuid: 'a\\0b\\u0141'}", R"(uuid: "a bA")"),
      newSaying("''", ""),
      newSaying("'a\\0b'", "a b"),
      newSaying("'\\u00e9'", "\\351"),
      newSaying("'x', f", "x"),
      newSaying("'x', 5, 6", "x"),
      newSaying("'x', f, f, f", "x"),
  };
}

// Queries of ids refuse with a line.
std::vector<RefusedRow> wrongIds() {
  std::vector<RefusedRow> rows;
  for (const std::string name : {"get", "delete", "markAsRead"})
    for (const char* list :
         {"()", "(['a'])", "(f)", "(['a'], f, f)", "(['a'], f, 1)", "(['a'], 5)", "(['a'], {})",
          "('a', f)", "(5, f)", "(null, f)", "(undefined, f)", "(f, ['a'])"})
      rows.push_back({.call = name + list, .lines = {"WARNING Wrong arguments"}});
  return rows;
}

std::vector<RefusedRow> insideOnly(const std::vector<std::string>& calls, const std::string& text) {
  std::vector<RefusedRow> rows;
  for (const std::string& call : calls) rows.push_back({call, "", text});
  return rows;
}

std::vector<RefusedRow> refusals() {
  return wrongIds() +
         wrong({"list()", "list(5, 6)", "list(5, f)", "list({}, f)", "new()", "new({})", "new(f)",
                "new({uuid: 'u'}, 'x', 5)", "new({}, 'x', 5)", "new({}, 'x', {})", "new(1, 2, 3)",
                "new(1, 2, undefined)"}) +
         needMode({"list(f)", "list(5)", "get([], f)", "get([bad], f)", "delete([], f)",
                   "markAsRead([], f)", "new({uuid: 'u'}, 'x')", "new({}, 'x')", "new(1, 2)",
                   "new(1, 2, f)", "new('u', 'x')", "new({}, 5)"}) +
         throwing({"get([bad], f)", "get(['a', bad, 'b'], f)",
                   "delete({get a() { throw 'no text'; }}, f)",
                   "markAsRead(new Proxy({}, {ownKeys() { throw 'no text'; }}), f)",
                   "get(new Proxy({a: 1}, {get() { throw 'no text'; }}), f)",
                   "new({uuid: bad}, 'x')", "new({get uuid() { throw 'no text'; }}, 'x')",
                   "new({get objects() { throw 'no text'; }}, 'x')", "new({objects: [bad]}, 'x')",
                   "new({objects: ['a', bad]}, 'x')", "new({uuid: bad}, 5)",
                   "new({objects: [bad]}, 5)"}) +
         insideOnly({"new('u', 'x')", "new(5, 5)", "new('to', 'text')", "new(null, 'text')",
                     "new(undefined, 'text', f)"},
                    "Arg[0] Must be object") +
         insideOnly(
             {"new({}, 5)", "new({}, {}, f)", "new({}, new String('x'))", "new({}, undefined)"},
             "Arg[0] Must be string") +
         insideOnly({"new({get uuid() { throw 'uuid'; }, get objects() { throw 'no'; }}, 5)"},
                    "uuid");
}

const std::string kHeard = "DEBUG MessageCallbackFunction";
const std::string kNoResponse = "WARNING MessageCallbackFunction: has_response false";
const std::string kOk = "DEBUG MessageCallbackFunction: response : OK";
const std::string kError = "WARNING MessageCallbackFunction: response : ERROR";
const std::string kAbort =
    "WARNING MessageCallbackFunction : has_morvikmessageresponse false or list empty. abort";
const std::string kEmptyList = "MESSAGE JSLOG: object []";

AnsweredRow answered(const std::string& call, const std::string& answer, Lines lines) {
  lines.insert(lines.begin(), kHeard);
  return {call, answer, lines};
}

// What a list of one message is to a script.
AnsweredRow message(const std::string& wire, const std::string& json) {
  return answered(
      "list(tell)",
      "response { code: OK } morvikMessageResponse { morvikMessageList { " + wire + " } }",
      {kOk, "MESSAGE JSLOG: object [" + json + "]"});
}

std::vector<AnsweredRow> aMessageHoldsItsHeaderAndItsContentInOrder() {
  const std::string emptyTo =
      R"({"header":{"id":"","date":0,"status":0,"to":{"objects":[]}},"content":)";
  return {
      message("content { header: 'h' content: 'c' type: SOUND } header { to { uuid: 't' } from { "
              "alias: 'a' } status: READ date: 12 id: 'i' }",
              R"({"header":{"id":"i","date":12,"status":1,"from":{"alias":"a","objects":[]},)"
              R"("to":{"uuid":"t","objects":[]}},)"
              R"("content":{"type":"SOUND","content":"c","header":"h"}})"),
      message("", R"({"header":{},"content":{}})"),
      message("header { }", R"({"header":{"id":"","date":0,"status":0},"content":{}})"),
      message("header { to { } }", emptyTo + "{}}"),
      message("header { to { } } content { type: XML content: 'a\\000b' }",
              emptyTo + R"({"type":"XML","content":"a"}})"),
      message("header { status: UNREAD date: -1 }",
              R"({"header":{"id":"","date":-1,"status":0},"content":{}})"),
      message("header { from { objects { idDB: '1' name: 'n' } objects { idDB: '2' } } }",
              R"({"header":{"id":"","date":0,"status":0,"from":{"objects":)"
              R"([{"id":"1","name":"n"},{"id":"2","name":""}]}},"content":{}})"),
      message("content { }", R"({"header":{},"content":{"type":"TEXT","content":""}})"),
      message("content { type: XML content: '<a/>' }",
              R"({"header":{},"content":{"type":"XML","content":"<a/>"}})"),
      message("content { type: MIXED header: '' }",
              R"({"header":{},"content":{"type":"MIXED","content":"","header":""}})"),
      message("header { id: 'i\\000j' } content { content: 'c\\000d' header: 'h\\000i' }",
              R"({"header":{"id":"i","date":0,"status":0},)"
              R"("content":{"type":"TEXT","content":"c","header":"h"}})"),
  };
}

std::vector<AnsweredRow> messagesComeInTheOrderOfTheList() {
  std::vector<AnsweredRow> rows;
  for (const char* call :
       {"list(tell)", "get(['a'], tell)", "delete(['a'], tell)", "markAsRead(['a'], tell)"})
    rows.push_back(answered(
        call,
        "morvikMessageResponse {"
        " morvikMessageList { content { content: 'b' } } morvikMessageList { }"
        " morvikMessageList { content { content: 'a' } } }",
        {kNoResponse,
         "MESSAGE JSLOG: object "
         R"([{"header":{},"content":{"type":"TEXT","content":"b"}},{"header":{},"content":{}},)"
         R"({"header":{},"content":{"type":"TEXT","content":"a"}}])"}));
  return rows;
}

// The list reaches the script whatever the code, which is only logged. Without one nothing is
// called until one comes.
std::vector<AnsweredRow> codesAndLists() {
  const std::string list = "morvikMessageResponse { }";
  return {
      answered("list(tell)", list, {kNoResponse, kEmptyList}),
      answered("list(tell)", "response { } " + list, {kEmptyList}),
      answered("list(tell)", "response { code: OK } " + list, {kOk, kEmptyList}),
      answered("list(tell)", "response { code: ERROR } " + list, {kError, kEmptyList}),
      answered("list(tell)", "response { code: BUSY } " + list, {kEmptyList}),
      answered("list(tell)", "event { code: OK } " + list, {kNoResponse, kEmptyList}),
      answered("get(['a'], tell)", "response { code: ERROR } " + list, {kError, kEmptyList}),
      answered("delete(['a'], tell)", "response { code: BUSY } " + list, {kEmptyList}),
      answered("markAsRead(['a'], tell)", list, {kNoResponse, kEmptyList}),
      answered("list(tell)", "response { code: ERROR }", {kError, kAbort}),
      answered("", "response { code: OK }", {kOk, kAbort}),
      answered("", "event { code: OK }", {kNoResponse, kAbort}),
      answered("", "", {kNoResponse, kAbort}),
      answered("", "response { }", {kAbort}),
      answered("", "response { code: TIMEOUT }", {kAbort}),
      answered("", "response { code: OK } " + list, {kOk, kEmptyList}),
      answered("", "response { code: OK } " + list, {kOk}),
  };
}

std::vector<AnsweredRow> aListForNoFunctionIsAWarningOnce() {
  const std::string list = "response { code: OK } morvikMessageResponse { }";
  std::vector<AnsweredRow> rows;
  for (const char* call : {"list(5)", "list({})", "list('tell')", "list(undefined)"}) {
    rows.push_back(answered(call, "response { code: OK }", {kOk, kAbort}));
    rows.push_back(answered(
        "", list, {kOk, "WARNING MessageCallbackFunction: the callback is not a function"}));
    rows.push_back(answered("", list, {kOk}));
  }
  return rows;
}

}  // namespace

Feature messageFeature() {
  return {
      .name = "message",
      .functions = "list,get,delete,new,markAsRead",
      .sends = queries() + newMessages(),
      .refuses = refusals(),
      .answers = aMessageHoldsItsHeaderAndItsContentInOrder() + messagesComeInTheOrderOfTheList() +
                 codesAndLists() + aListForNoFunctionIsAWarningOnce() +
                 nobodyWaits({"new({uuid: 'u'}, 'hi', tell)"}),
  };
}

}  // namespace morvik::test
