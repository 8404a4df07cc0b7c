// morvik.tts: the device speaks a text, or stops speaking.
#include <glib.h>

#include <string>

#include "channel/request.h"
#include "devices/devices.h"

namespace morvik {
namespace {

constexpr const char* kLabel = "TTS";

// Of start(text, [language], [callback]): how many arguments stand in front of the callback. Three
// without a function are no mistake, on purpose: the second and the third are dropped, so
// the text goes out without a language and the script hears no exception.
int fixedArguments(const Args& args) {
  const int count = args.Length();
  if (count < 2 || count > 3) return 1;
  return args[count - 1]->IsFunction() ? count - 1 : count;
}

void setLanguage(Request& request) {
  const std::string language = request.utf8(1);
  if (request.refused()) return;
  g_message("TTS: lang[%s]", language.c_str());
  request.message().mutable_tts()->set_lang(language);
}

void start(const Args& args) {
  const int fixed = fixedArguments(args);
  Request request(args, kLabel, fixed);
  const std::string text = request.utf8(0);
  if (request.refused()) return;
  g_message("TTS: say[%s]", text.c_str());
  zeph::Tts& message = *request.message().mutable_tts();
  message.set_action(zeph::Tts::START);
  message.set_text(text);
  if (fixed == 2) setLanguage(request);
  if (!request.refused()) request.send();
}

// Its first lines stand in the log for refused calls as well.
void stop(const Args& args) {
  g_message("TtsFunctionStop start");
  if (args.Length() == 1 && args[0]->IsFunction()) g_message("TtsFunctionStop arg ok");
  Request request(args, kLabel, 0);
  if (request.refused()) return;
  g_message("TtsFunctionStop");
  request.message().mutable_tts()->set_action(zeph::Tts::STOP);
  request.send();
}

constexpr Binding kFunctions[] = {{"start", start}, {"stop", stop}};

}  // namespace

std::span<const Binding> ttsFunctions() { return kFunctions; }

}  // namespace morvik
