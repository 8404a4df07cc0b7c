// Applications on the real host, run from their folders, and what the page shows and does of them.
#include <utility>

#include "looks.h"
#include "run-page-fixture.h"
#include "support/browser/said.h"
#include "support/file-content.h"

namespace morvik::test {
namespace {

using nlohmann::json;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

using PageOfARun = RunPageTest;

// Says how it is pressed, and shows it.
const std::string kPressed = interactiveScript(R"js(
  log('ready');
  var colors = { SIMPLE: 'lime', DOUBLE: 'blue' };
  morvik.button.addListener(function (press) {
    log('pressed: ' + press);
    morvik.led.light(colors[press]);
    return true;
  });
)js");
constexpr const char* kLedAndButton = "<access>led</access><access>button</access>";

// An expression: a line of this kind has this text.
std::string kindHas(const std::string& kind, const std::string& text) {
  return "[...document.querySelectorAll('#log .line[data-kind=" + kind +
         "]')].some((line) => line.textContent.includes(" + quoted(text) + "))";
}

TEST_F(PageOfARun, aClickReachesTheScriptAndItsColourShows) {
  run({write("app", kPressed, kLedAndButton)});
  expectLogged("ready");
  expectState("app", "interactive");
  driver_.click("#button");
  expectLed("rgb(0, 255, 0)");
  expectLogged("pressed: SIMPLE");
  expectText("#log .line[data-kind=script] .who", "app");
}

TEST_F(PageOfARun, aReloadInMidSessionShowsTheSame) {
  run({write("app", kPressed, kLedAndButton)});
  expectLogged("ready");
  driver_.click("#button");
  expectLed("rgb(0, 255, 0)");
  driver_.reload();
  waitUntilGreeted();
  expectLed("rgb(0, 255, 0)");
  expectLogged("pressed: SIMPLE");
  expectState("app", "interactive");
  driver_.click("[data-press=DOUBLE]");
  expectLed("rgb(0, 0, 255)");
}

TEST_F(PageOfARun, twoPagesShowTheSame) {
  run({write("app", kPressed, kLedAndButton)});
  expectLogged("ready");
  const std::string other = driver_.openWindow();
  openPage();
  driver_.click("#button");
  for (const std::string& page : {window_, other}) {
    driver_.switchTo(page);
    expectLed("rgb(0, 255, 0)");
    expectLogged("pressed: SIMPLE");
  }
}

TEST_F(PageOfARun, aSaveStartsTheApplicationAnew) {
  run({write("app", interactiveScript("log('first'); morvik.led.light('red');"),
             "<access>led</access>"),
       write("other", "log('other is here');")});
  expectLogged("first");
  expectLed("rgb(255, 0, 0)");
  write("app", interactiveScript("log('second'); morvik.led.light('lime');"));
  expectLogged("second");
  expectLed("rgb(0, 255, 0)");
  expectState("app", "interactive");
  const json started = driver_.run(
      "return [...document.querySelectorAll('#log .what')]"
      "  .filter((line) => line.textContent.includes('other is here')).length");
  EXPECT_EQ(started, 1);
}

TEST_F(PageOfARun, aBrokenSaveIsShownWithItsPlaceAndCured) {
  run({write("app", "log('first');")});
  expectLogged("first");
  write("app", "log('second';");
  expectText(cardOf("app") + "[data-state=ended]", "main.js:1");
  write("app", "log('third');");
  expectLogged("third");
  expectState("app", "started");
}

TEST_F(PageOfARun, everyStateOfAnApplicationIsShown) {
  const std::string connect =
      "var at = instanceName.split(':'); morvik.connect(at[0], Number(at[1]));";
  run({write("app", "log('first');")});
  expectState("app", "started");
  expect("/^Ends by itself in [1-9]0? s$/.test(document.querySelector('.autokill').textContent)");
  write("app", connect);
  expectState("app", "connected");
  driver_.click("#tab-misbehave");
  driver_.fill("form[data-stimulus=delay] [name=length]", "60000");
  driver_.click("form[data-stimulus=delay] button.main");
  expectText("#faults", "later");
  write("app", connect + "morvik.start(function () { log('granted'); });");
  expectText(cardOf("app") + "[data-state=waiting]", "waits for interactive mode");
  driver_.click("[data-quick='Answer at once']");
  write("app", connect + "morvik.start(function () { log('granted at once'); });");
  expectLogged("granted at once");
  expectText(cardOf("app") + "[data-state=interactive]", "interactive");
  expectThere(".autokill[hidden]");
  driver_.click("[data-quick='Stop interactive mode']");
  expectState("app", "stopping");
  expect(
      "/^Ends by itself in (300|29[0-9]) s$/.test("
      "document.querySelector('.autokill').textContent)");
  driver_.click(cardOf("app") + " [data-act=stop]");
  expectThere(cardOf("app") + "[data-state=ended][data-calm]");
  expectThere(cardOf("app") + " [data-act=stop][disabled]");
  driver_.click(cardOf("app") + " [data-act=restart]");
  expectState("app", "interactive");
}

TEST_F(PageOfARun, anEndIsExplainedWithItsCure) {
  run({write("app",
             "log('begins'); setTimeout(0, function () {"
             "  var all = []; for (;;) all.push(new Array(1000).fill(1)); });")});
  expectState("app", "ended");
  expectText(cardOf("app") + " .why", "10 MiB");
  expectText(cardOf("app") + " .cure", "Keep less");
  expectText(cardOf("app") + " .headline", "app ended after ");
  driver_.click(cardOf("app") + " details:has(pre) summary");
  expectText(cardOf("app") + " pre", "begins");
  expectText("#announcer", "app: ");
}

TEST_F(PageOfARun, anEndHasNothingSeriousInAnyLook) {
  run({write("app",
             "setTimeout(0, function () {"
             "  var all = []; for (;;) all.push(new Array(1000).fill(1)); });"
             "morvik.led.light('red');")});
  expectState("app", "ended");
  expectThere(cardOf("app") + " .hint");
  for (const Look& look : kLooks) {
    look.show(browser_);
    EXPECT_THAT(seriousFindings(driver_, "#applications"), IsEmpty());
    EXPECT_EQ(pixelsBeside(driver_), 0);
  }
}

TEST_F(PageOfARun, anEndThatWasWantedIsToldCalmly) {
  run({write("app", "setTimeout(0, exit);")});
  expectThere(cardOf("app") + "[data-state=ended][data-calm]");
  expectText(cardOf("app") + " .why", "The script called exit().");
  expect("!document.querySelector('.application-about').textContent.includes('null')");
}

TEST_F(PageOfARun, anApplicationThatHasLeftKeepsItsName) {
  run({write("app", interactiveScript("log('ready');"))});
  expectLogged("ready");
  driver_.click(cardOf("app") + " [data-act=stop]");
  expectState("app", "ended");
  driver_.click("#tab-notes");
  expect("document.querySelector('#notes .line[data-kind=left] .who').textContent === 'app'");
  driver_.click(cardOf("app") + " [data-act=restart]");
  expectState("app", "interactive");
  driver_.reload();
  waitUntilGreeted();
  driver_.click("#tab-notes");
  expect("document.querySelector('#notes .line[data-kind=left] .who').textContent === 'app'");
  driver_.click("#tab-messages");
  expect("document.querySelector('#messages .message .who').textContent === 'app'");
}

TEST_F(PageOfARun, whatTheAuthorShouldMendIsFoundBeforeAndHintedAfter) {
  run({write("app", "morvik.led.light('red');", "<access>button</access>")});
  expectText(cardOf("app") + " .hint[data-finding]", "button is granted and never used");
  expectText(cardOf("app") + " .hint[data-hint]", "<access>led</access>");
}

TEST_F(PageOfARun, isLaunchedByATag) {
  run({write("app", "log('here by ' + launchType.name + ' ' + launchType.id);")});
  expectLogged("here by plain");
  driver_.click(cardOf("app") + " details:has([data-act=launch]) summary");
  driver_.fill(cardOf("app") + " input[list=launches]", "RFID;d0021a;1;2;3;4;fox");
  driver_.click(cardOf("app") + " [data-act=launch]");
  expectLogged("here by RFID d0021a");
}

// A device server of its own stands for the real one.
TEST_F(PageOfARun, behindARelayShowsWhatTheRealDeviceDoes) {
  Program real({MORVIK_DEV, "device", "--port=0"});
  const std::string address = saidBehind("listening on ", real);
  run({"--device=" + address,
       write("app", interactiveScript("log('ready'); morvik.led.light('red');"),
             "<access>led</access>")});
  expectLogged("ready");
  expectLed("rgb(255, 0, 0)");
  real.say("ear LEFT 5\n");
  expectAttribute("#ear-left", "aria-valuenow", "5");
  real.say("rfid 04a1 IN\n");
  expectThere("#tag[data-on]");
  real.say("refuse BUSY led\n");
  real.waitFor("refuses led with BUSY");
  write("app", interactiveScript("morvik.led.light('blue', function (code) { log(code); });"));
  expectLogged("BUSY");
  expectState("app", "interactive");
  expectLed("rgb(255, 0, 0)");
}

// A page that does nothing else, from when another one tells it to begin until that lets it go on:
// by a cookie, as those are read where they are kept, past the page's own events.
class BusyPage {
 public:
  BusyPage(WebDriver& driver, std::string window) : driver_(driver), window_(std::move(window)) {
    driver_.run(
        "new BroadcastChannel('work').onmessage = () => {"
        "  while (!document.cookie.includes('go=on')) {}"
        "  window.wasBusy = true; };");
  }
  // Whatever a test comes to: the browser is needed by those behind it.
  ~BusyPage() {
    try {
      release();
    } catch (const WebDriverError&) {  // a browser that is gone already
    }
  }
  BusyPage(const BusyPage&) = delete;
  BusyPage& operator=(const BusyPage&) = delete;

