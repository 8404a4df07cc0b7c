// morvik.tts: what is spoken, in which language, and how it is stopped.
#include "features/features.h"

namespace morvik::test {
namespace {

SentRow start(const std::string& arguments, const std::string& sent, const std::string& logged) {
  return {"start(" + arguments + ")",
          "tts { action: START text: \"" + sent + "\" }",
          {"MESSAGE TTS: say[" + logged + "]"}};
}

SentRow start(const std::string& arguments, const std::string& text) {
  return start(arguments, text, text);
}

SentRow spoken(const std::string& arguments, const std::string& text, const std::string& lang) {
  return {"start(" + arguments + ")",
          "tts { action: START text: \"" + text + "\" lang: \"" + lang + "\" }",
          {"MESSAGE TTS: say[" + text + "]", "MESSAGE TTS: lang[" + lang + "]"}};
}

std::vector<SentRow> starts() {
  return {
      start("'bonjour'", "bonjour"),
      start("'bonjour', f", "bonjour"),
      spoken("'bonjour', 'fr'", "bonjour", "fr"),
      spoken("'bonjour', 'fr', f", "bonjour", "fr"),
      spoken("'bonjour', 5", "bonjour", "5"),
      spoken("'bonjour', undefined", "bonjour", "undefined"),
      spoken("'bonjour', '', f", "bonjour", ""),
      spoken("'bonjour', null, f", "bonjour", "null"),
      start("f", "function() {}"),
      spoken("'', f, f", "", "function() {}"),
      // A third argument that is no function takes the language with it, silently.
      start("'bonjour', 'fr', 5", "bonjour"),
      start("'bonjour', f, null", "bonjour"),
      start("'bonjour', f, {}", "bonjour"),
      start("'bonjour', bad, bad", "bonjour"),
      // Texts are UTF-8.
      {"start('h\\u00e9', '\\u4e2d')",
       R"(tts { action: START text: "h\303\251" lang: "\344\270\255" })",
       {"MESSAGE TTS: say[h\u00e9]", "MESSAGE TTS: lang[\u4e2d]"}},
      start("'\\u00e9\\u20ac'", "\\303\\251\\342\\202\\254", "\u00e9\u20ac"),
      start("'\\ud83d\\ude00'", "\\360\\237\\230\\200", "\U0001F600"),
      start("12.5", "12.5"),
      start("{}", "[object Object]"),
      start("undefined", "undefined"),
  };
}

const std::string kStopped = "MESSAGE TtsFunctionStop start";
const std::string kFunction = "MESSAGE TtsFunctionStop arg ok";

std::vector<SentRow> stops() {
  const std::string payload = "tts { action: STOP }";
  return {{"stop()", payload, {kStopped, "MESSAGE TtsFunctionStop"}},
          {"stop(f)", payload, {kStopped, kFunction, "MESSAGE TtsFunctionStop"}}};
}

}  // namespace

Feature ttsFeature() {
  return {
      .name = "tts",
      .functions = "start,stop",
      .sends = starts() + stops(),
      .refuses = wrong({"start()", "start('a', 'b', f, f)", "start('x', 'fr', 1, f)",
                        "start('a', 'b', 'c', 'd')", "start('a', 'b', f, 1, f)"}) +
                 needMode({"start('x')", "start(bad)", "start('x', f)", "start('x', 'fr', 5)"}) +
                 throwing({"start(bad)", "start(bad, 'fr', f)"}) +
                 throwing({"start('a', bad)", "start('a', bad, f)"}, {"MESSAGE TTS: say[a]"}) +
                 // It says that it was called before it looks at anything.
                 wrong({"stop(5)", "stop(null)", "stop(f, f)"}, {kStopped}) +
                 needMode({"stop()"}, {kStopped}) + needMode({"stop(f)"}, {kStopped, kFunction}),
      .reads = {{"start(read('t'), read('l'))", "tl"}},
      .answers = hearsCodes("start('x', tell)", "TTS") +
                 hearsCodes("start('x', 'fr', tell)", "TTS") + hearsCodes("stop(tell)", "TTS") +
                 nobodyWaits({"start('a', 'fr')", "start('x', tell, 5)", "stop()"}),
  };
}

}  // namespace morvik::test
