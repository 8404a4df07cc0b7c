// The table of the script API against the real host: what a script finds, granted all and granted
// nothing, and every example. And what is made from the table.
#include <gmock/gmock.h>

#include <cstdlib>
#include <fstream>
#include <map>
#include <set>

#include <nlohmann/json.hpp>

#include "api/reference.h"
#include "api/table.h"
#include "api/typings.h"
#include "desk-fixture.h"
#include "support/file-content.h"
#include "support/program.h"

namespace morvik::test {

using namespace devkit;
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Not;

using Kinds = std::map<std::string, std::string>;  // "morvik.led.light" to "function"

constexpr char kCredentials[] =
    "credentials twitterConsumerKey=k twitterConsumerSecret=s twitterToken=t twitterTokenSecret=u "
    "facebookToken=f soundcloudToken=c\n";

// Walks over everything that the host has put into the global object, and logs a line for each.
// What the language itself brings cannot be enumerated there.
constexpr char kWalk[] = R"(
function walk(object, path) {
  Object.getOwnPropertyNames(object).forEach(function (name) {
    if (path === '' && !Object.prototype.propertyIsEnumerable.call(object, name)) return;
    if (known[path + name]) return;
    var value = object[name];
    log('FOUND ' + path + name + ' ' + typeof value);
    if (value !== null && typeof value === 'object' && path + name !== 'params') {
      walk(value, path + name + '.');
    }
  });
}
var known = { known: true, walk: true, at: true };
social.init(function () {
  walk(globalThis, '');
  log('THE END');
});
)";

constexpr char kConnect[] =
    "var at = instanceName.split(':');\nmorvik.connect(at[0], Number(at[1]));\n";

Kinds kindsInTable(bool granted) {
  Kinds kinds{{"launchType.name", "string"}};
  for (const Json& object : apiTable()["objects"]) {
    if (object.contains("grant") && !granted) continue;
    if (!object["name"].get<std::string>().empty()) kinds[object["name"]] = "object";
    for (const Json& function : object["functions"]) kinds[pathOf(object, function)] = "function";
    for (const Json& value : object["values"]) {
      kinds[pathOf(object, value)] = value["type"] == "string" ? "string" : "object";
    }
  }
  return kinds;
}

Kinds kindsIn(const std::string& log) {
  constexpr std::string_view kFound = "FOUND ";
  Kinds kinds;
  for (std::size_t at = log.find(kFound); at != std::string::npos; at = log.find(kFound, at)) {
    at += kFound.size();
    const std::string line = log.substr(at, log.find('\n', at) - at);
    kinds[line.substr(0, line.find(' '))] = line.substr(line.find(' ') + 1);
  }
  return kinds;
}

std::string allAccesses() {
  std::string accesses;
  for (const std::string& name : accessNames()) accesses += "<access>" + name + "</access>";
  return accesses;
}

class ApiTest : public DeskTest {
 protected:
  // What the host has given to a script.
  Kinds kindsOnHost(const std::string& accesses) {
    const auto run = start(write("walk", std::string(kConnect) + kWalk, accesses));
    run->waitFor("THE END");
    return kindsIn(run->output());
  }

  // The credentials are there before the first connection.
  std::unique_ptr<Program> start(const std::filesystem::path& folder) {
    Program device({MORVIK_DEV, "device", "--port=0", "--state=" + (folder_ / "device")});
    device.waitFor("listening on");
    device.say(kCredentials);
    device.waitFor("soundcloudToken");
    device.signal(SIGTERM);
    device.waitForEnd();
    return std::make_unique<Program>(command({folder, "--state=" + (folder_ / "device")}));
  }
};

TEST_F(ApiTest, tableAndHostAgreeOnWhatAllAccessesGive) {
  EXPECT_EQ(kindsOnHost(allAccesses()), kindsInTable(true));
}

TEST_F(ApiTest, tableAndHostAgreeOnWhatNoAccessGives) {
  EXPECT_EQ(kindsOnHost(""), kindsInTable(false));
}

