// morvik.serial: ports and data. Arguments beyond the count, or missing from it, are no mistake:
// odd on purpose.
#include "features/features.h"

namespace morvik::test {
namespace {

SentRow open(const std::string& arguments, const std::string& port, int baud) {
  return {"open__(" + arguments + ")",
          "serial { open { port: \"" + port + "\" baud: " + std::to_string(baud) + " } }"};
}

SentRow write(const std::string& arguments, const std::string& port, const std::string& base,
              const std::string& data) {
  return {"write__(" + arguments + ")", "serial { write { port: \"" + port + "\" data: \"" + data +
                                            "\" base: \"" + base + "\" } }"};
}

std::vector<SentRow> opens() {
  return {
      open("'/dev/ttyS1'", "/dev/ttyS1", 9600),
      open("'/dev/ttyS1', 115200", "/dev/ttyS1", 115200),
      open("'p', 0", "p", 0),
      open("'/dev/ttyS1', -1", "/dev/ttyS1", -1),
      open("'p', 2147483647", "p", 2147483647),
      // With a third argument nobody looks at the second.
      open("'/dev/ttyS1', 'x', 3", "/dev/ttyS1", 9600),
      open("'/dev/ttyS1', 300, 3", "/dev/ttyS1", 9600),
      open("'p', bad, f, 4", "p", 9600),
      open("undefined", "undefined", 9600),
      open("12", "12", 9600),
      open("'a\\0b\\u0141'", "a bA", 9600),
  };
}

std::vector<SentRow> writes() {
  return {
      write("'p', 'h', 'data'", "p", "h", "data"),
      write("'p'", "p", "undefined", "undefined"),
      write("", "undefined", "undefined", "undefined"),
      write("1, 2.5, null", "1", "2.5", "null"),
      write("'p', 'h', 'data', f", "p", "h", "data"),
      write("'p', 1, 2, 3", "p", "1", "2"),
      write("'p', 'h', 'a\\0b\\u0141'", "p", "h", "a bA"),
      write("'p', 'h', '\\u00e9'", "p", "h", "\\351"),
  };
}

std::vector<RefusedRow> wrongRates() {
  std::vector<RefusedRow> rows;
  for (const char* call :
       {"open__('p', '9600')", "open__('p', 9600.5)", "open__('p', undefined)", "open__('p', null)",
        "open__('p', f)", "open__('p', 2147483648)", "open__(bad, '9600')"})
    rows.push_back({call, "arg 2 is Integer baudrate", "arg 2 is Integer baudrate"});
  return rows;
}

}  // namespace

Feature serialFeature() {
  return {
      .name = "serial",
      .functions = "open__,write__,addListener__",
      .sends = opens() + writes(),
      .refuses =
          wrong({"open__()", "addListener__()", "addListener__(5)", "addListener__('x')",
                 "addListener__(null)", "addListener__(undefined)", "addListener__(true)"}) +
          needMode({"open__('p')", "open__('p', 9600)", "open__(bad)", "write__('p', 'h', 'x')",
                    "write__()", "write__(bad)", "write__('p', bad)"}) +
          wrongRates() +
          throwing({"open__(bad)", "write__(bad)", "write__('p', bad)", "write__('p', 'h', bad)"}),
      .reads = {{"write__(read('p'), read('b'), read('d'))", "pbd"}},
      .answers = nobodyWaits({"open__('p')"}),
  };
}

}  // namespace morvik::test
