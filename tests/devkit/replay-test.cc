// Recordings, and what plays them.
#include "replay/replay.h"

#include <google/protobuf/text_format.h>
#include <sys/resource.h>

#include <csignal>
#include <fstream>

#include "app-client.h"
#include "bench.h"
#include "device/commands.h"
#include "loop.h"
#include "replay/recorder.h"
#include "support/file-content.h"
#include "support/matchers.h"
#include "support/program.h"
#include "support/temporary-folder.h"

namespace morvik::test {

using namespace devkit;
using std::chrono::milliseconds;
namespace {

constexpr char kHeader[] = R"({"recording":"morvik-dev","version":1,"time":0,"device":"virtual"})";

std::string textOfLines(const std::vector<std::string>& lines) {
  std::string text = kHeader;
  for (const std::string& line : lines) text += '\n' + line;
  return text + '\n';
}

// Application 1 takes interactive mode, lights the LED, and is told of a press.
std::vector<std::string> lamp() {
  return {
      R"({"at":0,"event":"came","application":1})",
      R"({"at":5,"event":"received","application":1,"message":{"id":"a1",)"
      R"("interactiveMode":{"action":"START","interactiveId":"old"}}})",
      R"({"at":6,"event":"sent","application":1,"message":{"id":"d1","correlationId":"a1",)"
      R"("response":{"code":"OK"}}})",
      R"({"at":10,"event":"received","application":1,"message":{"id":"a2","interactiveId":"old",)"
      R"("led":{"fade":{"color":"red","period":500}}}})",
      R"({"at":11,"event":"sent","application":1,"message":{"id":"d2","correlationId":"a2",)"
      R"("response":{"code":"OK"}}})",
      R"({"at":100,"event":"stimulus","name":"button","arguments":{"type":["SIMPLE"]}})",
      R"({"at":100,"event":"sent","application":1,"message":{"id":"d3",)"
      R"("buttonCallback":{"type":"SIMPLE"}}})",
      R"({"at":511,"event":"sent","application":1,"message":{"id":"d4","correlationId":"a2",)"
      R"("event":{"code":"TERMINATED"}}})",
      R"({"at":600,"event":"received","application":1,"message":{"id":"a3",)"
      R"("interactiveId":"old","ping":{}}})",
      R"({"at":601,"event":"sent","application":1,"message":{"id":"d5","correlationId":"a3",)"
      R"("response":{"code":"OK"}}})",
      R"({"at":700,"event":"left","application":1})"};
}

Recording recordingOf(const std::vector<std::string>& lines) {
  std::string trouble;
  auto recording = Recording::parse("kitchen", textOfLines(lines), trouble);
  EXPECT_TRUE(recording) << trouble;
  return recording ? std::move(*recording) : Recording{};
}

std::string troubleWith(const std::string& text) {
  std::string trouble;
  EXPECT_FALSE(Recording::parse("kitchen", text, trouble)) << text;
  return trouble;
}

TEST(Recording, isReadIntoConversations) {
  const Recording recording = recordingOf(lamp());
  ASSERT_EQ(recording.conversations.size(), 1U);
  const Conversation& one = recording.conversations.front();
  EXPECT_EQ(one.line, 2);
  ASSERT_EQ(one.passed.size(), 8U);
  EXPECT_EQ(one.passed[2].message.led().fade().color(), "red");
  EXPECT_EQ(one.passed[2].line, 5);
  EXPECT_EQ(one.passed[2].at, milliseconds(10));
}

TEST(Recording, tellsTheLineOfDamage) {
  const std::pair<std::string, const char*> cases[] = {
      {"", "kitchen:1: the file is empty"},
      {"hello\n", "kitchen:1: the line is no JSON object"},
      {"{}\n", "kitchen:1: the line does not begin a recording"},
      {"{\"recording\":\"morvik-dev\"}\n", "kitchen:1: the line tells no version"},
      {"{\"recording\":\"morvik-dev\",\"version\":2}\n",
       "kitchen:1: the line is of version 2, and this program knows 1"},
      {textOfLines({"{"}), "kitchen:2: the line is no JSON object"},
      {textOfLines({R"({"at":0,"event":"came","a":)" + std::string(100000, '[') +
                    std::string(100000, ']') + '}'}),
       "kitchen:2: the line is no JSON object"},
      {textOfLines({R"({"event":"came"})"}), "kitchen:2: the line has no time"},
      {textOfLines({R"({"at":0})"}), "kitchen:2: the line names no \"event\""},
      {textOfLines({R"({"at":0,"event":"came"})"}), "kitchen:2: the line names no application"},
      {textOfLines({R"({"at":0,"event":"left","application":1})"}),
       "kitchen:2: the line names an application that is not there"},
      {textOfLines({lamp()[0], lamp()[0]}), "kitchen:3: the line has app 1 come again"},
      {textOfLines({lamp()[0], lamp()[1], lamp()[0]}),
       "kitchen:4: the line happened before the line above"},
      {textOfLines({lamp()[0], R"({"at":1,"event":"sent","application":1})"}),
       "kitchen:3: the line has no message"},
      {textOfLines({lamp()[0],
                    R"({"at":1,"event":"sent","application":1,"message":{"id":"a","wings":1}})"}),
       "kitchen:3: the line holds no message: "},
      {textOfLines({lamp()[0], R"({"at":1,"event":"sent","application":1,"message":{}})"}),
       "kitchen:3: the line holds a message without id"},
  };
  for (const auto& [text, words] : cases) EXPECT_THAT(troubleWith(text), StartsWith(words));
}

TEST(Recording, leavesALastLineOutThatIsCutOff) {
  std::string text = textOfLines(lamp());
  text.resize(text.size() - 10);
  std::string trouble;
  const auto recording = Recording::parse("kitchen", text, trouble);
  ASSERT_TRUE(recording) << trouble;
  EXPECT_EQ(recording->warning, "kitchen:12: the line is cut off and left out");
  EXPECT_EQ(recording->conversations.front().passed.size(), 8U);
}

TEST(Recording, passesOverWhatItDoesNotKnow) {
  EXPECT_EQ(recordingOf({R"({"at":0,"event":"eclipse","of":"the moon"})"}).conversations.size(),
            0U);
}

// A replay without sockets and without waiting.
class ReplayTest : public ::testing::Test {
 protected:
  explicit ReplayTest(const std::vector<std::string>& lines = lamp())
      : replay_(recordingOf(lines), outlet_, scheduler_) {
    replay_.events().add(events_);
  }

