// morvik.asr: the request, the one result that it waits for, and the judgement of a path.
#include "features/features.h"

namespace morvik::test {
namespace {

const std::string kAsk = "string('oui|non', 'fr', tell)";
const std::string kCalled = "MESSAGE ASR: AsrCallback";
const std::string kNoResponse = "MESSAGE ASR: AsrCallback: has_response false";
const std::string kOk = "MESSAGE ASR: AsrCallback: response : OK";
const std::string kError = "MESSAGE ASR: AsrCallback: response : ERROR";
const std::string kNoResult = "MESSAGE ASR: AsrCallback: has_asrcallback false";
const std::string kNoResultEnd = "MESSAGE ASR: AsrCallback end";
const std::string kOne = "MESSAGE ASR: AsrCallback: has_asrcallback true. recognition_size: 1";
const std::string kTwo = "MESSAGE ASR: AsrCallback: has_asrcallback true. recognition_size: 2";
const std::string kParsed = "MESSAGE ASR: parseSemantic: succeed parse document";
const std::string kNotParsed = "MESSAGE ASR: parseSemantic: Failed to parse document";
const std::string kElement = "MESSAGE node type: print_element_names";

SentRow asks(const std::string& arguments, const std::string& grammar, const std::string& lang) {
  return {"string(" + arguments + ")",
          "asr { dictionary: \"" + grammar + "\" lang: \"" + lang + "\" }",
          {"MESSAGE ASR: grammar[" + grammar + "]"}};
}

std::vector<SentRow> grammars() {
  return {
      asks("'oui|non', 'fr', tell", "oui|non", "fr"),
      asks("'oui|non', 'fr', f", "oui|non", "fr"),
      asks("'', '', f", "", ""),
      asks("undefined, null, f", "undefined", "null"),
      asks("1, {}, f", "1", "[object Object]"),
      {"string('\\u20ac', undefined, f)",
       R"(asr { dictionary: "\342\202\254" lang: "undefined" })",
       {"MESSAGE ASR: grammar[\u20ac]"}},
      {"string('\\u00e9\\u0141', 'fr', f)",
       R"(asr { dictionary: "\303\251\305\201" lang: "fr" })",
       {"MESSAGE ASR: grammar[\u00e9\u0141]"}},
  };
}

// It sends nothing, though the schema has a field for it.
std::vector<SentRow> files() {
  std::vector<SentRow> rows;
  for (const std::string path :
       {"grammar.xml", "a.b/c", "", "/a", "Descriptor.xml", "descriptor_xml"})
    for (const std::string tail : {"')", "', f)"})
      rows.push_back({"file('" + path + tail, "", {"MESSAGE ASR: grammarFile[" + path + "]"}});
  rows.push_back({"file(12)", "", {"MESSAGE ASR: grammarFile[12]"}});
  rows.push_back({"file(undefined, f)", "", {"MESSAGE ASR: grammarFile[undefined]"}});
  return rows;
}

std::vector<RefusedRow> forbiddenPaths() {
  const struct {
    std::string path;
    std::string text;
  } paths[] = {{"../x", "../x"},   {"a/descriptor.xml", "a/descriptor.xml"},
               {"a b", "a b"},     {"x..y", "x..y"},
               {"a..b", "a..b"},   {"descriptor.xml.old", "descriptor.xml.old"},
               {"a\\\\b", "a\\b"}, {"\\u00e9", "\u00e9"}};
  std::vector<RefusedRow> rows;
  for (const auto& [path, text] : paths) {
    const std::string denied = "access denied: " + text;
    for (const std::string tail : {"')", "', f)"})
      rows.push_back({"file('" + path + tail, denied, denied, {"WARNING " + denied}});
  }
  return rows;
}

std::vector<RefusedRow> refusals() {
  return wrong({"string()", "string('oui|non')", "string('oui|non', 'fr')", "string('oui|non', f)",
                "string('oui|non', 'fr', 1)", "string('oui|non', 'fr', {})",
                "string('oui|non', 'fr', f, f)", "file()", "file('x', 1)", "file('x', 'y')",
                "file('x', f, f)", "file('..', 1)", "file('../x', 1)"}) +
         needMode(
             {"string('oui|non', 'fr', f)", kAsk, "string(bad, 'fr', f)", "string(bad, bad, f)"}) +
         throwing({"string(bad, 'fr', f)", "string('x', bad, f)"}) +
         std::vector<RefusedRow>{{"file(bad)", kNoText, kNoText},
                                 {"file(bad, f)", kNoText, kNoText}} +
         forbiddenPaths();
}

std::vector<AnsweredRow> withoutAResult() {
  return {
      {kAsk, "response { code: OK }", {kCalled, kOk, kNoResult, kNoResultEnd}},
      {"", "response { code: ERROR }", {kCalled, kError, kNoResult, kNoResultEnd}},
      {"", "event { code: TERMINATED }", {kCalled, kNoResponse, kNoResult, kNoResultEnd}},
      {"", "response { code: TIMEOUT }", {kCalled, kNoResult, kNoResultEnd}},
      {"", "response { }", {kCalled, kNoResult, kNoResultEnd}},
      {"", "response { description: 'x' }", {kCalled, kNoResult, kNoResultEnd}},
      {"", "", {kCalled, kNoResponse, kNoResult, kNoResultEnd}},
  };
}

// Only the first recognition counts. What it lacks is told too.
std::vector<AnsweredRow> fieldByField() {
  const std::string oui = "MESSAGE ASR: AsrCallback: text : oui";
  const std::string confident = "MESSAGE ASR: AsrCallback: confident : 80";
  const std::string noMeaning = "MESSAGE ASR: AsrCallback: recognition(0).has_semantic() false";
  return {
      {kAsk,
       "response { code: OK } asrCallback {"
       " recognition { text: 'oui' confident: 80 semantic: '<a><b>\303\251</b></a>' }"
       " recognition { text: 'non' confident: 90 } }",
       {kCalled, kOk, kTwo, oui, confident,
        "MESSAGE ASR: AsrCallback: semantic : <a><b>\303\251</b></a>",
        "MESSAGE ASR: AsrCallback: semantic size : 16", "MESSAGE ASR: parseSemantic: size:16",
        kParsed, kElement, "MESSAGE node type: Element, name: a\n", kElement,
        "MESSAGE node type: Element, name: b\n", "MESSAGE node type: Element, content: \303\251\n",
        "MESSAGE JSLOG: object {\"a\":{\"b\":\"\351\"},\"text\":\"oui\",\"confident\":80}"}},
      {kAsk,
       "response { code: OK } asrCallback { "
       "recognition { text: 'oui' confident: 80 semantic: '<a>\303\251</a>' } "
       "recognition { text: 'non' confident: 90 } }",
       {kCalled, kOk, kTwo, oui, confident, "MESSAGE ASR: AsrCallback: semantic : <a>\303\251</a>",
        "MESSAGE ASR: AsrCallback: semantic size : 9", "MESSAGE ASR: parseSemantic: size:9",
        kParsed, kElement, "MESSAGE node type: Element, name: a\n",
        "MESSAGE node type: Element, content: \303\251\n",
        "MESSAGE JSLOG: object {\"a\":\"\351\",\"text\":\"oui\",\"confident\":80}"}},
      {kAsk,
       "asrCallback { recognition { text: 'oui' confident: 80 } }",
       {kCalled, kNoResponse, kOne, oui, confident, noMeaning, "MESSAGE ASR: parseSemantic: size:0",
        kNotParsed, R"(MESSAGE JSLOG: object {"text":"oui","confident":80})"}},
      {kAsk,
       "response { code: BUSY } asrCallback { recognition { semantic: '<a' } }",
       {kCalled, kOne, "MESSAGE ASR: AsrCallback: recognition(0).has_text() false",
        "MESSAGE ASR: AsrCallback: recognition(0).has_confident() false",
        "MESSAGE ASR: AsrCallback: semantic : <a", "MESSAGE ASR: AsrCallback: semantic size : 2",
        "MESSAGE ASR: parseSemantic: size:2", kNotParsed,
        R"(MESSAGE JSLOG: object {"text":"","confident":0})"}},
  };
}

}  // namespace

Feature asrFeature() {
  return {
      .name = "asr",
      .functions = "file,string",
      .sends = grammars() + files(),
      .refuses = refusals(),
      .reads = {{"string(read('g'), read('l'), f)", "gl"}},
      .answers = withoutAResult() + fieldByField(),
  };
}

}  // namespace morvik::test
