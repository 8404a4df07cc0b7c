// Every end, made to happen on the real host, and what is said of it.
#include "run/ends.h"

#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <filesystem>
#include <fstream>
#include <set>

#include "fake-server.h"
#include "launched.h"
#include "run/folder.h"
#include "run/relay.h"
#include "support/matchers.h"

namespace morvik::test {

using namespace devkit;
namespace {

// Keeps a script busy until the scene has said go.
constexpr char kWait[] = "for (;;) { try { file.read('go').text; break; } catch (e) {} }";
constexpr char kStart[] = "morvik.start(function() { log('ready'); }, {});";

// A script that connects to the scene's server and goes on.
std::string connected(const std::string& rest = "") {
  return "morvik.connect('127.0.0.1', Number(instanceName));" + rest;
}

// One application and the world around it.
class Scene : private Observer {
 public:
  Scene()
      : server([this](FakeServer& self) { came(self); },
               [this](FakeServer& self, const zeph::ZephMsg& message) { received(self, message); }),
        plan(planOf(apps, {"app plain " + std::to_string(server.port())})) {}

  // Puts a relay between the application and this port; it tells the launch what becomes of the
  // server.
  void relayTo(int port) {
    events.add(*this);
    EXPECT_EQ(relay.listen("127.0.0.1:" + std::to_string(port)), std::nullopt);
    plan.lines = {"app plain " + std::to_string(relay.port())};
  }

  // What a script waits for.
  void go() const { apps.file("app", "go", ""); }

  void run() {
    launch.start(plan);
    EXPECT_TRUE(loop.runUntil([this] { return step(); })) << record.transcript();
  }

  Loop loop;
  Apps apps;
  LaunchRecord record;
  std::function<void(FakeServer&)> came = [](FakeServer&) {};
  std::function<void(FakeServer&, const zeph::ZephMsg&)> received = [](FakeServer&,
                                                                       const zeph::ZephMsg&) {};
  FakeServer server;
  LaunchPlan plan;
  Launch launch{record};
  Events events{[] { return std::chrono::milliseconds(0); }};
  Relay relay{events};
  // Done once, when the script has said "ready".
  std::function<void(pid_t)> onReady;

 private:
  bool step() {
    if (onReady && record.said("ready"))
      std::exchange(onReady, nullptr)(record.processes.at("app"));
    return record.isOver;
  }

