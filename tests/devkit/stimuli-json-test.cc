// Stimuli by names: the same as by words, for every one of them.
#include "device/stimuli-json.h"

#include <set>

#include <nlohmann/json.hpp>

#include "bench.h"
#include "device/view.h"
#include "every-stimulus.h"
#include "json-blocks.h"
#include "support/matchers.h"

namespace morvik::test {

using namespace devkit;
namespace {

// All that a stimulus leaves behind, but ids and dates that are made anew each time.
struct Trace {
  Outcome outcome;
  Lines said;
  Lines notes;
  std::vector<AppNumber> dropped;
  std::string arguments;
  std::string view;
};

std::string shown(const std::vector<Stimulated>& events) {
  Json arguments;
  for (const Stimulated& event : events) arguments[event.name] = event.arguments;
  return arguments.dump();
}

std::string viewWithoutIds(const Device& device) {
  Json view = toJson(viewOf(device));
  for (Json& message : view["messages"]) {
    message.erase("id");
    message.erase("date");
  }
  for (Json& work : view["work"]) work.erase("request");
  return view.dump(1);
}

template <class Do>
Trace traceOf(const char* before, Do act) {
  Bench bench;
  if (*before != '\0') bench.command(before);
  bench.said();
  bench.events.all.clear();
  Trace trace;
  trace.outcome = act(bench.device);
  trace.said = bench.said();
  trace.notes = bench.events.notes();
  trace.dropped = bench.outlet.dropped;
  trace.arguments = shown(bench.events.of<Stimulated>());
  trace.view = viewWithoutIds(bench.device);
  return trace;
}

TEST(StimuliByName, doTheSameAsByWords) {
  for (const StimulusRow& row : everyStimulus()) {
    const Json request = Json::parse(row.json);
    const Trace words =
        traceOf(row.before, [&](Device& device) { return stimulate(device, row.line); });
    const Trace names =
        traceOf(row.before, [&](Device& device) { return stimulateByName(device, request); });
    EXPECT_TRUE(words.outcome.done) << row.line << ": " << words.outcome.text;
    EXPECT_TRUE(names.outcome.done) << row.json << ": " << names.outcome.text;
    EXPECT_EQ(words.outcome.text, names.outcome.text) << row.line;
    EXPECT_EQ(words.said, names.said) << row.line;
    EXPECT_EQ(words.notes, names.notes) << row.line;
    EXPECT_EQ(words.dropped, names.dropped) << row.line;
    EXPECT_EQ(words.arguments, names.arguments) << row.line;
    EXPECT_EQ(words.view, names.view) << row.line;
  }
}

TEST(StimuliByName, haveARowEach) {
  std::set<std::string> rows;
  for (const StimulusRow& row : everyStimulus()) {
    rows.insert(Json::parse(row.json)["stimulus"].get<std::string>());
  }
  std::set<std::string> names;
  for (const Stimulus* stimulus : stimuli()) names.insert(stimulus->name);
  EXPECT_EQ(rows, names);
}

TEST(StimuliByName, sayWhatIsWrongAndChangeNothing) {
  const std::pair<const char*, const char*> cases[] = {
      {"[]", "a stimulus is an object whose \"stimulus\" names it"},
      {"{}", "a stimulus is an object whose \"stimulus\" names it"},
      {R"({"stimulus": 7})", "a stimulus is an object whose \"stimulus\" names it"},
      {R"({"stimulus": "fly"})", "there is no stimulus fly. help lists them."},
      {R"({"stimulus": "stop", "application": 1})",
       "there is no member application; there are stimulus, arguments, app"},
      {R"({"stimulus": "stop", "app": 3})", "there is no application 3; there are 1, 2"},
      {R"({"stimulus": "stop", "app": -1})", "there is no application -1; there are 1, 2"},
      {R"({"stimulus": "stop", "app": [1]})", "there is no application \"\"; there are 1, 2"},
      {R"({"stimulus": "stop", "arguments": [1]})", "\"arguments\" is an object"},
      {R"({"stimulus": "stop", "arguments": {"x": 1}})",
       "stop: there is no argument x; there are none. Usage: stop"},
      {R"({"stimulus": "button"})", "button: the kind of press is missing. Usage: button SIMPLE|"},
      {R"({"stimulus": "button", "arguments": {"type": null}})",
       "button: the kind of press is missing."},
      {R"({"stimulus": "button", "arguments": {"type": "HARD"}})",
       "button: HARD is none of SIMPLE DOUBLE"},
      {R"({"stimulus": "button", "arguments": {"type": ["SIMPLE", "DOUBLE"]}})",
       "button: there is one type and no list of them."},
      {R"({"stimulus": "button", "arguments": {"type": [["SIMPLE"]]}})",
       "the argument type holds no plain values"},
      {R"({"stimulus": "button", "arguments": {"kind": "SIMPLE"}})",
       "button: there is no argument kind; there is type."},
      {R"({"stimulus": "ear", "arguments": {"side": "LEFT", "step": 17}})",
       "ear: 17 is no number from 0 to 16."},
      {R"({"stimulus": "ear", "arguments": {"side": "LEFT", "step": 2.5}})",
       "ear: 2.5 is no number from 0 to 16."},
      {R"({"stimulus": "ear", "arguments": {"side": "LEFT", "step": true}})",
       "ear: true is no number from 0 to 16."},
      {R"({"stimulus": "ear", "arguments": {"side": "LEFT"}})", "ear: the step is missing."},
      {R"({"stimulus": "ear", "app": 1, "arguments": {"side": "LEFT", "step": 1}})",
       "ear: this happens to the device, not to one application: leave \"app 1\" out."},
      {R"({"stimulus": "contact", "arguments": {"uuid": ""}})",
       "contact: the contact's UUID is empty."},
      {R"({"stimulus": "noise"})", "noise: nobody listens for words; "},
      {R"({"stimulus": "credentials", "arguments": {"mode": "give", "values": {"x": "y"}}})",
       "credentials: there is no credential of that name; "},
      {R"({"stimulus": "credentials",
           "arguments": {"mode": "give", "values": {"facebookToken": "y"}}})",
       "credentials: credentials are kept, or withheld and given; not both at once."},
  };
  for (const auto& [request, words] : cases) {
    Bench bench;
    const std::string before = viewWithoutIds(bench.device);
    const Outcome outcome = stimulateByName(bench.device, Json::parse(request));
    EXPECT_FALSE(outcome.done) << request;
    EXPECT_THAT(outcome.text, StartsWith(words)) << request;
    EXPECT_THAT(bench.events.all, IsEmpty()) << request;
    EXPECT_EQ(viewWithoutIds(bench.device), before) << request;
  }
}

