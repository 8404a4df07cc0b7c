// config.bin: whatever the file holds, there are parameters, and a script can look at all of them.
#include "fuzz/fuzz.h"
#include "fuzz/input-file.h"
#include "fuzz/live-script.h"
#include "host/parameters.h"

namespace morvik::test {

void fuzz(std::string_view input) {
  const Turn turn;
  const InputFile file(input);
  const auto params = loadParameters(file.path());
  v8::Local<v8::String> json;
  require(v8::JSON::Stringify(liveScriptKeptForLife().context(), params).ToLocal(&json),
          "parameters have a JSON text");
  require(json->Length() > 0, "which is not empty");
}

}  // namespace morvik::test