  // A request in protobuf's text form.
  void ask(const std::string& payload, const std::string& id, AppNumber from = 1) {
    zeph::ZephMsg message;
    EXPECT_TRUE(
        google::protobuf::TextFormat::ParseFromString("id: \"" + id + "\" " + payload, &message));
    replay_.receive(from, message);
  }
  void start(AppNumber from = 1) {
    ask("interactiveMode { action: START interactiveId: \"new\" }", "b1", from);
  }
  void fade(const std::string& color) {
    ask("interactiveId: \"new\" led { fade { color: \"" + color + "\" period: 500 } }", "b2");
  }
  void ping() { ask("interactiveId: \"new\" ping {}", "b3"); }

  // What was sent since the last call, without the messages' own ids.
  Lines sent() {
    Lines lines;
    for (Outgoing& one : outlet_.sent) {
      EXPECT_NE(one.message.id().size(), 2U) << "an id of the recording";
      one.message.clear_id();
      lines.push_back(std::to_string(one.to) + ": " + one.message.ShortDebugString());
    }
    outlet_.sent.clear();
    return lines;
  }

  Lines troubles() const {
    Lines lines;
    for (const Trouble& one : events_.of<Trouble>()) lines.push_back(one.text);
    return lines;
  }

  KeptOutlet outlet_;
  HeldScheduler scheduler_;
  KeptEvents events_;
  Replay replay_;
};

TEST_F(ReplayTest, answersAsRecordedWithTheIdsOfNow) {
  replay_.applicationCame(1);
  start();
  scheduler_.pass(milliseconds(1));
  EXPECT_THAT(sent(), ElementsAre("1: correlationId: \"b1\" response { code: OK }"));
  fade("red");
  scheduler_.pass(milliseconds(89));
  EXPECT_THAT(sent(), ElementsAre("1: correlationId: \"b2\" response { code: OK }"));
  scheduler_.pass(milliseconds(1));
  EXPECT_THAT(sent(), ElementsAre("1: buttonCallback { type: SIMPLE }"));
  scheduler_.pass(milliseconds(411));
  EXPECT_THAT(sent(), ElementsAre("1: correlationId: \"b2\" event { code: TERMINATED }"));
  ping();
  scheduler_.pass(milliseconds(1));
  EXPECT_EQ(sent().size(), 1U);
  replay_.applicationLeft(1);
  EXPECT_THAT(troubles(), IsEmpty());
  EXPECT_EQ(replay_.departures(), 0U);
  EXPECT_THAT(events_.notes(), Contains("app 1 has asked all that was asked in the recording"));
}

TEST_F(ReplayTest, keepsTheTimeToTheRequestBefore) {
  replay_.applicationCame(1);
  scheduler_.pass(milliseconds(5000));
  start();
  scheduler_.pass(milliseconds(5000));
  sent();
  fade("red");
  scheduler_.pass(milliseconds(89));
  EXPECT_EQ(sent().size(), 1U);
  scheduler_.pass(milliseconds(1));
  EXPECT_EQ(sent().size(), 1U);
}

TEST_F(ReplayTest, tellsWhereAnApplicationAsksAnotherThing) {
  replay_.applicationCame(1);
  start();
  fade("blue");
  EXPECT_THAT(troubles(),
              ElementsAre("leaves the recording: asks \"led fade blue 500 ms\", and line 5 has "
                          "\"led fade red 500 ms\". led.fade.color: \"red\" in the recording, "
                          "\"blue\" now"));
  EXPECT_THAT(sent(), Contains(HasSubstr("correlationId: \"b2\" response { code: ERROR")));
  fade("red");
  EXPECT_EQ(replay_.departures(), 1U) << "it is back";
}

TEST_F(ReplayTest, tellsOfAnotherOrderAndGoesOn) {
  replay_.applicationCame(1);
  start();
  scheduler_.pass(milliseconds(1));
  sent();
  ping();
  scheduler_.pass(milliseconds(1));
  EXPECT_THAT(troubles(), ElementsAre("leaves the recording: asks \"ping\" of line 10 before "
                                      "\"led fade red 500 ms\" of line 5"));
  EXPECT_THAT(sent(), ElementsAre("1: buttonCallback { type: SIMPLE }",
                                  "1: correlationId: \"b3\" response { code: OK }"))
      << "what was to come before is not lost";
}

TEST_F(ReplayTest, tellsWhatWasNeverAsked) {
  replay_.applicationCame(1);
  start();
  replay_.applicationLeft(1);
  EXPECT_THAT(troubles(), ElementsAre("leaves the recording: goes before it asks "
                                      "\"led fade red 500 ms\" of line 5 and 1 more"));
}

TEST_F(ReplayTest, tellsOfMoreThanThereIs) {
  replay_.applicationCame(1);
  start();
  fade("red");
  ping();
  ping();
  EXPECT_THAT(troubles(), ElementsAre("leaves the recording: asks \"ping\", and asked nothing more "
                                      "in the recording"));
  replay_.applicationCame(2);
  EXPECT_THAT(troubles().back(), HasSubstr("no further application: 1 came in it"));
  start(2);
  EXPECT_THAT(sent().back(), StartsWith("2: correlationId: \"b1\" response { code: ERROR"));
}

std::vector<std::string> dropped() {
  return {R"({"at":0,"event":"came","application":1})",
          R"({"at":0,"event":"came","application":2})",
          R"({"at":1,"event":"received","application":1,"message":{"id":"a","ping":{}}})",
          R"({"at":2,"event":"received","application":2,"message":{"id":"b","social":)"
          R"x({"twitterToken":"(secret)"}}})x",
          R"({"at":3,"event":"stimulus","name":"drop","application":2})",
          R"({"at":3,"event":"left","application":2})"};
}

class ReplayOfTwo : public ReplayTest {
 protected:
  ReplayOfTwo() : ReplayTest(dropped()) {}
};

TEST_F(ReplayOfTwo, knowsApplicationsByWhatTheyAskFirst) {
  replay_.applicationCame(7);
  replay_.applicationCame(8);
  ask("social { twitterToken: \"HUSH\" }", "s", 7);
  ask("ping {}", "p", 8);
  EXPECT_THAT(troubles(), IsEmpty()) << "and secrets are not compared";
  EXPECT_THAT(events_.notes(), Contains("app 7 plays app 2 of the recording, from line 3"));
  scheduler_.pass(milliseconds(1));
  EXPECT_THAT(outlet_.dropped, ElementsAre(7));
}

// What a device does comes back from its recording.
TEST(Recorder, keepsWhatPassesWithoutCredentials) {
  const test::TemporaryFolder folder;
  const std::string file = folder / "kitchen.jsonl";
  Bench bench;
  std::string trouble;
  auto recorder =
      Recorder::begin(file, {.began = bench.device.now()}, bench.device.events(), trouble);
  ASSERT_TRUE(recorder) << trouble;
  bench.device.applicationCame(3);
  bench.command("interactiveMode { action: START interactiveId: \"mine\" }", 3);
  bench.pass(milliseconds(20));
  bench.stimulus("credentials facebookToken=HUSH");
  bench.command("socialQuery {}", 3);
  recorder.reset();
  const std::string text = contentOf(file);
  EXPECT_THAT(text, Not(HasSubstr("HUSH")));
  EXPECT_THAT(text, HasSubstr(R"({"at":20,"event":"stimulus","name":"credentials")"));
  EXPECT_EQ(std::filesystem::status(file).permissions(),
            std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
  const auto recording = Recording::read(file, trouble);
  ASSERT_TRUE(recording) << trouble;
  ASSERT_EQ(recording->conversations.size(), 1U);
  EXPECT_EQ(recording->conversations.front().passed.size(), 4U);
}

TEST(Recorder, replacesNothing) {
  const test::TemporaryFolder folder;
  std::ofstream(folder / "kitchen.jsonl") << "precious";
  Bench bench;
  std::string trouble;
  EXPECT_FALSE(Recorder::begin(folder / "kitchen.jsonl", {}, bench.device.events(), trouble));
  EXPECT_THAT(trouble, HasSubstr("is there already"));
  EXPECT_EQ(contentOf(folder / "kitchen.jsonl"), "precious");
}

TEST(Recorder, tellsWhenNoFileCanBeMade) {
  const test::TemporaryFolder folder;
  Bench bench;
  std::string trouble;
  EXPECT_FALSE(Recorder::begin(folder / "no/such", {}, bench.device.events(), trouble));
  EXPECT_THAT(trouble, HasSubstr("No such file"));
}

// No file of this process grows beyond that size while it lives.
class FullDisk {
 public:
  explicit FullDisk(rlim_t size) {
    getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit full{size, before_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &full);
  }
  ~FullDisk() {
    setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, handler_);
  }
  FullDisk(const FullDisk&) = delete;
  FullDisk& operator=(const FullDisk&) = delete;

 private:
  rlimit before_{};
  void (*handler_)(int) = std::signal(SIGXFSZ, SIG_IGN);
};

TEST(Recorder, tellsOnceThatTheDiskIsFull) {
  const test::TemporaryFolder folder;
  Bench bench;
  std::string trouble;
  const auto recorder = Recorder::begin(folder / "kitchen", {.began = bench.device.now()},
                                        bench.device.events(), trouble);
  ASSERT_TRUE(recorder) << trouble;
  const FullDisk full(200);
  bench.device.applicationCame(3);
  bench.device.applicationCame(4);
  EXPECT_THAT(bench.events.notes(), ElementsAre("the recording ends here: File too large"));
}

class ReplayVerb : public ::testing::Test {
 protected:
  std::vector<std::string> device(const std::string& option) const {
    return {MORVIK_DEV, "device", "--port=0", "--state=" + folder_.path().string(), option};
  }
  std::string file() const { return folder_ / "kitchen.jsonl"; }

