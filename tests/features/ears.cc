// morvik.ears: positions, resets and what the ears tell.
#include "features/features.h"

namespace morvik::test {
namespace {

std::vector<SentRow> moves() {
  return {
      {"move(1, 2)", "ears { left: 1 right: 2 }"},
      {"move(1, 2, f)", "ears { left: 1 right: 2 }"},
      {"move(null, 5)", "ears { right: 5 }"},
      {"move(5, null)", "ears { left: 5 }"},
      {"move(null, null)", "ears { }"},
      {"move(null, null, f)", "ears { }"},
      {"move(undefined, 5)", "ears { left: 0 right: 5 }"},
      {"moveRelative(-3, null)", "ears { left: -3 relative: true }"},
      {"moveRelative(null, 4)", "ears { right: 4 relative: true }"},
      {"moveRelative(1, -2, f)", "ears { left: 1 right: -2 relative: true }"},
      {"moveRelative(null, null)", "ears { relative: true }"},
      {"moveRelative(null, null, f)", "ears { relative: true }"},
  };
}

std::vector<SentRow> conversions() {
  return {
      {"move(2.9, -2.9)", "ears { left: 2 right: -2 }"},
      {"move('abc', '12')", "ears { left: 0 right: 12 }"},
      {"move('abc', 4294967295)", "ears { left: 0 right: -1 }"},
      {"move({}, [7])", "ears { left: 0 right: 7 }"},
      {"move(true, NaN)", "ears { left: 1 right: 0 }"},
      {"move(4294967295, 2147483648)", "ears { left: -1 right: -2147483648 }"},
      {"move(Infinity, '')", "ears { left: 0 right: 0 }"},
      {"move('null', 0)", "ears { left: 0 right: 0 }"},
      // Not in the callback's place.
      {"move(1, f)", "ears { left: 1 right: 0 }"},
      {"move(f, '12')", "ears { left: 0 right: 12 }"},
  };
}

std::vector<SentRow> resets() {
  return {
      {"reset()", "ears { left: 1 right: 1 reset: true }"},
      {"reset(f)", "ears { left: 1 right: 1 reset: true }"},
      {"resetRight()", "ears { right: 1 reset: true }"},
      {"resetRight(f)", "ears { right: 1 reset: true }"},
      {"resetLeft()", "ears { left: 1 reset: true }"},
      {"resetLeft(f)", "ears { left: 1 reset: true }"},
  };
}

const std::vector<std::string> kResets{"reset", "resetRight", "resetLeft"};

// The resets ask for interactive mode first, the others for their arguments: odd on purpose.
std::vector<RefusedRow> wrongResets() {
  std::vector<RefusedRow> rows;
  for (const std::string& reset : kResets) {
    rows = rows + needMode({reset + "()", reset + "(f)"});
    for (const char* arguments : {"(1)", "(null)", "(undefined)", "({})", "(f, f)", "(1, f)"})
      rows.push_back({reset + arguments, kMode, kWrong});
  }
  return rows;
}

std::vector<RefusedRow> refusals() {
  return wrong({"move()", "move(1)", "move(f)", "move(1, 2, 3)", "move(1, 2, null)",
                "move(1, 2, f, f)", "moveRelative()", "moveRelative(1)", "moveRelative(1, 2, {})",
                "moveRelative(1, 2, 'f')", "moveRelative(1, 2, f, 3)"}) +
         needMode({"move(1, 2)", "move(1, 2, f)", "move(bad, 1)", "move(bad, 2)",
                   "move(null, null, f)", "moveRelative(1, 2)", "moveRelative(1, 2, f)",
                   "moveRelative(1, bad, f)"}) +
         throwing({"move(bad, 1)", "move(1, bad)", "move(null, bad, f)", "moveRelative(bad, bad)",
                   "moveRelative(1, bad, f)"}) +
         wrongResets() + wrongListeners();
}

AnsweredRow told(const std::string& call, const std::string& answer, const std::string& arguments) {
  return {call, answer, {"MESSAGE EarsResetCallback", "MESSAGE JSLOG: " + arguments}};
}

// A code and two positions. An event goes before a response, which is odd on purpose, and only one
// of them is told.
std::vector<AnsweredRow> answersTo(const std::string& reset) {
  const std::string call = reset + "(tell)";
  return {
      told(call, "response { code: OK }", "string OK, number 0, number 0"),
      told("", "event { code: TERMINATED } response { code: OK } ears { left: 3 right: -4 }",
           "string TERMINATED, number 3, number -4"),
      told(call, "event { code: TERMINATED }", "string TERMINATED, number 0, number 0"),
      told(call, "response { code: OK } event { code: ERROR } ears { left: 1 }",
           "string ERROR, number 1, number 0"),
      told(call, "response { code: ERROR } ears { right: 7 }", "string ERROR, number 0, number 7"),
      told(call, "ears { left: 3 }", "string , number 3, number 0"),
      told(call, "ears { left: 3 right: -4 }", "string , number 3, number -4"),
      told(call, "response { code: BUSY } ears { right: 2147483647 }",
           "string BUSY, number 0, number 2147483647"),
      told(call, "ping { }", "string , number 0, number 0"),
      told(call, "response { }", "string OK, number 0, number 0"),
      told(call, "response { description: 'no code' }", "string OK, number 0, number 0"),
      told(call, "event { description: 'no code' }", "string OK, number 0, number 0"),
  };
}

std::vector<AnsweredRow> answers() {
  std::vector<AnsweredRow> rows;
  for (const std::string call : {"move(1, 2, tell)", "moveRelative(null, null, tell)"}) {
    rows = rows + hearsCodes(call, "EARS");
    rows.push_back({call, "ears { left: 1 }", {"DEBUG Event: EARS"}});
  }
  for (const std::string& reset : kResets) rows = rows + answersTo(reset);
  return rows + nobodyWaits({"move(1, 2)", "moveRelative(1, 2)", "reset()"});
}

HeardRow heard(const std::string& event, const std::string& arguments) {
  return {"earsCallback { type: " + event + " }", {"MESSAGE JSLOG: string " + arguments}};
}

}  // namespace

Feature earsFeature() {
  return {
      .name = "ears",
      .functions = "move,moveRelative,reset,resetRight,resetLeft,addListener",
      .sends = moves() + conversions() + resets(),
      .refuses = refusals(),
      .reads = {{"move(read('l'), read('r'))", "lr"},
                {"moveRelative(read('l'), read('r'), f)", "lr"}},
      .answers = answers(),
      .hears = {heard("START_LEFT", "START_LEFT, number 0, number 0"),
                heard("START_LEFT step: 3 length: 7", "START_LEFT, number 3, number 7"),
                heard("START_RIGHT step: 1", "START_RIGHT, number 1, number 0"),
                heard("START_RIGHT step: -1", "START_RIGHT, number -1, number 0"),
                heard("STOP_LEFT length: 2", "STOP_LEFT, number 0, number 2"),
                heard("STOP_LEFT step: 2 length: 16", "STOP_LEFT, number 2, number 16"),
                heard("STOP_RIGHT", "STOP_RIGHT, number 0, number 0"),
                heard("STOP_RIGHT length: -1", "STOP_RIGHT, number 0, number -1"),
                heard("BLOCKED_LEFT", "BLOCKED_LEFT, number 0, number 0"),
                heard("BLOCKED_RIGHT", "BLOCKED_RIGHT, number 0, number 0"),
                {"ears { left: 1 }", {}},
                {"buttonCallback { type: SIMPLE }", {}}},
      .event = "earsCallback { type: STOP_LEFT }",
  };
}

}  // namespace morvik::test
