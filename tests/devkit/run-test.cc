// morvik-dev run without a terminal: folders that become running applications, saves, ends, and
// what a pipe gets of it.
#include <sys/wait.h>

#include <fstream>
#include <regex>

#include "desk-fixture.h"
#include "fake-server.h"
#include "pty-program.h"
#include "support/file-content.h"
#include "support/matchers.h"
#include "support/program.h"

namespace morvik::test {

using namespace devkit;
namespace {

namespace fs = std::filesystem;

class RunTest : public DeskTest {
 protected:
  std::unique_ptr<Program> start(const std::vector<std::string>& words) {
    return std::make_unique<Program>(command(words));
  }

  static void saveByRename(const fs::path& file, const std::string& text) {
    std::ofstream(file.string() + ".new") << text;
    fs::rename(file.string() + ".new", file);
  }

  // Where a device server listens.
  static std::string addressOf(const Program& server) {
    constexpr std::string_view kGreeting = "listening on ";
    const std::string greeting = server.waitFor("\n");
    return greeting.substr(kGreeting.size(), greeting.find('\n') - kGreeting.size());
  }

  void expectRefusal(const std::vector<std::string>& words, const std::string& reason) {
    const ProgramResult outcome = run(command(words));
    EXPECT_EQ(outcome.status, 2) << reason;
    EXPECT_THAT(outcome.output, HasSubstr(reason));
  }
};

TEST_F(RunTest, showsWhatAnApplicationSaysAndSends) {
  write("app", interactiveScript("log('granted'); morvik.led.light('red');"));
  const auto run = start({folder_ / "app"});
  run->waitFor("led light red");
  const std::string said = run->waitFor("log     granted");
  EXPECT_THAT(said, StartsWith("The virtual device listens on 127.0.0.1:"));
  EXPECT_THAT(said, ContainsRegex("\n[0-9:.]{12} app    log     granted\n"));
  EXPECT_THAT(said, ContainsRegex("app    ->      interactive mode START"));
  EXPECT_THAT(said, Not(HasSubstr("\033")));
  run->signal(SIGTERM);
  EXPECT_EQ(run->waitForEnd(), 0);
  expectNothingLeft();
}

TEST_F(RunTest, tellsThePagesAddressFirst) {
  Program run({MORVIK_DEV, "run", write("app", "log('here');")});
  const std::string said = run.waitFor("log     here");
  EXPECT_THAT(
      said, ContainsRegex("^The device is on this page: http://127.0.0.1:[0-9]+/[0-9a-f]{32}/\n"));
  run.signal(SIGTERM);
  EXPECT_EQ(run.waitForEnd(), 0);
  expectNothingLeft();
}

TEST_F(RunTest, runsAFolderWithBlanksInItsPath) {
  const fs::path folder = write("my  first app", "log('this is ' + appName);");
  const auto run = start({folder});
  run->waitFor("this is my--first-app");
}

TEST_F(RunTest, givesEachApplicationTheInstanceThatIsAskedFor) {
  const std::string app = write("app", "log(appName + ': ' + instanceName);");
  const auto run = start({app, app, "--instance=bob@DEVICE"});
  EXPECT_THAT(run->waitFor("app: bob@127.0.0.1:"), Not(HasSubstr("DEVICE")));
  run->waitFor("app-2: 127.0.0.1:");
}

TEST_F(RunTest, runsFoldersOfDifferentParentsAndTheSameName) {
  const auto run = start(
      {write("one/app", "log('one: ' + appName)"), write("two/app", "log('two: ' + appName)")});
  run->waitFor("one: app\n");
  run->waitFor("two: app-2\n");
}

TEST_F(RunTest, restartsTheApplicationWhoseFileIsSavedAlone) {
  const fs::path folder = write("app", "log('version 1');");
  write("other", "log('other is here');");
  const auto run = start({folder, folder_ / "other"});
  run->waitFor("version 1");
  run->waitFor("other is here");
  write("app", "log('version 2');");
  run->waitFor("version 2");
  saveByRename(folder / "main.js", "log('version 3');");
  run->waitFor("version 3");
  EXPECT_EQ(countOf("other is here", run->output()), 1);
  EXPECT_EQ(countOf("main.js saved", run->output()), 2);
}

TEST_F(RunTest, makesOneRestartOfTenSaves) {
  const fs::path folder = write("app", "log('version 0');");
  const auto run = start({folder});
  run->waitFor("version 0");
  for (int save = 1; save <= 10; ++save) {
    const std::string script = "log('version " + std::to_string(save) + "');";
    save % 2 == 0 ? static_cast<void>(write("app", script))
                  : saveByRename(folder / "main.js", script);
  }
  run->waitFor("version 10");
  write("app", "log('the last one');");
  run->waitFor("the last one");
  EXPECT_EQ(countOf(" launched\n", run->output()), 3);
}

TEST_F(RunTest, tellsThePlaceOfABrokenSaveAndWaitsForTheNext) {
  const fs::path folder = write("app", "log('version 1');");
  const auto run = start({folder});
  run->waitFor("version 1");
  write("app", "log('version 2';");
  const std::string said = run->waitFor("waiting for the next save");
  EXPECT_THAT(said, HasSubstr("main.js:1"));
  EXPECT_THAT(said, HasSubstr("SyntaxError: missing ) after argument list"));
  write("app", "log('version 3');");
  run->waitFor("version 3");
  std::ofstream(folder / "descriptor.xml") << "<descriptor>\n<accesses></descriptor>";
  run->waitFor("descriptor.xml:2:");
  std::ofstream(folder / "descriptor.xml") << "<descriptor/>";
  run->waitFor("app    run     descriptor.xml saved");
}

TEST_F(RunTest, waitsForAFolderThatIsBrokenFromTheBeginning) {
  fs::create_directory(folder_ / "app");
  const auto run = start({folder_ / "app"});
  run->waitFor("main.js: is missing");
  write("app", "log('mended');");
  run->waitFor("mended");
}

TEST_F(RunTest, saysWhyAnApplicationEnded) {
  write("app", "setTimeout(0, exit);");
  const auto run = start({folder_ / "app"});
  const std::string said = run->waitFor("app ended after ");
  EXPECT_THAT(said, HasSubstr("status 0"));
}

TEST_F(RunTest, saysThatTheDeviceDroppedTheConnection) {
  write("app", interactiveScript("log('ready');"));
  const auto run = start({folder_ / "app"});
  run->waitFor("log     ready");
  run->say("drop\n");
  run->waitFor("it was told to drop it");
}

TEST_F(RunTest, saysThatTheHostIsMissing) {
  write("app", "");
  const auto run = start({"--host=/nowhere/morvikvm", folder_ / "app"});
  run->waitFor("/nowhere/morvikvm");
  run->waitFor("app was not launched");
}

TEST_F(RunTest, takesLinesForTheDevice) {
  write("app",
        interactiveScript("morvik.button.addListener(function (press) { log('press: ' + press); "
                          "return true; }); log('ready');"),
        "<access>button</access>");
  const auto run = start({folder_ / "app"});
  run->waitFor("log     ready");
  run->say("button DOUBLE\nnonsense\n");
  run->waitFor("press: DOUBLE");
  run->waitFor("nonsense");
  run->say("apps\nstate\n");
  run->waitFor("app  interactive for ");
  run->waitFor(", app 1 for the device\n");
  run->waitFor("ears         left 0, right 0\n");
}

TEST_F(RunTest, doubtsWhatAnApplicationPlaysFromItsFolder) {
  write("app",
        interactiveScript("morvik.multimedia.play('./here.mp3'); "
                          "morvik.multimedia.play('./gone.mp3');"),
        "<access>multimedia</access>");
  std::ofstream(folder_ / "app/here.mp3") << "sound";
  const auto run = start({folder_ / "app"});
  run->waitFor("doubt   play: ./gone.mp3 is not in the application's folder");
  EXPECT_THAT(run->output(), Not(HasSubstr("./here.mp3 is")));
}

TEST_F(RunTest, showsOnceWhatGoesToEverybody) {
  for (const char* name : {"one", "two"}) {
    write(name,
          interactiveScript("morvik.button.addListener(function (press) { log('press: ' + press); "
                            "return true; }); log('ready');"),
          "<access>button</access>");
  }
  const auto run = start({folder_ / "one", folder_ / "two"});
  run->waitFor("one    log     ready");
  run->waitFor("two    log     ready");
  run->say("button TRIPLE\n");
  run->waitFor("one    log     press: TRIPLE");
  run->waitFor("two    log     press: TRIPLE");
  const std::string output = run->output();
  const std::size_t shown = output.find("buttonCallback { type: TRIPLE }");
  ASSERT_NE(shown, std::string::npos) << output;
  EXPECT_EQ(output.find("buttonCallback { type: TRIPLE }", shown + 1), std::string::npos) << output;
  EXPECT_THAT(output, HasSubstr(" all    <-      buttonCallback"));
}

TEST_F(RunTest, foldsWhatSaysNothing) {
  write("app", interactiveScript("log('ready');"));
  auto run = start({folder_ / "app"});
  const std::string said = run->waitFor("log     ready");
  EXPECT_THAT(said, Not(HasSubstr("no params loaded")));
  run->signal(SIGTERM);
  run->waitForEnd();
  EXPECT_THAT(run->output(), ContainsRegex("\n[0-9]+ lines left out as noise; --all shows them\n"));
  run = start({"--all", folder_ / "app"});
  run->waitFor("no params loaded");
}

TEST_F(RunTest, showsWhatTheFiltersLetThrough) {
  write("app",
        interactiveScript("log('some words'); log('other words'); morvik.led.light('end');"));
  auto run = start({"--grep=some|end", folder_ / "app"});
  run->waitFor("led light end");
  run->waitFor("some words");
  EXPECT_THAT(run->output(), Not(HasSubstr("other words")));
  run = start({"--level=debug", folder_ / "app"});
  run->waitFor("Sending MSG");
}

TEST_F(RunTest, takesARealDeviceServer) {
  write("app", interactiveScript("log('granted'); morvik.led.light('blue');"));
  Program server({MORVIK_DEV, "device", "--port=0"});
  const std::string address = addressOf(server);
  const auto run = start({"--device=" + address, folder_ / "app"});
  EXPECT_THAT(run->waitFor("led light blue"), StartsWith("The relay to " + address));
  run->waitFor("log     granted");
  server.waitFor("led light blue");
  write("app", interactiveScript("log('granted again'); morvik.led.light('green');"));
  run->waitFor("log     granted again");
  server.waitFor("led light green");
  server.signal(SIGTERM);
  run->waitFor("the server ended the connection");
  run->waitFor("app ended after");
}

TEST_F(RunTest, tellsAServerThatBreaksOffFromOneThatEnds) {
  write("app", interactiveScript("log('granted');"));
  FakeServer server([](FakeServer& /*self*/) {},
                    [](FakeServer& self, const zeph::ZephMsg& message) {
                      self.answer(message, zeph::OK);
                      self.reset();
                    });
  constexpr int kWide = 400;  // columns, so that no sentence is broken
  const auto run = std::make_unique<PtyProgram>(
      loop_, command({"--device=127.0.0.1:" + std::to_string(server.port()), folder_ / "app"}),
      kWide);
  run->waitFor("The device server broke off the connection: ");
}

TEST_F(RunTest, saysThatTheRealDeviceRefuses) {
  write("app", "var at = instanceName.split(':'); morvik.connect(at[0], Number(at[1]));");
  Program server({MORVIK_DEV, "device", "--port=0"});
  const std::string address = addressOf(server);
  server.signal(SIGTERM);
  server.waitForEnd();
  const auto run = start({"--device=" + address, folder_ / "app"});
  run->waitFor("app ended after");
  run->waitFor("The device server refused the connection or cannot be reached: ");
  run->waitFor("Connection refused");
}

TEST_F(RunTest, removesTheLinksOfOneThatWasKilled) {
  write("app", "log('here');");
  const auto killed = start({folder_ / "app"});
  killed->waitFor("log     here");
  killed->signal(SIGKILL);
  EXPECT_EQ(killed->waitForEnd(), -1);
  const auto next = start({folder_ / "app"});
  next->waitFor("log     here");
  next->signal(SIGTERM);
  EXPECT_EQ(next->waitForEnd(), 0);
  expectNothingLeft();
}

TEST_F(RunTest, endsWhenNobodyReads) {
  write("app", "setTimeout(1, function () { log('again'); return true; });");
  std::string line =
      std::string(MORVIK_DEV) + " run --no-page " + (folder_ / "app") + " | head -n 3";
  const ProgramResult outcome = run({"/bin/sh", "-c", line});
  EXPECT_EQ(outcome.status, 0);
  expectNothingLeft();
}

TEST_F(RunTest, endsByEachSignalAndLeavesNothing) {
  write("app", "log('here');");
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    const auto run = start({folder_ / "app"});
    run->waitFor("log     here");
    run->signal(signal);
    EXPECT_EQ(run->waitForEnd(), 0) << signal;
    expectNothingLeft();
  }
}

TEST_F(RunTest, endsOnlyWhatItHasStarted) {
  write("app", "log('here');");
  Program bystander({MORVIK_DEV, "device", "--port=0"});
  bystander.waitFor("listening on");
  const auto run = start({folder_ / "app"});
  run->waitFor("log     here");
  run->signal(SIGTERM);
  EXPECT_EQ(run->waitForEnd(), 0);
  bystander.say("button SIMPLE\nhelp stop\n");
  bystander.waitFor("stop interactive mode");
}

TEST_F(RunTest, endsAfterTheTimeThatItIsGiven) {
  write("app", "");
  EXPECT_EQ(run(command({"--seconds=1", folder_ / "app"})).status, 0);
  expectNothingLeft();
}

TEST_F(RunTest, refusesWhatMakesNoSense) {
  const std::string app = write("app", "");
  expectRefusal({}, "which folder?");
  expectRefusal({app, app, app, app}, "three applications at most");
  expectRefusal({"--level=loud", app}, "there is no level loud");
  expectRefusal({"--grep=(", app}, "--grep: ");
  expectRefusal({"--port=70000", app}, "a port is a number");
  expectRefusal({"--seconds=-1", app}, "--seconds takes");
  expectRefusal({"--open", app}, "--open needs the page");
}

TEST_F(RunTest, hasEveryOptionInItsDocument) {
  const std::string document = test::contentOf(SOURCE_DIR "/docs/run.md");
  const std::string help = run({MORVIK_DEV, "run", "--help"}).output;
  const std::regex option("  (?:-., )?(--[a-z-]+)");
  int options = 0;
  for (std::sregex_iterator found(help.begin(), help.end(), option), end; found != end; ++found) {
    if ((*found)[1] == "--help") continue;
    EXPECT_THAT(document, HasSubstr("`" + (*found)[1].str()));
    ++options;
  }
  EXPECT_EQ(options, 13);
}

TEST_F(RunTest, saysThatThereIsNoSuchFolder) {
  const ProgramResult outcome = run(command({folder_ / "nothing"}));
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.output, HasSubstr("nothing: No such file or directory"));
}

}  // namespace
}  // namespace morvik::test
