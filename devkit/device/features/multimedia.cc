// The player, the recorder and the music library. Nothing is to be heard: whatever is played lasts
// for the same short while.
#include <algorithm>
#include <chrono>

#include "device/exchange.h"
#include "device/features/features.h"
#include "device/features/left-file.h"
#include "device/stimulation.h"
#include "device/text.h"
#include "device/view.h"

namespace morvik::devkit {
namespace {

using std::chrono::milliseconds;
using Action = zeph::MultimediaCallback;
using Mode = Player::Mode;

constexpr milliseconds kLengthOfASound{3000};
constexpr milliseconds kLengthOfARecording{3000};

// What each list is called where; the one table of them.
struct List {
  const char* stimulus;
  const char* view;
  std::vector<std::string> Library::*names;
  bool (zeph::Multimedia::*asked)() const;
  void (zeph::Multimedia::*add)(const std::string& name);
};
constexpr List kLists[] = {
    {"ARTIST", "artists", &Library::artists, &zeph::Multimedia::has_getartist,
     &zeph::Multimedia::add_artistlist},
    {"FOLDER", "folders", &Library::folders, &zeph::Multimedia::has_getfolder,
     &zeph::Multimedia::add_folderlist},
    {"PLAYLIST", "playlists", &Library::playlists, &zeph::Multimedia::has_getplaylist,
     &zeph::Multimedia::add_playlistlist},
    {"GENRE", "genres", &Library::genres, &zeph::Multimedia::has_getgenre,
     &zeph::Multimedia::add_genrelist},
    {"SONG", "songs", &Library::songs, &zeph::Multimedia::has_getsong,
     &zeph::Multimedia::add_songlist},
};

void setMode(Device& device, Mode mode) {
  device.change("player", [&](DeviceState& state) { state.player.mode = mode; });
}

// The song before or after the one that was played last, in a circle; nothing without songs.
std::optional<std::string> neighbour(const DeviceState& state, bool forward) {
  const std::vector<std::string>& songs = state.library.songs;
  if (songs.empty()) return std::nullopt;
  const auto found = std::find(songs.begin(), songs.end(), state.player.url);
  const auto at = static_cast<std::size_t>(found - songs.begin());
  const std::size_t last = songs.size() - 1;
  const std::size_t next = at < last ? at + 1 : 0;
  const std::size_t previous = at > 0 ? at - 1 : last;
  return songs[forward ? next : previous];
}

// What applications ask for, and what everybody is told of it.

zeph::ZephMsg playerMessage(zeph::MultimediaCallback::TypeAction action) {
  zeph::ZephMsg message;
  message.mutable_multimediacallback()->set_action(action);
  return message;
}

void play(const Exchange& exchange, const std::string& url) {
  Device& device = exchange.device();
  if (const auto doubt = doubtOfSound(url, device.state().library, device.appFolders())) {
    device.doubt(exchange.application().number, *doubt);
  }
  device.end(Work::kSound, zeph::CANCELLED);
  device.change("player", [&](DeviceState& state) { state.player = {Mode::kPlaying, url}; });
  exchange.respond(zeph::OK);
  device.sendToAll(playerMessage(Action::PLAY));
  exchange.undertake(Work::kSound, kLengthOfASound, [&device](zeph::ZephMsg& /*event*/) {
    setMode(device, Mode::kStopped);
    device.sendToAll(playerMessage(Action::STOP));
  });
}

void pause(const Exchange& exchange) {
  if (exchange.state().player.mode != Mode::kPlaying) {
    exchange.respond(zeph::ERROR, "nothing plays");
    return;
  }
  setMode(exchange.device(), Mode::kPaused);
  exchange.device().suspend(Work::kSound);
  exchange.respond(zeph::OK);
  exchange.device().sendToAll(playerMessage(Action::PAUSE));
}

// A sound that goes on lasts its whole length once more: nobody listens that closely.
void resume(const Exchange& exchange) {
  if (exchange.state().player.mode != Mode::kPaused) {
    exchange.respond(zeph::ERROR, "nothing is paused");
    return;
  }
  setMode(exchange.device(), Mode::kPlaying);
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

void skip(const Exchange& exchange, bool forward) {
  const auto song = neighbour(exchange.state(), forward);
  if (!song) return exchange.respond(zeph::ERROR, "the library has no songs");
  play(exchange, *song);
}

void record(const Exchange& exchange) {
  Device& device = exchange.device();
  device.change("recorder", [&](DeviceState& state) {
    state.recording = exchange.request().multimedia().record().url();
  });
  exchange.undertake(Work::kRecord, kLengthOfARecording, [&device](zeph::ZephMsg& event) {
    leaveFile(device, event, kRecording, device.state().recordingFile);
  });
  exchange.respond(zeph::OK);
}

// One message only, without a response beside it: an application takes the first answer and is done
// with the query.
bool answerQuery(const Exchange& exchange) {
  const zeph::Multimedia& asked = exchange.request().multimedia();
  const auto* list = std::find_if(std::begin(kLists), std::end(kLists),
                                  [&](const List& one) { return (asked.*one.asked)(); });
  if (list == std::end(kLists)) return false;
  zeph::ZephMsg answer;
  zeph::Multimedia* names = answer.mutable_multimedia();
  for (const std::string& name : exchange.state().library.*list->names) (names->*list->add)(name);
  exchange.reply(answer);
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

void answer(const Exchange& exchange) {
  if (!answerCommand(exchange) && !answerQuery(exchange)) {
    exchange.respond(zeph::ERROR, "neither a command nor a query");
  }
}

// What the world does.

void tellOfPlayer(Stimulation& stimulation) {
  const auto action = stimulation.choice<zeph::MultimediaCallback::TypeAction>("action");
  if (stimulation.understood()) stimulation.send(playerMessage(action));
}

void chooseRecording(Stimulation& stimulation) {
  const auto chosen = chosenBy(stimulation, kRecording);
  if (!chosen) return;
  Device& device = stimulation.device();
  device.change("recorder", [&](DeviceState& state) { state.recordingFile = *chosen; });
  device.note("what the microphone records: " + inWords(*chosen));
}

std::vector<std::string> listNames() {
  std::vector<std::string> names;
  for (const List& list : kLists) names.emplace_back(list.stimulus);
  return names;
}

void changeLibrary(Stimulation& stimulation) {
  if (!stimulation.understood()) return;
  const std::string wanted = stimulation.text("list");
  const List& list = *std::find_if(std::begin(kLists), std::end(kLists),
                                   [&](const List& one) { return wanted == one.stimulus; });
  const std::vector<std::string> names = stimulation.all("names");
  Device& device = stimulation.device();
  device.change("library", [&](DeviceState& state) { state.library.*list.names = names; });
  device.note(std::string(list.view) + " of the library: " + listed(names));
  device.sendToAll(playerMessage(Action::MUSIC_UPDATE));
}

std::string playerAtAGlance(const DeviceView& view) {
  constexpr const char* kModes[] = {"stopped", "plays ", "pauses "};
  const Player& player = view.state.player;
  const std::string mode = kModes[static_cast<std::size_t>(player.mode)];
  return player.mode == Mode::kStopped ? mode : mode + player.url;
}

std::string recorderAtAGlance(const DeviceView& view) {
  const Underway* underway = underwayIn(view, Work::kRecord);
  const ChosenFile& chosen = view.state.recordingFile;
  std::string hears = chosen.bytes ? "recordings hold " + chosen.path : "";
  if (underway == nullptr) return hears;
  return "records for " + timeLeftOf(view, *underway) + (hears.empty() ? "" : ", " + hears);
}

void show(const DeviceView& view, JsonObject& whole) {
  constexpr const char* kModes[] = {"stopped", "playing", "paused"};
  const Player& player = view.state.player;
  whole.object("player")
      .text("mode", kModes[static_cast<std::size_t>(player.mode)])
      .text("url", player.url);
  JsonObject recorder = whole.object("recorder");
  recorder.text("url", view.state.recording);
  const ChosenFile& chosen = view.state.recordingFile;
  if (chosen.bytes) recorder.text("file", chosen.path);
  JsonObject library = whole.object("library");
  for (const List& list : kLists) library.texts(list.view, view.state.library.*list.names);
}

constexpr Argument kTell[] = {
    {.name = "action",
     .what = "what happened",
     .kind = Argument::Kind::kChoice,
     .choices = namesOf<zeph::MultimediaCallback::TypeAction_descriptor>}};
constexpr Argument kFile[] = {kMediaFile};
constexpr Argument kNames[] = {
    {.name = "list", .kind = Argument::Kind::kChoice, .choices = listNames},
    {.name = "names", .usage = "NAME", .needed = false, .many = true},
};

constexpr Command kCommands[] = {
    {zeph::ZephMsg::kMultimediaFieldNumber, Command::Needs::kGrant, answer}};
constexpr Stimulus kStimuli[] = {
    {"player", Stimulus::Group::kAround, Stimulus::For::kApplications, kTell,
     "tell one thing of the player; what plays goes on", tellOfPlayer},
    {"library", Stimulus::Group::kAround, Stimulus::For::kDevice, kNames,
     "put other names into a list of the music library", changeLibrary},
    {"recording", Stimulus::Group::kAround, Stimulus::For::kDevice, kFile,
     "choose the FLAC file that recordings hold; alone, the device's own again", chooseRecording},
};
constexpr Glance kGlances[] = {{"player", playerAtAGlance}, {"recorder", recorderAtAGlance}};

}  // namespace

constinit const Feature kMultimediaFeature = {
    .commands = kCommands, .stimuli = kStimuli, .glances = kGlances, .show = show};

}  // namespace morvik::devkit
