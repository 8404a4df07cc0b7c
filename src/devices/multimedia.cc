// morvik.multimedia: plays and records sound, controls the player and asks for its music library.
#include <glib.h>

#include <array>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>

#include "channel/answered-once.h"
#include "channel/message.h"
#include "channel/request.h"
#include "devices/devices.h"
#include "devices/listener.h"
#include "devices/substring.h"
#include "host/data-object.h"
#include "host/morvik-data.h"

namespace morvik {
namespace {

// Room for the path of an application's sound, its end mark included: longer ones are cut, and the
// server is asked for a file that is not there.
constexpr std::size_t kSoundPathSize = 255;

bool isLocal(const std::string& source) { return source.starts_with("./") && source.size() >= 3; }

// Where the server finds a sound of the application's own folder: on the device, whatever folder
// the launcher was started with.
std::string localPath(const MorvikData& instance, const std::string& source) {
  const auto file = substring(source.c_str(), 2, source.size());
  g_message("MULTIMEDIA: tmpStr[%s]", file.get());
  std::array<char, kSoundPathSize> path{};
  std::snprintf(path.data(), path.size(), "/usr/morvik/apps/%s/%s", instance.appName.c_str(),
                file.get());
  g_message("MULTIMEDIA: buffer play[%s]", path.data());
  return path.data();
}

// What is not local goes as it is, whatever it names.
std::string playedUrl(const MorvikData& instance, const std::string& source) {
  if (isLocal(source)) return localPath(instance, source);
  g_message("MULTIMEDIA: *ascii play[%s]", source.c_str());
  return source;
}

// A text, or the path that a data object stands for: then the script plays that file.
std::optional<std::string> sourceOf(const Args& args) {
  if (args[0]->IsString()) return asciiText(args.GetIsolate(), args[0]);
  const auto path = dataPath(args[0]);
  return path ? asciiText(args.GetIsolate(), *path) : std::nullopt;
}

// The source is looked at before everything else, on purpose: a text is converted, and what is no
// source refused with "Wrong arguments", whatever follows it and in any mode.
void play(const Args& args) {
  const auto source = sourceOf(args);
  if (!source) return throwText(args.GetIsolate(), "Wrong arguments");
  Request request(args, "MutimediaPlay", 1);
  if (request.refused()) return;
  g_message("MULTIMEDIA: play[%s]", source->c_str());
  zeph::Multimedia::Play& message = *request.message().mutable_multimedia()->mutable_play();
  message.set_url(playedUrl(request.instance(), *source));
  request.send();
}

// Puts into the request what the player shall do, or which list is asked for.
using Choose = void (*)(zeph::Multimedia& request);

void control(const Args& args, const char* label, const char* line, Choose choose) {
  Request request(args, label, 0);
  if (request.refused()) return;
  g_message("%s", line);
  choose(*request.message().mutable_multimedia());
  request.send();
}

void pause(const Args& args) {
  control(args, "MutimediaPause", "MULTIMEDIA: pause", [](auto& to) { to.mutable_pause(); });
}

void resume(const Args& args) {
  control(args, "MultimediaResume", "MULTIMEDIA: resume", [](auto& to) { to.mutable_resume(); });
}

void stop(const Args& args) {
  control(args, "MutimediaStop", "MULTIMEDIA: stop", [](auto& to) { to.mutable_stop(); });
}

void next(const Args& args) {
  control(args, "MultimediaNext", "MULTIMEDIA: next", [](auto& to) { to.mutable_next(); });
}

void previous(const Args& args) {
  control(args, "MultimediaPrevious", "MULTIMEDIA: previous",
          [](auto& to) { to.mutable_previous(); });
}

// The first list that is not empty, whichever was asked for, and of it the first entry alone, on
// purpose: a script that asks for songs gets an artist when the answer has both, and of a library
// of a thousand songs one name.
const std::string* firstEntry(const zeph::Multimedia& answer) {
  for (const auto* list : {&answer.artistlist(), &answer.folderlist(), &answer.playlistlist(),
                           &answer.genrelist(), &answer.songlist()}) {
    if (!list->empty()) return &list->Get(0);
  }
  return nullptr;
}

// An answer without a list uses the query up all the same, on purpose: after a plain response the
// script's function is never called, even if the list comes behind it.
void MultimedialistCallback(void* data, const zeph::ZephMsg& message) {
  g_message("MULTIMEDIA: MultimedialistCallback");
  const auto function = static_cast<AnsweredOnce<ScriptFunction>*>(data)->take();
  const std::string* entry = firstEntry(message.multimedia());
  if (entry == nullptr) {
    g_message("MULTIMEDIA: MultimedialistCallback : no list");
    return;
  }
  if (!function) return;  // answered before
  function->call({toScript(*entry)});
}

// Unlike the player's commands, a query needs its function.
void query(const Args& args, const char* line, Choose choose) {
  Request request(args);
  request.expectFunction(0);
  request.expectInteractive();
  if (request.refused()) return;
  g_message("%s", line);
  choose(*request.message().mutable_multimedia());
  request.sendForFirst(MultimedialistCallback);
}

void artist(const Args& args) {
  query(args, "MULTIMEDIA: GetArtist", [](auto& to) { to.mutable_getartist(); });
}

void folder(const Args& args) {
  query(args, "MULTIMEDIA: GetFolder", [](auto& to) { to.mutable_getfolder(); });
}

void genre(const Args& args) {
  query(args, "MULTIMEDIA: GetGenre", [](auto& to) { to.mutable_getgenre(); });
}

void playlist(const Args& args) {
  query(args, "MULTIMEDIA: GetPlaylist", [](auto& to) { to.mutable_getplaylist(); });
}

void song(const Args& args) {
  query(args, "MULTIMEDIA: GetSong", [](auto& to) { to.mutable_getsong(); });
}

// Leaves no line of its own in the log, on purpose: of a recording it shows no more than the
// messages that are sent and received. The empty URL is part of the request; the file is where the
// answer's object says.
void record(const Args& args) {
  Request request(args, "MutimediaRecord", 0);
  if (request.refused()) return;
  request.message().mutable_multimedia()->mutable_record()->set_url("");
  request.send(EventCallbackRecord);
}

// The script hears what the player did.
class MultimediaMsgCallback final : public ScriptListener {
 public:
  using ScriptListener::ScriptListener;

  bool onMessage(const zeph::ZephMsg& message) override {
    if (!message.has_multimediacallback()) return true;
    const auto action = message.multimediacallback().action();
    return function.call({toScript(nameOf(action))});
  }
};

constexpr Binding kFunctions[] = {
    {"play", play},         {"pause", pause},   {"resume", resume},
    {"stop", stop},         {"next", next},     {"previous", previous},
    {"artist", artist},     {"folder", folder}, {"genre", genre},
    {"playlist", playlist}, {"song", song},     {"addListener", addListener<MultimediaMsgCallback>},
    {"record", record},
};

}  // namespace

std::span<const Binding> multimediaFunctions() { return kFunctions; }

}  // namespace morvik