TEST(StimuliByName, keepSecretsToThemselves) {
  Bench bench;
  stimulate(bench.device, "credentials facebookToken=SECRET");
  const auto told = bench.events.of<Stimulated>();
  ASSERT_EQ(told.size(), 1U);
  EXPECT_THAT(told[0].arguments.at("values"), ElementsAre("facebookToken"));
  const Json wrong =
      Json::parse(R"({"stimulus": "credentials", "arguments": {"values": {"SECRET": "SECRET"}}})");
  EXPECT_THAT(stimulateByName(bench.device, wrong).text, Not(HasSubstr("SECRET")));
}

TEST(StimuliTable, tellsWhatAFormNeeds) {
  const Json table = stimuliJson();
  EXPECT_EQ(table["version"], 1);
  ASSERT_EQ(table["stimuli"].size(), stimuli().size());
  std::set<std::string> kinds;
  for (const Json& stimulus : table["stimuli"]) {
    for (const char* member : {"name", "group", "for", "usage", "help"}) {
      EXPECT_TRUE(stimulus[member].is_string()) << stimulus.dump();
    }
    for (const Json& argument : stimulus["arguments"]) {
      const std::string kind = argument["kind"];
      kinds.insert(kind);
      const bool needsChoices = kind == "choice" || kind == "name" || kind == "pair";
      EXPECT_TRUE(!needsChoices || !argument["choices"].empty()) << argument.dump();
    }
  }
  EXPECT_EQ(kinds, (std::set<std::string>{"choice", "id", "name", "number", "pair", "text"}));
}

TEST(StimuliTable, isAsThePageShows) {
  const Json table = stimuliJson();
  std::size_t found = 0;
  for (const std::string& block : jsonBlocks(SOURCE_DIR "/docs/device-json.md")) {
    const Json page = Json::parse(block, nullptr, false);
    if (page.is_discarded() || !page.contains("stimuli")) continue;
    ++found;
    for (const Json& row : page["stimuli"]) EXPECT_THAT(table["stimuli"], Contains(row));
  }
  EXPECT_EQ(found, 1U);
}

TEST(StimuliTable, marksWhatNobodyIsToSee) {
  std::vector<std::string> secret;
  const Json table = stimuliJson();
  for (const Json& stimulus : table["stimuli"]) {
    for (const Json& argument : stimulus["arguments"]) {
      if (argument.value("secret", false)) secret.push_back(argument["name"]);
    }
  }
  EXPECT_THAT(secret, ElementsAre("values"));
}

}  // namespace
}  // namespace morvik::test
