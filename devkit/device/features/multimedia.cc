// The player, the recorder and the music library. Nothing is to be heard: whatever is played lasts
// for the same short while.
#include <algorithm>
#include <chrono>

#include "device/describe.h"
#include "device/handlers.h"
#include "device/media-files.h"

namespace morvik::devkit {
namespace {

using std::chrono::milliseconds;
using Action = zeph::MultimediaCallback;

constexpr milliseconds kLengthOfASound{3000};
constexpr milliseconds kLengthOfARecording{3000};

zeph::ZephMsg playerMessage(zeph::MultimediaCallback::TypeAction action) {
  zeph::ZephMsg message;
  message.mutable_multimediacallback()->set_action(action);
  return message;
}

void play(const Exchange& exchange, const std::string& url) {
  Device& device = exchange.device();
  device.end(Work::kSound, zeph::CANCELLED);
  device.state().player = {Player::Mode::kPlaying, url};
  exchange.respond(zeph::OK);
  device.sendToAll(playerMessage(Action::PLAY));
  exchange.undertake(Work::kSound, kLengthOfASound, [&device](zeph::ZephMsg& /*event*/) {
    device.state().player.mode = Player::Mode::kStopped;
    device.sendToAll(playerMessage(Action::STOP));
  });
}

void pause(const Exchange& exchange) {
  Player& player = exchange.state().player;
  if (player.mode != Player::Mode::kPlaying) {
    exchange.respond(zeph::ERROR, "nothing plays");
    return;
  }
  player.mode = Player::Mode::kPaused;
  exchange.device().suspend(Work::kSound);
  exchange.respond(zeph::OK);
  exchange.device().sendToAll(playerMessage(Action::PAUSE));
}

// A sound that goes on lasts its whole length once more: nobody listens that closely.
void resume(const Exchange& exchange) {
  Player& player = exchange.state().player;
  if (player.mode != Player::Mode::kPaused) {
    exchange.respond(zeph::ERROR, "nothing is paused");
    return;
  }
  player.mode = Player::Mode::kPlaying;
  exchange.device().prolong(Work::kSound, kLengthOfASound);
  exchange.respond(zeph::OK);
  exchange.device().sendToAll(playerMessage(Action::RESUME));
}

// A sound is cut short; a recording has come to its proper end.
void stop(const Exchange& exchange) {
  exchange.respond(zeph::OK);
  exchange.device().end(Work::kSound, zeph::CANCELLED);
  exchange.device().end(Work::kRecord, zeph::TERMINATED);
}

// The library's songs go round in a circle.
void skip(const Exchange& exchange, bool forward) {
  const std::vector<std::string> songs = exchange.state().library.songs;
  if (songs.empty()) {
    exchange.respond(zeph::ERROR, "the library has no songs");
    return;
  }
  const auto found = std::find(songs.begin(), songs.end(), exchange.state().player.url);
  const auto at = static_cast<std::size_t>(found - songs.begin());
  const std::size_t last = songs.size() - 1;
  const std::size_t next = at < last ? at + 1 : 0;
  const std::size_t previous = at > 0 ? at - 1 : last;
  play(exchange, songs[forward ? next : previous]);
}

void record(const Exchange& exchange) {
  Device& device = exchange.device();
  exchange.undertake(Work::kRecord, kLengthOfARecording, [&device](zeph::ZephMsg& event) {
    if (event.event().code() != zeph::TERMINATED) return;
    tellOfFile(device, event, kRecordingPath, writeRecording());
  });
  exchange.respond(zeph::OK);
}

// One message only, without a response beside it: an application takes the first answer and is done
// with the query.
void replyWithList(const Exchange& exchange, const std::vector<std::string>& names,
                   void (zeph::Multimedia::*add)(const std::string& name)) {
  zeph::ZephMsg answer;
  zeph::Multimedia* lists = answer.mutable_multimedia();
  for (const std::string& name : names) (lists->*add)(name);
  exchange.reply(answer);
}

bool answerQuery(const Exchange& exchange) {
  const zeph::Multimedia& asked = exchange.request().multimedia();
  const Library& library = exchange.state().library;
  if (asked.has_getartist()) {
    replyWithList(exchange, library.artists, &zeph::Multimedia::add_artistlist);
  } else if (asked.has_getfolder()) {
    replyWithList(exchange, library.folders, &zeph::Multimedia::add_folderlist);
  } else if (asked.has_getplaylist()) {
    replyWithList(exchange, library.playlists, &zeph::Multimedia::add_playlistlist);
  } else if (asked.has_getgenre()) {
    replyWithList(exchange, library.genres, &zeph::Multimedia::add_genrelist);
  } else if (asked.has_getsong()) {
    replyWithList(exchange, library.songs, &zeph::Multimedia::add_songlist);
  } else {
    return false;
  }
  return true;
}

bool answerCommand(const Exchange& exchange) {
  const zeph::Multimedia& asked = exchange.request().multimedia();
  if (asked.has_play()) {
    play(exchange, asked.play().url());
  } else if (asked.has_pause()) {
    pause(exchange);
  } else if (asked.has_resume()) {
    resume(exchange);
  } else if (asked.has_stop()) {
    stop(exchange);
  } else if (asked.has_record()) {
    record(exchange);
  } else if (asked.has_next() || asked.has_previous()) {
    skip(exchange, asked.has_next());
  } else {
    return false;
  }
  return true;
}

}  // namespace

void answerMultimedia(const Exchange& exchange) {
  if (!answerCommand(exchange) && !answerQuery(exchange)) {
    exchange.respond(zeph::ERROR, "neither a command nor a query");
  }
}

void tellOfPlayer(Stimulation& stimulation) {
  const auto action = stimulation.choice<zeph::MultimediaCallback::TypeAction>("what happened");
  if (stimulation.understood()) stimulation.send(playerMessage(action));
}

void changeLibrary(Stimulation& stimulation) {
  Library& library = stimulation.state().library;
  const std::pair<const char*, std::vector<std::string>*> lists[] = {
      {"artists", &library.artists},
      {"folders", &library.folders},
      {"playlists", &library.playlists},
      {"genres", &library.genres},
      {"songs", &library.songs}};
  const std::size_t chosen = stimulation.oneOf({"ARTIST", "FOLDER", "PLAYLIST", "GENRE", "SONG"});
  std::vector<std::string> names = stimulation.rest();
  stimulation.mustBeForAll();
  if (!stimulation.understood()) return;
  const auto& [what, list] = lists[chosen];
  *list = std::move(names);
  stimulation.device().note(std::string(what) + " of the library: " + listed(*list));
  stimulation.device().sendToAll(playerMessage(Action::MUSIC_UPDATE));
}

}  // namespace morvik::devkit