// No function but those that look at no argument takes nine of them.
constexpr char kTooMany[] = R"(
calls.forEach(function (path) {
  var call = path.split('.').reduce(function (object, name) { return object[name]; }, globalThis);
  try {
    call(1, 2, 3, 4, 5, 6, 7, 8, 9);
    told('CALLED ' + path + ': nothing');
  } catch (text) {
    told('CALLED ' + path + ': ' + text);
  }
});
told('THE END');
)";

// What a function may throw when it is called outside interactive mode.
std::vector<std::string> thrownBy(const Json& function) {
  std::vector<std::string> texts = function["throws"];
  if (function.value("interactive", false)) texts.emplace_back("Must be in interactive mode");
  if (texts.empty()) texts.emplace_back("nothing");
  return texts;
}

std::map<std::string, std::vector<std::string>> allThrown() {
  std::map<std::string, std::vector<std::string>> thrown;
  for (const Json& object : apiTable()["objects"]) {
    if (object.value("later", false)) continue;
    for (const Json& function : object["functions"]) {
      thrown[pathOf(object, function)] = thrownBy(function);
    }
  }
  return thrown;
}

TEST_F(ApiTest, functionsThrowWhatTheTableSays) {
  const auto thrown = allThrown();
  Json calls = Json::array();
  for (const auto& [path, texts] : thrown) calls.push_back(path);
  const auto run = start(write(
      "throws", "var told = log; var calls = " + calls.dump() + ";\n" + kTooMany, allAccesses()));
  const std::string log = run->waitFor("THE END");
  for (const auto& [path, texts] : thrown) {
    const std::string mark = "CALLED " + path + ": ";
    const std::size_t at = log.find(mark) + mark.size();
    EXPECT_THAT(texts, Contains(log.substr(at, log.find('\n', at) - at))) << path;
  }
}

// Examples of one object, one after the other: each begins when the one before has said all that it
// is to say.
class ApiExamplesTest : public ApiTest, public testing::WithParamInterface<std::string> {
 protected:
  static const Json& object() {
    for (const Json& object : apiTable()["objects"]) {
      if (object["name"] == GetParam()) return object;
    }
    throw std::runtime_error("no object " + GetParam());
  }

  static std::string runsOf(const Json& function) { return function.value("runs", "together"); }

  void writeFiles(const std::string& app, const Json& function) {
    const std::filesystem::path folder = folder_.path() / app;
    std::filesystem::create_directories(folder);
    if (runsOf(function) == "web") {
      std::ofstream(folder / "beside.json")
          << R"({"address": "/weather", "answers": [{"path": "/weather", "body": {"sky": "clear"}}]})";
    }
    const Json files = function.value("files", Json::object());
    for (const auto& [name, content] : files.items()) {
      std::ofstream(folder / name) << content.get<std::string>();
    }
  }

  static std::string accesses() {
    return object().contains("grant")
               ? "<access>" + object()["grant"].get<std::string>() + "</access>"
               : "";
  }

  static std::vector<Json> examples(bool together) {
    std::vector<Json> chosen;
    for (const Json& function : object()["functions"]) {
      const std::string runs = runsOf(function);
      if ((runs == "together" || runs == "social") == together) chosen.push_back(function);
    }
    return chosen;
  }

  static std::string stepOf(const Json& function) {
    return "{ says: " + function["says"].dump() + ", run: function () {\n" + exampleOf(function) +
           "} },\n";
  }

  static void expectSaid(Program& run, const Json& function) {
    const std::string name = function["name"];
    if (function.contains("world")) {
      run.waitFor("RUN " + name + "\n");
      for (const Json& line : function["world"]) {
        run.say(line.get<std::string>() + '\n');
      }
    }
    for (const Json& line : function["says"]) {
      run.waitFor(name + ": " + line.get<std::string>() + "\n");
    }
  }
};

// What an example logs goes out with its name, and counts.
constexpr char kSteps[] = R"(
var told = log;
var step = -1;
log = function (value) {
  var now = steps[step];
  told(now.name + ': ' + value);
  now.says = now.says.filter(function (line) { return line !== String(value); });
  if (now.says.length === 0) { now.says = ['nothing more']; setTimeout(0, next); }
};
function next() {
  step = step + 1;
  if (step === steps.length) { step = step - 1; told('ALL DONE'); return; }
  steps[step].run();
  told('RUN ' + steps[step].name);
}
)";

