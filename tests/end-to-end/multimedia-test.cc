// morvik.multimedia: the player, the recording, the library's lists and the player's events.
#include "support/system/feature-test.h"

namespace morvik::test {
namespace {

struct Named {
  std::string function;
  std::string field;  // of the message
  std::string what;   // its label or its line in the log
};

const std::vector<Named> kCommands{{"pause", "pause", "MutimediaPause"},
                                   {"resume", "resume", "MultimediaResume"},
                                   {"stop", "stop", "MutimediaStop"},
                                   {"next", "next", "MultimediaNext"},
                                   {"previous", "previous", "MultimediaPrevious"}};

const std::vector<Named> kQueries{{"artist", "getartist", "GetArtist"},
                                  {"folder", "getfolder", "GetFolder"},
                                  {"genre", "getgenre", "GetGenre"},
                                  {"playlist", "getplaylist", "GetPlaylist"},
                                  {"song", "getsong", "GetSong"}};

constexpr char kAnswered[] = "MESSAGE MULTIMEDIA: MultimedialistCallback";
constexpr char kNoList[] = "MESSAGE MULTIMEDIA: MultimedialistCallback : no list";

class MultimediaTest : public FeatureTest {
 protected:
  MultimediaTest() : FeatureTest("multimedia") {}
};

TEST_F(MultimediaTest, isThereOnlyWithItsAccess) {
  expectFunctions(
      "play,pause,resume,stop,next,previous,artist,folder,genre,playlist,song,addListener,record");
}

TEST_F(MultimediaTest, callsSendTheirField) {
  std::vector<SentRow> rows{{"record()", R"(multimedia { record { url: "" } })"},
                            {"record(f)", R"(multimedia { record { url: "" } })"}};
  for (const Named& command : kCommands)
    for (const std::string arguments : {"()", "(f)"})
      rows.push_back({command.function + arguments,
                      "multimedia { " + command.field + " { } }",
                      {"MESSAGE MULTIMEDIA: " + command.function}});
  for (const Named& query : kQueries)
    rows.push_back({query.function + "(f)",
                    "multimedia { " + query.field + " { } }",
                    {"MESSAGE MULTIMEDIA: " + query.what}});
  expectSends(rows);
}

// The first application of a test is called app1. Its sounds lie where the server finds them.
TEST_F(MultimediaTest, playSendsPathsOfItsFolderAndOthersAsTheyAre) {
  const std::string folder = "/usr/morvik/apps/app1/";
  const std::string fits(254 - folder.size(), 'a');
  const auto payload = [](const std::string& url) {
    return "multimedia { play { url: \"" + url + "\" } }";
  };
  const auto row = [&](const std::string& source) {
    return SentRow{"play('" + source + "')",
                   payload(source),
                   {"MESSAGE MULTIMEDIA: play[" + source + "]",
                    "MESSAGE MULTIMEDIA: *ascii play[" + source + "]"}};
  };
  const auto local = [&](const std::string& file, const std::string& path) {
    return SentRow{
        "play('./" + file + "', f)",
        payload(path),
        {"MESSAGE MULTIMEDIA: play[./" + file + "]", "MESSAGE MULTIMEDIA: tmpStr[" + file + "]",
         "MESSAGE MULTIMEDIA: buffer play[" + path + "]"}};
  };
  expectSends({row("a.mp3"), row("/tmp/a.mp3"), row("../a.mp3"), row("./"), row(""),
               row("http://h/x"), row(fits + fits), local("a.mp3", folder + "a.mp3"),
               local("a", folder + "a"), local("../a", folder + "../a"), local(fits, folder + fits),
               local(fits + "b", folder + fits)});
}

// The source is looked at first, and a query has no form without a function.
TEST_F(MultimediaTest, callsAreRefusedInTheirOrder) {
  std::vector<RefusedRow> rows =
      wrong({"play()", "play('a', 5)", "play('a', f, f)", "play(5)", "play(null, f)", "play({})",
             "play(f)", "play([])", "play(bad)", "play(new ArrayBuffer(8))", "record(1)",
             "record('url', f)", "addListener()", "addListener(1)", "addListener(f, 1)"}) +
      needMode({"play('a')", "play('./a', f)", "record()", "record(f)"});
  for (const Named& command : kCommands)
    rows = rows + wrong({command.function + "(1)", command.function + "(f, f)"}) +
           needMode({command.function + "()", command.function + "(f)"});
  for (const Named& query : kQueries)
    rows = rows +
           wrong({query.function + "()", query.function + "(1)", query.function + "('x', f)"}) +
           needMode({query.function + "(f)"});
  expectRefuses(rows);
}

TEST_F(MultimediaTest, anAnswerToACommandIsACode) {
  std::vector<AnsweredRow> rows;
  const auto add = [&](const std::string& call, const std::string& label) {
    rows.push_back(
        {call,
         "response { code: OK }",
         {"DEBUG Event: " + label, "DEBUG calling response function", "MESSAGE JSLOG: string OK"}});
    rows.push_back({"",
                    "event { code: TERMINATED }",
                    {"DEBUG Event: " + label, "DEBUG calling event function",
                     "MESSAGE JSLOG: string TERMINATED"}});
  };
  add("play('a', tell)", "MutimediaPlay");
  for (const Named& command : kCommands) add(command.function + "(tell)", command.what);
  rows.push_back({"stop()", "response { code: OK }", {"WARNING NO CORRELATION FOUND"}});
  expectAnswered(rows);
}

TEST_F(MultimediaTest, anAnswerToRecordIsAnObject) {
  expectAnswered(
      {{"record(tell)",
        "response { code: OK description: 'left out' }",
        {"DEBUG has_response", R"(MESSAGE JSLOG: object {"type":"OK"})"}},
       {"",
        "event { code: TERMINATED }",
        {"DEBUG has_event", R"(MESSAGE JSLOG: object {"type":"TERMINATED","data":{}})"}},
       {"",
        "event { code: ERROR description: 'x' } response { code: BUSY }",
        {"DEBUG has_response", R"(MESSAGE JSLOG: object {"type":"BUSY"})", "DEBUG has_event",
         R"(MESSAGE JSLOG: object {"type":"ERROR","description":"x","data":{}})"}}});
}

TEST_F(MultimediaTest, theRecordingCanBePlayed) {
  interactive(
      "morvik.multimedia.record(function(e) {"
      " log([e instanceof Object, Object.keys(e.data).length].join());"
      " morvik.multimedia.play(e.data, log); });",
      access());
  device.event(device.receive(), "TERMINATED");
  EXPECT_EQ(app.logged(), "false,0");
  EXPECT_EQ(receiveAndReply().multimedia().ShortDebugString(),
            R"(play { url: "/tmp/record.flac" })");
  EXPECT_EQ(app.logged(), "OK");
  app.waitForLog("MULTIMEDIA: *ascii play[/tmp/record.flac]");
}

TEST_F(MultimediaTest, aFileOfTheApplicationCanBePlayed) {
  interactive("morvik.multimedia.play(file.read('sub/a.mp3'));", access());
  EXPECT_EQ(device.receive().multimedia().play().url(), apps.path() + "/app1/sub/a.mp3");
}

// Of all lists the first one that is not empty, and of it the first entry: required as it stands.
TEST_F(MultimediaTest, anAnswerToAQueryIsOneEntry) {
  const auto heard = [](const std::string& entry) {
    return Lines{kAnswered, "MESSAGE JSLOG: string " + entry};
  };
  std::vector<AnsweredRow> rows{
      {"artist(tell)",
       "multimedia { artistlist: 'a1' artistlist: 'a2' artistlist: 'a3'"
       " songlist: 's1' songlist: 's2' }",
       heard("a1")},
      {"artist(tell)", "multimedia { genrelist: 'g1' genrelist: 'g2' }", heard("g1")},
      {"song(tell)", "multimedia { songlist: 's' genrelist: 'g' playlistlist: 'p' }", heard("p")},
      {"song(tell)", "multimedia { songlist: 's' genrelist: 'g' }", heard("g")},
      {"genre(tell)", "multimedia { playlistlist: 'p' folderlist: 'f' }", heard("f")},
      {"folder(tell)", "response { code: OK }", {kAnswered, kNoList}},
      {"", "multimedia { folderlist: 'too late' }", {kAnswered}},
      {"playlist(tell)", "multimedia { playlistlist: 'p' }", heard("p")},
      {"", "multimedia { playlistlist: 'again' }", {kAnswered}}};
  expectAnswered(rows);
}

TEST_F(MultimediaTest, listenersHearWhatThePlayerDoes) {
  std::vector<HeardRow> rows{{"multimedia { artistlist: 'a' }", {}}};
  for (const std::string action : {"PLAY", "STOP", "PAUSE", "RESUME", "MUSIC_UPDATE"})
    rows.push_back(
        {"multimediaCallback { action: " + action + " }", {"MESSAGE JSLOG: string " + action}});
  expectHears(rows);
}

TEST_F(MultimediaTest, listenersStayOnlyForTrue) {
  expectStaysOnlyForTrue("multimediaCallback { action: STOP }");
}

}  // namespace
}  // namespace morvik::test
