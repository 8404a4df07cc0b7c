// The start of an application: its descriptor, its parameters, its launch type, the objects that
// its script finds, its source, and the order of it all in the log.
#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>

#include <cstring>
#include <string>
#include <vector>

#include "features/features.h"
#include "support/matchers.h"
#include "support/system/system-test.h"

namespace morvik::test {
namespace {

constexpr char kLeave[] = "\nsetTimeout(0, function() { exit(); });";

// A file that exists and cannot be opened, not even by root.
void makeUnopenable(const std::string& path) {
  const Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  ASSERT_LT(path.size(), sizeof address.sun_path);
  std::strcpy(address.sun_path, path.c_str());
  ASSERT_EQ(bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
}

class ApplicationStartTest : public SystemTest {
 protected:
  [[nodiscard]] std::string folder() const { return apps.path() + "/app"; }

  // The first thing that the script of an application logs, when it is launched by the line.
  // The application must leave by itself.
  std::string loggedBy(const std::string& line) {
    App app = launch(line);
    std::string text = app.logged();
    waitUntilReaped(app, 0);
    return text;
  }

  // How an application ends whose descriptor is this text.
  struct End {
    Exit exit;
    std::vector<LogRecord> records;
  };
  End endOfStart(std::string_view descriptor) {
    apps.gate("app");
    const App app = launch("app");
    const Exit exit = endOf(app, [&] { apps.openGate("app", descriptor); });
    return {exit, app.records()};
  }
};

TEST_F(ApplicationStartTest, logsItsStepsInOrder) {
  apps.app("app", {"led"}, "log('first'); log('last');");
  App app = launch("app");
  app.waitForLog("JSLOG: last");
  std::vector<std::pair<std::string, int>> steps;
  for (const LogRecord& record : app.records()) steps.emplace_back(record.text, record.priority);
  EXPECT_THAT(
      steps,
      ElementsAre(std::pair("running app: " + folder(), LOG_DEBUG),
                  std::pair("searching descriptor: " + folder() + "/descriptor.xml", LOG_DEBUG),
                  std::pair("loading descriptor", LOG_DEBUG),
                  std::pair("decriptor loaded", LOG_NOTICE),
                  std::pair("no params loaded: No such file or directory", LOG_WARNING),
                  std::pair("loading source: " + folder() + "/main.js", LOG_DEBUG),
                  std::pair("running app: app", LOG_NOTICE), std::pair("JSLOG: first", LOG_NOTICE),
                  std::pair("JSLOG: last", LOG_NOTICE)));
}

// --- descriptor.xml

TEST_F(ApplicationStartTest, aDescriptorThatIsNotXmlEndsItWithStatusZero) {
  for (const std::string text : {"", "<descriptor>", "led", "<a/><b/>"}) {
    SCOPED_TRACE(text);
    startHost();
    std::filesystem::remove_all(folder());
    const End end = endOfStart(text);
    EXPECT_EQ(end.exit, exited(0));
    EXPECT_EQ(end.records.size(), 3U);
    EXPECT_EQ(end.records.back().text, "loading descriptor");
  }
}

TEST_F(ApplicationStartTest, aMissingDescriptorEndsItWithoutAWordAndFreesItsPlace) {
  for (const std::string name : {"no-folder", "no-descriptor"}) {
    SCOPED_TRACE(name);
    startHost();
    apps.file("no-descriptor", "main.js", "log('never')");
    const App app = launch(name);
    waitUntilReaped(app, 0);
    EXPECT_THAT(app.texts(),
                ElementsAre("running app: " + apps.path() + "/" + name,
                            "searching descriptor: " + apps.path() + "/" + name + "/descriptor.xml",
                            "loading descriptor"));
  }
}

TEST_F(ApplicationStartTest, anAccessElementWithoutTextIsFatalWhenASearchReachesIt) {
  const End end =
      endOfStart("<descriptor><accesses><access/><access>led</access></accesses></descriptor>");
  EXPECT_EQ(end.exit, killedBy(SIGTRAP));
  EXPECT_EQ(end.records.back().priority, LOG_DEBUG);
  EXPECT_NE(end.records.back().text, "decriptor loaded");
}

struct Grant {
  std::string descriptor;
  std::string led;
};

TEST_F(ApplicationStartTest, onlyExactNamesInTheirPlaceGrantAnything) {
  const std::vector<Grant> rows{
      {descriptorXml({"led"}), "object"},
      {descriptorXml({"led", "led"}), "object"},
      {descriptorXml({"ears", "led", "unheard-of"}), "object"},
      {descriptorXml({"<![CDATA[led]]>"}), "object"},
      {"<descriptor><accesses/><accesses><access>led</access></accesses></descriptor>", "object"},
      {"<descriptor><name>x</name><accesses kind='y'><access z='1'>led</access></accesses>"
       "</descriptor>",
       "object"},
      {descriptorXml({}), "undefined"},
      {descriptorXml({"LED"}), "undefined"},
      {descriptorXml({"leds"}), "undefined"},
      {descriptorXml({" led"}), "undefined"},
      {descriptorXml({"led "}), "undefined"},
      {descriptorXml({"\nled\n"}), "undefined"},
      {descriptorXml({"l<b/>ed"}), "undefined"},
      {descriptorXml({"<b>led</b>x"}), "undefined"},
      {"<descriptor><access>led</access></descriptor>", "undefined"},
      {"<accesses><access>led</access></accesses>", "undefined"},
      {"<Descriptor><accesses><access>led</access></accesses></Descriptor>", "undefined"},
      {"<descriptor xmlns='urn:x'><accesses><access>led</access></accesses></descriptor>",
       "undefined"},
      {"<something-else/>", "undefined"}};
  apps.app("app", {}, std::string("log(typeof morvik.led);") + kLeave);
  for (const Grant& row : rows) {
    apps.file("app", "descriptor.xml", row.descriptor);
    EXPECT_EQ(loggedBy("app"), row.led) << row.descriptor;
  }
}

// --- the object tree

TEST_F(ApplicationStartTest, everyApplicationFindsWhatHasNoGate) {
  expectLogged({{"typeof log", "function"},
                {"typeof exit", "function"},
                {"typeof setTimeout", "function"},
                {"typeof uuid", "function"},
                {"typeof timestamp", "function"},
                {"typeof ping", "function"},
                {"typeof cmdline", "string"},
                {"typeof instanceName", "string"},
                {"typeof appName", "string"},
                {"typeof launchType", "object"},
                {"typeof params", "object"},
                {"typeof morvik", "object"},
                {"typeof morvik.random", "function"},
                {"typeof morvik.ping", "function"},
                {"typeof morvik.connect", "function"},
                {"typeof morvik.start", "function"},
                {"typeof morvik.stop", "function"},
                {"typeof morvik.info", "function"},
                {"typeof include", "function"},
                {"typeof signHMACSHA1", "function"},
                {"typeof file.read", "function"},
                {"typeof file.write", "function"},
                {"typeof social.init", "function"},
                {"typeof morvik.led", "undefined"},
                {"typeof http", "undefined"},
                {"morvik.config", "undefined"},
                {"morvik.SetInteractive", "undefined"}});
}

struct GatedObject {
  std::string access;
  std::string object;
  std::string members;
};

const std::vector<GatedObject>& gatedObjects() {
  static const std::vector<GatedObject> all = [] {
    std::vector<GatedObject> objects;
    for (const Feature& feature : features())
      objects.push_back({feature.name, "morvik." + feature.name, feature.functions});
    objects.push_back({"http", "http", "get,post,get2,post2"});
    return objects;
  }();
  return all;
}

// Logs the members of every gated object that is there, which are all functions.
std::string tellGatedObjects() {
  std::string script = "var there = [];";
  for (const GatedObject& row : gatedObjects())
    script += "if (typeof " + row.object + " == 'object') there.push('" + row.object +
              ":' + Object.keys(" + row.object + ").filter(function(k) { return typeof " +
              row.object + "[k] == 'function'; }));";
  return script + "log(there.join(' '));";
}

TEST_F(ApplicationStartTest, eachAccessNameGrantsItsObjectWhollyAndNoOther) {
  apps.app("app", {}, tellGatedObjects() + kLeave);
  for (const GatedObject& row : gatedObjects()) {
    apps.file("app", "descriptor.xml", descriptorXml({row.access}));
    EXPECT_EQ(loggedBy("app"), row.object + ":" + row.members);
  }
}

TEST_F(ApplicationStartTest, allAccessNamesTogetherGrantAllObjects) {
  std::vector<std::string> accesses;
  std::string all;
  for (const GatedObject& row : gatedObjects()) {
    accesses.push_back(row.access);
    all += (all.empty() ? "" : " ") + row.object + ":" + row.members;
  }
  apps.app("app", accesses, tellGatedObjects());
  EXPECT_EQ(launch("app").logged(), all);
}

// The search for a name ends at the first match, so an empty element behind all names is not met.
TEST_F(ApplicationStartTest, anAccessElementWithoutTextHarmsNobodyBehindAllNames) {
  std::string accesses;
  for (const GatedObject& row : gatedObjects()) accesses += "<access>" + row.access + "</access>";
  apps.app("app", {}, "log(typeof morvik.led);");
  apps.file("app", "descriptor.xml",
            "<descriptor><accesses>" + accesses + "<access/></accesses></descriptor>");
  EXPECT_EQ(launch("app").logged(), "object");
}

// --- the launch line, as the script sees it

struct Line {
  std::string line;
  std::string logged;
};

TEST_F(ApplicationStartTest, theLaunchLineReachesTheScript) {
  apps.app("app", {}, std::string("log([cmdline, appName, instanceName].join('|'));") + kLeave);
  const std::vector<Line> rows{
      {"app", "app|app|"},
      {"app RFID", "app RFID|app|"},
      {"app RFID bob", "app RFID bob|app|bob"},
      {"app RFID  bob's  clock ", "app RFID  bob's  clock |app| bob's  clock "}};
  for (const Line& row : rows) EXPECT_EQ(loggedBy(row.line), row.logged);
}

TEST_F(ApplicationStartTest, theLaunchLinesBytesAreUtf8) {
  apps.app("app", {}, std::string("log(instanceName.length + ' ' + cmdline.length);") + kLeave);
  EXPECT_EQ(loggedBy("app x caf\xc3\xa9"), "4 10");
}

TEST_F(ApplicationStartTest, aLaunchTypeByTagHasSixFields) {
  apps.app("app", {},
           std::string("var t = launchType; log([t.name, t.id, t.app, t.type, t.pict, t.color,"
                       " t.data, Object.keys(t).length].join('|'));") +
               kLeave);
  const std::vector<Line> rows{{"app RFID;1;2;3;4;5;6", "RFID|1|2|3|4|5|6|7"},
                               {"app RFID;7;8", "RFID|7|8|||||7"},
                               {"app RFID", "RFID|||||||7"},
                               {"app RFID;;2;;4", "RFID||2||4|||7"},
                               {"app RFIDXYZ;1", "RFID|1||||||7"},
                               {"app RFID;1;2;3;4;5;6;7;8", "RFID|1|2|3|4|5|6|7"}};
  for (const Line& row : rows) EXPECT_EQ(loggedBy(row.line), row.logged) << row.line;
}

TEST_F(ApplicationStartTest, aLaunchTypeByVoiceHasTextSemanticAndConfidence) {
  apps.app("app", {},
           std::string("var t = launchType; log([t.name, t.text, t.rawSemantic, t.confident,"
                       " typeof t.confident, t.id].join('|'));") +
               kLeave);
  const std::string number = "|50|number|";
  const std::vector<Line> rows{
      {"app ASR;hello;<a>b</a>;more", "ASR|hello|<semantic><a>b</a></semantic>" + number},
      {"app ASR;hello", "ASR|hello|<semantic></semantic>" + number},
      {"app ASR", "ASR||<semantic></semantic>" + number},
      {"app ASRx;y;z", "ASR|y|<semantic>z</semantic>" + number}};
  for (const Line& row : rows) EXPECT_EQ(loggedBy(row.line), row.logged) << row.line;
}

TEST_F(ApplicationStartTest, anyOtherLaunchTypeIsItsNameAndNothingElse) {
  apps.app("app", {}, std::string("log(JSON.stringify(launchType));") + kLeave);
  const std::vector<Line> rows{{"app", R"({"name":""})"},
                               {"app  bob", R"({"name":""})"},
                               {"app button", R"({"name":"button"})"},
                               {"app a;b;c", R"({"name":"a;b;c"})"},
                               {"app rfid;1", R"({"name":"rfid;1"})"},
                               {"app RFI", R"({"name":"RFI"})"},
                               {"app AS", R"({"name":"AS"})"}};
  for (const Line& row : rows) EXPECT_EQ(loggedBy(row.line), row.logged) << row.line;
}

// --- config.bin

zeph::ConfigApp emptyConfig() {
  zeph::ConfigApp config;
  config.set_apikey("key");
  config.set_version("1");
  config.set_name("app");
  config.set_deployment("here");
  return config;
}

void add(google::protobuf::RepeatedPtrField<zeph::KeyValue>* list, const std::string& key,
         const std::string& value) {
  zeph::KeyValue* pair = list->Add();
  pair->set_key(key);
  pair->set_value(value);
}

zeph::ConfigInstance* addInstance(zeph::ConfigApp& config, const std::string& name) {
  zeph::ConfigInstance* instance = config.add_configinstance();
  instance->set_name(name);
  return instance;
}

class ParametersTest : public ApplicationStartTest {
 protected:
  ParametersTest() { apps.app("app", {}, "log(JSON.stringify(params));"); }
  std::string params() {
    app = launch("app");
    return app.logged();
  }
  App app;
};

TEST_F(ParametersTest, haveOneObjectForEachInstanceInFileOrder) {
  zeph::ConfigApp config = emptyConfig();
  zeph::ConfigInstance* kitchen = addInstance(config, "kitchen");
  add(kitchen->mutable_params(), "city", "Lyon");
  add(kitchen->mutable_params(), "city", "Paris");
  kitchen->set_accesstoken("secret");
  kitchen->set_uuid("1-2");
  addInstance(config, "attic")->set_rfid("not read");
  apps.config("app", config);
  EXPECT_EQ(params(), R"({"kitchen":{"city":"Paris","accessToken":"secret","uuid":"1-2"},)"
                      R"("attic":{}})");
}

TEST_F(ParametersTest, ofALaterInstanceReplaceThoseOfTheSameName) {
  zeph::ConfigApp config = emptyConfig();
  add(addInstance(config, "one")->mutable_params(), "a", "1");
  add(addInstance(config, "one")->mutable_params(), "b", "2");
  apps.config("app", config);
  EXPECT_EQ(params(), R"({"one":{"b":"2"}})");
}

TEST_F(ParametersTest, tokenUuidAndDescriptorWinOverTheirNames) {
  zeph::ConfigApp config = emptyConfig();
  zeph::ConfigInstance* one = addInstance(config, "one");
  one->set_accesstoken("token");
  one->set_uuid("id");
  add(one->mutable_params(), "accessToken", "key's");
  add(one->mutable_params(), "uuid", "key's");
  add(addInstance(config, "descriptor")->mutable_params(), "a", "1");
  add(config.mutable_parameters(), "lang", "fr");
  apps.config("app", config);
  EXPECT_EQ(params(), R"({"one":{"accessToken":"token","uuid":"id"},"descriptor":{"lang":"fr"}})");
}

TEST_F(ParametersTest, keepAnInstanceNamedDescriptorWhenThereAreNone) {
  zeph::ConfigApp config = emptyConfig();
  add(addInstance(config, "descriptor")->mutable_params(), "a", "1");
  apps.config("app", config);
  EXPECT_EQ(params(), R"({"descriptor":{"a":"1"}})");
}

TEST_F(ParametersTest, areLoggedWhileTheyAreMade) {
  zeph::ConfigApp config = emptyConfig();
  addInstance(config, "one");
  add(config.mutable_parameters(), "lang", "fr");
  add(config.mutable_parameters(), "rate", "");
  apps.config("app", config);
  EXPECT_EQ(params(), R"({"one":{},"descriptor":{"lang":"fr","rate":""}})");
  EXPECT_THAT(
      app.texts(),
      ElementsAre(
          "running app: " + folder(), "searching descriptor: " + folder() + "/descriptor.xml",
          "loading descriptor", "decriptor loaded", "create parameters", "parameters size : 2",
          "create parameters key : lang", "create parameters value : fr",
          "create parameters key : rate", "create parameters value : ", "create parameters done",
          "loading source: " + folder() + "/main.js", "running app: app", StartsWith("JSLOG: ")));
  EXPECT_EQ(app.waitForLog("create parameters").priority, LOG_DEBUG);
  EXPECT_EQ(app.waitForLog("parameters size : 2").priority, LOG_DEBUG);
  EXPECT_EQ(app.waitForLog("create parameters key : lang").priority, LOG_DEBUG);
  EXPECT_EQ(app.waitForLog("create parameters value : fr").priority, LOG_DEBUG);
  EXPECT_EQ(app.waitForLog("create parameters done").priority, LOG_DEBUG);
}

TEST_F(ParametersTest, areEmptyWithoutAFile) {
  EXPECT_EQ(params(), "{}");
  EXPECT_THAT(app.warnings(), ElementsAre("no params loaded: No such file or directory"));
}

TEST_F(ParametersTest, areEmptyWhenTheFileCannotBeOpened) {
  makeUnopenable(folder() + "/config.bin");
  EXPECT_EQ(params(), "{}");
  EXPECT_THAT(app.warnings(), ElementsAre("No such device or address"));
  EXPECT_THAT(app.texts(), Not(Contains("create parameters")));
}

TEST_F(ParametersTest, areEmptyForAnEmptyFile) {
  apps.file("app", "config.bin", "");
  EXPECT_EQ(params(), "{}");
  app.waitForLog("parameters size : 0");
  EXPECT_THAT(app.warnings(), ElementsAre());
}

TEST_F(ParametersTest, holdWhatACorruptFileGave) {
  zeph::ConfigApp config;  // required fields are missing
  add(addInstance(config, "one")->mutable_params(), "a", "1");
  apps.file("app", "config.bin", config.SerializePartialAsString() + "\xff\xff");
  EXPECT_EQ(params(), R"({"one":{"a":"1"}})");
}

TEST_F(ParametersTest, survivePureGarbage) {
  apps.file("app", "config.bin", std::string(1000, '\xff'));
  EXPECT_EQ(params(), "{}");
}

// --- main.js

TEST_F(ApplicationStartTest, aMissingMainScriptIsFatal) {
  const End end = endOfStart(descriptorXml({}));
  EXPECT_EQ(end.exit, killedBy(SIGTRAP));
  EXPECT_EQ(end.records.back().text, "No such file or directory");
  EXPECT_EQ(end.records.back().priority, LOG_DEBUG);
  EXPECT_EQ(end.records.rbegin()[1].text, "loading source: " + folder() + "/main.js");
}

TEST_F(ApplicationStartTest, aFolderInPlaceOfTheMainScriptIsFatal) {
  std::filesystem::create_directories(folder() + "/main.js");
  const End end = endOfStart(descriptorXml({}));
  EXPECT_EQ(end.exit, killedBy(SIGTRAP));
  EXPECT_EQ(end.records.back().text, "Is a directory");
  EXPECT_EQ(end.records.back().priority, LOG_DEBUG);
}

TEST_F(ApplicationStartTest, aMainScriptThatCannotBeOpenedIsFatal) {
  std::filesystem::create_directories(folder());
  makeUnopenable(folder() + "/main.js");
  const End end = endOfStart(descriptorXml({}));
  EXPECT_EQ(end.exit, killedBy(SIGTRAP));
  EXPECT_EQ(end.records.back().text, "No such device or address");
  EXPECT_EQ(end.records.back().priority, LOG_DEBUG);
}

TEST_F(ApplicationStartTest, aSourceEndsAtItsFirstZeroByte) {
  using std::string_literals::operator""s;
  apps.app("app", {},
           "log('before'); setTimeout(0, function() { log('still here'); });\0log('x');"s);
  App app = launch("app");
  EXPECT_THAT(app.loggedUntil("still here"), ElementsAre("before"));
}

TEST_F(ApplicationStartTest, anEmptyMainScriptRuns) {
  apps.app("app", {}, "");
  const App app = launch("app");
  app.waitForLog("running app: app");
  EXPECT_TRUE(app.alive());
}

TEST_F(ApplicationStartTest, aSourceIsUtf8) {
  apps.app("app", {}, "log('caf\xc3\xa9 \xe2\x82\xac'.length);");
  EXPECT_EQ(launch("app").logged(), "6");
}

TEST_F(ApplicationStartTest, twoApplicationsOfOneFolderRunSideBySide) {
  apps.app("app", {}, "log(instanceName);");
  App one = launch("app x one");
  App two = launch("app x two");
  EXPECT_EQ(one.logged(), "one");
  EXPECT_EQ(two.logged(), "two");
}

// --- paths

// A limit of 255 bytes counts the end mark, and what is beyond it is cut without a word.
TEST_F(ApplicationStartTest, overlongPathsAreCut) {
  const std::string name(240, 'n');
  const std::string path = apps.path() + "/" + name + "/descriptor.xml";
  host().line(name);
  host().waitForLog("searching descriptor: " + path.substr(0, 254));
}

TEST_F(ApplicationStartTest, aCutPathIsTheOneThatIsOpened) {
  const std::string rest = "/descriptor.xml";
  const std::string name(256 - apps.path().size() - 1 - rest.size(), 'n');
  apps.file(name, "descriptor.x", descriptorXml({"led"}));
  apps.file(name, "main.js", "log(typeof morvik.led);");
  EXPECT_EQ(launch(name).logged(), "object");
}

TEST_F(ApplicationStartTest, overlongSourcePathsAreCut) {
  const std::string name(254 - apps.path().size() - 1 - std::strlen("/main"), 'n');
  std::filesystem::create_directories(apps.path() + "/" + name);
  const std::string cut = (apps.path() + "/" + name + "/descriptor.xml").substr(0, 254);
  EXPECT_EQ(cut.substr(cut.rfind('/')), "/desc");
  apps.file(name, "desc", descriptorXml({}));
  apps.file(name, "main", "log('cut');");
  EXPECT_EQ(launch(name).logged(), "cut");
}

}  // namespace
}  // namespace morvik::test