  // In another window.
  void begin() { driver_.run("new BroadcastChannel('work').postMessage('begin');"); }

  // Comes back to its window.
  void goOn() {
    release();
    driver_.switchTo(window_);
    driver_.waitFor("window.wasBusy");
    driver_.run("document.cookie = 'go=on; path=/; max-age=0';");
  }

 private:
  void release() {
    if (!std::exchange(isReleased_, true)) driver_.run("document.cookie = 'go=on; path=/';");
  }

  WebDriver& driver_;
  std::string window_;
  bool isReleased_ = false;
};

TEST_F(PageOfARun, oneThatIsBusyHarmsNobodyAndCatchesUp) {
  run({write("app", interactiveScript(R"js(
         var letters = new Array(1001).join('x');
         morvik.button.addListener(function (press) {
           if (press === 'DOUBLE') {
             morvik.led.light('blue');
             return true;
           }
           if (press === 'TRIPLE') {
             log('all is said');
             return true;
           }
           for (var i = 0; i < 1500; ++i) log(i + letters);
           morvik.led.light('lime');
           return true;
         });
         log('ready');
       )js"),
             kLedAndButton)});
  expectLogged("ready");
  BusyPage busy(driver_, window_);
  driver_.openWindow();
  openPage();
  busy.begin();
  driver_.click("#button");
  expectLed("rgb(0, 255, 0)");  // this one keeps up, whatever it missed of so much at once
  run_->program().say("button TRIPLE\n");
  expectLogged("all is said");
  expectState("app", "interactive");
  busy.goOn();
  expectLed("rgb(0, 255, 0)");
  expectText("#panel-log .left-out", "were left out, for this page did not keep up");
  driver_.click("[data-press=DOUBLE]");
  expectLed("rgb(0, 0, 255)");
}

TEST_F(PageOfARun, itsLogTellsOfSavesHintsAndEnds) {
  run({write("app", "log('first');")});
  expectLogged("first");
  write("app", "morvik.led.light('red');");
  expect(kindHas("run", "main.js saved"));
  expect(kindHas("hint", "<access>led</access>"));
  driver_.click(cardOf("app") + " [data-act=stop]");
  expect(kindHas("end", "ended, as you asked"));
}

// Lines of several kinds and levels, by two applications.
class LogOfARun : public RunPageTest {
 protected:
  void runBoth() {
    run({write("one", "log('one apple');\nlog('one pear');\nmorvik.nothing();"),
         write("two", "log('two apples');"), "--level=debug"});
    expectLogged("one pear");
    expectLogged("two apples");
    expectLine("TypeError");
  }

