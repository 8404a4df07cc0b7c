// morvik.led: colours, periods and pulses, converted as script values are.
#include "features/features.h"

namespace morvik::test {
namespace {

SentRow light(const std::string& argument, const std::string& sent, const std::string& logged) {
  return {"light(" + argument + ")",
          "led { light { color: \"" + sent + "\" } }",
          {"DEBUG LED Light: color[" + logged + "]"}};
}

SentRow light(const std::string& argument, const std::string& color) {
  return light(argument, color, color);
}

SentRow fade(const std::string& arguments, const std::string& color, int period) {
  const std::string number = std::to_string(period);
  return {"fade(" + arguments + ")",
          "led { fade { color: \"" + color + "\" period: " + number + " } }",
          {"DEBUG LED Fade: color[" + color + "] period[" + number + "]"}};
}

SentRow pulse(const std::string& arguments, const std::string& color, int period, int pulses) {
  const std::string time = std::to_string(period);
  const std::string count = std::to_string(pulses);
  return {"pulse(" + arguments + ")",
          "led { pulse { color: \"" + color + "\" period: " + time + " pulse: " + count + " } }",
          {"DEBUG LED Pulse: color[" + color + "] period[" + time + "] pulse[" + count + "]"}};
}

std::vector<SentRow> anyValueIsAColour() {
  return {
      light("'red'", "red"),
      light("'red', f", "red"),
      light("undefined", "undefined"),
      light("null", "null"),
      light("12", "12"),
      light("255", "255"),
      light("''", ""),
      light("{}", "[object Object]"),
      light("[1, 2]", "1,2"),
      light("f", "function() {}"),
      light("log", "function log() { [native code] }"),
      light("function() { return 1; }.name", ""),
      light("'a\\0b'", "a b"),
      light("'a\\u0000b'", "a b"),
      light("'\\u0141'", "A"),
      // One byte for each unit, up to the last one that a byte holds.
      light("'\\u0080\\u00e9\\u00ff'", "\\200\\351\\377", "\x80\xe9\xff"),
  };
}

std::vector<SentRow> anyValueIsANumberOfThirtyTwoBits() {
  const struct {
    std::string argument;
    int value;
  } numbers[] = {{"0", 0},
                 {"5", 5},
                 {"2.9", 2},
                 {"-1", -1},
                 {"-2.9", -2},
                 {"'abc'", 0},
                 {"'12'", 12},
                 {"undefined", 0},
                 {"null", 0},
                 {"true", 1},
                 {"{}", 0},
                 {"[7]", 7},
                 {"NaN", 0},
                 {"Infinity", 0},
                 {"4294967295", -1},
                 {"4294967296", 0},
                 {"4294967297", 1},
                 {"2147483648", -2147483647 - 1},
                 // A function in a value's place is a value like others.
                 {"f", 0},
                 {"log", 0},
                 {"function() {}", 0}};
  std::vector<SentRow> rows;
  for (const auto& [argument, value] : numbers) {
    rows.push_back(fade("'x', " + argument, "x", value));
    rows.push_back(pulse("'x', 1, " + argument, "x", 1, value));
  }
  return rows;
}

std::vector<SentRow> threeRequests() {
  return {fade("'#00ff00', 500, f", "#00ff00", 500), pulse("'blue', 250, 3, f", "blue", 250, 3),
          pulse("'x', 1, 2", "x", 1, 2), pulse("'x', -2, 3000000000", "x", -2, -1294967296)};
}

}  // namespace

Feature ledFeature() {
  return {
      .name = "led",
      .functions = "light,fade,pulse",
      .sends = anyValueIsAColour() + anyValueIsANumberOfThirtyTwoBits() + threeRequests(),
      .refuses = wrong({"light()", "light('x', 5)", "light('x', {})", "light('x', 'y', f)",
                        "light('x', function(){}, 1)", "light('x', f, f)", "light(1, 2, 3)",
                        "fade()", "fade('x')", "fade('x', 1, 2)", "fade('x', f, 1)",
                        "fade('x', 1, f, 2)", "fade('x', 1, f, f)", "pulse()", "pulse('x')",
                        "pulse('x', 1)", "pulse('x', 1, 2, 3)", "pulse('x', 1, 2, f, f)"}) +
                 needMode({"light('x')", "light('x', f)", "light(bad)", "fade('x', 1)",
                           "fade('x', 1, f)", "pulse('x', 1, 2)", "pulse('x', 1, 2, f)"}) +
                 throwing({"light(bad)", "light(bad, f)", "fade(bad, 1)", "fade('x', bad)",
                           "pulse('x', 1, bad, f)"}),
      .reads = {{"fade(read('c'), read('t'))", "ct"},
                {"pulse(read('c'), read('t'), read('p'))", "ctp"},
                {"pulse(read('c'), read('t'), read('p'), f)", "ctp"}},
      .answers = hearsCodes("light('x', tell)", "LED") + hearsCodes("fade('x', 1, tell)", "LED") +
                 hearsCodes("pulse('x', 1, 2, tell)", "LED") +
                 std::vector<AnsweredRow>{// Neither a response nor an event is only logged.
                                          {"fade('red', 1, tell)", "", {"DEBUG Event: LED"}}} +
                 nobodyWaits({"light('red')", "fade('red', 1)", "pulse('red', 1, 2)"}),
  };
}

}  // namespace morvik::test
