// Launch types: the object that a script finds has the fields that stand between the semicolons.
#include <string>
#include <vector>

#include "fuzz/fuzz.h"
#include "fuzz/live-script.h"
#include "host/launch-type.h"

namespace morvik::test {
namespace {

// As a script reads it back.
std::string asScriptText(std::string_view bytes) {
  return utf8Text(v8::Isolate::GetCurrent(), toScript(bytes)).value_or("");
}

// The field at the index, counted from the first semicolon on.
std::string fieldAt(std::string_view text, int index) {
  for (; index >= 0; --index) {
    const std::size_t end = text.find(';');
    if (end == std::string_view::npos) return "";
    text.remove_prefix(end + 1);
  }
  return asScriptText(text.substr(0, text.find(';')));
}

void expectTag(v8::Local<v8::Object> launchType, std::string_view text) {
  require(textOf(launchType, "name") == "RFID", "a launch by tag is named so");
  int index = 0;
  for (const char* name : {"id", "app", "type", "pict", "color", "data"}) {
    require(textOf(launchType, name) == fieldAt(text, index++), "a field of a tag");
  }
}

void expectVoice(v8::Local<v8::Object> launchType, std::string_view text) {
  require(textOf(launchType, "name") == "ASR", "a launch by voice is named so");
  require(textOf(launchType, "text") == fieldAt(text, 0), "what was said");
  require(textOf(launchType, "rawSemantic") == "<semantic>" + fieldAt(text, 1) + "</semantic>",
          "what it means");
  require(textOf(launchType, "confident") == "50", "how sure that is");
  textOf(launchType, "semantic");
}

// The engine keeps what a template makes for as long as the context lives, so that one is made anew
// from time to time.
v8::Local<v8::Context> someContext() {
  constexpr int kUses = 500;
  static auto& kept = *new v8::Global<v8::Context>;
  static int uses = 0;
  v8::Isolate* isolate = v8::Isolate::GetCurrent();
  if (uses++ % kUses == 0) kept.Reset(isolate, v8::Context::New(isolate));
  return kept.Get(isolate);
}

}  // namespace

void fuzz(std::string_view input) {
  const Turn turn;
  const auto context = someContext();
  const v8::Context::Scope entered(context);
  const auto shape = v8::ObjectTemplate::New(v8::Isolate::GetCurrent());
  buildLaunchType(shape, std::string(input));
  const auto launchType = shape->NewInstance(context).ToLocalChecked();
  if (input.starts_with("RFID")) return expectTag(launchType, input);
  if (input.starts_with("ASR")) return expectVoice(launchType, input);
  require(textOf(launchType, "name") == asScriptText(input), "any other is a name");
}

}  // namespace morvik::test
