// Every application in apps/, run by the real morvikvm on the real virtual device: a short
// conversation for each, between the script's log, what the device hears, and what happens to it.

#include <filesystem>
#include <iostream>
#include <regex>
#include <set>
#include <stdexcept>

#include "end-to-end/web-samples.h"
#include "support/system/system-test.h"
#include "support/system/virtual-device.h"

namespace morvik::test {
namespace {

// A sample at work.
class Sample {
 public:
  Sample(HostProcess& host, App app) : host_(&host), app_(app) {}

  // Waits for a line of the script, after the one that was waited for last, which is all of this
  // pattern. Others may stand between them.
  void says(const std::string& pattern) {
    const std::regex whole("JSLOG: " + pattern);
    int index = 0;
    host_->waitForLog("JSLOG: " + pattern, [&](const LogRecord& record) {
      const bool found =
          ++index > heard_ && record.pid == app_.pid() && std::regex_match(record.text, whole);
      if (found) heard_ = index;
      return found;
    });
  }

  // The same for one line after the other.
  void says(std::initializer_list<const char*> patterns) {
    for (const char* pattern : patterns) says(std::string(pattern));
  }

  // The same for lines whose order nobody promises.
  void saysInAnyOrder(const std::vector<std::string>& lines) const {
    for (const std::string& line : lines) app_.waitForLog("JSLOG: " + line);
  }

  // Waits until the device has agreed so many times to listen for words: what is said before,
  // nobody hears.
  void listens(int times) const { app_.waitForLogTimes("ASR: AsrCallback: response : OK", times); }

  void ends() const { app_.waitUntilEnded(); }

 private:
  HostProcess* host_;
  App app_;
  int heard_ = 0;  // records up to and with the last one that was waited for
};

// What a conversation has at hand: a device, and applications that are launched on it.
class Stage {
 public:
  virtual ~Stage() = default;

  // Launches with a line of three words; `instance` is the third one.
  virtual Sample launch(const std::string& app, const std::string& type,
                        const std::string& instance) = 0;
  Sample launch(const std::string& app) { return launch(app, "demo", device.address()); }

