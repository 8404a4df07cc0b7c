// How each feature of the device answers, goes on and ends.
#include <fcntl.h>
#include <sys/file.h>

#include <filesystem>
#include <fstream>

#include "bench.h"
#include "device/media-files.h"
#include "support/matchers.h"
#include "support/temporary-folder.h"
#include "support/waiting.h"

namespace morvik::test {

using namespace devkit;
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

const std::string kOk = "1: re response { code: OK }";
const std::string kTerminated = "1: re event { code: TERMINATED }";
const std::string kCutShort = "1: re? event { code: CANCELLED }";

std::string error(const std::string& why) {
  return "1: re response { code: ERROR description: \"" + why + "\" }";
}

class Feature : public ::testing::Test {
 protected:
  // Both applications hear what the device tells of itself.
  static Lines both(const std::string& payload) { return {"1: " + payload, "2: " + payload}; }

  void expectRefused(const std::string& payload, const std::string& why) {
    EXPECT_THAT(bench_.command(payload), ElementsAre(error(why))) << payload;
  }

  Bench bench_;
  const DeviceState& state_ = bench_.device.state();
};

using EarsTest = Feature;

TEST_F(EarsTest, turnStepByStepAndTellEverybody) {
  EXPECT_THAT(bench_.command("ears { left: 3 }"),
              ElementsAre(kOk, "1: earsCallback { type: START_LEFT step: 0 length: 3 }",
                          "2: earsCallback { type: START_LEFT step: 0 length: 3 }"));
  EXPECT_THAT(bench_.pass(milliseconds(299)), IsEmpty());
  EXPECT_THAT(bench_.pass(milliseconds(1)),
              ElementsAre("1: earsCallback { type: STOP_LEFT step: 3 length: 3 }",
                          "2: earsCallback { type: STOP_LEFT step: 3 length: 3 }", kTerminated));
  EXPECT_EQ(state_.ears.left, 3);
  EXPECT_EQ(state_.ears.right, 0);
}

TEST_F(EarsTest, turnWithinTheirReachAndByDifferences) {
  struct Case {
    const char* command;
    int left;
    int right;
  };
  for (const Case& move : {Case{"left: 5 right: 7", 5, 7}, Case{"left: -2 relative: true", 3, 7},
                           Case{"right: 2147483647 relative: true", 3, 16},
                           Case{"left: -2147483648 right: 99", 0, 16}, Case{"", 0, 16}}) {
    bench_.command("ears { " + std::string(move.command) + " }");
    bench_.pass(seconds(2));
    EXPECT_EQ(state_.ears.left, move.left) << move.command;
    EXPECT_EQ(state_.ears.right, move.right) << move.command;
  }
}

TEST_F(EarsTest, anEarThatStaysIsSilent) {
  EXPECT_THAT(bench_.command("ears { left: 0 }"), ElementsAre(kOk));
  EXPECT_THAT(bench_.pass(milliseconds(0)), ElementsAre(kTerminated));
}

TEST_F(EarsTest, aResetAnswersWithThePositions) {
  bench_.command("ears { left: 4 right: 5 }");
  bench_.pass(seconds(2));
  EXPECT_EQ(bench_.command("ears { reset: true left: 1 }").front(),
            "1: re ears { left: 0 right: 5 } response { code: OK }");
  EXPECT_EQ(bench_.pass(seconds(2)).back(),
            "1: re ears { left: 0 right: 5 } event { code: TERMINATED }");
}

TEST_F(EarsTest, aNewCommandStopsThemHalfWay) {
  bench_.command("ears { left: 8 }");
  const Lines said = bench_.command("ears { left: 16 }");
  EXPECT_THAT(said, ElementsAre("1: earsCallback { type: STOP_LEFT step: 4 length: 4 }",
                                "2: earsCallback { type: STOP_LEFT step: 4 length: 4 }", kCutShort,
                                kOk, "1: earsCallback { type: START_LEFT step: 4 length: 12 }",
                                "2: earsCallback { type: START_LEFT step: 4 length: 12 }"));
  EXPECT_EQ(bench_.pass(seconds(2)).back(), kTerminated);
  EXPECT_THAT(bench_.pass(seconds(60)), IsEmpty()) << "the end of the first command";
}

TEST_F(EarsTest, areTurnedAndBlockedByHand) {
  bench_.stimulus("ear RIGHT 6");
  EXPECT_EQ(state_.ears.right, 6);
  bench_.command("ears { right: 16 }");
  const Lines said = bench_.stimulus("ears BLOCKED_RIGHT 9");
  EXPECT_EQ(said.front(), "1: earsCallback { type: BLOCKED_RIGHT step: 9 }");
  EXPECT_EQ(said.back(), "1: re event { code: CANCELLED }");
}

using LedTest = Feature;

TEST_F(LedTest, aNewColourEndsWhatWentOn) {
  bench_.command("led { fade { color: 'red' period: 1000 } }");
  EXPECT_THAT(bench_.command("led { light { color: 'blue' } }"), ElementsAre(kCutShort, kOk));
  EXPECT_THAT(bench_.pass(seconds(2)), IsEmpty());
}

using DockTest = Feature;

TEST_F(DockTest, hasAnLedOfItsOwn) {
  bench_.command("led { light { color: 'red' } }");
  EXPECT_THAT(bench_.command("dock { led { fade { color: 'blue' period: 20 } } }"),
              ElementsAre(kOk));
  EXPECT_EQ(state_.led.color, "red");
  EXPECT_EQ(state_.dock.led.color, "blue");
  EXPECT_THAT(bench_.pass(milliseconds(20)), ElementsAre(kTerminated));
}

TEST_F(DockTest, movesForTheTimeAskedForOrTheWholeWay) {
  EXPECT_THAT(bench_.command("dock { move { cmd: UP time: 500 } }"), ElementsAre(kOk));
  EXPECT_EQ(state_.dock.moving, zeph::Dock::UP);
  EXPECT_THAT(bench_.pass(milliseconds(500)), ElementsAre(kTerminated));
  EXPECT_EQ(state_.dock.moving, zeph::Dock::STOP);
  bench_.command("dock { move { cmd: LEFT time: -1 } }");
  EXPECT_THAT(bench_.pass(milliseconds(2000)), ElementsAre(kTerminated));
  bench_.command("dock { move { cmd: LEFT time: 2147483647 } }");
  EXPECT_THAT(bench_.pass(seconds(60)), ElementsAre(kTerminated));
}

TEST_F(DockTest, stops) {
  bench_.command("dock { move { cmd: UP } }");
  EXPECT_THAT(bench_.command("dock { move { cmd: STOP } }"), ElementsAre(kCutShort, kOk));
  EXPECT_EQ(state_.dock.moving, zeph::Dock::STOP);
}

TEST_F(DockTest, refusesWhatIsNoCommand) {
  expectRefused("dock { status: 1 }", "the dock needs a move or an LED command");
}

using TtsTest = Feature;

TEST_F(TtsTest, speaksAsLongAsTheTextIs) {
  struct Case {
    std::size_t letters;
    milliseconds length;
  };
  for (const Case& speech :
       {Case{1, milliseconds(500)}, Case{50, seconds(3)}, Case{5000, seconds(10)}}) {
    const std::string text(speech.letters, 'a');
    EXPECT_THAT(bench_.command("tts { action: START lang: 'fr' text: '" + text + "' }"),
                ElementsAre(kOk));
    EXPECT_EQ(state_.speech.text, text);
    EXPECT_EQ(state_.speech.lang, "fr");
    EXPECT_THAT(bench_.pass(speech.length - milliseconds(1)), IsEmpty());
    EXPECT_THAT(bench_.pass(milliseconds(1)), ElementsAre(kTerminated));
  }
}

TEST_F(TtsTest, isStopped) {
  EXPECT_THAT(bench_.command("tts { action: STOP }"), ElementsAre(kOk));
  bench_.command("tts { action: START text: 'a' }");
  EXPECT_THAT(bench_.command("tts { action: STOP }"), ElementsAre(kCutShort, kOk));
  EXPECT_THAT(bench_.pass(seconds(60)), IsEmpty());
  expectRefused("tts { action: START }", "there is no text to speak");
}

using AsrTest = Feature;

TEST_F(AsrTest, hearsWhatIsSaidOnce) {
  EXPECT_THAT(bench_.command("asr { dictionary: 'yes|no' lang: 'en' }"), ElementsAre(kOk));
  EXPECT_EQ(state_.listening.grammar, "yes|no");
  EXPECT_THAT(bench_.stimulus("recognition 'oh yes' 87 <a>1</a>"),
              ElementsAre("1: re asrCallback { recognition { text: \"oh yes\" confident: 87 "
                          "semantic: \"<a>1</a>\" } }"));
  EXPECT_THAT(bench_.refused("recognition no 1"), HasSubstr("nobody listens for words"));
  EXPECT_THAT(bench_.pass(seconds(60)), IsEmpty());
}

TEST_F(AsrTest, answersTheApplicationThatListens) {
  bench_.command("asr { dictionary: 'a' }", 2);
  EXPECT_THAT(bench_.refused("app 1 recognition a 1"), HasSubstr("nobody listens for words"));
  EXPECT_THAT(bench_.stimulus("app 2 recognition a 1"),
              ElementsAre("2: re asrCallback { recognition { text: \"a\" confident: 1 } }"));
}

TEST_F(AsrTest, hearsNoiseAndSilence) {
  bench_.command("asr { dictionary: 'a' }");
  EXPECT_THAT(bench_.stimulus("noise"), ElementsAre("1: re asrCallback { }"));
  bench_.command("asr { dictionary: 'a' }");
  EXPECT_THAT(bench_.pass(seconds(30)), ElementsAre("1: re event { code: TIMEOUT }"));
  expectRefused("asr { lang: 'en' }", "there is no grammar to listen for");
}

using MultimediaTest = Feature;

TEST_F(MultimediaTest, playsToTheEnd) {
  EXPECT_THAT(bench_.command("multimedia { play { url: 'a.mp3' } }"),
              ElementsAre(kOk, "1: multimediaCallback { action: PLAY }",
                          "2: multimediaCallback { action: PLAY }"));
  EXPECT_EQ(state_.player.url, "a.mp3");
  EXPECT_EQ(state_.player.mode, Player::Mode::kPlaying);
  EXPECT_THAT(bench_.pass(seconds(3)),
              ElementsAre("1: multimediaCallback { action: STOP }",
                          "2: multimediaCallback { action: STOP }", kTerminated));
  EXPECT_EQ(state_.player.mode, Player::Mode::kStopped);
}

TEST_F(MultimediaTest, pausesAndGoesOn) {
  bench_.command("multimedia { play { url: 'a' } }");
  EXPECT_EQ(bench_.command("multimedia { pause {} }").back(),
            "2: multimediaCallback { action: PAUSE }");
  EXPECT_THAT(bench_.pass(seconds(60)), IsEmpty());
  EXPECT_EQ(state_.player.mode, Player::Mode::kPaused);
  expectRefused("multimedia { pause {} }", "nothing plays");
  EXPECT_EQ(bench_.command("multimedia { resume {} }").back(),
            "2: multimediaCallback { action: RESUME }");
  EXPECT_EQ(bench_.pass(seconds(3)).back(), "1: re? event { code: TERMINATED }");
  expectRefused("multimedia { resume {} }", "nothing is paused");
}

TEST_F(MultimediaTest, stopsSoundsAndRecordings) {
  EXPECT_THAT(bench_.command("multimedia { stop {} }"), ElementsAre(kOk));
  bench_.command("multimedia { play { url: 'a' } }");
  EXPECT_THAT(bench_.command("multimedia { stop {} }"),
              ElementsAre(kOk, "1: multimediaCallback { action: STOP }",
                          "2: multimediaCallback { action: STOP }", kCutShort));
  bench_.command("multimedia { record { url: '' } }");
  EXPECT_THAT(bench_.command("multimedia { stop {} }"),
              ElementsAre(kOk, "1: re? event { code: TERMINATED }"));
}

TEST_F(MultimediaTest, goesRoundTheSongs) {
  bench_.stimulus("library SONG a b c");
  for (const auto& [command, song] : {std::pair{"next", "a"},
                                      {"next", "b"},
                                      {"next", "c"},
                                      {"next", "a"},
                                      {"previous", "c"},
                                      {"previous", "b"}}) {
    bench_.command("multimedia { " + std::string(command) + " {} }");
    EXPECT_EQ(state_.player.url, song);
  }
  bench_.stimulus("library SONG");
  expectRefused("multimedia { next {} }", "the library has no songs");
}

TEST_F(MultimediaTest, answersEachQueryWithItsListAlone) {
  const std::pair<const char*, const char*> queries[] = {{"getartist", "artistlist"},
                                                         {"getfolder", "folderlist"},
                                                         {"getplaylist", "playlistlist"},
                                                         {"getgenre", "genrelist"},
                                                         {"getsong", "songlist"}};
  for (const auto& [query, list] : queries) {
    const std::string kind = std::string(query).substr(3);
    EXPECT_EQ(bench_.stimulus("library " + kind + " 'one " + kind + "' two").size(), 2U);
    EXPECT_THAT(bench_.command("multimedia { " + std::string(query) + " {} }"),
                ElementsAre("1: re multimedia { " + std::string(list) + ": \"one " + kind + "\" " +
                            list + ": \"two\" }"));
  }
  expectRefused("multimedia {}", "neither a command nor a query");
}

std::string startOf(const char* path, std::size_t size) {
  std::ifstream file(path, std::ios::binary);
  std::string bytes(size, '\0');
  file.read(bytes.data(), static_cast<std::streamsize>(size));
  return bytes;
}

TEST_F(MultimediaTest, recordsIntoAFile) {
  EXPECT_THAT(bench_.command("multimedia { record { url: '' } }"), ElementsAre(kOk));
  EXPECT_THAT(bench_.pass(seconds(3)), ElementsAre(kTerminated));
  EXPECT_EQ(startOf(kRecording.path, 4), "fLaC");
  EXPECT_THAT(bench_.events.notes(), ElementsAre("wrote /tmp/record.flac"));
}

using WebcamTest = Feature;

std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// A file of the user's, and how it is chosen.
struct MediaCase {
  const char* stimulus;
  const MediaKind& kind;
  const char* command;
};
const MediaCase kMediaCases[] = {{"picture", kPicture, "webcam { photo: 'x' }"},
                                 {"recording", kRecording, "multimedia { record { url: '' } }"}};

// Where photos and recordings go is the same for all processes: one test at a time looks there.
class ChosenFileTest : public Feature, public ::testing::WithParamInterface<MediaCase> {
 protected:
  ChosenFileTest() : turn_(open("/tmp", O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    EXPECT_EQ(flock(turn_.get(), LOCK_EX), 0);
  }

  std::string write(const std::string& bytes, const std::string& name = "file") {
    std::ofstream(folder_ / name, std::ios::binary) << bytes;
    return folder_ / name;
  }
  std::string line(const std::string& path) {
    return std::string(GetParam().stimulus) + " '" + path + "'";
  }
  // What the next photo or recording holds.
  std::string taken() {
    bench_.command(GetParam().command);
    bench_.pass(seconds(3));
    return contentOf(GetParam().kind.path);
  }

  const MediaKind& kind_ = GetParam().kind;
  TemporaryFolder folder_;

 private:
  Descriptor turn_;
};

INSTANTIATE_TEST_SUITE_P(All, ChosenFileTest, ::testing::ValuesIn(kMediaCases),
                         [](const auto& row) { return std::string(row.param.stimulus); });

TEST_P(ChosenFileTest, isWhatIsTakenFromThenOn) {
  const std::string usual = taken();
  const std::string bytes = std::string(kind_.begin) + "the user's" + std::string(100000, '\0');
  const std::string path = write(bytes);
  EXPECT_THAT(bench_.noted(line(path)), ElementsAre(::testing::EndsWith(": " + path)));
  std::filesystem::remove(path);
  EXPECT_EQ(taken(), bytes);
  EXPECT_EQ(taken(), bytes);
  EXPECT_THAT(bench_.noted(GetParam().stimulus), ElementsAre(HasSubstr("the device's own")));
  EXPECT_EQ(taken(), usual);
}

TEST_P(ChosenFileTest, isRefusedWhenItIsNone) {
  const std::string good = write(std::string(kind_.begin) + "good", "good");
  bench_.noted(line(good));
  const std::string large = write("", "large");
  std::filesystem::resize_file(large, kLargestMediaFile + 1);
  const std::pair<std::string, std::string> bad[] = {
      {folder_ / "none", "No such file or directory"},
      {folder_.path(), "is no file"},
      {"/dev/zero", "is no file"},
      {write("", "empty"), "is empty"},
      {large, "has 16777217 bytes, and 16777216 are the most"},
      {write("GIF89a", "other"), std::string("is no ") + kind_.format + " file"},
      {"", "the file is empty"},
  };
  for (const auto& [path, why] : bad) {
    EXPECT_THAT(bench_.refused(line(path)), HasSubstr(why)) << path;
  }
  EXPECT_EQ(taken(), contentOf(good)) << "the one before";
}

TEST_P(ChosenFileTest, isFoundFromTheFoldersThatAUserMeans) {
  const std::string path = write(std::string(kind_.begin) + "mine");
  const auto relative = std::filesystem::relative(path);
  EXPECT_TRUE(stimulate(bench_.device, line(relative)).done) << relative;
  EXPECT_THAT(bench_.refused(line("~/no such file")), HasSubstr("/no such file: "));
  EXPECT_THAT(bench_.refused(line("~/no such file")), ::testing::Not(HasSubstr("~")));
}

TEST_F(WebcamTest, takesAPhoto) {
  EXPECT_THAT(bench_.command("webcam { photo: 'here' }"), ElementsAre(kOk));
  EXPECT_EQ(state_.photo, "here");
  EXPECT_THAT(bench_.pass(milliseconds(500)), ElementsAre(kTerminated));
  EXPECT_EQ(startOf(kPicture.path, 3), "\xff\xd8\xff");
  EXPECT_THAT(bench_.events.notes(), ElementsAre("wrote /tmp/picture.jpg"));
}

TEST_F(WebcamTest, failsAsTold) {
  bench_.command("webcam { photo: '' }");
  EXPECT_THAT(bench_.stimulus("finish photo ERROR 'no light'"),
              ElementsAre("1: re event { code: ERROR description: \"no light\" }"));
  EXPECT_THAT(bench_.events.notes(), ElementsAre("ends photo with ERROR")) << "no file";
  EXPECT_THAT(bench_.refused("finish photo"), HasSubstr("nothing goes on there"));
}

class CallTest : public Feature {
 protected:
  static std::string told(int application, const char* type, const std::string& who) {
    return std::to_string(application) + ": m2mCallback { type: " + type + " correspondant: \"" +
           who + "\" }";
  }

