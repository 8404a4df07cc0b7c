// Meanings of phrases: XML that becomes one property at most.
#include "devices/semantic.h"
#include "fuzz/fuzz.h"
#include "fuzz/live-script.h"

namespace morvik::test {

void fuzz(std::string_view input) {
  const Turn turn;
  const auto context = liveScriptKeptForLife().context();
  const auto object = v8::Object::New(v8::Isolate::GetCurrent());
  parseSemantic(std::string(input), object);
  const auto names = object->GetOwnPropertyNames(context).ToLocalChecked();
  require(names->Length() <= 1, "a text has one root");
  require(!v8::JSON::Stringify(context, object).IsEmpty(), "what it means has a text");
}

}  // namespace morvik::test
