// morvik.asr: file, string. The server listens; what it heard comes back once, with its meaning.
#include <glib.h>

#include "channel/answered-once.h"
#include "channel/request.h"
#include "devices/devices.h"
#include "devices/semantic.h"
#include "host/path-filter.h"

namespace morvik {
namespace {

using Recognition = zeph::AsrCallback::Recognition;

void logResponse(const zeph::ZephMsg& message) {
  if (!message.has_response()) {
    g_message("ASR: AsrCallback: has_response false");
  } else if (message.response().has_code() && message.response().code() == zeph::OK) {
    g_message("ASR: AsrCallback: response : OK");
  } else if (message.response().has_code() && message.response().code() == zeph::ERROR) {
    g_message("ASR: AsrCallback: response : ERROR");
  }
}

void logRecognition(const Recognition& recognition) {
  if (recognition.has_text()) {
    g_message("ASR: AsrCallback: text : %s", recognition.text().c_str());
  } else {
    g_message("ASR: AsrCallback: recognition(0).has_text() false");
  }
  if (recognition.has_confident()) {
    g_message("ASR: AsrCallback: confident : %d", recognition.confident());
  } else {
    g_message("ASR: AsrCallback: recognition(0).has_confident() false");
  }
  if (recognition.has_semantic()) {
    g_message("ASR: AsrCallback: semantic : %s", recognition.semantic().c_str());
    g_message("ASR: AsrCallback: semantic size : %d",
              static_cast<int>(recognition.semantic().size()));
  } else {
    g_message("ASR: AsrCallback: recognition(0).has_semantic() false");
  }
}

// The first of the alternatives is the one that counts; a script never hears of the others. A
// result without any ends the process: its sender promises one.
const Recognition& firstRecognition(const zeph::AsrCallback& result) {
  if (result.recognition_size() < 1) {
    g_message("ASR: AsrCallback: recognition_size = 0");
    g_error("ASR: AsrCallback: the server sent a recognition result without a recognition");
  }
  logRecognition(result.recognition(0));
  return result.recognition(0);
}

// What was heard wins over a part of its meaning that has the same name: an element <text> of the
// meaning never reaches the script.
v8::Local<v8::Object> resultObject(const TemporaryContext& temporary,
                                   const Recognition& recognition) {
  const auto object = temporary.newObject();
  parseSemantic(recognition.semantic(), object);
  setOwn(object, "text", toScript(recognition.text()));
  setOwn(object, "confident", v8::Number::New(v8::Isolate::GetCurrent(), recognition.confident()));
  return object;
}

// A reply function; `data` is an AnsweredOnce<ScriptFunction>. An answer without a result, a
// refusal among them, leaves it waiting.
void AsrCallback(void* data, const zeph::ZephMsg& message) {
  g_message("ASR: AsrCallback");
  logResponse(message);
  if (!message.has_asrcallback()) {
    g_message("ASR: AsrCallback: has_asrcallback false");
    g_message("ASR: AsrCallback end");
    return;
  }
  g_message("ASR: AsrCallback: has_asrcallback true. recognition_size: %d",
            message.asrcallback().recognition_size());
  const Recognition& recognition = firstRecognition(message.asrcallback());
  const auto function = static_cast<AnsweredOnce<ScriptFunction>*>(data)->take();
  if (!function) return;  // answered before
  const TemporaryContext temporary;
  function->call({resultObject(temporary, recognition)});
}

// Only judges the path: nothing is sent and the function is not kept, on purpose. A script learns
// whether the path is allowed, by the exception or its absence; the server hears nothing, and the
// function is never called.
void file(const Args& args) {
  Request request(args);
  request.expectArguments(1);
  const std::string path = request.utf8(0);
  if (request.refused() || refusePath(args.GetIsolate(), path)) return;
  g_message("ASR: grammarFile[%s]", path.c_str());
}

void string(const Args& args) {
  Request request(args);
  request.expectFunction(2);
  request.expectInteractive();
  const std::string grammar = request.utf8(0);
  const std::string lang = request.utf8(1);
  if (request.refused()) return;
  g_message("ASR: grammar[%s]", grammar.c_str());
  // One entry with the grammar as the script wrote it: its form is the recogniser's matter.
  request.message().mutable_asr()->add_dictionary(grammar);
  request.message().mutable_asr()->set_lang(lang);
  request.sendForFirst(AsrCallback);
}

constexpr Binding kFunctions[] = {{"file", file}, {"string", string}};

}  // namespace

std::span<const Binding> asrFunctions() { return kFunctions; }

}  // namespace morvik
