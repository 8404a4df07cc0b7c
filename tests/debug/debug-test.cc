// morvik-dev debug over the real protocol: breakpoints, pauses, the console, profiles.
#include <csignal>

#include "debug-fixture.h"

namespace morvik::test {

using namespace devkit;
namespace {

namespace fs = std::filesystem;

class DebuggedApplication : public DebugTest {
 protected:
  // A sample, where it may write.
  fs::path sample(const std::string& name) {
    fs::copy(fs::path(SOURCE_DIR) / "apps" / name, folder_ / name);
    return folder_ / name;
  }

  // Presses the button of the game, for the second time perhaps, and waits for its words.
  void press(int time) {
    run_->say("button SIMPLE\n");
    waitUntil("words", [this, time] {
      const std::string said = run_->output();
      return countOf("log     too early", said) + countOf("log     that took", said) >= time;
    });
  }
};

TEST_F(DebuggedApplication, stopsInACallbackOfASampleAndGoesOn) {
  const fs::path folder = sample("button-game");
  start({folder});
  run_->waitFor("wait for green");
  const auto client = attach();
  const int line = setBreakpoint(*client, folder, "if (greenSince === 0) {");
  run_->say("button SIMPLE\n");
  const Json paused = client->waitFor("Debugger.paused");
  EXPECT_EQ(paused["callFrames"][0]["functionName"], "pressed");
  EXPECT_EQ(paused["callFrames"][0]["location"]["lineNumber"], line - 1);
  EXPECT_EQ(client->local(paused["callFrames"][1], "press"), "SIMPLE");
  run_->waitFor("debugger: paused at main.js:" + std::to_string(line));
  client->evaluate("greenSince = 0");  // a slow test meets a green light
  client->call("Debugger.stepOver");
  const Json next = client->waitFor("Debugger.paused");
  EXPECT_EQ(next["callFrames"][0]["location"]["lineNumber"], line);
  client->call("Debugger.resume");
  run_->waitFor("log     too early");
  run_->waitFor("debugger: goes on after");
}

TEST_F(DebuggedApplication, readsNothingFromItsDeviceWhileItIsPaused) {
  const fs::path folder =
      write("app",
            interactiveScript(
                "morvik.button.addListener(function (press) { heard(press); return true; });"
                "log('ready');") +
                "function heard(press) { log('heard ' + press); }",
            "<access>button</access>");
  start({folder});
  run_->waitFor("ready");
  const auto client = attach();
  setBreakpoint(*client, folder, "log('heard ");
  run_->say("button SIMPLE\nbutton DOUBLE\n");
  client->waitFor("Debugger.paused");
  run_->waitFor("buttonCallback { type: DOUBLE }");
  EXPECT_EQ(client->evaluate("1 + 1"), 2);
  EXPECT_EQ(countOf("log     heard", run_->output()), 0);
  client->call("Debugger.resume");
  client->waitFor("Debugger.paused");
  run_->waitFor("log     heard SIMPLE");
  EXPECT_EQ(countOf("log     heard", run_->output()), 1);
  client->call("Debugger.resume");
  run_->waitFor("log     heard DOUBLE");
}

TEST_F(DebuggedApplication, stopsBeforeTheFirstLine) {
  const fs::path folder = write("app", "\nvar first = 1;\nlog('begun');\n");
  start({"--break", folder});
  run_->waitFor("debugger: paused before main.js, until a debugger comes");
  const auto client = attach();
  client->call("Runtime.runIfWaitingForDebugger");
  const Json paused = client->waitFor("Debugger.paused");
  EXPECT_EQ(paused["callFrames"][0]["location"]["lineNumber"], 1);
  run_->waitFor("debugger: paused at main.js:2");
  EXPECT_THAT(run_->output(), Not(HasSubstr("begun")));
  client->call("Debugger.resume");
  run_->waitFor("log     begun");
}

TEST_F(DebuggedApplication, keepsItsAddressAndItsScriptsNamesOverASave) {
  const fs::path folder = write("app", "log('version 1');");
  start({folder});
  run_->waitFor("version 1");
  const std::string before = target();
  {
    const auto client = attach();
    write("app", "function later() {\n  log('version 2');\n}\nsetTimeout(1, later);");
    EXPECT_EQ(client->closeCode(), 0);  // told nothing: its process was ended
  }
  waitForLaunches(2);
  run_->waitFor("version 2");
  EXPECT_EQ(target(), before);
  const auto client = attach();
  setBreakpoint(*client, folder, "log('version 2')");
  client->post("Runtime.evaluate", {{"expression", "later()"}});
  EXPECT_EQ(client->waitFor("Debugger.paused")["callFrames"][0]["functionName"], "later");
}

TEST_F(DebuggedApplication, goesOnWhenItsDebuggerLeavesInAPause) {
  const fs::path folder = write("app", interactiveScript("setTimeout(1, tick);") +
                                           "function tick() {\n  log('ticks');\n  return true;\n}");
  start({folder});
  run_->waitFor("log     ticks");
  auto client = attach();
  setBreakpoint(*client, folder, "log('ticks')");
  client->waitFor("Debugger.paused");
  const int ticks = countOf("log     ticks", run_->output());
  client.reset();
  run_->waitFor("debugger: left");
  waitUntil("ticks", [&] { return countOf("log     ticks", run_->output()) > ticks + 3; });
  client = attach();
  EXPECT_EQ(client->evaluate("typeof tick"), "function");
}

// The session of the one that left still has a call on the stack.
TEST_F(DebuggedApplication, takesTheNextDebuggerAfterOneThatLeftInACallOfItsOwn) {
  const fs::path folder =
      write("app", interactiveScript("log('ready');") + "function called() {\n  return 42;\n}");
  start({folder});
  run_->waitFor("ready");
  for (int round = 1; round <= 2; ++round) {
    auto client = attach();
    setBreakpoint(*client, folder, "return 42");
    client->post("Runtime.evaluate", {{"expression", "called()"}});
    client->waitFor("Debugger.paused");
    client.reset();
    waitUntil("it has left", [&] { return countOf("debugger: left", run_->output()) == round; });
  }
  const auto client = attach();
  EXPECT_EQ(client->evaluate("called()"), 42);
}

TEST_F(DebuggedApplication, interruptsAScriptThatDoesNotReturn) {
  start({write("app", "var goesOn = true;\nlog('begun');\nwhile (goesOn) {\n}\nlog('returned');")});
  run_->waitFor("begun");
  const auto client = attach();
  client->call("Debugger.pause");
  const Json paused = client->waitFor("Debugger.paused");
  client->call(
      "Debugger.evaluateOnCallFrame",
      {{"callFrameId", paused["callFrames"][0]["callFrameId"]}, {"expression", "goesOn = false"}});
  client->call("Debugger.resume");
  run_->waitFor("returned");
}

TEST_F(DebuggedApplication, stopsAtWhatACallbackThrowsAndShowsItInTheConsole) {
  start({write("app", interactiveScript("log('ready');") +
                          "function fail() { throw new Error('on fire'); }")});
  run_->waitFor("ready");
  const auto client = attach();
  client->call("Debugger.setPauseOnExceptions", {{"state", "uncaught"}});
  client->evaluate("setTimeout(1, fail)");
  const Json paused = client->waitFor("Debugger.paused");
  EXPECT_EQ(paused["reason"], "exception");
  EXPECT_EQ(paused["callFrames"][0]["functionName"], "fail");
  client->call("Debugger.resume");
  const Json thrown = client->waitFor("Runtime.exceptionThrown")["exceptionDetails"];
  EXPECT_THAT(thrown.dump(), HasSubstr("Error: on fire"));
  EXPECT_THAT(thrown["url"].dump(), HasSubstr("/app/main.js"));
  run_->waitFor("main.js:6: Error: on fire");
  EXPECT_EQ(countOf("main.js:6: Error: on fire", run_->output()), 1);
}

TEST_F(DebuggedApplication, doesNotStopAtWhatAScriptCatches) {
  start({write("app", interactiveScript("log('ready');") +
                          "function fail() { try { throw 1; } catch (one) { log('caught'); } }")});
  run_->waitFor("ready");
  const auto client = attach();
  client->call("Debugger.setPauseOnExceptions", {{"state", "uncaught"}});
  client->evaluate("setTimeout(1, fail)");
  run_->waitFor("log     caught");
  EXPECT_THAT(run_->output(), Not(HasSubstr("debugger: paused")));
}

TEST_F(DebuggedApplication, tellsTheConsoleWhatAScriptTellsIt) {
  start({write("app", interactiveScript("console.log('gr\u00fcn', 7); log('ready');"))});
  run_->waitFor("ready");
  const auto client = attach();
  const Json said = client->waitFor("Runtime.consoleAPICalled");
  EXPECT_EQ(said["args"][0]["value"], "gr\u00fcn");
  EXPECT_EQ(said["args"][1]["value"], 7);
  EXPECT_EQ(client->evaluate("'\u00fc\U0001F600'.length"), 3);
  EXPECT_THAT(run_->output(), Not(HasSubstr("gr\u00fcn")));
}

TEST_F(DebuggedApplication, showsTheObjectOfAnEvent) {
  const fs::path folder =
      write("app",
            interactiveScript("morvik.rfid.addListener(function (tag) { last(tag); return true; });"
                              "log('ready');") +
                "function last(tag) {\n  log('seen');\n}",
            "<access>rfid</access>");
  start({folder});
  run_->waitFor("log     ready");
  const auto client = attach();
  setBreakpoint(*client, folder, "log('seen')");
  run_->say("rfid 04a1 content=bob\n");
  const Json frame = client->waitFor("Debugger.paused")["callFrames"][0];
  const Json tag = frame["scopeChain"][0]["object"]["objectId"];
  const Json scope = client->call("Runtime.getProperties", {{"objectId", tag}})["result"];
  ASSERT_EQ(scope[0]["name"], "tag");
  const Json members = client->call(
      "Runtime.getProperties",
      {{"objectId", scope[0]["value"]["objectId"]}, {"ownProperties", true}})["result"];
  EXPECT_THAT(members.dump(), AllOf(HasSubstr("\"bob\""), HasSubstr("\"04a1\"")));
}

// The pump runs meanwhile, and must not take the profiler's signals for the end of its connection.
TEST_F(DebuggedApplication, takesACpuProfileWithTheNamesOfASamplesFunctions) {
  start({sample("button-game")});
  run_->waitFor("wait for green");
  const auto client = attach();
  client->call("Profiler.enable");
  client->call("Profiler.setSamplingInterval", {{"interval", 200}});
  client->call("Profiler.start");
  client->evaluate("for (var end = Date.now() + 150; Date.now() < end;) readBest()");
  press(1);
  const Json profile = client->call("Profiler.stop")["profile"];
  std::vector<std::string> names;
  for (const Json& node : profile["nodes"]) names.push_back(node["callFrame"]["functionName"]);
  EXPECT_THAT(names, Contains("readBest"));
  EXPECT_GT(profile["samples"].size(), 10U);
  EXPECT_THAT(run_->output(), Not(HasSubstr("assertion")));
  press(2);
}

TEST_F(DebuggedApplication, takesAHeapSnapshotWithTheNamesOfASamplesFunctions) {
  start({sample("button-game")});
  run_->waitFor("wait for green");
  const auto client = attach();
  client->post("HeapProfiler.takeHeapSnapshot", {{"reportProgress", false}});
  std::string snapshot;
  do {
    snapshot += client->waitFor("HeapProfiler.addHeapSnapshotChunk")["chunk"];
  } while (!Json::accept(snapshot));
  const Json strings = Json::parse(snapshot)["strings"];
  for (const char* name : {"readBest", "newRound", "pressed"}) EXPECT_THAT(strings, Contains(name));
  EXPECT_EQ(client->evaluate("typeof pressed"), "function");
}

// That takes more than the 256 MiB that an application may have.
TEST_F(DebuggedApplication, takesASnapshotOfAHeapThatIsNearlyFull) {
  start(
      {write("app", interactiveScript("log('filled');") +
                        "for (var kept = [], i = 0; i < 170000; ++i) kept.push({ number: i, next: "
                        "kept[i - 1] });")});
  run_->waitFor("filled");
  const auto client = attach();
  EXPECT_GT(client->call("Runtime.getHeapUsage")["usedSize"], 8000000);
  client->call("HeapProfiler.takeHeapSnapshot", {{"reportProgress", false}});
  EXPECT_EQ(client->evaluate("kept.length"), 170000);
}

TEST_F(DebuggedApplication, endsItsDebuggersConnectionInOrder) {
  start({write("app", interactiveScript("log('ready');"))});
  run_->waitFor("ready");
  const auto client = attach();
  client->post("Runtime.evaluate", {{"expression", "exit()"}});
  EXPECT_EQ(client->closeCode(), 1001);
  run_->waitFor("app    end");
}

// Nobody could end the pause, and the application would be there for ever.
TEST_F(DebuggedApplication, endsWithTheToolThatIsKilledInAPause) {
  start({write("app", interactiveScript("log('ready');") + "function stop() { debugger; }")});
  run_->waitFor("log     ready");
  const auto client = attach();
  client->post("Runtime.evaluate", {{"expression", "stop()"}});
  client->waitFor("Debugger.paused");
  run_->signal(SIGKILL);
  EXPECT_EQ(run_->waitForEnd(), -1);
  EXPECT_TRUE(isSoonAlone());
}

TEST_F(DebuggedApplication, hasAPortForEachFolder) {
  const std::string script = "log(appName + ' is here');";
  start({write("one", script), write("two", script)});
  run_->waitFor("one is here");
  run_->waitFor("two is here");
  waitForLaunches(2);
  EXPECT_THAT(run_->output(), HasSubstr("A debugger of one attaches at 127.0.0.1:"));
  EXPECT_THAT(run_->output(), HasSubstr("A debugger of two attaches at 127.0.0.1:"));
}

}  // namespace
}  // namespace morvik::test