  void expectLine(const std::string& text) {
    expect(lines() + ".some((line) => line.includes(" + quoted(text) + "))");
  }
  void expectNoLine(const std::string& text) {
    expect("!" + lines() + ".some((line) => line.includes(" + quoted(text) + "))");
  }

  void choose(const std::string& selector, const std::string& value) {
    driver_.run(
        "const select = document.querySelector(arguments[0]);"
        "select.value = arguments[1];"
        "select.dispatchEvent(new Event('change'));",
        {selector, value});
  }

 private:
  static std::string lines() {
    return "[...document.querySelectorAll('#log .line')].map((line) => line.textContent)";
  }
};

TEST_F(LogOfARun, isSearched) {
  runBoth();
  driver_.fill("[aria-label='Search log']", "APPLE");
  expectNoLine("one pear");
  expectLine("one apple");
  expectLine("two apples");
}

TEST_F(LogOfARun, isNarrowedToAnApplication) {
  runBoth();
  choose("#panel-log [aria-label=Application]", "two");
  expectNoLine("one apple");
  expectLine("two apples");
}

TEST_F(LogOfARun, isNarrowedToALevel) {
  runBoth();
  choose("#panel-log [aria-label=Level]", "3");
  expectNoLine("two apples");
  expectLine("TypeError");
}

TEST_F(LogOfARun, isPausedAndGoesOn) {
  runBoth();
  driver_.run(
      "[...document.querySelectorAll('#panel-log button')]"
      "  .find((button) => button.textContent === 'Pause').click()");
  write("two", "log('two plums');");
  expectText("#panel-log .left-out", "came during the pause");
  expectNoLine("two plums");
  driver_.run("document.querySelector('#panel-log button[aria-pressed=true]').click()");
  expectLine("two plums");
}

// Long lines have their height only once they are in sight.
TEST_F(LogOfARun, followsItsEnd) {
  browser_.show(360, 900, false);
  const std::string lines =
      "for (var i = 1; i <= 200; ++i) log('a line that is too long for its place, number ' + i);";
  run({write("one", lines + "log('the first end');")});
  const std::string rest =
      "(({ scrollHeight, scrollTop, clientHeight }) => scrollHeight - scrollTop - clientHeight)("
      "document.getElementById('log'))";
  expectLine("the first end");
  expect(rest + " < 2");
  write("one", lines + "log('the second end');");
  expectLine("the second end");
  expect(rest + " < 2");
  EXPECT_GT(driver_.run("return document.getElementById('log').scrollTop"), 1000);
}

TEST_F(LogOfARun, isKeptAsAFile) {
  runBoth();
  driver_.inspect("Browser.setDownloadBehavior",
                  {{"behavior", "allow"}, {"downloadPath", folder_.path().string()}});
  driver_.fill("[aria-label='Search log']", "apple");
  driver_.run(
      "[...document.querySelectorAll('#panel-log button')]"
      "  .find((button) => button.textContent === 'Download').click()");
  const std::string file = folder_ / "log.txt";
  waitUntil("the file", [&] { return std::filesystem::exists(file) && !contentOf(file).empty(); });
  EXPECT_THAT(contentOf(file),
              AllOf(HasSubstr("one apple\n"), HasSubstr("two apples\n"), Not(HasSubstr("pear"))));
}

// One whole conversation with the sample voice-menu, by keys alone.
class KeyboardAlone : public RunPageTest {
 protected:
  void press(const std::string& keys) { driver_.press(keys); }

