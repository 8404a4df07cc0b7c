// The command line of `morvik-dev debug`, and what its document says of it.
#include <regex>

#include "debug-fixture.h"
#include "support/file-content.h"

namespace morvik::test {

using namespace devkit;
namespace {

class DebugCommand : public DebugTest {
 protected:
  static void expectRefusal(const std::vector<std::string>& words, const std::string& reason) {
    std::vector<std::string> command{MORVIK_DEV, "debug"};
    command.insert(command.end(), words.begin(), words.end());
    const ProgramResult outcome = test::run(command);
    EXPECT_EQ(outcome.status, 2) << reason;
    EXPECT_THAT(outcome.output, AllOf(StartsWith("morvik-dev debug: "), HasSubstr(reason)));
  }

  static std::string help(const std::string& verb) {
    return test::run({MORVIK_DEV, verb, "--help"}).output;
  }
};

TEST_F(DebugCommand, refusesWhatMakesNoSense) {
  const std::string app = write("app", "");
  expectRefusal({}, "which folder");
  expectRefusal({"--port=70000", app}, "a port is a number from 0 to 65535");
  expectRefusal({"--port=-2", app}, "a port is a number from 0 to 65535");
}

TEST_F(DebugCommand, refusesAPortThatIsInUse) {
  const GOwned<GSocketListener> listener(g_socket_listener_new());
  const std::string port =
      std::to_string(g_socket_listener_add_any_inet_port(listener.get(), nullptr, nullptr));
  expectRefusal({"--port=" + port, write("app", "")}, "port " + port + ": ");
}

TEST_F(DebugCommand, takesTheOptionsOfRunAndTellsOfItsOwn) {
  const std::string own = contentOf(SOURCE_DIR "/docs/debug.md");
  const std::string ofRun = contentOf(SOURCE_DIR "/docs/run.md");
  const std::string text = help("debug");
  const std::regex option("  (?:-., )?(--[a-z-]+)");
  int options = 0;
  for (std::sregex_iterator found(text.begin(), text.end(), option), end; found != end; ++found) {
    const std::string name = "`" + (*found)[1].str();
    if (name == "`--help") continue;
    EXPECT_THAT(own + ofRun, HasSubstr(name));
    ++options;
  }
  EXPECT_EQ(options, 14);
  EXPECT_THAT(text, AllOf(HasSubstr("--device-port=PORT"), HasSubstr("-b, --break")));
  EXPECT_THAT(own, AllOf(HasSubstr("`--break`"), HasSubstr("`--device-port=PORT`")));
  EXPECT_THAT(help("run"), Not(HasSubstr("--break")));
}

}  // namespace
}  // namespace morvik::test
