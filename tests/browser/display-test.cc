// Everything that the device shows, as the page shows it.
#include <algorithm>
#include <regex>
#include <vector>

#include "device-page-fixture.h"

namespace morvik::test {
namespace {

using nlohmann::json;
using ::testing::Ge;
using ::testing::SizeIs;

class Display : public DevicePageTest {
 protected:
  Display() {
    openPage();
    app_ = application();
  }

  // What stands in the list of what can be seen.
  void expectSeen(const std::string& name, const std::string& words) {
    expectText("#seen [data-show=" + name + "] dd", words);
  }

  void submit(const std::string& form) { driver_.click(form + " button.main"); }

  std::unique_ptr<AppClient> app_;
};

std::vector<double> numbersIn(const json& noted, const std::string& pattern) {
  const std::regex number(pattern);
  std::vector<double> numbers;
  for (const json& one : noted) {
    const std::string value = one["value"];
    std::smatch match;
    if (std::regex_search(value, match, number)) numbers.push_back(std::stod(match[1]));
  }
  return numbers;
}

double lengthOf(const json& noted) {
  return noted.back()["time"].get<double>() - noted.front()["time"].get<double>();
}

TEST_F(Display, bothEarsTurnOverTheTimeThatTheDeviceTakes) {
  expectAttribute("#turn-left", "transform", "rotate(-8.00)");
  watch(attributeOf("#turn-left", "transform") + " + ' ' + " +
        attributeOf("#turn-right", "transform"));
  command(*app_, "ears { left: 10 right: 6 }");
  expectAttribute("#turn-left", "transform", "rotate(-108.00)");
  expectAttribute("#turn-right", "transform", "rotate(68.00)");
  json noted = watched();
  noted.erase(noted.begin());  // before they began
  const std::vector<double> left = numbersIn(noted, R"(^rotate\(-([0-9.]+)\))");
  const std::vector<double> right = numbersIn(noted, R"( rotate\(([0-9.]+)\)$)");
  EXPECT_THAT(left, SizeIs(Ge(10U)));
  EXPECT_TRUE(std::ranges::is_sorted(left));
  EXPECT_TRUE(std::ranges::is_sorted(right));
  constexpr double kTenSteps = 1000;  // milliseconds
  EXPECT_GT(lengthOf(noted), kTenSteps * 0.7);
  EXPECT_LT(lengthOf(noted), kTenSteps * 2);
  expectAttribute("#ear-left", "aria-valuenow", "10");
  expectAttribute("#ear-right", "aria-valuenow", "6");
  expectSeen("ear-left", "step 10");
  expectSeen("ear-right", "step 6");
}

TEST_F(Display, theLedFadesFromOneColourToTheOther) {
  command(*app_, "led { light { color: 'red' } }");
  expectLed("rgb(255, 0, 0)");
  watch("getComputedStyle(document.getElementById('led-disc')).fill");
  command(*app_, "led { fade { color: 'blue' period: 600 } }");
  expectSeen("led", "fading to blue in 600 ms");
  expectLed("rgb(0, 0, 255)");
  const json noted = watched();
  EXPECT_GT(lengthOf(noted), 400);
  EXPECT_THAT(noted, SizeIs(Ge(5U)));
  expectAttribute("#led", "data-color", "blue");
}

// How often a value rose past its middle, and the time between the first and the last rise.
std::pair<int, double> risesOf(const json& noted, double middle) {
  std::vector<double> rises;
  double before = 0;
  for (const json& one : noted) {
    const double value = std::stod(one["value"].get<std::string>());
    if (before < middle && value >= middle) rises.push_back(one["time"]);
    before = value;
  }
  return {static_cast<int>(rises.size()), rises.empty() ? 0 : rises.back() - rises.front()};
}

TEST_F(Display, theLedPulsesAtItsPeriod) {
  watch("document.getElementById('halo').style.opacity || '0'");
  command(*app_, "led { pulse { color: 'lime' period: 1000 pulse: 3 } }");
  expectSeen("led", "3 pulses of 1000 ms, lime");
  expect("document.querySelector('#seen [data-show=led] dd').textContent === 'lime'");
  json noted = watched();
  noted.erase(noted.end() - 1);  // the colour in which it comes to rest
  const auto [rises, length] = risesOf(noted, 0.5);
  EXPECT_EQ(rises, 3) << noted;
  EXPECT_NEAR(length, 2 * 1000, 600);  // a busy browser draws late
  expectLed("rgb(0, 255, 0)");
}

TEST_F(Display, theDocksLedShowsItsColour) {
  command(*app_, "dock { led { light { color: 'green' } } }");
  expectThere("#dock-led[data-color=green][data-lit]");
  expect("getComputedStyle(document.getElementById('dock-led')).fill === 'rgb(0, 255, 0)'");
  command(*app_, "dock { led { fade { color: 'black' period: 300 } } }");
  expectSeen("dock-led", "fading to black in 300 ms");
  expectThere("#dock-led[data-color=black]:not([data-lit])");
}

TEST_F(Display, theDockMoves) {
  watch("document.getElementById('dock').dataset.moving");
  command(*app_, "dock { move { cmd: LEFT time: 2000 } }");
  expectSeen("dock", "moving LEFT");
  expectThere("[data-arrow=LEFT][data-on]");
  expect(attributeOf("#mover", "transform") + " === 'translate(-22.0 0.0)'");
  expectSeen("dock", "at rest");
  expectThere("[data-arrow=LEFT]:not([data-on])");
  expect(R"(/^translate\(-?0\.0 -?0\.0\)$/.test()" + attributeOf("#mover", "transform") + ")");
  expectWatched({"STOP", "LEFT", "STOP"});
}

TEST_F(Display, whatIsSaidStandsInABubbleWithItsLanguage) {
  command(*app_, "tts { action: START text: 'good evening, <b>everybody</b>' lang: 'fr' }");
  expectThere("#device[data-speaks]");
  expectText("#speech:not(.past) #speech-text", "good evening, <b>everybody</b>");
  expectText("#speech-lang", "fr");
  expectText("#announcer", "The device says: good evening");
  expectText("#speech.past #speech-what", "Said last");
  expectThere("#device:not([data-speaks])");
}

TEST_F(Display, aRecognitionShowsItsGrammarAndItsChoices) {
  command(*app_, "asr { dictionary: 'yes|no' lang: 'en' }");
  expectThere("#device[data-listens]");
  expectText("#listening-text", "yes|no");
  expectText("#listening-lang", "en");
  expectThere("[data-say=yes]");
  driver_.click("[data-say=no]");
  const auto heard = next(*app_, "asrCallback").asrcallback();
  ASSERT_EQ(heard.recognition_size(), 1);
  EXPECT_EQ(heard.recognition(0).text(), "no");
  expectThere("#device:not([data-listens])");
  command(*app_, "asr { dictionary: 'yes|no' }");
  expectThere("[data-say-noise]");
  driver_.click("[data-say-noise]");
  EXPECT_EQ(next(*app_, "asrCallback").asrcallback().recognition_size(), 0);
}

TEST_F(Display, thePlayerShowsWhatItPlays) {
  command(*app_, "multimedia { play { url: '/music/morning/kettle.mp3' } }");
  expectThere("#device[data-plays]");
  expectText("#player[data-mode=playing]", "Plays /music/morning/kettle.mp3");
  expectText("#player-time", "of 3 s");
  command(*app_, "multimedia { pause {} }");
  expectText("#player[data-mode=paused]", "Paused: /music/morning/kettle.mp3");
  command(*app_, "multimedia { resume {} }");
  expectThere("#player[data-mode=playing]");
  command(*app_, "multimedia { stop {} }");
  expectText("#player[data-mode=stopped]", "Played last: /music/morning/kettle.mp3");
  expectThere("#device:not([data-plays])");
}

TEST_F(Display, thePlayerShowsWhatItRecords) {
  command(*app_, "multimedia { record { url: 'note' } }");
  expectThere("#device[data-record]");
  expectText("#player[data-mode=recording]", "Records note");
  driver_.click("#tab-media");
  driver_.click("form[aria-label='End the recording'] button");
  expectThere("#device:not([data-record])");
  expectThere("#player[data-mode=stopped]");
}

TEST_F(Display, theCameraTakesAPhoto) {
  watch("document.getElementById('device').hasAttribute('data-photo')");
  command(*app_, "webcam { photo: 'garden' }");
  expectText("#photo[data-on] #photo-text", "garden");
  expectSeen("camera", "last: garden");
  expectWatched({false, true, false});
}

TEST_F(Display, aSerialPortShowsItsLines) {
  command(*app_, "serial { open { port: '/dev/ttyS1' baud: 115200 } }");
  expectThere("#cable[data-open]");
  command(*app_, "serial { write { port: '/dev/ttyS1' data: 'ping' base: 'a' } }");
  expectSeen("serial", "/dev/ttyS1, 115200 baud: ping");
  driver_.click("#tab-serial");
  driver_.fill("[data-port='/dev/ttyS1'] input", "pong");
  submit("[data-port='/dev/ttyS1']");
  EXPECT_EQ(next(*app_, "serialCallback").serialcallback().readline().data(), "pong");
  expectText("[aria-label='Lines of /dev/ttyS1'] li:first-child", "the application wrote: ping");
  expectText("[aria-label='Lines of /dev/ttyS1'] li:last-child", "came in: pong");
}

TEST_F(Display, aCallRingsTalksAndEnds) {
  driver_.click("#tab-calls");
  driver_.fill("form[data-stimulus=call] input", "aunt Clara");
  submit("form[data-stimulus=call]");
  EXPECT_EQ(next(*app_, "m2mCallback").m2mcallback().correspondant(), "aunt Clara");
  expectText("#calls-now [data-call=ringing]", "aunt Clara calls");
  expectThere("#device[data-call=ringing]");
  expectSeen("call", "ringing aunt Clara");
  send(*app_, "m2m { answer { accept: true } }");
  expectText("#calls-now [data-call=talking]", "aunt Clara is on the telephone");
  expectText("[data-telephone='1']", "talks with aunt Clara");
  driver_.click("#calls-now [data-call=talking] button");
  expect("document.querySelectorAll('#calls-now [data-call]').length === 0");
  expectThere("#device:not([data-call])");
  expectSeen("call", "no call");
}

TEST_F(Display, theMailboxShowsWhatIsUnread) {
  expectSeen("mailbox", "empty");
  driver_.click("#tab-mailbox");
  driver_.fill("form[data-stimulus=message] textarea", "are you there?");
  submit("form[data-stimulus=message]");
  expectText("#mail[data-on] #mail-text", "1");
  expectText("#count-mailbox", "1");
  expectSeen("mailbox", "1 message, 1 unread");
  expectText("[data-message].unread", "are you there?");
  const std::string id =
      driver_.run("return document.querySelector('[data-message]').dataset.message");
  command(*app_, "morvikMessageQuery { action: READ id: '" + id + "' }");
  expectThere("[data-message]:not(.unread)");
  expectThere("#mail:not([data-on])");
  expectSeen("mailbox", "1 message, 0 unread");
}

TEST_F(Display, contactsAreListed) {
  driver_.click("#tab-mailbox");
  driver_.fill("form[data-stimulus=contact] [name=uuid]", "anna");
  driver_.fill("form[data-stimulus=contact] [name=firstname]", "Anna");
  submit("form[data-stimulus=contact]");
  expectText("[data-contact=anna]", "Anna");
}

TEST_F(Display, credentialsAreShownByTheirNamesAlone) {
  driver_.click("#tab-accounts");
  driver_.fill("form[data-stimulus=credentials] [name$=facebookToken]", "abracadabra");
  submit("form[data-stimulus=credentials]");
  expectThere("[data-credential=facebookToken]");
  driver_.click("#tab-messages");
  command(*app_, "socialQuery {}");
  expectText("#messages .message[data-way=sent]:last-child", "facebookToken");
  driver_.click("[data-credentials=withhold]");
  expectText("#panel-accounts", "They are withheld");
  driver_.click("[data-credentials=give]");
  expectText("#panel-accounts", "Applications get them when they ask.");
  EXPECT_EQ(driver_.run("return document.documentElement.outerHTML.includes('abracadabra')"),
            false);
}

TEST_F(Display, whatMisbehavesIsListed) {
  driver_.click("#tab-misbehave");
  driver_.click("[data-quick='Next reply BUSY']");
  expectText("#faults li", "any command is answered with BUSY, once");
  expectText("#count-misbehave", "1");
  EXPECT_EQ(app_->ask(pingRequest("granted")).response().code(), zeph::BUSY);
  expectText("#faults li", "It behaves.");
  driver_.click("#tab-messages");
  expectText("#messages .message[data-code=bad]", "BUSY");
}

TEST_F(Display, anAnswerIsJoinedToItsRequest) {
  driver_.click("#tab-messages");
  const std::string id = command(*app_, "ping {}");
  const std::string request = "#messages .message[data-id='" + id + "'][data-way=received]";
  const std::string answer = "#messages .message[data-correlation='" + id + "'][data-way=sent]";
  expect("/^answered in (< )?[0-9.]+ m?s$/.test(document.querySelector(" +
         quoted(request + " .took") + ").textContent)");
  expectText(answer + " .took", "came after");
  driver_.click(request + " > button");
  expectText(request + " pre", "\"ping\": {}");
  driver_.click(request + " .joined button");
  expectThere(answer + " > button[aria-expanded=true]:focus");
}

TEST_F(Display, notesTellWhoCameAndWhatTheWorldDid) {
  driver_.click("#tab-notes");
  expectText("#notes .line[data-kind=came]", "app 1");
  driver_.click("#button");
  expectText("#notes .line[data-kind=stimulus]", "button SIMPLE");
  app_->sendBytes(std::string("\0\0\0\3abc", 7));
  expectText("#notes .line[data-kind=trouble]", "app 1");
  app_->disconnect();
  expectText("#notes .line[data-kind=left]", "app 1");
}

// The page's acknowledgements get lost, as those of a page that is too slow.
constexpr const char* kStopAcknowledging = R"js(
  window.realSend = WebSocket.prototype.send;
  WebSocket.prototype.send = function (text) {
    if (JSON.parse(text).type !== 'seen') window.realSend.call(this, text);
  };
)js";

TEST_F(Display, aPageThatDidNotKeepUpIsToldHowMuchWasLeftOut) {
  driver_.click("#tab-messages");
  driver_.run(kStopAcknowledging);
  constexpr int kPings = 1500;
  for (int i = 0; i < kPings; ++i) app_->send(pingRequest("granted"));
  for (int i = 0; i < kPings; ++i) ASSERT_TRUE(app_->receive().has_response());
  driver_.run("WebSocket.prototype.send = window.realSend;");
  driver_.click("#button");
  expectText("#panel-messages .left-out", "were left out, for this page did not keep up");
  expect(R"(Number(/(\d+) were left out/.exec(
      document.querySelector('#panel-messages .left-out').textContent)[1]) > )" +
         std::to_string(kPings));
  driver_.click("#tab-notes");
  expectText("#notes .line[data-kind=gap]", "messages and notes were left out here");
}

}  // namespace
}  // namespace morvik::test
