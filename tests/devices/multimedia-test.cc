// morvik.multimedia: playing, controlling, recording, the library's lists and the player's events.
#include "support/unit/feature-test.h"
#include "support/unit/text-message.h"

namespace morvik::test {
namespace {

using testing::ElementsAre;

class MultimediaTest : public FeatureTest {};

std::string playing(const std::string& url) {
  return "multimedia { play { url: \"" + url + "\" } }";
}

Lines unchanged(const std::string& source) {
  return {"MESSAGE MULTIMEDIA: play[" + source + "]",
          "MESSAGE MULTIMEDIA: *ascii play[" + source + "]"};
}

Lines local(const std::string& file, const std::string& path) {
  return {"MESSAGE MULTIMEDIA: play[./" + file + "]", "MESSAGE MULTIMEDIA: tmpStr[" + file + "]",
          "MESSAGE MULTIMEDIA: buffer play[" + path + "]"};
}

TEST_F(MultimediaTest, playSendsWhatIsNotLocalAsItIs) {
  expectSends({
      {"morvik.multimedia.play('a.mp3')", playing("a.mp3"), unchanged("a.mp3")},
      {"morvik.multimedia.play('a.mp3', f)", playing("a.mp3"), unchanged("a.mp3")},
      {"morvik.multimedia.play('/tmp/a.mp3')", playing("/tmp/a.mp3"), unchanged("/tmp/a.mp3")},
      {"morvik.multimedia.play('../a.mp3')", playing("../a.mp3"), unchanged("../a.mp3")},
      {"morvik.multimedia.play('http://h/x')", playing("http://h/x"), unchanged("http://h/x")},
      {"morvik.multimedia.play('./')", playing("./"), unchanged("./")},
      {"morvik.multimedia.play('.a/b')", playing(".a/b"), unchanged(".a/b")},
      {"morvik.multimedia.play(' ./a')", playing(" ./a"), unchanged(" ./a")},
      {"morvik.multimedia.play('.')", playing("."), unchanged(".")},
      {"morvik.multimedia.play('')", playing(""), unchanged("")},
      {"morvik.multimedia.play('a\\0b')", playing("a b"), unchanged("a b")},
      {"morvik.multimedia.play('\\u0141')", playing("A"), unchanged("A")},
      {"morvik.multimedia.play('\\u0080\\u00ff')", playing("\\200\\377"), unchanged("\x80\xff")},
  });
}

TEST_F(MultimediaTest, playFindsLocalSoundsInTheApplicationsFolder) {
  instance.appName = "foo";
  const std::string folder = "/usr/morvik/apps/foo/";
  expectSends({
      {"morvik.multimedia.play('./a.mp3')", playing(folder + "a.mp3"),
       local("a.mp3", folder + "a.mp3")},
      {"morvik.multimedia.play('./a.mp3', f)", playing(folder + "a.mp3"),
       local("a.mp3", folder + "a.mp3")},
      {"morvik.multimedia.play('./a')", playing(folder + "a"), local("a", folder + "a")},
      {"morvik.multimedia.play('.//a')", playing(folder + "/a"), local("/a", folder + "/a")},
      {"morvik.multimedia.play('./../a')", playing(folder + "../a"),
       local("../a", folder + "../a")},
      {"morvik.multimedia.play('./%s')", playing(folder + "%s"), local("%s", folder + "%s")},
      {"morvik.multimedia.play('./\\0')", playing(folder + " "), local(" ", folder + " ")},
  });
}

TEST_F(MultimediaTest, aLongLocalPathIsCutTo254Characters) {
  instance.appName = "foo";
  const std::string folder = "/usr/morvik/apps/foo/";
  const std::string fits(254 - folder.size(), 'a');
  expectSends({
      {"morvik.multimedia.play('./" + fits + "')", playing(folder + fits),
       local(fits, folder + fits)},
      {"morvik.multimedia.play('./" + fits + "b')", playing(folder + fits),
       local(fits + "b", folder + fits)},
      {"morvik.multimedia.play('" + fits + "'.repeat(3))", playing(fits + fits + fits),
       unchanged(fits + fits + fits)},
  });
}

TEST_F(MultimediaTest, playTakesTheRecordingOfARecordEvent) {
  becomeInteractive("granted");
  run("var recording; morvik.multimedia.record(function(e) { recording = e.data; })");
  answer(*sent(), zephMsg("event { code: TERMINATED }"));
  log.clear();
  run("morvik.multimedia.play(recording)");
  EXPECT_EQ(ownLines(), unchanged("/tmp/record.flac"));
  expectOneMessage(playing("/tmp/record.flac"));
}

// A script object with as many internal fields as the first argument says, each a text.
void newWithFields(const Args& args) {
  v8::Isolate* isolate = args.GetIsolate();
  const auto context = isolate->GetCurrentContext();
  const int count = args[0]->Int32Value(context).FromJust();
  const auto shape = v8::ObjectTemplate::New(isolate);
  shape->SetInternalFieldCount(count);
  const auto object = shape->NewInstance(context).ToLocalChecked();
  for (int i = 0; i < count; ++i) {
    object->SetInternalField(i, toScript("./field" + std::to_string(i)));
  }
  args.GetReturnValue().Set(object);
}

TEST_F(MultimediaTest, playTakesFieldOneOfObjectsWithMoreThanOneField) {
  expose("newWithFields", newWithFields);
  const std::string path = "/usr/morvik/apps/app/field1";
  expectSends({
      {"morvik.multimedia.play(newWithFields(2))", playing(path), local("field1", path)},
      {"morvik.multimedia.play(newWithFields(3), f)", playing(path), local("field1", path)},
  });
  instance.interactiveID.reset();
  expectRefused(
      {"morvik.multimedia.play(newWithFields(0))", "morvik.multimedia.play(newWithFields(1))"});
}

// The source is looked at first: a bad one is told also outside interactive mode.
TEST_F(MultimediaTest, playRefusesInItsOrder) {
  expectRefused(
      {"morvik.multimedia.play()", "morvik.multimedia.play('a', 5)",
       "morvik.multimedia.play('a', null)", "morvik.multimedia.play('a', f, f)",
       "morvik.multimedia.play(f)", "morvik.multimedia.play(5)", "morvik.multimedia.play(5, f)",
       "morvik.multimedia.play(null)", "morvik.multimedia.play(undefined, f)",
       "morvik.multimedia.play(true)", "morvik.multimedia.play({})",
       "morvik.multimedia.play({}, f)", "morvik.multimedia.play([])", "morvik.multimedia.play(bad)",
       "morvik.multimedia.play(new String('a'))", "morvik.multimedia.play(new ArrayBuffer(8))",
       "morvik.multimedia.play(new Uint8Array(8))", "morvik.multimedia.play(Symbol('s'))"});
}

TEST_F(MultimediaTest, playAndRecordNeedInteractiveMode) {
  expectNeedsInteractive({"morvik.multimedia.play('a')", "morvik.multimedia.play('./a', f)",
                          "morvik.multimedia.record()", "morvik.multimedia.record(f)"});
}

struct Command {
  const char* name;
  const char* label;
};

constexpr Command kCommands[] = {
    {"pause", "MutimediaPause"}, {"resume", "MultimediaResume"},     {"stop", "MutimediaStop"},
    {"next", "MultimediaNext"},  {"previous", "MultimediaPrevious"},
};

std::string called(const char* name, const char* arguments) {
  return std::string("morvik.multimedia.") + name + arguments;
}

TEST_F(MultimediaTest, commandsSendAnEmptyField) {
  for (const Command& command : kCommands) {
    const std::string payload = std::string("multimedia { ") + command.name + " { } }";
    const Lines lines = {std::string("MESSAGE MULTIMEDIA: ") + command.name};
    expectSends({{called(command.name, "()"), payload, lines},
                 {called(command.name, "(f)"), payload, lines}});
  }
}

TEST_F(MultimediaTest, commandsRefuseInTheirOrder) {
  for (const Command& command : kCommands) {
    instance.interactiveID.reset();
    expectNeedsInteractive({called(command.name, "()"), called(command.name, "(f)")});
    expectRefused({called(command.name, "(1)"), called(command.name, "(null)"),
                   called(command.name, "(undefined)"), called(command.name, "(f, f)")});
  }
}

Lines heardCode(const std::string& label, const char* kind, const char* code) {
  return {"DEBUG Event: " + label, std::string("DEBUG calling ") + kind + " function",
          std::string("MESSAGE JSLOG: string ") + code};
}

TEST_F(MultimediaTest, anAnswerToACommandIsACodesName) {
  const auto rows = [](const char* label) {
    return std::vector<HeardRow>{
        {"response { code: OK }", heardCode(label, "response", "OK")},
        {"event { code: TERMINATED }", heardCode(label, "event", "TERMINATED")}};
  };
  expectAnswered("morvik.multimedia.play('a', tell)", rows("MutimediaPlay"));
  for (const Command& command : kCommands) {
    expectAnswered(called(command.name, "(tell)"), rows(command.label));
  }
}

TEST_F(MultimediaTest, withoutAFunctionNobodyWaits) {
  const std::vector<HeardRow> rows = {{"response { code: OK }", {"WARNING NO CORRELATION FOUND"}}};
  expectAnswered("morvik.multimedia.play('a')", rows);
  expectAnswered("morvik.multimedia.record()", rows);
  for (const Command& command : kCommands) expectAnswered(called(command.name, "()"), rows);
}

// Unlike the other commands it says nothing in the log.
TEST_F(MultimediaTest, recordSendsAnEmptyUrl) {
  expectSends({
      {"morvik.multimedia.record()", "multimedia { record { url: \"\" } }", {}},
      {"morvik.multimedia.record(f)", "multimedia { record { url: \"\" } }", {}},
  });
  instance.interactiveID.reset();
  expectRefused({"morvik.multimedia.record(1)", "morvik.multimedia.record(null)",
                 "morvik.multimedia.record('url', f)", "morvik.multimedia.record(f, f)"});
}

TEST_F(MultimediaTest, anAnswerToRecordIsAnObjectAndAnEventsHoldsTheRecording) {
  expectAnswered(
      "morvik.multimedia.record(tell)",
      {
          {"response { code: OK description: 'left out' }",
           {"DEBUG has_response", "MESSAGE JSLOG: object {\"type\":\"OK\"}"}},
          {"response { }", {"DEBUG has_response", "MESSAGE JSLOG: object {}"}},
          {"event { code: TERMINATED }",
           {"DEBUG has_event", "MESSAGE JSLOG: object {\"type\":\"TERMINATED\",\"data\":{}}"}},
          {"event { code: ERROR description: 'x' }",
           {"DEBUG has_event",
            "MESSAGE JSLOG: object {\"type\":\"ERROR\",\"description\":\"x\",\"data\":{}}"}},
          {"response { code: OK } event { code: TERMINATED }",
           {"DEBUG has_response", "MESSAGE JSLOG: object {\"type\":\"OK\"}", "DEBUG has_event",
            "MESSAGE JSLOG: object {\"type\":\"TERMINATED\",\"data\":{}}"}},
          {"ping { }", {}},
      });
}

struct Query {
  const char* name;
  const char* field;
  const char* line;
};

constexpr Query kQueries[] = {
    {"artist", "getartist", "MESSAGE MULTIMEDIA: GetArtist"},
    {"folder", "getfolder", "MESSAGE MULTIMEDIA: GetFolder"},
    {"genre", "getgenre", "MESSAGE MULTIMEDIA: GetGenre"},
    {"playlist", "getplaylist", "MESSAGE MULTIMEDIA: GetPlaylist"},
    {"song", "getsong", "MESSAGE MULTIMEDIA: GetSong"},
};

TEST_F(MultimediaTest, queriesSendAnEmptyField) {
  for (const Query& query : kQueries) {
    expectSends({{called(query.name, "(f)"),
                  std::string("multimedia { ") + query.field + " { } }",
                  {query.line}}});
  }
}

// A query has no form without a function.
TEST_F(MultimediaTest, queriesRefuseInTheirOrder) {
  for (const Query& query : kQueries) {
    instance.interactiveID.reset();
    expectNeedsInteractive({called(query.name, "(f)")});
    expectRefused({called(query.name, "()"), called(query.name, "(1)"),
                   called(query.name, "(null)"), called(query.name, "('x', f)"),
                   called(query.name, "(f, f)")});
  }
}

constexpr const char* kAnswered = "MESSAGE MULTIMEDIA: MultimedialistCallback";
constexpr const char* kNoList = "MESSAGE MULTIMEDIA: MultimedialistCallback : no list";

TEST_F(MultimediaTest, anAnswerToAQueryIsTheFirstEntryOfTheFirstListThatIsNotEmpty) {
  const auto heard = [](const char* entry) {
    return Lines{kAnswered, std::string("MESSAGE JSLOG: string ") + entry};
  };
  const std::vector<HeardRow> rows = {
      {"multimedia { artistlist: 'a1' artistlist: 'a2' artistlist: 'a3'"
       "  songlist: 's1' songlist: 's2' }",
       heard("a1")},
      {"multimedia { songlist: 's' genrelist: 'g' playlistlist: 'p' folderlist: 'f' "
       "  artistlist: 'a' }",
       heard("a")},
      {"multimedia { songlist: 's' genrelist: 'g' playlistlist: 'p' folderlist: 'f' }", heard("f")},
      {"multimedia { songlist: 's' genrelist: 'g' playlistlist: 'p' }", heard("p")},
      {"multimedia { songlist: 's' genrelist: 'g' }", heard("g")},
      {"multimedia { genrelist: 'g1' genrelist: 'g2' }", heard("g1")},
      {"multimedia { songlist: 's' }", heard("s")},
      {"multimedia { songlist: '' songlist: 's' }", heard("")},
      {"multimedia { artistlist: 'a' } response { code: ERROR }", heard("a")},
      {"response { code: OK }", {kAnswered, kNoList}},
      {"multimedia { }", {kAnswered, kNoList}},
      {"multimedia { getsong { } }", {kAnswered, kNoList}},
  };
  for (const Query& query : kQueries) expectAnswered(called(query.name, "(tell)"), rows);
}

TEST_F(MultimediaTest, entriesAreUtf8) {
  becomeInteractive();
  run("var length; morvik.multimedia.song(function(entry) { length = entry.length; })");
  answer(*sent(), zephMsg("multimedia { songlist: 'h\\303\\251' }"));
  EXPECT_EQ(run("length"), "2");
}

TEST_F(MultimediaTest, nothingOfAnAnsweredQueryIsKept) {
  expectForgets("morvik.multimedia.artist(kept)", "multimedia { artistlist: 'a' }");
}

TEST_F(MultimediaTest, aQueryIsAnsweredOnce) {
  becomeInteractive();
  run("morvik.multimedia.artist(tell)");
  const auto request = sent();
  const auto list = zephMsg("multimedia { artistlist: 'a' }");
  answer(*request, list);
  EXPECT_THAT(logged(), ElementsAre("string a"));
  log.clear();
  answer(*request, list);
  EXPECT_THAT(ownLines(), ElementsAre(kAnswered));
}

// An acknowledgement without a list is an answer too.
TEST_F(MultimediaTest, anAnswerWithoutAListUsesTheQueryUp) {
  becomeInteractive();
  run("morvik.multimedia.artist(tell)");
  const auto request = sent();
  respond(*request, zeph::OK);
  log.clear();
  answer(*request, zephMsg("multimedia { artistlist: 'a' }"));
  EXPECT_THAT(ownLines(), ElementsAre(kAnswered));
}

TEST_F(MultimediaTest, aQueryCanBeAskedFromItsAnswer) {
  becomeInteractive("granted");
  run("morvik.multimedia.artist(function(entry) { log(entry); morvik.multimedia.song(tell); })");
  answer(*sent(), zephMsg("multimedia { artistlist: 'a' }"));
  const auto second = sent();
  ASSERT_TRUE(second);
  answer(*second, zephMsg("multimedia { songlist: 's' }"));
  EXPECT_THAT(logged(), ElementsAre("a", "string s"));
}

TEST_F(MultimediaTest, listenersHearWhatThePlayerDoes) {
  expectListens(
      "morvik.multimedia.addListener",
      {
          {"multimediaCallback { action: PLAY }", {"MESSAGE JSLOG: string PLAY"}},
          {"multimediaCallback { action: STOP }", {"MESSAGE JSLOG: string STOP"}},
          {"multimediaCallback { action: PAUSE }", {"MESSAGE JSLOG: string PAUSE"}},
          {"multimediaCallback { action: RESUME }", {"MESSAGE JSLOG: string RESUME"}},
          {"multimediaCallback { action: MUSIC_UPDATE }", {"MESSAGE JSLOG: string MUSIC_UPDATE"}},
          {"multimedia { artistlist: 'a' }", {}},
          {"earsCallback { type: STOP_LEFT }", {}},
      });
}

TEST_F(MultimediaTest, aListenerStaysOnlyForTrue) {
  expectStaysOnlyForTrue("morvik.multimedia.addListener", "multimediaCallback { action: STOP }");
}

TEST_F(MultimediaTest, hasTheseFunctions) {
  EXPECT_EQ(run("Object.keys(morvik.multimedia).join()"),
            "play,pause,resume,stop,next,previous,artist,folder,genre,playlist,song,addListener,"
            "record");
}

}  // namespace
}  // namespace morvik::test