  // Says it by the form of the voice's tab, with a meaning.
  void say(const std::string& words, const std::string& meaning) {
    tabTo("form[data-stimulus=recognition] [name=text]");
    press(words);
    tabTo("form[data-stimulus=recognition] textarea");
    press(meaning);
    tabTo("form[data-stimulus=recognition] button.main");
    press(keys::kEnter);
  }
};

TEST_F(KeyboardAlone, canHoldAWholeConversation) {
  run({SOURCE_DIR "/apps/voice-menu"});
  expectLogged("listening");
  press(keys::kTab);
  press(keys::kEnter);  // skips to what can be done
  tabTo("#tab-touch");
  press(std::string(keys::kRight) + keys::kRight);
  expectThere("#tab-voice[aria-selected=true]:focus");
  expectText("#pending-grammar", "light on|light off|goodbye");
  say("light on", "<menu><choice>on</choice></menu>");
  expectLogged("heard \"light on\" (90): on");
  expectLed("rgb(255, 255, 255)");
  say("goodbye", "<menu><choice>bye</choice></menu>");
  expectText(cardOf("voice-menu") + "[data-state=ended] .why", "exit()");
  tabTo(cardOf("voice-menu") + " [data-act=restart]");
  press(keys::kEnter);
  expectThere("[data-say='light off']");
  // What it was told means the same to the bubble's choices.
  tabTo("[data-say=goodbye]");
  press(keys::kSpace);
  expectState("voice-menu", "ended");
}

}  // namespace
}  // namespace morvik::test