  VirtualDevice device;
};

// What happens at the device, and the lines that the sample then says.
struct Turn {
  std::string happens;
  std::vector<std::string> says;
};

void take(Stage& stage, Sample& sample, const std::vector<Turn>& turns) {
  for (const Turn& turn : turns) {
    stage.device.happens(turn.happens);
    for (const std::string& line : turn.says) sample.says(line);
  }
}

void hello(Stage& stage) {
  Sample sample = stage.launch("hello");
  sample.says({"hello, I am hello and the device listens to me", "ping: OK",
               "the device says: serial is VM-0000-0001", "LED fading to blue: TERMINATED",
               "the LED is green now"});
}

void ledRainbow(Stage& stage) {
  Sample sample = stage.launch("led-rainbow");
  sample.says(
      {"the LED is dark: OK", "the LED is red", "the LED is violet", "that was the rainbow"});
  sample.ends();
  stage.device.receives("led { fade { color: '#ff8000' period: 200 } }");
  stage.device.receives("led { pulse { color: 'white' period: 150 pulse: 3 } }");
}

void earDance(Stage& stage) {
  Sample sample = stage.launch("ear-dance");
  sample.says({"ears: TERMINATED, left at 0, right at 0", "figure 1 of 6", "figure 6 of 6",
               "the dance is over"});
  take(stage, sample,
       {{"ears BLOCKED_LEFT", {"somebody holds an ear: BLOCKED_LEFT"}},
        {"ears BLOCKED_RIGHT", {"somebody holds an ear: BLOCKED_RIGHT"}}});
}

void dockTour(Stage& stage) {
  Sample sample = stage.launch("dock-tour");
  for (const char* direction : {"UP", "LEFT", "DOWN", "RIGHT"})
    sample.says(std::string("going ") + direction);
  sample.says("parked");
  stage.device.receives("dock { move { cmd: UP time: 300 } }");
  stage.device.receives("dock { move { cmd: STOP time: 0 } }");
}

void buttonGame(Stage& stage) {
  Sample sample = stage.launch("button-game");
  sample.says("wait for green");
  take(stage, sample,
       {{"button DOUBLE", {"no best time yet", "press!"}},
        {"button SIMPLE", {"that took [0-9]+ ms", "a new best time", "wait for green"}},
        {"button SIMPLE", {"too early"}},
        {"button LONG_START", {"bye"}}});
  sample.ends();
  stage.device.receives("led { light { color: 'green' } }");

  Sample again = stage.launch("button-game");
  again.says("wait for green");
  stage.device.happens("button DOUBLE");
  again.says("the best time is [0-9]+ ms");
}

void rfidGreeter(Stage& stage) {
  Sample sample = stage.launch("rfid-greeter");
  sample.says("waiting for tags");
  take(stage, sample,
       {{"rfid d0021a IN type=FLAT color=RED content=Anna",
         {"IN d0021a FLAT RED", "said: Hello Anna"}},
        {"rfid d0021a OUT", {"OUT d0021a undefined undefined", "said: Goodbye tag d0021a"}}});
}

void rfidGreeterByTag(Stage& stage) {
  Sample sample =
      stage.launch("rfid-greeter", "RFID;d0021a;1;FLAT;2;RED;Anna", stage.device.address());
  sample.says({"launched by the tag d0021a", "said: Welcome Anna"});
}

void talkingClock(Stage& stage) {
  Sample sample = stage.launch("talking-clock");
  sample.says({"the device speaks en", "told in en: It is [0-9]{1,2}:[0-9]{2}"});
}

void radio(Stage& stage) {
  Sample sample = stage.launch("radio");
  sample.says({"http://radio.example.org/jazz: OK", "player: PLAY"});
  sample.saysInAnyOrder({"first playlist: breakfast", "first artist: The Tin Whistles",
                         "first genre: folk", "first folder: /music/morning",
                         "first song: /music/morning/kettle.mp3"});
  take(stage, sample,
       {{"button SIMPLE", {"player: PAUSE"}},
        {"button SIMPLE", {"player: RESUME"}},
        {"button DOUBLE", {"http://radio.example.org/news: OK"}},
        {"button LONG_START", {"off: OK", "player: STOP"}},
        {"button SIMPLE", {"http://radio.example.org/news: OK"}},
        {"player MUSIC_UPDATE", {"player: MUSIC_UPDATE"}}});
}

void voiceMenu(Stage& stage) {
  Sample sample = stage.launch("voice-menu");
  const Turn turns[] = {
      {"recognition \"light on\" 90 <menu><choice>on</choice></menu>",
       {R"(heard "light on" \(90\): on)"}},
      {"recognition mumble 10", {"please say that again"}},
      {"recognition tea 90 <menu><choice>tea</choice></menu>", {"that is not in the menu"}},
      {"recognition goodbye 80 <menu><choice>bye</choice></menu>", {"goodbye"}},
  };
  int times = 0;
  for (const Turn& turn : turns) {
    sample.listens(++times);
    take(stage, sample, {turn});
  }
  sample.ends();
  stage.device.receives("led { light { color: 'white' } }");
}

void voiceMenuByVoice(Stage& stage) {
  Sample sample = stage.launch("voice-menu", "ASR;menu;", stage.device.address());
  sample.says("launched by \"menu\"");
}

void photoBooth(Stage& stage) {
  Sample sample = stage.launch("photo-booth");
  sample.says("the booth is open");
  take(stage, sample,
       {{"button SIMPLE", {"photo: OK", "photo: TERMINATED.*", "playing the photo: OK"}},
        {"button DOUBLE",
         {"recording: OK", "recording: TERMINATED.*", "playing the recording: OK"}}});
  stage.device.receives("multimedia { play { url: '/tmp/picture.jpg' } }");
  stage.device.receives("multimedia { play { url: '/tmp/record.flac' } }");
}

void serialEcho(Stage& stage) {
  Sample sample = stage.launch("serial-echo");
  sample.says("listening on /dev/ttyS1");
  take(stage, sample,
       {{"serial /dev/ttyS1 hello", {"line 1 from /dev/ttyS1: hello"}},
        {"serial /dev/ttyS1 again", {"line 2 from /dev/ttyS1: again"}}});
  stage.device.receives("serial { write { port: '/dev/ttyS1' data: 'again' base: 'a' } }");
}

// The device connects its applications with each other, and with somebody outside.
void twoDeviceCall(Stage& stage) {
  Sample bob = stage.launch("two-device-call", "demo", "bob@" + stage.device.address());
  bob.says("bob waits for a call");
  Sample anna = stage.launch("two-device-call", "demo", "anna-bob@" + stage.device.address());
  anna.says("anna calls bob");
  bob.says({"anna@sip.example.org calls", "talking with anna@sip.example.org"});
  anna.says({"talking with bob", "hanging up", "the call with bob is over"});
  bob.says("the call with anna@sip.example.org is over");
  stage.device.happens("app 1 call INCOMING carol");
  bob.says({"carol calls", "talking with carol"});
  stage.device.happens("app 1 call TERMINATED");
  bob.says("the call with carol is over");
}

void mailbox(Stage& stage) {
  stage.device.happens("contact u1 alias=Anna");
  stage.device.happens("message u1 'Are you there?'");
  Sample sample = stage.launch("mailbox");
  sample.says({"contacts: 1", "unread messages: 1", "Anna: Are you there\\?", "marked as read: 1"});
  stage.device.receives("led { pulse { color: 'blue' period: 200 pulse: 3 } }");
  stage.device.happens("message stranger '<a/>' type=XML");
  sample.says({"unread messages: 1", "stranger: XML", "marked as read: 1"});
  stage.device.happens("refuse ERROR morvikMessageQuery");
  stage.device.receives("morvikMessageQuery { action: LIST }");
  stage.device.sends("response { code: ERROR description: 'as the command input wants it' }");
  stage.device.happens("message u1 'Still there?'");
  sample.says({"unread messages: 1", "Anna: Still there\\?", "marked as read: 1"});
}

struct Conversation {
  const char* sample;  // its folder
  const char* name;
  void (*hold)(Stage& stage);
};

constexpr Conversation kConversations[] = {
    {"hello", "hello", hello},
    {"led-rainbow", "ledRainbow", ledRainbow},
    {"ear-dance", "earDance", earDance},
    {"dock-tour", "dockTour", dockTour},
    {"button-game", "buttonGame", buttonGame},
    {"rfid-greeter", "rfidGreeter", rfidGreeter},
    {"rfid-greeter", "rfidGreeterByTag", rfidGreeterByTag},
    {"talking-clock", "talkingClock", talkingClock},
    {"radio", "radio", radio},
    {"voice-menu", "voiceMenu", voiceMenu},
    {"voice-menu", "voiceMenuByVoice", voiceMenuByVoice},
    {"photo-booth", "photoBooth", photoBooth},
    {"serial-echo", "serialEcho", serialEcho},
    {"two-device-call", "twoDeviceCall", twoDeviceCall},
    {"mailbox", "mailbox", mailbox},
};

void PrintTo(const Conversation& conversation, std::ostream* stream) {
  *stream << conversation.name;
}

std::set<std::string> folders(const std::filesystem::path& apps) {
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(apps))
    if (entry.is_directory()) names.insert(entry.path().filename());
  return names;
}

TEST(SamplesTest, everySampleHasAConversation) {
  std::set<std::string> told = webSamples();
  for (const Conversation& conversation : kConversations) told.insert(conversation.sample);
  EXPECT_EQ(folders(SOURCE_DIR "/apps"), told);
}

// The samples run from a copy, since some of them write files.
class Conversations : public SystemTest,
                      public Stage,
                      public testing::WithParamInterface<Conversation> {
 protected:
  void SetUp() override {
    SystemTest::SetUp();
    std::filesystem::copy(SOURCE_DIR "/apps", apps.path(),
                          std::filesystem::copy_options::recursive);
    std::filesystem::remove(apps.path() + "/button-game/best.txt");  // somebody played before
  }
  void TearDown() override {
    SystemTest::TearDown();
    if (HasFailure()) std::cerr << "the virtual device:\n" << device.transcript();
  }

 private:
  Sample launch(const std::string& app, const std::string& type,
                const std::string& instance) override {
    const App launched = SystemTest::launch(app + ' ' + type + ' ' + instance);
    return {host(), launched};
  }
};

TEST_P(Conversations, goAsTold) { GetParam().hold(*this); }

INSTANTIATE_TEST_SUITE_P(Samples, Conversations, testing::ValuesIn(kConversations),
                         [](const auto& told) { return std::string(told.param.name); });

}  // namespace
}  // namespace morvik::test
