// morvik.multimedia: the player, the recording, the library's lists and the player's events.
#include "features/features.h"

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

SentRow play(const std::string& arguments, const std::string& sent, const std::string& logged) {
  return {"play(" + arguments + ")",
          "multimedia { play { url: \"" + sent + "\" } }",
          {"MESSAGE MULTIMEDIA: play[" + logged + "]",
           "MESSAGE MULTIMEDIA: *ascii play[" + logged + "]"}};
}

SentRow play(const std::string& source) { return play("'" + source + "'", source, source); }

// The folder of both programs' applications on the device.
const std::string kFolder = "/usr/morvik/apps/app1/";

// The longest path has 254 characters, what follows is cut off.
const std::string kLongest(254 - kFolder.size(), 'a');

// What is not local goes out as it is.
std::vector<SentRow> plays() {
  return {
      play("a.mp3"),
      play("'a.mp3', f", "a.mp3", "a.mp3"),
      play("/tmp/a.mp3"),
      play("../a.mp3"),
      play("http://h/x"),
      play("./"),
      play(".a/b"),
      play(" ./a"),
      play("."),
      play(""),
      play(kLongest + kLongest),
      play(kLongest + kLongest + kLongest),
      play("'a\\0b'", "a b", "a b"),
      play("'\\u0141'", "A", "A"),
      play("'\\u0080\\u00ff'", "\\200\\377", "\x80\xff"),
  };
}

SentRow local(const std::string& arguments, const std::string& file, const std::string& path) {
  return {"play(" + arguments + ")",
          "multimedia { play { url: \"" + path + "\" } }",
          {"MESSAGE MULTIMEDIA: play[./" + file + "]", "MESSAGE MULTIMEDIA: tmpStr[" + file + "]",
           "MESSAGE MULTIMEDIA: buffer play[" + path + "]"}};
}

SentRow local(const std::string& file) { return local("'./" + file + "'", file, kFolder + file); }

// Local sounds lie in the application's folder.
std::vector<SentRow> localPlays() {
  return {
      local("a.mp3"),
      local("'./a.mp3', f", "a.mp3", kFolder + "a.mp3"),
      local("a"),
      local("'./a', f", "a", kFolder + "a"),
      local("/a"),
      local("../a"),
      local("'./../a', f", "../a", kFolder + "../a"),
      local("%s"),
      local("'./\\0'", " ", kFolder + " "),
      local(kLongest),
      local("'./" + kLongest + "', f", kLongest, kFolder + kLongest),
      local("'./" + kLongest + "b'", kLongest + "b", kFolder + kLongest),
      local("'./" + kLongest + "b', f", kLongest + "b", kFolder + kLongest),
  };
}

// Unlike the others, record says nothing in the log.
std::vector<SentRow> otherRequests() {
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
  return rows;
}

// The source is looked at first: a bad one is told also outside interactive mode.
std::vector<RefusedRow> wrongPlays() {
  return wrong({"play()", "play('a', 5)", "play('a', null)", "play('a', f, f)", "play(f)",
                "play(5)", "play(5, f)", "play(null)", "play(null, f)", "play(undefined, f)",
                "play(true)", "play({})", "play({}, f)", "play([])", "play(bad)",
                "play(new String('a'))", "play(new ArrayBuffer(8))", "play(new Uint8Array(8))",
                "play(Symbol('s'))"});
}

// A query has no form without a function.
std::vector<RefusedRow> refusals() {
  std::vector<RefusedRow> rows =
      wrongPlays() + wrong({"record(1)", "record(null)", "record('url', f)", "record(f, f)"}) +
      needMode({"play('a')", "play('./a', f)", "record()", "record(f)"}) + wrongListeners();
  for (const auto& [command, field, what] : kCommands)
    rows =
        rows +
        wrong({command + "(1)", command + "(null)", command + "(undefined)", command + "(f, f)"}) +
        needMode({command + "()", command + "(f)"});
  for (const auto& [query, field, what] : kQueries)
    rows = rows +
           wrong({query + "()", query + "(1)", query + "(null)", query + "('x', f)",
                  query + "(f, f)"}) +
           needMode({query + "(f)"});
  return rows;
}

