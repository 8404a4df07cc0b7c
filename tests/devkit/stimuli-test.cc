// The lines of the command input.
#include "device/stimuli.h"

#include <map>
#include <set>

#include "bench.h"
#include "support/matchers.h"

namespace morvik::test {

using namespace devkit;
namespace {

using std::chrono::milliseconds;

class StimuliTest : public ::testing::Test {
 protected:
  // What one application is told by a line.
  std::string told(const std::string& line) {
    const Lines said = bench_.stimulus("app 1 " + line);
    EXPECT_EQ(said.size(), 1U) << line;
    return said.size() == 1 ? said[0] : "";
  }

  Bench bench_;
};

TEST_F(StimuliTest, everyWordStandsOnceAndHasHelp) {
  const std::string all = stimulate(bench_.device, "help").text;
  std::set<std::string> words;
  ASSERT_THAT(stimuli(), SizeIs(::testing::Gt(20U)));
  for (const Stimulus* stimulus : stimuli()) {
    EXPECT_TRUE(words.insert(stimulus->name).second) << stimulus->name;
    const Outcome help = stimulate(bench_.device, std::string("help ") + stimulus->name);
    EXPECT_TRUE(help.done);
    EXPECT_EQ(help.text, "  " + usageOf(*stimulus) + "\n      " + stimulus->help + '\n');
    EXPECT_THAT(all, HasSubstr(help.text));
  }
}

TEST_F(StimuliTest, goToAllApplicationsOrToOne) {
  EXPECT_THAT(bench_.stimulus("button SIMPLE"), ElementsAre("1: buttonCallback { type: SIMPLE }",
                                                            "2: buttonCallback { type: SIMPLE }"));
  EXPECT_THAT(bench_.stimulus("app 2 button simple"),
              ElementsAre("2: buttonCallback { type: SIMPLE }"));
}

TEST_F(StimuliTest, whatGoesToAllIsToldAsSuch) {
  for (const char* line : {"button SIMPLE", "stop"}) {
    bench_.events.all.clear();
    bench_.stimulus(line);
    for (const Sent& sent : bench_.events.of<Sent>()) {
      EXPECT_THAT(sent.together, ElementsAre(1U, 2U)) << line;
      EXPECT_EQ(isRepeated(sent), sent.application == 2) << line;
    }
    EXPECT_EQ(bench_.events.of<Sent>().size(), 2U) << line;
  }
  bench_.stimulus("app 2 button SIMPLE");
  EXPECT_THAT(bench_.events.of<Sent>().back().together, ::testing::IsEmpty());
}

TEST_F(StimuliTest, doNothingForAnEmptyLineAndAComment) {
  for (const char* line : {"", "   ", "\t", "\r", "# button SIMPLE"}) {
    EXPECT_THAT(bench_.stimulus(line), IsEmpty());
  }
}

TEST_F(StimuliTest, sayWhatIsWrongAndChangeNothing) {
  using namespace std::string_literals;
  const std::pair<std::string, const char*> cases[] = {
      {"fly", "there is no stimulus fly. help lists them.\n"},
      {"help fly", "help: there is no stimulus fly; help alone lists them. Usage: help [WORD]\n"},
      {"app", "app takes a number and a stimulus"},
      {"app 1", "app takes a number and a stimulus"},
      {"app 3 button SIMPLE", "there is no application 3; there are 1, 2\n"},
      {"app 0 button SIMPLE", "there is no application 0; there are 1, 2\n"},
      {"app x button SIMPLE", "there is no application x; there are 1, 2\n"},
      {"app '' button SIMPLE", "there is no application \"\"; there are 1, 2\n"},
      {"app 1 ear LEFT 3",
       "ear: this happens to the device, not to one application: leave \"app 1\" out. Usage: ear"},
      {"button", "button: the kind of press is missing. Usage: button SIMPLE|DOUBLE"},
      {"button HARD", "button: HARD is none of SIMPLE DOUBLE TRIPLE"},
      {"button SIMPLE DOUBLE", "button: what is DOUBLE? Usage: button SIMPLE|DOUBLE"},
      {"button ''", "button: \"\" is none of SIMPLE DOUBLE TRIPLE"},
      {"ear UP 3", "ear: UP is none of LEFT|RIGHT"},
      {"ear LEFT 17", "ear: 17 is no number from 0 to 16"},
      {"ear LEFT three", "ear: three is no number from 0 to 16"},
      {"rfid IN=1 app=x", "rfid: x is no number"},
      {"rfid a hex=0", "rfid: 0 is no row of bytes"},
      {"rfid a hex=0g", "rfid: 0g is no row of bytes"},
      {"rfid a color=GOLD", "rfid: GOLD is none of NONE_COL RED"},
      {"refuse NEVER", "refuse: NEVER is none of OK ERROR"},
      {"refuse BUSY wings", "refuse: there is no command wings; there are interactiveMode, ping, "},
      {"refuse BUSY id", "refuse: there is no command id"},
      {"refuse BUSY social", "refuse: there is no command social; "},
      {"refuse BUSY 0", "refuse: 0 is no number from 1"},
      {"refuse BUSY -3", "refuse: -3 is no number from 1"},
      {"refuse BUSY ears often", "refuse: often is no number from 1"},
      {"refuse BUSY ears 1 1", "refuse: what is 1?"},
      {"delay 5 wings", "delay: there is no command wings; there are interactiveMode, ping, "},
      {"delay 60001", "delay: 60001 is no number from 0 to 60000"},
      {"finish", "finish: what to end is missing"},
      {"finish wings", "finish: there is no work wings; there are led, ears, tts, "},
      {"pieces 0", "pieces: 0 is no number from 1"},
      {"call INCOMING",
       "call: WHO is missing. Usage: call INCOMING WHO|BEGINNING [WHO]|TERMINATED [WHO]\n"},
      {"button \"SIMPLE", "a quote is left open"},
      {"button SIMPLE\\", "a quote is left open, or a backslash ends the line\n"},
      {"button \xff", "the line is not UTF-8 text"},
      {"button SIMPLE\0"s, "the line is not UTF-8 text"},
  };
  for (const auto& [line, words] : cases) {
    EXPECT_THAT(bench_.refused(line), StartsWith(words)) << line;
  }
  EXPECT_EQ(bench_.device.state().ears.left, 0);
  EXPECT_THAT(bench_.device.faults().refusals(), IsEmpty());
  EXPECT_THAT(bench_.device.faults().delays(), IsEmpty());
}

TEST_F(StimuliTest, aRefusalNamesEveryCommandThatTheDeviceAnswers) {
  const std::string refusal = bench_.refused("refuse ERROR message");
  ASSERT_THAT(commands(), SizeIs(::testing::Gt(10U)));
  for (const auto* command : commands()) {
    EXPECT_THAT(refusal, HasSubstr(command->name()));
    EXPECT_EQ(bench_.noted("refuse ERROR " + command->name()).size(), 1U) << command->name();
  }
}

TEST_F(StimuliTest, aRefusalShowsOnlyTheBeginningOfALongWord) {
  const std::string word(5000, 'x');
  for (const std::string before : {"", "app ", "button ", "ear LEFT ", "refuse BUSY ", "finish ",
                                   "help ", "button SIMPLE ", "rfid a color="}) {
    const std::string behind = before == "app " ? " button SIMPLE" : "";
    const std::string refusal = bench_.refused(before + word + behind);
    EXPECT_THAT(refusal, HasSubstr(word.substr(0, 40) + " ...")) << before;
    EXPECT_LT(refusal.size(), 500U) << before;
  }
}

TEST_F(StimuliTest, aRefusalRemindsOfQuotesWhereATextIsTaken) {
  const std::string reminder = " (a TEXT with blanks stands in quotes)\n";
  for (const char* line : {"message anna Are you there", "recognition light on 90",
                           "serial ttyS1 hello you there", "finish led ERROR no light"}) {
    EXPECT_THAT(bench_.refused(line), EndsWith(reminder)) << line;
  }
  EXPECT_THAT(bench_.refused("button SIMPLE DOUBLE"), Not(HasSubstr(reminder)));
}

TEST_F(StimuliTest, sayThatNobodyIsThere) {
  bench_.device.applicationLeft(1);
  bench_.device.applicationLeft(2);
  for (const char* line : {"button SIMPLE", "drop", "pieces 3", "stop", "call INCOMING you"}) {
    const Outcome outcome = stimulate(bench_.device, line);
    EXPECT_TRUE(outcome.done);
    EXPECT_EQ(outcome.text, "no application is connected\n") << line;
  }
  EXPECT_EQ(bench_.refused("app 1 button SIMPLE"), "no application is connected\n");
}

TEST_F(StimuliTest, nobodyHearsWordsOnceTheListenerIsGone) {
  bench_.command("asr { dictionary: 'a' }");
  bench_.device.applicationLeft(1);
  EXPECT_THAT(bench_.refused("noise"), StartsWith("noise: nobody listens for words; "));
}

TEST_F(StimuliTest, whatALineChangesIsNoted) {
  bench_.command("asr { dictionary: 'a' }");
  const std::pair<const char*, const char*> cases[] = {
      {"refuse ERROR", "refuses commands with ERROR, once"},
      {"refuse ERROR morvikMessageQuery 3", "refuses morvikMessageQuery with ERROR, 3 times"},
      {"app 2 refuse BUSY ears always", "refuses ears of app 2 with BUSY, always"},
      {"accept", "refuses nothing"},
      {"delay 700 ping", "answers ping after 700 ms"},
      {"delay 0", "answers commands at once"},
      {"finish asr TIMEOUT", "ends asr with TIMEOUT"},
      {"pieces 3 50", "sends the next message in pieces of 3 bytes, 50 ms between them"},
      {"app 2 pieces 3",
       "sends the next message to app 2 in pieces of 3 bytes, 20 ms between them"},
      {"message anna hi", "a message of anna came"},
      {"contact anna", "the contact anna is kept"},
      {"credentials facebookToken=abc", "credentials kept: facebookToken"},
      {"credentials withhold", "the credentials are withheld"},
      {"credentials give", "the credentials are given"},
      {"ear LEFT 3", "the left ear is turned to 3"},
      {"ear RIGHT 0", "the right ear is turned to 0"},
      {"library SONG a 'b c'", "songs of the library: a, b c"},
      {"library GENRE", "genres of the library: none"},
  };
  for (const auto& [line, note] : cases) EXPECT_THAT(bench_.noted(line), ElementsAre(note)) << line;
}

// A writer who sees nothing would not know whether the line was read.
TEST_F(StimuliTest, everyWordShowsSomethingAlsoWhenNobodyIsThere) {
  const std::map<std::string, std::string> behind = {
      {"button", "SIMPLE"},     {"rfid", "a"},          {"ear", "LEFT 0"},
      {"ears", "START_LEFT"},   {"message", "anna hi"}, {"contact", "anna"},
      {"credentials", "give"},  {"dock", "1"},          {"recognition", "a 90"},
      {"player", "PLAY"},       {"library", "SONG"},    {"call", "INCOMING you"},
      {"serial", "ttyS1 line"}, {"refuse", "BUSY"},     {"delay", "5"},
      {"finish", "asr"},        {"pieces", "3"},
  };
  bench_.command("asr { dictionary: 'a' }");
  bench_.device.applicationLeft(1);
  bench_.device.applicationLeft(2);
  for (const Stimulus* stimulus : stimuli()) {
    const auto words = behind.find(stimulus->name);
    bench_.events.all.clear();
    const Outcome outcome =
        stimulate(bench_.device,
                  std::string(stimulus->name) + ' ' + (words != behind.end() ? words->second : ""));
    EXPECT_THAT(outcome.text, Not(HasSubstr("missing")));
    EXPECT_TRUE(!outcome.text.empty() || !bench_.events.notes().empty()) << stimulus->name;
  }
}

TEST_F(StimuliTest, theButtonIsPressedInSixWays) {
  for (const char* type : {"SIMPLE", "DOUBLE", "TRIPLE", "MULTIPLE", "LONG_START", "LONG_STOP"}) {
    EXPECT_EQ(told("button " + std::string(type)),
              "1: buttonCallback { type: " + std::string(type) + " }");
  }
}

TEST_F(StimuliTest, aTagMayHaveEveryField) {
  EXPECT_EQ(told("rfid 04a1"), "1: rfidCallback { id: \"04a1\" }");
  EXPECT_EQ(told("rfid 04a1 out app=-3 type=volumz pict=7 color=BROWN content='a b'"),
            "1: rfidCallback { id: \"04a1\" content: \"a b\" direction: OUT app: -3 type: VOLUMZ "
            "pict: 7 color: BROWN }");
  EXPECT_EQ(told("rfid x IN hex=610062"),
            "1: rfidCallback { id: \"x\" content: \"a\\000b\" direction: IN }");
}

TEST_F(StimuliTest, eventsCarryTheFieldsThatTheirLinesName) {
  const std::pair<const char*, const char*> cases[] = {
      {"ears START_LEFT", "earsCallback { type: START_LEFT }"},
      {"ears STOP_RIGHT -3 5", "earsCallback { type: STOP_RIGHT step: -3 length: 5 }"},
      {"dock 7", "dock { status: 7 }"},
      {"dock 7 -1", "dock { status: 7 change: -1 }"},
      {"player PAUSE", "multimediaCallback { action: PAUSE }"},
      {"call BEGINNING you", "m2mCallback { type: BEGINNING correspondant: \"you\" }"},
      {"stop", "interactiveMode { action: STOP }"},
  };
  for (const auto& [line, message] : cases) {
    EXPECT_EQ(told(line), "1: " + std::string(message));
  }
}

TEST_F(StimuliTest, stopTakesInteractiveModeBack) {
  bench_.stimulus("app 1 stop");
  EXPECT_THAT(bench_.command("ping {}"), ElementsAre(HasSubstr("BAD_INTERACTIVEID")));
  EXPECT_THAT(bench_.command("ping {}", 2), ElementsAre("2: re response { code: OK }"));
}

TEST_F(StimuliTest, refuseAnswersWithEveryCode) {
  const auto& codes = *zeph::VReturnCode_descriptor();
  for (int i = 0; i < codes.value_count(); ++i) {
    bench_.stimulus("refuse " + codes.value(i)->name());
    EXPECT_THAT(bench_.command("led { light { color: 'red' } }"),
                ElementsAre("1: re response { code: " + codes.value(i)->name() +
                            " description: \"as the command input wants it\" }"));
    EXPECT_THAT(bench_.command("ping {}"), ElementsAre("1: re response { code: OK }"));
  }
  EXPECT_EQ(bench_.device.state().led.color, "") << "a refused command does nothing";
}

TEST_F(StimuliTest, refuseCountsAndTellsKindsAndApplicationsApart) {
  const auto isRefused = [&](const std::string& payload, AppNumber from) {
    return bench_.command(payload, from).front().find("BUSY") != std::string::npos;
  };
  bench_.stimulus("refuse BUSY ears 2");
  bench_.stimulus("app 2 refuse BUSY tts ALWAYS");
  EXPECT_FALSE(isRefused("ping {}", 1));
  EXPECT_TRUE(isRefused("ears {}", 1));
  EXPECT_TRUE(isRefused("ears {}", 2));
  EXPECT_FALSE(isRefused("ears {}", 1));
  EXPECT_FALSE(isRefused("tts { action: STOP }", 1));
  for (int i = 0; i < 5; ++i) EXPECT_TRUE(isRefused("tts { action: STOP }", 2));
  bench_.stimulus("refuse BUSY interactiveMode ALWAYS");
  EXPECT_TRUE(isRefused("interactiveMode { action: START interactiveId: 'x' }", 1));
  bench_.stimulus("accept");
  EXPECT_FALSE(isRefused("tts { action: STOP }", 2));
  EXPECT_FALSE(isRefused("interactiveMode { action: START interactiveId: 'x' }", 1));
}

TEST_F(StimuliTest, delayMakesAnswersLate) {
  bench_.stimulus("delay 700 ping");
  bench_.stimulus("delay 200");
  EXPECT_THAT(bench_.command("ping {}"), IsEmpty());
  EXPECT_THAT(bench_.pass(milliseconds(699)), IsEmpty());
  EXPECT_THAT(bench_.pass(milliseconds(1)), ElementsAre("1: re response { code: OK }"));
  EXPECT_THAT(bench_.command("tts { action: STOP }"), IsEmpty());
  bench_.device.applicationLeft(1);
  EXPECT_THAT(bench_.pass(milliseconds(200)), IsEmpty()) << "to an application that is gone";
  bench_.stimulus("delay 0");
  EXPECT_EQ(bench_.command("tts { action: STOP }", 2).size(), 1U);
}

TEST_F(StimuliTest, finishEndsEveryKindOfWork) {
  const std::pair<const char*, const char*> works[] = {
      {"led", "led { fade { color: '' period: 9 } }"},
      {"ears", "ears { left: 5 }"},
      {"tts", "tts { action: START text: 'a' }"},
      {"asr", "asr { dictionary: 'a' }"},
      {"sound", "multimedia { play { url: 'a' } }"},
      {"record", "multimedia { record { url: '' } }"},
      {"photo", "webcam { photo: '' }"},
      {"dock-led", "dock { led { fade { color: '' period: 9 } } }"},
      {"dock-move", "dock { move { cmd: UP } }"},
  };
  ASSERT_EQ(std::size(works), kWorkKinds);
  for (const auto& [work, command] : works) {
    bench_.command(command);
    EXPECT_EQ(bench_.stimulus("finish " + std::string(work) + " NOT_CONNECTED").back(),
              "1: re event { code: NOT_CONNECTED }");
    EXPECT_THAT(bench_.refused("finish " + std::string(work)), HasSubstr("nothing goes on there"));
  }
}

TEST_F(StimuliTest, piecesAreForTheNextMessageOnly) {
  bench_.stimulus("app 1 pieces 3 50");
  stimulate(bench_.device, "button SIMPLE");
  stimulate(bench_.device, "button SIMPLE");
  std::vector<std::size_t> sizes;
  for (const Outgoing& sent : bench_.outlet.sent) sizes.push_back(sent.delivery.pieceSize);
  EXPECT_THAT(sizes, ElementsAre(3, 0, 0, 0));
  EXPECT_EQ(bench_.outlet.sent[0].delivery.pause, milliseconds(50));
}

TEST_F(StimuliTest, dropEndsConnections) {
  bench_.stimulus("app 2 drop");
  EXPECT_THAT(bench_.outlet.dropped, ElementsAre(2));
  bench_.stimulus("drop");
  EXPECT_THAT(bench_.outlet.dropped, ElementsAre(2, 1, 2));
}

}  // namespace
}  // namespace morvik::test
