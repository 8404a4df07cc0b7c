// morvik.connect and the frames on the connection: what is sent, how what comes is put together,
// and how an application ends when its connection fails.
#include <signal.h>
#include <syslog.h>

#include <string>
#include <vector>

#include "support/matchers.h"
#include "support/system/system-test.h"

namespace morvik::test {
namespace {

constexpr char kLengthFailed[] = "Failed to receive bytes length from server";
constexpr char kPayloadFailed[] = "Failed to receive bytes from server";

class ConnectTest : public SystemTest {
 protected:
  [[nodiscard]] std::string port(int offset = 0) const {
    return std::to_string(server.port() + offset);
  }
};

TEST_F(ConnectTest, refusesWrongArguments) {
  std::vector<std::string> calls;
  for (const std::string arguments :
       {"", "HOST", "1, 2", "HOST, 1.5", "HOST, '80'", "HOST, NaN", "HOST, undefined",
        "HOST, 4294967296", "HOST, 2147483648", "new String(HOST), PORT", "undefined, PORT",
        "HOST, PORT, {}", "HOST, PORT, []", "HOST, PORT, log", "HOST, PORT, 1, 2",
        "HOST, PORT, undefined, undefined"})
    calls.push_back("morvik.connect(" + arguments + ")");
  expectThrown(calls, "string: Wrong arguments");
  EXPECT_TRUE(server.quiet());
}

// A third argument that is an object is refused, and any other one is taken: odd on purpose.
TEST_F(ConnectTest, takesAThirdArgumentThatIsNoObject) {
  for (const std::string third : {"", ", 1", ", 'x'", ", true", ", null", ", undefined"}) {
    App app = run("log(typeof morvik.connect(HOST, PORT" + third +
                  ")); "
                  "morvik.start(function() { exit(); });");
    DeviceLink link = server.accept();
    EXPECT_EQ(app.logged(), "undefined") << third;
    link.grant(link.receive());
    waitUntilReaped(app, 0);
  }
}

TEST_F(ConnectTest, logsWhereItConnects) {
  const App app = run("morvik.connect('localhost', PORT);");
  server.accept();
  EXPECT_EQ(app.waitForLog("connecting to: localhost:" + port()).priority, LOG_DEBUG);
}

TEST_F(ConnectTest, usesTheLowSixteenBitsOfThePort) {
  for (const int offset : {65536, -65536, 7 * 65536}) {
    const App app = run("morvik.connect(HOST, PORT + " + std::to_string(offset) + ");");
    server.accept();
    app.waitForLog("connecting to: 127.0.0.1:" + port(offset));
    kill(app.pid(), SIGKILL);
    waitUntilReaped(app, 0);
  }
}

TEST_F(ConnectTest, throwsWhenTheNameIsUnknown) {
  App app = run("log(caught(function() { morvik.connect('256.1.1.1', 80); }));");
  EXPECT_EQ(app.logged(), "string: connection refused");
  EXPECT_EQ(app.waitForLog("connecting to: 256.1.1.1:80").priority, LOG_DEBUG);
  EXPECT_EQ(app.waitForLog("nslookup failed on '256.1.1.1'").priority, LOG_DEBUG);
  EXPECT_EQ(app.waitForLog("connection refused").priority, LOG_WARNING);
}

TEST_F(ConnectTest, throwsWhenNobodyListens) {
  for (const int offset : {0, 65536}) {
    const std::string closed = std::to_string(unusedPort() + offset);
    App app = run("log(caught(function() { morvik.connect(HOST, " + closed + "); }));");
    EXPECT_EQ(app.logged(), "string: connection refused");
    const std::string failed = "connect failed on '127.0.0.1:" + closed + "' : Connection refused";
    EXPECT_EQ(app.waitForLog(failed).priority, LOG_WARNING);
    EXPECT_THAT(app.warnings(), ElementsAre(kNoParams, failed, "connection refused"));
  }
}

TEST_F(ConnectTest, mayBeTriedAgainAfterAFailure) {
  App app =
      run("caught(function() { morvik.connect('256.1.1.1', 80); });"
          "log(caught(function() { morvik.start(log, {}); }));"
          "morvik.connect(HOST, PORT); morvik.start(function() { log('granted'); }, {});");
  DeviceLink link = server.accept();
  EXPECT_EQ(app.logged(), "string: Connect first");
  link.grant(link.receive());
  EXPECT_EQ(app.logged(), "granted");
}

TEST_F(ConnectTest, aSecondConnectionTakesThePlaceOfTheFirstWhichStaysOpen) {
  App app =
      run("morvik.connect(HOST, PORT); morvik.connect(HOST, PORT);"
          "morvik.start(function() { log('granted'); ping(); }, {});");
  DeviceLink first = server.accept();
  DeviceLink second = server.accept();
  const zeph::ZephMsg start = second.receive();
  first.grant(start);
  second.grant(start);
  EXPECT_EQ(app.logged(), "granted");
  EXPECT_TRUE(second.receive().has_ping());
  EXPECT_TRUE(first.quiet()) << "neither a message nor an end";
  first.close();
  second.send(stopNotice());
  app.waitForLog("interactive mode stopped, autokill in 300000ms");
}

// A server that takes nobody in: the system goes on trying, and the whole application waits.
TEST_F(ConnectTest, blocksTheApplicationAndItsStartTimerUntilTheSystemHasConnected) {
  startHost({.shortTimersFrom = 10000});
  FullDevice busy;
  apps.app("app", {}, "morvik.connect('127.0.0.1', " + std::to_string(busy.port()) + ");");
  const App app = launch("app");
  app.waitForLogThatStarts("connecting to: ");
  const App other = run("");
  other.waitUntilEnded();  // by the timer that the first one has not reached
  EXPECT_TRUE(app.alive());
  busy.makeRoom();
  app.waitUntilEnded();
  EXPECT_EQ(app.texts().back(), kAutokill);
}

TEST_F(ConnectTest, nothingConnectsByItself) {
  App app = run("setTimeout(20, function() { log('end'); });");
  EXPECT_EQ(app.logged(), "end");
  EXPECT_TRUE(server.quiet());
}

// --- frames

class FrameTest : public DeviceTest {
 protected:
  // An interactive application that logs the codes which answer its one request.
  void ask() {
    interactive("morvik.led.light('red', log);");
    request = device.receive();
  }
  zeph::ZephMsg request;
};

TEST_F(FrameTest, areALengthInFourBytesAndAMessage) {
  connect("morvik.start(log, {});");
  const std::string header = device.receiveBytes(4);
  EXPECT_EQ(header.substr(0, 3), std::string(3, '\0'));
  const std::string payload = device.receiveBytes(static_cast<unsigned char>(header[3]));
  zeph::ZephMsg message;
  ASSERT_TRUE(message.ParseFromString(payload));
  EXPECT_EQ(header + payload, frameOf(payload));
  EXPECT_THAT(message.id(), testing::MatchesRegex(kUuid));
  device.grant(message);
  app.logged();
  EXPECT_TRUE(device.quiet()) << "more than one frame for one message";
}

TEST_F(FrameTest, areLoggedOnTheirWay) {
  ask();
  const zeph::ZephMsg reply = responseTo(request, "OK");
  device.send(reply);
  EXPECT_EQ(app.logged(), "OK");
  EXPECT_EQ(app.waitForLog("Sending MSG\n" + request.DebugString()).priority, LOG_DEBUG);
  EXPECT_EQ(app.waitForLog("message received").priority, LOG_DEBUG);
  EXPECT_EQ(app.waitForLog("Received MSG\n" + reply.DebugString()).priority, LOG_DEBUG);
}

TEST_F(FrameTest, withCredentialsAreNotLogged) {
  ask();
  zeph::ZephMsg reply = responseTo(request, "OK");
  ASSERT_NE(reply.mutable_social(), nullptr);
  reply.mutable_response()->set_description("very secret");
  device.send(reply);
  EXPECT_EQ(app.logged(), "OK");
  for (const std::string& text : app.texts()) EXPECT_THAT(text, Not(HasSubstr("very secret")));
}

TEST_F(FrameTest, mayComeByteByByteBehindTheirLength) {
  ask();
  const std::string frame = frameOf(responseTo(request, "OK"));
  device.sendBytes(frame.substr(0, 4));
  device.awaitRead();
  device.sendByteByByte(frame.substr(4));
  EXPECT_EQ(app.logged(), "OK");
}

TEST_F(FrameTest, mayComeTwoAtOnce) {
  ask();
  device.sendBytes(frameOf(responseTo(request, "OK")) + frameOf(eventFor(request, "TERMINATED")) +
                   frameOf(eventFor(request, "CANCELLED")));
  EXPECT_THAT(app.logged(3), ElementsAre("OK", "TERMINATED", "CANCELLED"));
}

TEST_F(FrameTest, mayBeLarge) {
  ask();
  zeph::ZephMsg reply = responseTo(request, "OK");
  reply.set_recipient(std::string(100000, 'r'));
  device.send(reply);
  EXPECT_EQ(app.logged(), "OK");
}

TEST_F(FrameTest, ofLengthZeroAreEmptyMessages) {
  ask();
  device.sendBytes(frameHeader(0));
  device.reply(request, "OK");
  EXPECT_EQ(app.logged(), "OK");
  EXPECT_THAT(app.texts(), Contains("Received MSG\n"));
  EXPECT_THAT(app.texts(), Not(Contains("NO CORRELATION FOUND")));
}

// One frame is read on each turn of the loop, and timers that are due come first.
TEST_F(FrameTest, letTimersGoBetweenThem) {
  interactive(
      "morvik.led.light('red', function(code) {"
      " log(code); setTimeout(0, function() { log('timer'); }); });");
  request = device.receive();
  device.sendBytes(frameOf(responseTo(request, "OK")) + frameOf(eventFor(request, "TERMINATED")));
  for (const std::string text : {"OK", "timer", "TERMINATED", "timer"})
    EXPECT_EQ(app.logged(), text);
}

TEST_F(FrameTest, thatWaitComeBehindTimersThatAreDue) {
  interactive(
      "ping(log); setTimeout(0, function() { log('timer'); });"
      "var end = Date.now() + 200; while (Date.now() < end);");
  receiveAndReply("OK");
  EXPECT_THAT(app.logged(2), ElementsAre("timer", "OK"));
}

// The length word is read right only when it comes whole: its bytes are counted one by one, and
// written four apart.
TEST_F(FrameTest, whoseLengthComesInPiecesAreNotPutTogether) {
  for (const std::size_t first : {1U, 2U, 3U}) {
    SCOPED_TRACE(first);
    startHost();
    ask();
    const std::string frame = frameOf(responseTo(request, "OK"));
    device.sendBytes(frame.substr(0, first));
    device.awaitRead();
    device.sendBytes(frame.substr(first));
    device.finishSending();
    app.waitUntilEnded();
    EXPECT_THAT(app.texts(), Not(Contains("JSLOG: OK")));
    const std::string last = app.texts().back();
    EXPECT_TRUE(last == kPayloadFailed || last == kLengthFailed) << last;
  }
}

TEST_F(FrameTest, withUnknownFieldsAreRead) {
  ask();
  zeph::ZephMsg reply = responseTo(request, "OK");
  std::string payload = reply.SerializeAsString();
  payload += std::string("\xf8\xff\xff\xff\x0f\x07", 6);  // a number in the greatest field
  device.sendBytes(frameOf(payload));
  EXPECT_EQ(app.logged(), "OK");
}

TEST_F(FrameTest, thatAreCutShortCountForWhatWasReadWhole) {
  ask();
  std::string payload = responseTo(request, "OK").SerializeAsString();
  payload += "\x1a\x7fno hundred bytes";
  device.sendBytes(frameOf(payload));
  device.event(request, "TERMINATED");
  EXPECT_THAT(app.logged(2), ElementsAre("OK", "TERMINATED"));
}

TEST_F(FrameTest, withoutAnIdAreDispatchedAllTheSame) {
  ask();
  zeph::ZephMsg reply = responseTo(request, "OK");
  reply.clear_id();
  device.send(reply);
  EXPECT_EQ(app.logged(), "OK");
}

TEST_F(FrameTest, ofGarbageDoNoHarm) {
  ask();
  device.sendBytes(frameHeader(64) + std::string(64, '\xff'));
  device.reply(request, "OK");
  EXPECT_EQ(app.logged(), "OK");
}

TEST_F(FrameTest, areSentWholeWhenTheServerReadsSlowly) {
  interactive("morvik.led.light('c'.repeat(3000000)); log('sent');");
  EXPECT_EQ(device.receive().led().light().color(), std::string(3000000, 'c'));
  EXPECT_EQ(app.logged(), "sent");
}

TEST_F(FrameTest, thatAreSentDoNotWaitForTheServer) {
  interactive("for (var i = 0; i < 100; ++i) morvik.led.light(i); log('sent');");
  EXPECT_EQ(app.logged(), "sent");
  for (int i = 0; i < 100; ++i)
    EXPECT_EQ(device.receive().led().light().color(), std::to_string(i));
}

// --- ends

class ConnectionEndTest : public DeviceTest {
 protected:
  template <class Cause>
  void expectFatal(const std::string& text, Cause cause) {
    EXPECT_EQ(endOf(app, cause), killedBy(SIGTRAP));
    const LogRecord last = app.records().back();
    EXPECT_EQ(last.text, text);
    EXPECT_EQ(last.priority, LOG_DEBUG);
  }
};

TEST_F(ConnectionEndTest, betweenMessagesIsFatal) {
  connect("");
  expectFatal(kLengthFailed, [&] { device.close(); });
}

TEST_F(ConnectionEndTest, byAResetIsFatal) {
  connect("");
  expectFatal(kLengthFailed, [&] { device.reset(); });
}

TEST_F(ConnectionEndTest, insideALengthIsFatal) {
  connect("");
  expectFatal(kLengthFailed, [&] {
    device.sendBytes(frameHeader(100).substr(0, 2));
    device.close();
  });
}

TEST_F(ConnectionEndTest, insideAPayloadIsFatal) {
  interactive("log('granted');");
  EXPECT_EQ(app.logged(), "granted");
  expectFatal(kPayloadFailed, [&] {
    device.sendBytes(frameHeader(100) + "not a hundred bytes");
    device.close();
  });
}

TEST_F(ConnectionEndTest, behindALengthIsFatal) {
  connect("");
  expectFatal(kPayloadFailed, [&] {
    device.sendBytes(frameHeader(1));
    device.close();
  });
}

TEST_F(ConnectionEndTest, behindTheGreatestLengthIsFatal) {
  connect("");
  expectFatal(kPayloadFailed, [&] {
    device.sendBytes(frameHeader(0xffffffff));
    device.close();
  });
}

TEST_F(ConnectionEndTest, isNotToldToTheScript) {
  interactive(
      "ping(function(code) { log('ping ' + code); });"
      "setTimeout(60000, function() { log('timer'); }); log('granted');");
  EXPECT_EQ(app.logged(), "granted");
  expectFatal(kLengthFailed, [&] {
    device.receive();
    device.close();
  });
  for (const std::string& text : app.texts()) EXPECT_THAT(text, Not(StartsWith("JSLOG: ping")));
}

// The peer has finished in order, so the kernel answers a later send with SIGPIPE.
TEST_F(ConnectionEndTest, duringSendsToAClosedSocketIsASignalWithoutALog) {
  interactive("log('granted'); for (;;) morvik.led.light('red');");
  EXPECT_EQ(app.logged(), "granted");
  const Exit exit = endOf(app, [&] {
    device.finishSending();
    device.close();
  });
  EXPECT_EQ(exit, killedBy(SIGPIPE));
  EXPECT_THAT(app.texts().back(), StartsWith("Sending MSG"));
}

TEST_F(ConnectionEndTest, duringSendsToABrokenConnectionIsFatal) {
  interactive("log('granted'); for (;;) morvik.led.light('red');");
  EXPECT_EQ(app.logged(), "granted");
  expectFatal("send failed: Connection reset by peer", [&] { device.reset(); });
}

// An application inherits the launcher's handler; the wait for a message is not taken up again.
// A signal between two waits does no harm, so it may take more than one.
TEST_F(ConnectionEndTest, byASignalDuringTheWaitIsFatal) {
  connect("log('connected');");
  EXPECT_EQ(app.logged(), "connected");
  expectFatal("Failed to select socket", [&] {
    HostProcess::waitUntilLooping(app.pid());
    for (int count = 1; app.alive(); ++count) {
      kill(app.pid(), SIGCHLD);
      app.waitForLogTimes("end process: sigchild", count);
      HostProcess::waitUntilLooping(app.pid());
    }
  });
  app.waitForLog("end process: -1 nbChild 0");
}

// A read that the handler interrupts is taken up again by the system, unlike a wait.
TEST_F(ConnectionEndTest, isNotCausedByASignalInsideAFrame) {
  interactive("ping(log); log('granted');");
  EXPECT_EQ(app.logged(), "granted");
  const std::string frame = frameOf(responseTo(device.receive(), "OK"));
  device.sendBytes(frame.substr(0, 20));
  app.waitForLogTimes("message received", 2);
  device.awaitRead();
  waitUntil("the application sleeps",
            [&] { return HostProcess::statusOf(app.pid(), "State").starts_with("S"); });
  kill(app.pid(), SIGCHLD);
  app.waitForLog("end process: -1 nbChild 0");
  device.sendBytes(frame.substr(20));
  EXPECT_EQ(app.logged(), "OK");
}

TEST_F(ConnectionEndTest, byADescriptorBeyondTheWaitsReachIsFatal) {
  startHost({.lowDescriptorsTaken = true});
  apps.gate("far");
  apps.file("far", "main.js", prelude() + "morvik.connect(HOST, PORT);");
  app = launch("far");
  expectFatal("Failed to select socket", [&] { apps.openGate("far", descriptorXml({})); });
}

}  // namespace
}  // namespace morvik::test