  static std::uint16_t portOf(const Program& device) {
    const std::string start = "listening on 127.0.0.1:";
    return static_cast<std::uint16_t>(std::stoi(device.waitFor("\n").substr(start.size())));
  }

  Loop loop_;
  test::TemporaryFolder folder_;
};

TEST_F(ReplayVerb, playsWhatWasRecorded) {
  {
    Program recorded(device("--record=" + file()));
    AppClient client(loop_, portOf(recorded));
    EXPECT_EQ(client.ask(startRequest("mine")).response().code(), zeph::OK);
    EXPECT_EQ(client.ask(lightRequest("mine", "red")).response().code(), zeph::OK);
    recorded.say("button DOUBLE\n");
    EXPECT_EQ(client.receive().buttoncallback().type(), zeph::ButtonCallback::DOUBLE);
    client.disconnect();
    recorded.waitFor("gone");
    recorded.signal(SIGTERM);
    EXPECT_EQ(recorded.waitForEnd(), 0);
  }
  Program played(device("--replay=" + file()));
  AppClient client(loop_, portOf(played));
  EXPECT_EQ(client.ask(startRequest("another")).response().code(), zeph::OK);
  EXPECT_EQ(client.ask(lightRequest("another", "red")).response().code(), zeph::OK);
  EXPECT_EQ(client.receive().buttoncallback().type(), zeph::ButtonCallback::DOUBLE);
  played.say("button SIMPLE\n");
  played.waitFor("a recording is replayed");
  EXPECT_EQ(client.ask(lightRequest("another", "red")).response().code(), zeph::ERROR);
  played.waitFor("leaves the recording: asks");
  played.signal(SIGTERM);
  EXPECT_EQ(played.waitForEnd(), 1);
}

TEST_F(ReplayVerb, tellsTheLineOfADamagedRecording) {
  std::ofstream(file()) << textOfLines({"{"});
  const ProgramResult outcome = run(device("--replay=" + file()));
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.output, "morvik-dev device: " + file() + ":2: the line is no JSON object\n");
}

}  // namespace
}  // namespace morvik::test
