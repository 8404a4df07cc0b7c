// An application's start in its order, the timer that ends it, and its main loop.
#include "host/app.h"

#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <ctime>

#include "host/app-files.h"
#include "host/descriptor.h"
#include "host/engine.h"
#include "support/unit/log-texts.h"
#include "support/unit/script-test.h"

namespace morvik::test {
namespace {

constexpr const char* kLed = "<descriptor><accesses><access>led</access></accesses></descriptor>";

class AppTest : public ScriptTest {
 protected:
  AppTest() {
    options.app_folder = files.root();
    instance.setCmdLine("app RFID;12 kitchen lamp");
    files.write("descriptor.xml", kLed);
    log.clear();
  }

  void startWith(const std::string& mainJs) {
    files.write("main.js", mainJs);
    instance.descriptor.reset();
    startApp(instance);
  }

  AppFiles files;
};

TEST_F(AppTest, startsInItsOrder) {
  startWith("log('first run')");
  EXPECT_THAT(
      log.lines(),
      ElementsAre(
          LogLine{G_LOG_LEVEL_DEBUG, "searching descriptor: " + files.path("descriptor.xml")},
          LogLine{G_LOG_LEVEL_DEBUG, "loading descriptor"},
          LogLine{G_LOG_LEVEL_MESSAGE, "decriptor loaded"},
          LogLine{G_LOG_LEVEL_WARNING, "no params loaded: No such file or directory"},
          LogLine{G_LOG_LEVEL_DEBUG, "loading source: " + files.path("main.js")},
          LogLine{G_LOG_LEVEL_MESSAGE, "running app: app"},
          LogLine{G_LOG_LEVEL_MESSAGE, "JSLOG: first run"}));
  ASSERT_TRUE(instance.descriptor);
  EXPECT_TRUE(hasAccess(*instance.descriptor, "led"));
}

TEST_F(AppTest, itsScriptSeesItsGlobals) {
  const struct {
    const char* expression;
    const char* text;
  } rows[] = {
      {"cmdline", "app RFID;12 kitchen lamp"},
      {"appName", "app"},
      {"instanceName", "kitchen lamp"},
      {"JSON.stringify(launchType)",
       "{\"name\":\"RFID\",\"id\":\"12\",\"app\":\"\",\"type\":\"\",\"pict\":\"\","
       "\"color\":\"\",\"data\":\"\"}"},
      {"JSON.stringify(params)", "{}"},
      {"[log, exit, setTimeout, ping, uuid, timestamp].every(f => typeof f == 'function')", "true"},
      {"['random', 'ping', 'info', 'connect', 'start', 'stop']"
       ".every(name => typeof morvik[name] == 'function')",
       "true"},
      {"typeof morvik.led", "object"},
      {"typeof morvik.ears", "undefined"},
      {"typeof random", "undefined"},
      {"typeof WebAssembly", "undefined"},
      {"this === globalThis", "true"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.expression);
    log.clear();
    startWith(std::string("log(") + row.expression + ")");
    EXPECT_THAT(logged(), ElementsAre(row.text));
  }
}

TEST_F(AppTest, withoutAnyAccessItStillHasWhatHasNoGate) {
  files.write("descriptor.xml", "<descriptor/>");
  startWith("log(Object.keys(morvik).sort().join())");
  EXPECT_THAT(logged(), ElementsAre("connect,info,ping,random,start,stop"));
}

TEST_F(AppTest, itsConfigurationBecomesParams) {
  zeph::ConfigApp config;
  zeph::KeyValue* entry = config.add_parameters();
  entry->set_key("city");
  entry->set_value("Lyon");
  files.write("config.bin", config.SerializePartialAsString());
  startWith("log(params.descriptor.city)");
  EXPECT_THAT(logged(), ElementsAre("Lyon"));
}

// The generator's first number for a seed.
std::string firstRandom(std::time_t seed) {
  std::srand(static_cast<unsigned>(seed));
  return std::to_string(std::rand() % 10000000);
}

TEST_F(AppTest, theGeneratorIsSeededWithTheTime) {
  const std::time_t before = std::time(nullptr);
  startWith("log(morvik.random())");
  const std::time_t after = std::time(nullptr);
  std::vector<std::string> possible;
  for (std::time_t seed = before; seed <= after; ++seed) possible.push_back(firstRandom(seed));
  EXPECT_THAT(possible, testing::Contains(logged().at(0)));
}

TEST_F(AppTest, theDescriptorIsReadOnceForEachLaunch) {
  startWith("function sees() { return typeof morvik.led; } log(sees());");
  files.write("descriptor.xml", "<descriptor><accesses/></descriptor>");
  EXPECT_TRUE(hasAccess(*instance.descriptor, "led"));
  startWith("log(typeof morvik.led)");
  EXPECT_THAT(logged(), ElementsAre("object", "undefined"));
}

TEST_F(AppTest, theScriptReachesItsInstance) {
  startWith("morvik.led.light('red')");
  EXPECT_TRUE(log.has(G_LOG_LEVEL_WARNING, "main.js:1: Must be in interactive mode"));
  becomeInteractive("granted");
  startWith("morvik.led.light('red')");
  EXPECT_EQ(sent()->interactiveid(), "granted");
}

TEST_F(AppTest, aMainScriptThatThrowsIsReportedOnceAndLeavesWhatItSetUp) {
  startWith("setTimeout(0, function() { log('later'); });\n\nvoid [1, missing];\nlog('never')");
  EXPECT_THAT(
      log.texts(G_LOG_LEVEL_WARNING),
      ElementsAre("no params loaded: No such file or directory",
                  "main.js:3: ReferenceError: missing is not defined", "void [1, missing];",
                  "         ^", "ReferenceError: missing is not defined\n    at main.js:3:10"));
  EXPECT_TRUE(log.has(G_LOG_LEVEL_MESSAGE, "running app: app"));
  EXPECT_THAT(logged(), ElementsAre());
  runLoopUntil([this] { return !logged().empty(); });
  EXPECT_THAT(logged(), ElementsAre("later"));
}

TEST_F(AppTest, aMainScriptThatDoesNotCompileIsReportedAndNotRun) {
  startWith("log('never');\nvar = 1;");
  EXPECT_THAT(log.texts(G_LOG_LEVEL_WARNING),
              ElementsAre("no params loaded: No such file or directory",
                          "main.js:2: SyntaxError: Unexpected token '='", "var = 1;", "    ^",
                          "SyntaxError: Unexpected token '='"));
  EXPECT_FALSE(log.has(G_LOG_LEVEL_MESSAGE, "running app: app"));
  EXPECT_THAT(logged(), ElementsAre());
}

TEST_F(AppTest, reportsStandInTheLogAlone) {
  testing::internal::CaptureStdout();
  startWith("throw 'thrown'");
  startWith("a b");
  startWith("Promise.reject('rejected')");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_TRUE(log.has(G_LOG_LEVEL_WARNING, "main.js:1: thrown"));
}

TEST_F(AppTest, exitDuringTheFirstRunIsLostWhenTheLoopStarts) {
  startWith("exit(); log('goes on')");
  EXPECT_TRUE(log.has(G_LOG_LEVEL_DEBUG, "EXIT"));
  EXPECT_THAT(logged(), ElementsAre("goes on"));
  const auto leave = [](gpointer loop) -> gboolean {
    g_message("the loop runs");
    g_main_loop_quit(static_cast<GMainLoop*>(loop));
    return G_SOURCE_REMOVE;
  };
  g_idle_add(leave, instance.mainLoop);
  g_main_loop_run(instance.mainLoop);
  EXPECT_TRUE(log.has(G_LOG_LEVEL_MESSAGE, "the loop runs"));
}

TEST_F(AppTest, autokillLeavesAnInteractiveApplicationAloneForGood) {
  for (const char* id : {"granted", ""}) {
    becomeInteractive(id);
    EXPECT_EQ(autokillCallback(&instance), G_SOURCE_REMOVE);
  }
  EXPECT_THAT(log.lines(), ElementsAre());
}

TEST_F(AppTest, autokillEndsAnApplicationThatIsNotInteractive) {
  const auto fire = [this] {
    printLog();
    autokillCallback(&instance);
  };
  EXPECT_EXIT(fire(), ExitedWithCode(255),
              "WARNING /!. AUTOKILL, application still not interactive after 10000ms\n");
}

TEST_F(AppTest, aMissingMainScriptIsFatal) {
  EXPECT_EXIT(startApp(instance), testing::KilledBySignal(SIGTRAP),
              "fatal: No such file or directory\n");
}

// The engine of a whole life, from its beginning to its end, needs a process without any other.
void liveAWholeLife(const AppFiles& files, const char* mainJs) {
  files.write("descriptor.xml", kLed);
  files.write("main.js", mainJs);
  static LaunchOptions options;
  options.app_folder = files.root();
  static MorvikData instance;
  instance.options = &options;
  instance.appName = "app";
  printLog();
  Engine::prepare();
  runApp(instance);
  g_printerr("came back");
  _exit(7);
}

TEST(AppLifeTest, endsWhenItsScriptExitsFromTheLoop) {
  const AppFiles files;
  EXPECT_EXIT(liveAWholeLife(files,
                             "setTimeout(0, function() { exit(); log('to its end'); });"
                             "setTimeout(60000, function() {}); log('first run');"),
              ExitedWithCode(7),
              "^DEBUG running app: [^\n]*/app\nDEBUG searching [^~]*MESSAGE running app: app\n"
              "DEBUG SetTimeout: 0\nDEBUG SetTimeout: 60000\nMESSAGE JSLOG: first run\nDEBUG "
              "EXIT\nMESSAGE JSLOG: to its end\ncame back");
}

}  // namespace
}  // namespace morvik::test