  void happened(const Event& event) override {
    const auto* trouble = std::get_if<Trouble>(&event.what);
    if (trouble != nullptr) launch.left(record.processes.at("app"), trouble->loss, trouble->why);
  }
};

struct Row {
  const char* name;
  EndKind kind;
  const char* status;
  const char* sentence;  // a part of it
  const char* cure;      // a part of it
  void (*prepare)(Scene& scene);
};

void PrintTo(const Row& row, std::ostream* stream) { *stream << row.name; }

zeph::ZephMsg stopNotice() {
  zeph::ZephMsg message = newMessage();
  message.mutable_interactivemode()->set_action(zeph::InteractiveMode::STOP);
  return message;
}

zeph::ZephMsg tag() {
  zeph::ZephMsg message = newMessage();
  message.mutable_rfidcallback()->set_id("04a1");
  return message;
}

void killWhenReady(Scene& scene, int signal) {
  scene.apps.app("app", "log('ready');");
  scene.onReady = [signal](pid_t pid) { kill(pid, signal); };
}

// What a process has of memory that counts against its limit, in bytes.
rlim_t dataOf(pid_t pid) {
  std::ifstream status("/proc/" + std::to_string(pid) + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmData:")) return std::stoull(line.substr(line.find(':') + 1)) * 1024;
  }
  return 0;
}

void limitMemoryWhenReady(Scene& scene) {
  scene.onReady = [&scene](pid_t pid) {
    const rlim_t most = dataOf(pid) + (rlim_t{200} << 20);
    const rlimit limit{most, most};
    EXPECT_EQ(prlimit(pid, RLIMIT_DATA, &limit, nullptr), 0);
    scene.go();
  };
}

const Row kRows[] = {
    {"exitByTheScript", EndKind::kScriptExit, "status 0", "called exit()", "",
     [](Scene& scene) { scene.apps.app("app", "setTimeout(0, function() { exit(); });"); }},
    {"exitTooEarly", EndKind::kExitTooEarly, "status 255", "its exit() was lost", "setTimeout(0",
     [](Scene& scene) { scene.apps.app("app", "exit();"); }},
    {"neverConnected", EndKind::kNeverConnected, "status 255", "never called morvik.connect",
     "morvik.connect(host, port)", [](Scene& scene) { scene.apps.app("app", "log('idle');"); }},
    {"neverStarted", EndKind::kNeverStarted, "status 255", "never called morvik.start",
     "morvik.start(", [](Scene& scene) { scene.apps.app("app", connected()); }},
    {"startNotAnswered", EndKind::kStartNotAnswered, "status 255", "did not answer morvik.start",
     "within 10 seconds", [](Scene& scene) { scene.apps.app("app", connected(kStart)); }},
    {"startAnsweredWithoutCode", EndKind::kStartAnsweredWithoutCode, "status 255", "without a code",
     "holds the code OK",
     [](Scene& scene) {
       scene.apps.app("app", connected(std::string(kStart) + kWait));
       scene.received = [&scene](FakeServer& server, const zeph::ZephMsg& message) {
         zeph::ZephMsg answer = replyTo(message);
         answer.mutable_response();
         server.send(answer);
         scene.go();
       };
     }},
    {"connectionRefused", EndKind::kConnectionRefused, "status 255",
     "could not connect: connect failed on '127.0.0.1:1' : Connection refused",
     "Start the device server",
     [](Scene& scene) { scene.apps.app("app", "morvik.connect('127.0.0.1', 1);"); }},
    {"connectionRefusedAndCaught", EndKind::kConnectionRefused, "status 255", "could not connect",
     "Start the device server",
     [](Scene& scene) {
       scene.apps.app("app", "try { morvik.connect('127.0.0.1', 1); } catch (e) { log(e); }");
     }},
    {"hostNotFoundByName", EndKind::kConnectionRefused, "status 255", "nslookup failed",
     "host and port", [](Scene& scene) { scene.apps.app("app", "morvik.connect('no host', 1);"); }},
    {"scriptFailed", EndKind::kScriptFailed, "status 255",
     "main.js:2 threw ReferenceError: nobody is not defined", "Mend that line",
     [](Scene& scene) { scene.apps.app("app", "var a;\nnobody();\n" + connected(kStart)); }},
    {"scriptDoesNotCompile", EndKind::kScriptFailed, "status 255", "main.js:1 threw SyntaxError",
     "Mend that line", [](Scene& scene) { scene.apps.app("app", "var b = );"); }},
    {"arrayBuffers", EndKind::kArrayBuffers, "status 255",
     "main.js:1 asked for more than the 10 MiB", "smaller arrays",
     [](Scene& scene) { scene.apps.app("app", "new Uint8Array(20000000);" + connected(kStart)); }},
    {"brokenConfig", EndKind::kBrokenConfig, "status 255", "config.bin is damaged",
     "Write config.bin",
     [](Scene& scene) {
       scene.apps.app("app", "morvik.connect(params.first.host, 1);");
       scene.apps.file("app", "config.bin", "\xff\xff\xff");
     }},
    {"stopNotice", EndKind::kStopNotice, "status 0", "had stopped interactive mode",
     "within five minutes",
     [](Scene& scene) {
       scene.apps.app("app", connected(kStart));
       scene.received = [](FakeServer& server, const zeph::ZephMsg& message) {
         server.answer(message, zeph::OK);
         server.send(stopNotice());
       };
     }},
    {"interactiveRefused", EndKind::kInteractiveRefused, "status 1",
     "refused interactive mode with BUSY", "when the device is free",
     [](Scene& scene) {
       scene.apps.app("app", connected(kStart));
       scene.received = [](FakeServer& server, const zeph::ZephMsg& message) {
         server.answer(message, zeph::BUSY);
       };
     }},
    {"serverMissing", EndKind::kServerMissing, "killed by SIGTRAP",
     "cannot be reached: Could not connect to 127.0.0.1: Connection refused", "--device",
     [](Scene& scene) {
       scene.apps.app("app", connected());
       constexpr int kNobodysPort = 1;
       scene.relayTo(kNobodysPort);
     }},
    {"serverEnded", EndKind::kServerClosed, "killed by SIGTRAP",
     "The device server ended the connection, and no", "launch the application again",
     [](Scene& scene) {
       scene.apps.app("app", connected());
       scene.relayTo(scene.server.port());
       scene.came = [](FakeServer& server) { server.close(); };
     }},
    {"serverReset", EndKind::kServerReset, "killed by SIGTRAP",
     "The device server broke off the connection: ", "crashed, was killed",
     [](Scene& scene) {
       scene.apps.app("app", connected(kStart));
       scene.relayTo(scene.server.port());
       scene.received = [](FakeServer& server, const zeph::ZephMsg&) { server.reset(); };
     }},
    {"serverEndedUnseen", EndKind::kServerClosed, "killed by SIGTRAP",
     "server ended or reset the connection, and no", "launch the application again",
     [](Scene& scene) {
       scene.apps.app("app", connected());
       scene.came = [](FakeServer& server) { server.close(); };
     }},
    {"serverResetUnseen", EndKind::kServerClosed, "killed by SIGTRAP",
     "server ended or reset the connection, and no", "launch the application again",
     [](Scene& scene) {
       scene.apps.app("app", connected());
       scene.came = [](FakeServer& server) { server.reset(); };
     }},
    {"serverBrokeOff", EndKind::kServerBrokeOff, "killed by SIGTRAP", "in the middle of a message",
     "four bytes",
     [](Scene& scene) {
       scene.apps.app("app", connected());
       scene.came = [](FakeServer& server) {
         server.sendBytes(std::string("\0\0\0\x20half", 8));
         server.close();
       };
     }},
    {"sendFailed", EndKind::kSendFailed, "killed by SIGTRAP",
     "did not reach the device server: send failed: Connection reset by peer",
     "reset the connection",
     [](Scene& scene) {
       scene.apps.app("app", connected(std::string(kWait) + kStart));
       scene.came = [&scene](FakeServer& server) {
         server.reset();
         scene.go();
       };
     }},
    {"sentToNobody", EndKind::kSentToNobody, "killed by SIGPIPE", "server that had gone",
     "why the server went",
     [](Scene& scene) {
       scene.apps.app("app", connected(std::string(kWait) + "for (;;) " + kStart));
       scene.came = [&scene](FakeServer& server) {
         server.close();
         scene.go();
       };
     }},
    {"tooManyFiles", EndKind::kTooManyFiles, "killed by SIGTRAP", "1023 files", "connect once",
     [](Scene& scene) {
       rlimit limit{};
       getrlimit(RLIMIT_NOFILE, &limit);
       limit.rlim_cur = 2048;
       EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
       scene.apps.app("app", "for (var i = 0; i < 1100; ++i) {" + connected("}"));
     }},
    {"emptyRecognition", EndKind::kEmptyRecognition, "killed by SIGTRAP", "without a recognition",
     "answers with a code",
     [](Scene& scene) {
       scene.apps.app(
           "app",
           connected(
               "morvik.start(function() { morvik.asr.string('<g/>', 'en', function() {}); }, {});"),
           {"asr"});
       scene.received = [](FakeServer& server, const zeph::ZephMsg& message) {
         if (!message.has_asr()) return server.answer(message, zeph::OK);
         zeph::ZephMsg answer = replyTo(message);
         answer.mutable_asrcallback();
         server.send(answer);
       };
     }},
    {"noMainScript", EndKind::kNoMainScript, "killed by SIGTRAP", "There is no ", "as main.js",
     [](Scene& scene) {
       scene.apps.app("app", "");
       std::filesystem::remove(scene.apps / "app/main.js");
     }},
    {"unreadableMainScript", EndKind::kUnreadableMainScript, "killed by SIGTRAP",
     "main.js cannot be read: Is a directory", "is a file",
     [](Scene& scene) {
       scene.apps.app("app", "");
       std::filesystem::remove(scene.apps / "app/main.js");
       std::filesystem::create_directory(scene.apps / "app/main.js");
     }},
    {"includeMissing", EndKind::kIncludeMissing, "killed by SIGTRAP", "app/tools.js",
     "cannot be caught",
     [](Scene& scene) { scene.apps.app("app", "try { include('tools.js'); } catch (e) {}"); }},
    {"noDescriptor", EndKind::kNoDescriptor, "status 0", "There is no ", "holds a descriptor.xml",
     [](Scene& scene) { scene.apps.file("app", "main.js", ""); }},
    {"noFolder", EndKind::kNoDescriptor, "status 0", "There is no ", "has the application's name",
     [](Scene& /*scene*/) {}},
    {"brokenDescriptor", EndKind::kBrokenDescriptor, "status 0",
     "descriptor.xml:2: parser error : Opening and ending tag mismatch", "at that place",
     [](Scene& scene) {
       scene.apps.file("app", "descriptor.xml", "<descriptor>\n</accesses></descriptor>");
     }},
    {"emptyDescriptor", EndKind::kBrokenDescriptor, "status 0", "Document is empty",
     "at that place", [](Scene& scene) { scene.apps.file("app", "descriptor.xml", ""); }},
    {"largeDescriptor", EndKind::kBrokenDescriptor, "status 0",
     "descriptor.xml: larger than 65536 bytes", "check tells more",
     [](Scene& scene) {
       scene.apps.file("app", "descriptor.xml", std::string(kLargestDescriptor + 1, ' '));
     }},
    {"emptyAccess", EndKind::kEmptyAccess, "killed by SIGTRAP", "access element 1 is empty",
     "<access>led</access>", [](Scene& scene) { scene.apps.app("app", "", {""}); }},
    {"pathTooLong", EndKind::kPathTooLong, "status 0", "too long", "shorter path",
     [](Scene& scene) {
       const std::string name(250, 'n');
       scene.apps.app(name, "");
       scene.plan.lines = {name};
     }},
    {"heapFull", EndKind::kHeapFull, "killed by SIGTRAP", "limit of 10 MiB", "Keep less",
     [](Scene& scene) { scene.apps.app("app", "var all = []; while (true) all.push({});"); }},
#ifndef __SANITIZE_ADDRESS__  // there the limit does not hold: the shadow is data too
    {"memoryOfTheEngine", EndKind::kMemoryLimit, "killed by SIGTRAP",
     "beside its heap was used up: script engine out of memory", "JSON.parse of deep nesting",
     [](Scene& scene) { scene.apps.app("app", "JSON.parse('['.repeat(1e8));"); }},
    {"memoryOfTheHost", EndKind::kMemoryLimit, "killed by SIGTRAP", "beside its heap was used up: ",
     "very long texts", [](Scene& scene) { scene.apps.app("app", "log('x'.repeat(1e8));"); }},
#endif
    {"eventsKept", EndKind::kEventsKept, "killed by SIGTRAP", " of rfid", "Object.assign",
     [](Scene& scene) {
       scene.apps.app(
           "app",
           connected("var kept = []; morvik.start(function() { morvik.rfid.addListener("
                     "function(tag) { kept.push(tag); return true; }); morvik.ping(); }, {});"),
           {"rfid"});
       scene.received = [](FakeServer& server, const zeph::ZephMsg& message) {
         if (!message.has_ping()) return server.answer(message, zeph::OK);
         for (int i = 0; i < 100; ++i) server.send(tag());
       };
     }},
    {"webMemory", EndKind::kWebMemory, "status 1", "no memory for a web response", "less at a time",
     [](Scene& scene) {
       scene.apps.app("app",
                      "log('ready');" + std::string(kWait) + "http.get('file://" +
                          (scene.apps / "huge") + "');",
                      {"http"});
       std::ofstream(scene.apps / "huge");
       std::filesystem::resize_file(scene.apps / "huge", std::uintmax_t{1} << 30);
       limitMemoryWhenReady(scene);
     }},
    {"killed", EndKind::kKilled, "killed by SIGKILL", "killed from outside", "dmesg",
     [](Scene& scene) { killWhenReady(scene, SIGKILL); }},
    {"toldToEnd", EndKind::kToldToEnd, "killed by SIGINT", "by SIGINT", "",
     [](Scene& scene) { killWhenReady(scene, SIGINT); }},
    {"crashed", EndKind::kCrashed, "killed by SIGSEGV", "crashed by SIGSEGV", "report it",
     [](Scene& scene) { killWhenReady(scene, SIGSEGV); }},
    {"restarted", EndKind::kRestarted, "killed by SIGTERM", "launched again", "",
     [](Scene& scene) {
       scene.apps.app("app", "log('ready');");
       scene.onReady = [&scene](pid_t) { scene.launch.end(EndedBy::kRestart); };
     }},
    {"quit", EndKind::kQuit, "killed by SIGTERM", "you asked", "",
     [](Scene& scene) {
       scene.apps.app("app", "log('ready');");
       scene.onReady = [&scene](pid_t) { scene.launch.end(EndedBy::kQuit); };
     }},
    {"hostMissing", EndKind::kHostMissing, "no process", "There is no program ", "script/build",
     [](Scene& scene) { scene.plan.host = scene.apps / "morvikvm"; }},
    {"hostNotExecutable", EndKind::kHostNotExecutable, "no process",
     "cannot be run: Permission denied", "may be run",
     [](Scene& scene) {
       scene.apps.file("tools", "morvikvm", "text");
       scene.plan.host = scene.apps / "tools/morvikvm";
     }},
    {"hostIsNoProgram", EndKind::kHostNotExecutable, "no process",
     "cannot be run: Exec format error", "may be run",
     [](Scene& scene) {
       scene.apps.file("tools", "morvikvm", "text");
       scene.plan.host = scene.apps / "tools/morvikvm";
       std::filesystem::permissions(scene.plan.host, std::filesystem::perms::owner_all);
     }},
    {"hostThatLaunchesNothing", EndKind::kNoProcess, "no process", "has no process for it",
     "launcher's lines", [](Scene& scene) { scene.plan.host = "/bin/true"; }},
    {"lineWithoutName", EndKind::kLineRefused, "no process", "begins with a blank", "launch line",
     [](Scene& scene) { scene.plan.lines = {" plain"}; }},
    {"emptyLine", EndKind::kLineRefused, "no process", "the line is empty", "launch line",
     [](Scene& scene) { scene.plan.lines = {""}; }},
    {"lineTooLong", EndKind::kLineRefused, "no process", "4094 characters long", "4093",
     [](Scene& scene) { scene.plan.lines = {"app plain " + std::string(4084, 'x')}; }},
};

class EndOnTheHost : public ::testing::TestWithParam<Row> {
 protected:
  EndOnTheHost() { EXPECT_TRUE(becomeReaper()); }
};

TEST_P(EndOnTheHost, isExplained) {
  const Row& row = GetParam();
  Scene scene;
  row.prepare(scene);
  if (row.kind == EndKind::kStopNotice) shortenTimers(scene.plan, kStopAutokillMs);
  if (std::string(row.status) == "status 255") shortenTimers(scene.plan, kAutokillMs);
  scene.run();
  ASSERT_THAT(scene.record.ends, SizeIs(1)) << scene.record.transcript();
  const End& end = scene.record.ends[0];
  EXPECT_EQ(nameOf(end.kind), std::string(nameOf(row.kind)));
  EXPECT_EQ(end.status, row.status);
  EXPECT_THAT(end.sentence, HasSubstr(row.sentence));
  EXPECT_THAT(end.cure, HasSubstr(row.cure));
  EXPECT_EQ(end.cure.empty(), std::string(row.cure).empty());
  EXPECT_THAT(children(), IsEmpty());
  if (HasFailure()) std::puts(scene.record.transcript().c_str());
}

INSTANTIATE_TEST_SUITE_P(Each, EndOnTheHost, ::testing::ValuesIn(kRows),
                         [](const auto& row) { return row.param.name; });

// What nothing brings about on a real host, as docs/ends.md tells, or what only a log is left of.
Evidence evidenceOf(std::initializer_list<const char*> records, std::optional<int> status = {}) {
  EvidenceCollector collector;
  for (const char* record : records) collector.hear(lineOfStandardError(record));
  collector.evidence().app = "app";
  collector.evidence().pid = 12;
  collector.evidence().waitStatus = status;
  return collector.evidence();
}

TEST(Explanation, isGivenForEndsThatAreHardToBringAbout) {
  const struct {
    Evidence evidence;
    EndKind kind;
    const char* sentence;
  } rows[] = {
      {evidenceOf({"DEBUG: loading descriptor"}), EndKind::kDescriptorUnread, "not well-formed"},
      {evidenceOf({": script engine out of memory: Zone"}), EndKind::kMemoryLimit,
       "beside its heap"},
      {evidenceOf({": script engine failed: v8::ToLocalChecked: Empty MaybeLocal"}),
       EndKind::kEngineFailed, "Empty MaybeLocal"},
      {evidenceOf({"Memoire insuffisante"}, W_EXITCODE(1, 0)), EndKind::kPlayMemory, "play"},
      {evidenceOf({"DEBUG: malloc fail"}, W_EXITCODE(1, 0)), EndKind::kWebMemory, "web response"},
      {evidenceOf({": something new"}), EndKind::kFatal, "something new"},
      {evidenceOf({"MESSAGE: JSLOG: x"}, W_EXITCODE(7, 0)), EndKind::kUnknown, "nothing tells why"},
      {evidenceOf({}, W_EXITCODE(0, SIGTRAP)), EndKind::kCrashed, "SIGTRAP"},
      {evidenceOf({}, W_EXITCODE(0, 40)), EndKind::kCrashed, "signal 40"},
  };
  for (const auto& row : rows) {
    const End end = explain(row.evidence);
    EXPECT_EQ(nameOf(end.kind), std::string(nameOf(row.kind)));
    EXPECT_THAT(end.sentence, HasSubstr(row.sentence));
  }
}

TEST(Explanation, takesNothingFromWhatAScriptLogs) {
  const End end =
      explain(evidenceOf({"MESSAGE: JSLOG: EXIT", "MESSAGE: JSLOG: /!\\ AUTOKILL, no"}));
  EXPECT_EQ(end.kind, EndKind::kUnknown);
}

TEST(Explanation, tellsHowTheServerLeftWhenThatIsKnown) {
  Evidence evidence = evidenceOf({": Failed to receive bytes length from server"});
  evidence.serverLoss = ServerLoss::kEnded;
  evidence.serverLeft = "it was told to drop the connection";
  EXPECT_EQ(explain(evidence).sentence,
            "The device server ended the connection: it was told to drop the connection, and no "
            "application outlives that.");
}

TEST(Explanation, leavesBracesInWhatAnApplicationSaidAlone) {
  const End end = explain(evidenceOf({"WARNING: main.js:1: {place} {", "WARNING: x", "WARNING: ^",
                                      "WARNING: /!\\ AUTOKILL, application"}));
  EXPECT_THAT(end.sentence, HasSubstr("main.js:1 threw {place} {."));
}

TEST(Explanation, doesNotTakeAnEndOfItsOwnForOurs) {
  Evidence evidence = evidenceOf({"DEBUG: EXIT"}, W_EXITCODE(0, 0));
  evidence.endedBy = EndedBy::kRestart;
  EXPECT_EQ(explain(evidence).kind, EndKind::kScriptExit);
}

TEST(Explanation, showsTheLastLinesWithoutNoiseAndDebug) {
  Evidence evidence = evidenceOf({"DEBUG: EXIT", "MESSAGE: JSLOG: one",
                                  "WARNING: NO CORRELATION FOUND", "WARNING: curl error code: 7"});
  EXPECT_THAT(explain(evidence).lastLines,
              ::testing::ElementsAre("log: one", "WARNING: curl error code: 7"));
}

TEST(Explanation, hasATestForEveryKind) {
  std::set<EndKind> tested{EndKind::kLauncherFull, EndKind::kDescriptorUnread,
                           EndKind::kMemoryLimit,  EndKind::kEngineFailed,
                           EndKind::kPlayMemory,   EndKind::kFatal,
                           EndKind::kUnknown};
  for (const Row& row : kRows) tested.insert(row.kind);
  EXPECT_EQ(tested.size(), endKinds().size());
}

TEST(Headline, tellsTheTimeInWords) {
  const std::pair<std::chrono::milliseconds, const char*> rows[] = {
      {std::chrono::milliseconds(3), "3 ms"},
      {std::chrono::milliseconds(10040), "10.0 s"},
      {std::chrono::milliseconds(302000), "5 min 2 s"},
      {std::chrono::hours(3) + std::chrono::minutes(20), "3 h 20 min"}};
  for (const auto& [after, words] : rows) {
    End end;
    end.app = "app";
    end.pid = 12;
    end.state = "not connected";
    end.status = "status 0";
    end.endedAt = end.launchedAt + after;
    EXPECT_EQ(headlineOf(end),
              std::string("app ended after ") + words + ", not connected, status 0");
  }
}

}  // namespace
}  // namespace morvik::test