// An answer to record is an object, and an event's holds the recording.
std::vector<AnsweredRow> recordings() {
  const std::string response = "DEBUG has_response";
  const std::string event = "DEBUG has_event";
  const std::string ok = R"(MESSAGE JSLOG: object {"type":"OK"})";
  const std::string terminated = R"(MESSAGE JSLOG: object {"type":"TERMINATED","data":{}})";
  const std::string error = R"(MESSAGE JSLOG: object {"type":"ERROR","description":"x","data":{}})";
  const std::string call = "record(tell)";
  return {
      {call, "response { code: OK description: 'left out' }", {response, ok}},
      {"", "event { code: TERMINATED }", {event, terminated}},
      {"",
       "event { code: ERROR description: 'x' } response { code: BUSY }",
       {response, R"(MESSAGE JSLOG: object {"type":"BUSY"})", event, error}},
      {call, "response { }", {response, "MESSAGE JSLOG: object {}"}},
      {call, "event { code: TERMINATED }", {event, terminated}},
      {call, "event { code: ERROR description: 'x' }", {event, error}},
      {call, "response { code: OK } event { code: TERMINATED }", {response, ok, event, terminated}},
      {call, "ping { }", {}},
  };
}

const std::string kAnswered = "MESSAGE MULTIMEDIA: MultimedialistCallback";
const std::string kNoList = "MESSAGE MULTIMEDIA: MultimedialistCallback : no list";

// Of all lists the first one that is not empty, and of it the first entry: required as it stands.
std::vector<AnsweredRow> entriesOf(const std::string& query) {
  const std::string call = query + "(tell)";
  const auto heard = [&](const std::string& lists, const std::string& entry) {
    return AnsweredRow{
        call, "multimedia { " + lists + " }", {kAnswered, "MESSAGE JSLOG: string " + entry}};
  };
  return {
      heard("artistlist: 'a1' artistlist: 'a2' artistlist: 'a3' songlist: 's1' songlist: 's2'",
            "a1"),
      heard("songlist: 's' genrelist: 'g' playlistlist: 'p' folderlist: 'f' artistlist: 'a'", "a"),
      heard("songlist: 's' genrelist: 'g' playlistlist: 'p' folderlist: 'f'", "f"),
      heard("playlistlist: 'p' folderlist: 'f'", "f"),
      heard("songlist: 's' genrelist: 'g' playlistlist: 'p'", "p"),
      heard("playlistlist: 'p'", "p"),
      {"", "multimedia { playlistlist: 'again' }", {kAnswered}},
      heard("songlist: 's' genrelist: 'g'", "g"),
      heard("genrelist: 'g1' genrelist: 'g2'", "g1"),
      heard("songlist: 's'", "s"),
      heard("songlist: '' songlist: 's'", ""),
      {call,
       "multimedia { artistlist: 'a' } response { code: ERROR }",
       {kAnswered, "MESSAGE JSLOG: string a"}},
      {call, "response { code: OK }", {kAnswered, kNoList}},
      // An acknowledgement without a list is an answer too.
      {"", "multimedia { folderlist: 'too late' }", {kAnswered}},
      {call, "multimedia { }", {kAnswered, kNoList}},
      {call, "multimedia { getsong { } }", {kAnswered, kNoList}},
  };
}

std::vector<AnsweredRow> answers() {
  std::vector<AnsweredRow> rows = hearsCodes("play('a', tell)", "MutimediaPlay") + recordings() +
                                  nobodyWaits({"play('a')", "record()", "pause()", "resume()",
                                               "stop()", "next()", "previous()"});
  for (const Named& command : kCommands)
    rows = rows + hearsCodes(command.function + "(tell)", command.what);
  for (const Named& query : kQueries) rows = rows + entriesOf(query.function);
  return rows;
}

std::vector<HeardRow> whatThePlayerDoes() {
  std::vector<HeardRow> rows{{"multimedia { artistlist: 'a' }", {}},
                             {"earsCallback { type: STOP_LEFT }", {}}};
  for (const std::string action : {"PLAY", "STOP", "PAUSE", "RESUME", "MUSIC_UPDATE"})
    rows.push_back(
        {"multimediaCallback { action: " + action + " }", {"MESSAGE JSLOG: string " + action}});
  return rows;
}

}  // namespace

Feature multimediaFeature() {
  return {
      .name = "multimedia",
      .functions =
          "play,pause,resume,stop,next,previous,artist,folder,genre,playlist,song,addListener,"
          "record",
      .sends = plays() + localPlays() + otherRequests(),
      .refuses = refusals(),
      .answers = answers(),
      .hears = whatThePlayerDoes(),
      .event = "multimediaCallback { action: STOP }",
  };
}

}  // namespace morvik::test
