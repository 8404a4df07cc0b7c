// morvik.m2m: calls between devices, which no request function reports back on.
#include "features/features.h"

namespace morvik::test {
namespace {

const Lines kCalled{"DEBUG call"};

SentRow call(const std::string& argument, const std::string& address) {
  return {"call(" + argument + ")", "m2m { call { address: \"" + address + "\" } }", kCalled};
}

SentRow answer(const std::string& argument, const std::string& accept) {
  return {"answer(" + argument + ")", "m2m { answer { accept: " + accept + " } }"};
}

SentRow account(const std::string& arguments, const std::string& fields) {
  return {"account(" + arguments + ")", "m2m { account { " + fields + " } }"};
}

std::vector<SentRow> requests() {
  return {
      call("'sip:a@b'", "sip:a@b"),
      call("''", ""),
      call("undefined", "undefined"),
      call("12.5", "12.5"),
      call("{}", "[object Object]"),
      call("'\\u00e9'", "\\303\\251"),
      call("'\\u00e9\\u0141'", "\\303\\251\\305\\201"),
      answer("true", "true"),
      answer("false", "false"),
      answer("'no'", "true"),
      answer("''", "false"),
      answer("0", "false"),
      answer("-1", "true"),
      answer("NaN", "false"),
      answer("undefined", "false"),
      answer("{}", "true"),
      answer("f", "true"),
      answer("bad", "true"),  // a truth value needs no conversion that could throw
      {"hangup()", "m2m { hangup { } }"},
      account("'a', 'b', 'c', 'd'",
              R"(sipId: "a" sipDomain: "b" sipPassword: "c" stunServer: "d")"),
      account("'a', 'b', 3, '\\u00e9'",
              R"(sipId: "a" sipDomain: "b" sipPassword: "3" stunServer: "\303\251")"),
      account("1, null, '', '\\u00e9'",
              R"(sipId: "1" sipDomain: "null" sipPassword: "" stunServer: "\303\251")"),
  };
}

// No function here takes one of the script's in the last place. A refused call is logged too.
std::vector<RefusedRow> refusals() {
  return wrong({"answer()", "answer(true, f)", "answer(true, 1)", "hangup(1)", "hangup(f)",
                "account()", "account('a', 'b', 'c')", "account('a', 'b', 'c', 'd', f)",
                "account('a', 'b', 'c', 'd', 'e')"}) +
         wrong({"call()", "call('x', f)", "call('x', 1)", "call('x', f, f)"}, kCalled) +
         needMode({"answer(true)", "hangup()", "account('a', 'b', 'c', 'd')",
                   "account(bad, 1, 2, 3)", "account('a', bad, 'c', 'd')"}) +
         needMode({"call('x')", "call(bad)"}, kCalled) + throwing({"call(bad)"}, kCalled) +
         throwing({"account(bad, 'b', 'c', 'd')", "account('a', bad, 'c', 'd')",
                   "account('a', 'b', bad, 'd')", "account('a', 'b', 'c', bad)"}) +
         wrongListeners();
}

HeardRow heard(const std::string& type, const std::string& wire, const std::string& who) {
  return {"m2mCallback { type: " + type + " correspondant: '" + wire + "' }",
          {"MESSAGE M2m: M2mMsgCallback",
           R"(MESSAGE JSLOG: object {"type":")" + type + R"(","correspondant":")" + who + "\"}"}};
}

std::vector<HeardRow> howACallGoes() {
  return {
      heard("INCOMING", "caf\303\251", "caf\351"),
      heard("INCOMING", "sip:a@b", "sip:a@b"),
      heard("BEGINNING", "bob", "bob"),
      heard("BEGINNING", "sip:a@b", "sip:a@b"),
      heard("TERMINATED", "", ""),
      {"m2mCallback {}",
       {"MESSAGE M2m: M2mMsgCallback",
        R"(MESSAGE JSLOG: object {"type":"INCOMING","correspondant":""})"}},
      {"m2m { hangup { } }", {}},
      {"response { code: OK }", {}},
  };
}

}  // namespace

Feature m2mFeature() {
  return {.name = "m2m",
          .functions = "call,answer,hangup,account,addListener",
          .sends = requests(),
          .refuses = refusals(),
          .reads = {{"account(read('i'), read('d'), read('p'), read('s'))", "idps"}},
          .answers = nobodyWaits({"hangup()"}),
          .hears = howACallGoes(),
          .event = "m2mCallback { type: INCOMING correspondant: 'bob' }"};
}

}  // namespace morvik::test
