// The launchType object in its three forms: by tag, by voice, by name.
#include "host/launch-type.h"

#include <sstream>

#include "devices/semantic.h"
#include "host/script.h"

namespace morvik {
namespace {

constexpr int kVoiceConfidence = 50;  // what a launch by voice always tells

// Hands out the fields of a launch type; one that is missing is the empty text.
class Fields {
 public:
  explicit Fields(const std::string& text) : stream_(text) {}
  std::string next() {
    std::string field;
    std::getline(stream_, field, ';');
    return field;
  }

 private:
  std::istringstream stream_;
};

void set(v8::Local<v8::ObjectTemplate> object, const char* name, v8::Local<v8::Data> value) {
  object->Set(v8::Isolate::GetCurrent(), name, value);
}

// Scripts read all six, whatever the line holds: a field that is missing is an empty text, never
// undefined, and what stands behind the last one is passed over.
void buildTagLaunch(v8::Local<v8::ObjectTemplate> launchType, const std::string& text) {
  set(launchType, "name", toScript("RFID"));
  Fields fields(text);
  fields.next();  // the word itself
  for (const char* name : {"id", "app", "type", "pict", "color", "data"}) {
    set(launchType, name, toScript(fields.next()));
  }
}

// Computed anew on each read, from what `rawSemantic` holds then: a script may put a text of its
// own there. The objects are made in a context of their own, as those of events are, so a kept one
// costs as much.
void readSemantic(v8::Local<v8::Name> /*name*/, const v8::PropertyCallbackInfo<v8::Value>& info) {
  v8::Isolate* isolate = info.GetIsolate();
  v8::EscapableHandleScope handles(isolate);
  const auto context = v8::Context::New(isolate);
  const v8::Context::Scope entered(context);
  v8::Local<v8::Value> raw;
  if (!info.Holder()->Get(context, toScript("rawSemantic")).ToLocal(&raw)) return;
  const auto text = utf8Text(isolate, raw);
  if (!text) return;
  const auto parsed = v8::Object::New(isolate);
  parseSemantic(*text, parsed);
  v8::Local<v8::Value> semantic;
  if (parsed->Get(context, toScript("semantic")).ToLocal(&semantic)) {
    info.GetReturnValue().Set(handles.Escape(semantic));
  }
}

void buildVoiceLaunch(v8::Local<v8::ObjectTemplate> launchType, const std::string& text) {
  const TemporaryContext scratch;
  set(launchType, "name", toScript("ASR"));
  Fields fields(text);
  fields.next();  // the word itself
  set(launchType, "text", toScript(fields.next()));
  launchType->SetAccessor(toScript("semantic").As<v8::Name>(), readSemantic, ignoreAssignment);
  set(launchType, "rawSemantic", toScript("<semantic>" + fields.next() + "</semantic>"));
  set(launchType, "confident", v8::Number::New(v8::Isolate::GetCurrent(), kVoiceConfidence));
}

}  // namespace

// Only the first letters count: a text such as "RFIDx" is a launch by tag as well.
void buildLaunchType(v8::Local<v8::ObjectTemplate> launchType, const std::string& text) {
  if (text.starts_with("RFID")) return buildTagLaunch(launchType, text);
  if (text.starts_with("ASR")) return buildVoiceLaunch(launchType, text);
  set(launchType, "name", toScript(text));
}

}  // namespace morvik