  void giveAccounts() {
    giveAccount(1, "ann");
    giveAccount(2, "bob");
  }

  void giveAccount(AppNumber to, const std::string& name) {
    bench_.command("m2m { account { sipId: '" + name +
                       "' sipDomain: 'home' sipPassword: 'p' stunServer: 's' } }",
                   to);
  }

  Call::State stateOf(AppNumber number) const {
    return bench_.device.application(number)->call.state;
  }
};

TEST_F(CallTest, twoApplicationsTalkToEachOther) {
  giveAccounts();
  EXPECT_THAT(bench_.command("m2m { call { address: 'bob' } }"),
              ElementsAre(kOk, told(2, "INCOMING", "ann@home")));
  EXPECT_THAT(bench_.command("m2m { answer { accept: true } }", 2),
              ElementsAre("2: re response { code: OK }", told(2, "BEGINNING", "ann@home"),
                          told(1, "BEGINNING", "bob")));
  EXPECT_THAT(bench_.pass(seconds(60)), IsEmpty()) << "a talk rings no more";
  EXPECT_THAT(bench_.command("m2m { hangup {} }"),
              ElementsAre(kOk, told(1, "TERMINATED", "bob"), told(2, "TERMINATED", "ann@home")));
  EXPECT_EQ(stateOf(1), Call::State::kNone);
  EXPECT_EQ(stateOf(2), Call::State::kNone);
}

TEST_F(CallTest, anApplicationAnswersToItsNumberAndItsAccount) {
  giveAccounts();
  for (const char* address : {"app2", "bob", "bob@home", "sip:bob@home"}) {
    EXPECT_EQ(bench_.command("m2m { call { address: '" + std::string(address) + "' } }").back(),
              told(2, "INCOMING", "ann@home"));
    bench_.command("m2m { hangup {} }", 2);
  }
}

TEST_F(CallTest, withoutAnAccountItIsCalledByItsNumber) {
  EXPECT_EQ(bench_.command("m2m { call { address: 'app1' } }", 2).back(),
            told(1, "INCOMING", "app2"));
}

TEST_F(CallTest, isDeclinedAndEndsByItself) {
  bench_.command("m2m { call { address: 'app2' } }");
  EXPECT_THAT(bench_.command("m2m { answer { accept: false } }", 2),
              ElementsAre("2: re response { code: OK }", told(2, "TERMINATED", "app1"),
                          told(1, "TERMINATED", "app2")));
  bench_.command("m2m { call { address: 'app2' } }");
  EXPECT_THAT(bench_.pass(seconds(30)),
              ElementsAre(told(1, "TERMINATED", "app2"), told(2, "TERMINATED", "app1")));
}

TEST_F(CallTest, endsWhenTheOtherLeaves) {
  bench_.command("m2m { call { address: 'app2' } }");
  bench_.device.applicationLeft(2);
  EXPECT_THAT(bench_.said(), ::testing::Contains(told(1, "TERMINATED", "app2")));
  EXPECT_EQ(stateOf(1), Call::State::kNone);
}

TEST_F(CallTest, somebodyOutsideIsCalledAndCalls) {
  EXPECT_THAT(bench_.command("m2m { call { address: 'far' } }"), ElementsAre(kOk));
  EXPECT_THAT(bench_.stimulus("app 1 call BEGINNING"), ElementsAre(told(1, "BEGINNING", "far")));
  EXPECT_THAT(bench_.stimulus("app 1 call TERMINATED"), ElementsAre(told(1, "TERMINATED", "far")));
  EXPECT_THAT(bench_.stimulus("app 1 call INCOMING aunt"),
              ElementsAre(told(1, "INCOMING", "aunt")));
  EXPECT_THAT(bench_.command("m2m { answer { accept: true } }"),
              ElementsAre(kOk, told(1, "BEGINNING", "aunt")));
  EXPECT_THAT(bench_.refused("app 1 call INCOMING uncle"),
              HasSubstr("app1 is in a call, which call TERMINATED ends"));
  EXPECT_THAT(bench_.refused("app 2 call TERMINATED"), HasSubstr("WHO is missing"));
}

TEST_F(CallTest, refusesWhatMakesNoSense) {
  expectRefused("m2m { answer { accept: true } }", "nobody calls");
  expectRefused("m2m { hangup {} }", "there is no call");
  expectRefused("m2m {}", "neither a call nor an answer, a hangup or an account");
  giveAccounts();
  expectRefused("m2m { account { sipId: 'bob' sipDomain: '' sipPassword: '' stunServer: '' } }",
                "the address \\\"bob\\\" is not free");
}

TEST_F(CallTest, whoTalksIsBusy) {
  bench_.device.applicationCame(3);
  bench_.command("m2m { call { address: 'app2' } }");
  EXPECT_EQ(bench_.command("m2m { call { address: 'far' } }").size(), 1U);
  EXPECT_EQ(bench_.command("m2m { hangup {} }").front(), kOk);
  EXPECT_THAT(
      bench_.command("m2m { call { address: 'app1' } }"),
      ElementsAre(StartsWith("1: re response { code: BUSY"), told(1, "TERMINATED", "app1")));
}

using SerialTest = Feature;

TEST_F(SerialTest, portsAreOpenedWrittenToAndClosed) {
  expectRefused("serial { write { port: 'p' data: 'd' } }", "p is not open");
  EXPECT_THAT(bench_.command("serial { open { port: 'p' baud: 9600 } }"), ElementsAre(kOk));
  EXPECT_EQ(state_.ports.at("p").baud, 9600);
  EXPECT_THAT(bench_.command("serial { write { port: 'p' data: 'd' base: 'h' } }"),
              ElementsAre(kOk));
  EXPECT_EQ(state_.ports.at("p").lines.back().text, "d");
  EXPECT_THAT(bench_.command("serial { close {} }"), ElementsAre(kOk));
  expectRefused("serial { write { port: 'p' data: 'd' } }", "p is not open");
  expectRefused("serial {}", "a serial port can be opened, written to and closed");
}

TEST_F(SerialTest, linesComeInTheBaseThatWasAskedFor) {
  EXPECT_THAT(bench_.stimulus("app 1 serial p 'a b'"),
              ElementsAre("1: serialCallback { readline { port: \"p\" data: \"a b\" } }"));
  EXPECT_THAT(bench_.command(
                  "interactiveId: '' serialCallback { readline { port: 'p' data: '' base: 'h' } }"),
              ElementsAre(kOk));
  EXPECT_THAT(bench_.stimulus("serial p 61"),
              ElementsAreArray(
                  both("serialCallback { readline { port: \"p\" data: \"61\" base: \"h\" } }")));
  EXPECT_THAT(
      bench_.stimulus("app 2 serial p b a"),
      ElementsAre("2: serialCallback { readline { port: \"p\" data: \"b\" base: \"a\" } }"));
  expectRefused("serialCallback {}", "there is no port to listen on");
}

}  // namespace
}  // namespace morvik::test