TEST_P(ApiExamplesTest, runTogether) {
  const auto functions = examples(true);
  if (functions.empty()) return;
  setenv("https_proxy", "http://127.0.0.1:9", 1);  // the real services are never asked
  std::string script = "var steps = [\n";
  for (const Json& function : functions) {
    writeFiles("example", function);
    script +=
        stepOf(function).replace(0, 1, "{ name: '" + function["name"].get<std::string>() + "',");
  }
  script += std::string("];\n") + kSteps + kConnect +
            "morvik.start(function () { social.init(next); });\n";
  const auto run = start(write("example", script, accesses()));
  for (const Json& function : functions) expectSaid(*run, function);
  EXPECT_THAT(run->waitFor("ALL DONE"), Not(HasSubstr("threw")));
}

TEST_P(ApiExamplesTest, runAlone) {
  for (const Json& function : examples(false)) {
    writeFiles("example", function);
    const auto run =
        std::make_unique<Program>(command({write("example", exampleOf(function), accesses())}));
    for (const Json& line : function["says"]) {
      EXPECT_THAT(run->waitFor("log     " + line.get<std::string>() + "\n"),
                  Not(HasSubstr("threw")));
    }
    if (function.value("ends", false)) run->waitFor("status 0");
    run->signal(SIGTERM);
    run->waitForEnd();
    std::filesystem::remove_all(folder_.path() / "example");
  }
}

std::vector<std::string> objectNames() {
  std::vector<std::string> names;
  for (const Json& object : apiTable()["objects"]) names.push_back(object["name"]);
  return names;
}

INSTANTIATE_TEST_SUITE_P(Objects, ApiExamplesTest, testing::ValuesIn(objectNames()),
                         [](const auto& object) {
                           std::string name = "of" + object.param;
                           std::ranges::replace(name, '.', '_');
                           return name;
                         });

TEST(ApiTableTest, everyEntryIsWhole) {
  for (const Json& object : apiTable()["objects"]) {
    for (const Json& function : object["functions"]) {
      const std::string path = pathOf(object, function);
      for (const char* part : {"arguments", "throws", "about", "example", "says"}) {
        EXPECT_TRUE(function.contains(part)) << path << " has no " << part;
      }
      EXPECT_FALSE(function["says"].empty()) << path;
    }
  }
}

TEST(ApiTableTest, whatIsMadeFromItIsCommitted) {
  const std::string document = contentOf(SOURCE_DIR "/docs/script-api.md");
  EXPECT_EQ(withReference(document), document)
      << "morvik-dev api --reference=docs/script-api.md makes it anew";
}

TEST(ApiTableTest, typingsHaveEveryFunction) {
  const std::string text = typings();
  for (const Json& object : apiTable()["objects"]) {
    for (const Json& function : object["functions"]) {
      EXPECT_THAT(text, HasSubstr(function["name"].get<std::string>() + "("));
    }
  }
}

TEST(ApiTableTest, typingsAreCutToWhatIsGranted) {
  const std::string text = typings(std::set<std::string>{"led"});
  EXPECT_THAT(text, HasSubstr("readonly led: "));
  EXPECT_THAT(text, Not(HasSubstr("readonly ears: ")));
  EXPECT_THAT(text, Not(HasSubstr("declare var http")));
}

TEST(ApiVerbTest, showsAllFunctionsOrOne) {
  EXPECT_THAT(run({MORVIK_DEV, "api"}).output,
              HasSubstr("\nmorvik.led.fade(color, period, fn?)\n"));
  const ProgramResult one = run({MORVIK_DEV, "api", "morvik.led.fade"});
  EXPECT_EQ(one.status, 0);
  EXPECT_THAT(one.output, HasSubstr("morvik.led.fade('blue', 100, function (code) {"));
  EXPECT_EQ(run({MORVIK_DEV, "api", "morvik.led.glow"}).status, 1);
  EXPECT_EQ(run({MORVIK_DEV, "api", "a", "b"}).status, 2);
  EXPECT_EQ(Json::parse(run({MORVIK_DEV, "api", "--json"}).output), apiTable());
}

}  // namespace
}  // namespace morvik::test
