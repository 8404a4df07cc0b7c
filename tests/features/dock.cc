// morvik.dock: its LED, which the log does not tell from the device's own, and its motion.
#include "features/features.h"

namespace morvik::test {
namespace {

SentRow move(const std::string& arguments, const std::string& command) {
  return {"move(" + arguments + ")", "dock { move { " + command + " } }"};
}

std::vector<SentRow> lights() {
  const auto led = [](const std::string& payload) { return "dock { led { " + payload + " } }"; };
  return {
      {"light('red')", led(R"(light { color: "red" })"), {"DEBUG LED Light: color[red]"}},
      {"light(undefined, f)",
       led(R"(light { color: "undefined" })"),
       {"DEBUG LED Light: color[undefined]"}},
      {"fade('x', -1)",
       led(R"(fade { color: "x" period: -1 })"),
       {"DEBUG LED Fade: color[x] period[-1]"}},
      {"fade('x', 2.9, f)",
       led(R"(fade { color: "x" period: 2 })"),
       {"DEBUG LED Fade: color[x] period[2]"}},
      {"fade('a\\0b', 2.9, f)",
       led(R"(fade { color: "a b" period: 2 })"),
       {"DEBUG LED Fade: color[a b] period[2]"}},
      {"pulse('x', 'abc', 3)",
       led(R"(pulse { color: "x" period: 0 pulse: 3 })"),
       {"DEBUG LED Pulse: color[x] period[0] pulse[3]"}},
      {"pulse('x', 'abc', 3000000000)",
       led(R"(pulse { color: "x" period: 0 pulse: -1294967296 })"),
       {"DEBUG LED Pulse: color[x] period[0] pulse[-1294967296]"}},
      {"pulse(12, 1, 2, f)",
       led(R"(pulse { color: "12" period: 1 pulse: 2 })"),
       {"DEBUG LED Pulse: color[12] period[1] pulse[2]"}},
  };
}

std::vector<SentRow> moves() {
  return {
      move("'UP', 500", "cmd: UP time: 500"),
      move("'DOWN', 1", "cmd: DOWN time: 1"),
      move("'DOWN', -1", "cmd: DOWN time: -1"),
      move("'RIGHT', 2.9", "cmd: RIGHT time: 2"),
      move("'LEFT', 500", "cmd: LEFT time: 500"),
      move("'STOP', 0", "cmd: STOP time: 0"),
      move("'STOP', NaN, f", "cmd: STOP time: 0"),
      move("'LEFT', -1", "cmd: LEFT time: -1"),
      move("'LEFT', NaN", "cmd: LEFT time: 0"),
      move("'LEFT', Infinity", "cmd: LEFT time: 0"),
      move("'LEFT', 4294967297", "cmd: LEFT time: 1"),
      move("'LEFT', 500, f", "cmd: LEFT time: 500"),
      move("'LEFT'", "cmd: LEFT time: 0"),  // set all the same
  };
}

std::vector<RefusedRow> refusals() {
  return wrong({"light()", "light('x', 5)", "light('x', f, f)", "fade('x')", "fade('x', 1, 2)",
                "pulse('x', 1)", "pulse('x', 1, 2, 3)", "pulse('x', 1, 2, f, f)"}) +
         wrong({"move()",
                "move(1)",
                "move(1, 500)",
                "move(f)",
                "move(null, 500)",
                "move(bad)",
                "move(new String('LEFT'), 500)",
                "move(new String('UP'))",
                "move('LEFT', '500')",
                "move('LEFT', f)",
                "move('LEFT', undefined)",
                "move('LEFT', new Number(1))",
                "move('LEFT', new Number(5))",
                "move('LEFT', 500, 7)",
                "move('LEFT', 500, null)",
                "move('LEFT', f, f)",
                "move(1, 500, f)",
                "move('LEFT', 500, f, f)",
                "move('left', '500')",
                "move('up', '1')"}) +
         needMode({"light('x')", "light(bad)", "fade('x', 1, f)", "pulse('x', 1, 2)",
                   "move('LEFT')", "move('left', 5)", "move('left', 500)", "move('LEFT', 5, f)",
                   "move('LEFT', 500, f)"}) +
         throwing({"light(bad)", "fade('x', bad)", "pulse('x', 1, bad, f)"});
}

// The reply looks for the function where the time is: odd on purpose.
std::vector<AnsweredRow> theFunctionGivenToMoveIsNeverCalled() {
  const std::string move = "DEBUG Event: DOCKMOVE";
  const std::string noFunction = "WARNING DOCKMOVE: the reply finds no function";
  return {{"move('LEFT', 500, tell)",
           "response { code: OK }",
           {move, "DEBUG calling response function", noFunction}},
          {"", "event { code: TERMINATED }", {move, "DEBUG calling event function", noFunction}},
          {"", "dock { status: 1 }", {move}}};
}

}  // namespace

Feature dockFeature() {
  return {
      .name = "dock",
      .functions = "light,fade,pulse,move",
      .sends = lights() + moves(),
      .refuses = refusals(),
      .answers = hearsCodes("light('x', tell)", "DOCKLED") +
                 hearsCodes("fade('x', 1, tell)", "DOCKLED") +
                 hearsCodes("pulse('x', 1, 2, tell)", "DOCKLED") +
                 theFunctionGivenToMoveIsNeverCalled() + nobodyWaits({"move('LEFT', 500)"}),
  };
}

}  // namespace morvik::test
