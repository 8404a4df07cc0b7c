// Every stimulus from the page to a script on the real host, and what the script hears of it.
#include <set>

#include "everything-form.h"
#include "run-page-fixture.h"

namespace morvik::test {
namespace {

using nlohmann::json;

// Hears everything that a script can hear. What comes in on the serial port behind "do" is done.
const std::string kHearsEverything = interactiveScript(R"js(
  function tell(name) {
    return function (told) {
      log(name + ': ' + (typeof told === 'object' ? JSON.stringify(told) : told));
      return true;
    };
  }
  morvik.button.addListener(tell('button'));
  morvik.rfid.addListener(tell('rfid'));
  morvik.ears.addListener(function (what, step) { return tell('ears')(what + ' ' + step); });
  morvik.multimedia.addListener(tell('player'));
  morvik.m2m.addListener(tell('call'));
  morvik.serial.open__('/dev/ttyS1');
  morvik.serial.addListener__({
    onMessage: function (self, port, line) {
      if (line.indexOf('do ') !== 0) return tell('serial')(line);
      eval(line.slice(3));
      return true;
    }
  });
  log('ready');
)js");
constexpr const char* kAccesses =
    "<access>led</access><access>ears</access><access>dock</access><access>tts</access>"
    "<access>asr</access><access>multimedia</access><access>webcam</access>"
    "<access>button</access><access>rfid</access><access>m2m</access><access>serial</access>"
    "<access>message</access><access>contact</access><access>facebook</access>";

struct HeardRow {
  const char* stimulus;
  const char* arguments;  // JSON
  const char* before;     // what the script does first; it then says "does it", or nothing
  const char* after;      // the same behind the stimulus
  const char* heard;      // a part of a line of the log; empty where no script can hear of it
  bool isItsEnd = false;  // the application ends of it
};

// In this order: each row finds the device as the rows before have left it, and the application
// anew when it was ended.
constexpr HeardRow kRows[] = {
    {"button", R"({"type": "DOUBLE"})", "", "", "button: DOUBLE"},
    {"rfid", R"({"id": "04a1", "direction": "IN"})", "", "", R"(rfid: {"id":"04a1")"},
    {"ear", R"({"side": "LEFT", "step": 3})", "", "", "ears: STOP_LEFT 3"},
    {"ears", R"({"type": "BLOCKED_RIGHT", "step": 4})", "", "", "ears: BLOCKED_RIGHT 4"},
    {"message", R"({"uuid": "anna", "text": "Are you there?"})", "",
     R"js(morvik.message.list(function (all) { log("message: " + all[0].content.content); }))js",
     "message: Are you there?"},
    {"contact", R"({"uuid": "anna", "firstname": "Anna"})", "",
     R"js(morvik.contact.get(function (all) { log("contact: " + all[0].firstname); }))js",
     "contact: Anna"},
    {"credentials", R"({"values": {"facebookToken": "abc"}})", "",
     R"js(social.init(function () { log("account: " + typeof social.facebook.get); }))js",
     "account: function"},
    {"dock", R"({"status": 7, "change": -1})", "", "", ""},
    {"recognition", R"({"text": "oh yes", "confident": 87})",
     R"js(morvik.asr.string("<g/>", "en", tell("asr")))js", "", R"("text":"oh yes")"},
    {"player", R"({"action": "PAUSE"})", "", "", "player: PAUSE"},
    {"library", R"({"list": "SONG", "names": ["a tune"]})", "",
     R"js(morvik.multimedia.song(tell("song")))js", "song: a tune"},
    {"call", R"({"type": "INCOMING", "who": "aunt"})", "", "", R"("type":"INCOMING")"},
    {"serial", R"({"port": "/dev/ttyS1", "text": "a line"})", "", "", "serial: a line"},
    {"picture", "{}", "", R"js(morvik.webcam.photo("booth", tell("photo")))js",
     R"(photo: {"type":"TERMINATED")"},
    {"recording", "{}", "", R"js(morvik.multimedia.record(tell("recording")))js",
     R"(recording: {"type":"OK")"},
    {"finish", R"({"work": "record"})", "", "", R"(recording: {"type":"TERMINATED")"},
    {"refuse", R"({"code": "BUSY", "count": "ALWAYS"})", "",
     R"js(morvik.led.light("red", tell("refused")))js", "refused: BUSY"},
    {"accept", "{}", "", R"js(morvik.led.light("red", tell("accepted")))js", "accepted: OK"},
    {"delay", R"({"length": 20, "command": "ping"})", "", R"js(ping(tell("late ping")))js",
     "late ping: OK"},
    {"pieces", R"({"size": 4})", "", R"js(ping(tell("ping in pieces")))js", "ping in pieces: OK"},
    {"apps", "{}", "", "", ""},
    {"state", "{}", "", "", ""},
    {"stop", "{}", "", "", "interactive mode stopped, autokill in "},
    {"drop", "{}", "", "", "it was told to drop it", true},
    {"noise", "{}", R"js(morvik.asr.string("<g/>", "en", tell("asr")))js", "",
     "a recognition result without a recognition"},
};

class EveryStimulusOnTheHost : public RunPageTest {
 protected:
  void letScriptDo(const std::string& what) {
    if (!what.empty()) run_->program().say("serial /dev/ttyS1 'do " + what + "'\n");
  }

  void expectHeard(const std::string& text) {
    expect(
        "[...document.querySelectorAll('#log .what')].some((line) => line.textContent.includes(" +
        quoted(text) + "))");
  }

  void reviveScript() {
    if (driver_.run("return document.querySelector('[data-app=app]').dataset.state") != "ended")
      return;
    driver_.click(cardOf("app") + " [data-act=restart]");
    expectState("app", "interactive");
  }

  void take(const HeardRow& row) {
    SCOPED_TRACE(row.stimulus);
    reviveScript();
    if (*row.before != '\0') {
      letScriptDo(std::string(row.before) + R"js(; log("about to hear )js" + row.stimulus +
                  R"js("))js");
      expectLogged(std::string("about to hear ") + row.stimulus);
    }
    fillAndSend(driver_, {{"stimulus", row.stimulus}, {"arguments", json::parse(row.arguments)}});
    if (row.stimulus != std::string("ear")) {  // the picture alone tells of an ear in a hand
      EXPECT_EQ(driver_.waitFor(kOutcome), "yes") << driver_.text("#outcome");
    }
    letScriptDo(row.after);
    if (*row.heard != '\0') expectHeard(row.heard);
    if (row.isItsEnd) expectState("app", "ended");
  }
};

TEST_F(EveryStimulusOnTheHost, isHeardByAScriptAsFarAsAScriptCanHear) {
  run({write("app", kHearsEverything, kAccesses)});
  expectLogged("ready");
  std::set<std::string> taken;
  for (const HeardRow& row : kRows) {
    take(row);
    taken.insert(row.stimulus);
  }
  const auto known = driver_.run("return document.querySelectorAll('#everything option').length");
  EXPECT_EQ(taken.size(), known.get<std::size_t>());
}

}  // namespace
}  // namespace morvik::test
