// morvik-dev config: texts and bytes of configurations, and changes of them.
#include <filesystem>
#include <fstream>

#include "config/config-bytes.h"
#include "config/config-edit.h"
#include "config/config-text.h"
#include "support/file-content.h"
#include "support/matchers.h"
#include "support/program.h"
#include "support/temporary-folder.h"

namespace morvik::test {

using namespace devkit;
namespace {

namespace fs = std::filesystem;
namespace zeph = net::quelta::zeph::message;

constexpr char kWhole[] =
    "# of the kitchen\n"
    "apiKey: \"k\"  # secret\n"
    "version: \"1\"\n"
    "name: \"clock\"\n"
    "deployment: \"home\"\n"
    "access: \"led\"\n"
    "parameters { key: \"city\" value: \"Paris\" }\n"
    "configInstance {\n"
    "  # by the oven\n"
    "  name: \"kitchen\"\n"
    "  params { key: \"volume\" value: \"5\" }\n"
    "}\n";

constexpr char kWholeJson[] = R"({
  "apiKey": "k", "version": "1", "name": "clock", "deployment": "home", "access": ["led"],
  "parameters": [{"key": "city", "value": "Paris"}],
  "configInstance": [
    {"name": "kitchen", "params": [{"key": "volume", "value": "5"}]}
  ]
})";

// "LINE:COLUMN kind" of each finding.
std::vector<std::string> placesIn(const ConfigRead& read) {
  std::vector<std::string> places;
  for (const FolderTrouble& one : read.findings) {
    places.push_back(std::to_string(one.line) + ':' + std::to_string(one.column) + ' ' + one.kind);
  }
  return places;
}

zeph::ConfigApp configOf(const std::string& text) {
  const ConfigRead read = readConfigText("config.txt", text);
  EXPECT_THAT(read.findings, IsEmpty());
  return read.config;
}

TEST(ConfigText, readsBothForms) {
  const zeph::ConfigApp config = configOf(kWhole);
  EXPECT_EQ(config.configinstance(0).params(0).value(), "5");
  EXPECT_EQ(configOf(kWholeJson).SerializeAsString(), config.SerializeAsString());
}

TEST(ConfigText, writesWhatItReads) {
  zeph::ConfigApp config = configOf(kWhole);
  config.set_author("J\xc3\xb8rn \"J\"\n\t\\");
  config.mutable_configinstance(0)->set_awake(true);
  for (const ConfigForm form : {ConfigForm::kText, ConfigForm::kJson}) {
    const std::string text = configAsText(config, form);
    EXPECT_EQ(formOf(text), form);
    EXPECT_THAT(text, HasSubstr("J\xc3\xb8rn"));
    EXPECT_EQ(configOf(text).SerializeAsString(), config.SerializeAsString());
  }
}

TEST(ConfigText, tellsWhereAMistakeIs) {
  const std::pair<std::string, const char*> cases[] = {
      {"apiKey \"k\"\n", "1:8 config-syntax"},
      {"apiKey: \"k\"\n\tversio: \"1\"\n", "2:8 config-field"},
      {"apiKey: \"k\n", "1:11 config-syntax"},
      {"configInstance {\n  name: \"a\"\n", "3:1 config-syntax"},
      {"{\"apiKey\": \"k\",\n \"version\" \"1\"}", "2:12 config-syntax"},
      {"{\"apiKey\": \"k\",\n \"versio\": \"1\"}", "2:2 config-field"},
      {"{\"configInstance\": [\n {\"name\": \"a\",\n  \"nam\": \"b\"}]}", "3:3 config-field"},
      {"{\"configInstance\": [\n {\"name\": \"a\",\n  \"awake\": \"much\"}]}", "3:3 config-syntax"},
      {"{\"a\": " + std::string(5000, '['), "1:56 config-syntax"},
  };
  for (const auto& [text, place] : cases) {
    const auto places = placesIn(readConfigText("config.txt", text));
    ASSERT_THAT(places, Not(IsEmpty())) << text;
    EXPECT_EQ(places.front(), place) << text;
  }
}

TEST(ConfigText, tellsTheNearestField) {
  for (const char* text : {"verson: \"1\"", "{\"verson\": \"1\"}"}) {
    const auto findings = readConfigText("config.txt", text).findings;
    ASSERT_THAT(findings, Not(IsEmpty()));
    EXPECT_EQ(findings.front().text, "ConfigApp has no field verson");
    EXPECT_EQ(findings.front().cure, "Write version.");
  }
}

TEST(ConfigText, tellsRequiredFieldsWhereTheirGroupBegins) {
  const std::string first = "apiKey: \"k\" version: \"1\" deployment: \"h\"\n";
  EXPECT_THAT(placesIn(readConfigText("c", first + "\n  configInstance { uuid: \"u\" }")),
              ElementsAre("1:1 config-incomplete", "3:3 config-incomplete"));
  EXPECT_THAT(
      placesIn(readConfigText("c",
                              "{\"apiKey\": \"k\", \"version\": \"1\", \"name\": \"n\", "
                              "\"deployment\": \"h\", \"parameters\": [\n {\"key\": \"a\"}]}")),
      ElementsAre("2:2 config-incomplete"));
}

TEST(ConfigBytes, tellsTheByteAndTheFieldOfDamage) {
  const std::string whole = configOf(kWhole).SerializeAsString();
  EXPECT_THAT(readConfigBytes("config.bin", whole).findings, IsEmpty());
  const auto cut = readConfigBytes("config.bin", whole.substr(0, whole.size() - 1)).findings;
  ASSERT_EQ(cut.size(), 1U);
  EXPECT_EQ(cut.front().kind, "config-damaged");
  EXPECT_EQ(
      cut.front().text,
      "is damaged at byte 41, in configInstance[0]: it should have 23 bytes, and 22 are left");
  const auto odd = readConfigBytes("config.bin", std::string("\x0a\x01k\x07", 4)).findings;
  ASSERT_EQ(odd.size(), 1U);
  EXPECT_EQ(odd.front().text, "is damaged at byte 3: no field begins here");
}

TEST(ConfigBytes, saysWhereForEveryCut) {
  const std::string whole = configOf(kWhole).SerializeAsString();
  for (std::size_t length = 0; length < whole.size(); ++length) {
    const auto findings = readConfigBytes("config.bin", whole.substr(0, length)).findings;
    for (const FolderTrouble& one : findings) EXPECT_THAT(one.text, Not(HasSubstr("somewhere")));
  }
}

TEST(ConfigBytes, tellsOfFieldsThatNoConfigurationHas) {
  const std::string bytes = configOf(kWhole).SerializeAsString() + "\x28\x01";
  const auto findings = readConfigBytes("config.bin", bytes).findings;
  ASSERT_EQ(findings.size(), 1U);
  EXPECT_EQ(findings.front().kind, "config-unknown");
}

std::vector<ConfigChange> changesOf(const std::vector<std::string>& words) {
  std::vector<ConfigChange> changes;
  for (const std::string& word : words) changes.push_back(changeIn(word).value());
  return changes;
}

TEST(ConfigChange, isNameAndValue) {
  EXPECT_FALSE(changeIn("author"));
  EXPECT_FALSE(changeIn("=Anna"));
  EXPECT_EQ(changeIn("author=")->value, "");
  EXPECT_EQ(changeIn("parameters.sum=1=1")->value, "1=1");
}

TEST(ConfigChange, changesAddsAndReplaces) {
  zeph::ConfigApp config = configOf(kWhole);
  EXPECT_EQ(change(config, changesOf({"author=Anna", "version=2", "access=ears", "access=tts",
                                      "parameters.city=Rome", "parameters.a.b=c",
                                      "configInstance.kitchen.params.volume=6",
                                      "configInstance.hall.awake=true"})),
            std::nullopt);
  EXPECT_EQ(config.author() + config.version(), "Anna2");
  EXPECT_THAT(config.access(), ElementsAre("ears", "tts"));
  EXPECT_EQ(config.parameters(0).value(), "Rome");
  EXPECT_EQ(config.parameters(1).key() + config.parameters(1).value(), "a.bc");
  EXPECT_EQ(config.configinstance(0).params(0).value(), "6");
  EXPECT_EQ(config.configinstance(1).name(), "hall");
  EXPECT_TRUE(config.configinstance(1).awake());
}

TEST(ConfigChange, refusesWhatMakesNoSense) {
  const std::pair<const char*, const char*> cases[] = {
      {"verson=2", "ConfigApp has no field verson: perhaps version"},
      {"wings=2", "ConfigApp has no field wings; it has apiKey, version"},
      {"version.a=2", "version holds no fields"},
      {"parameters=2", "parameters is a group"},
      {"configInstance.kitchen=2", "configInstance.kitchen is a group"},
      {"configInstance.kitchen.awake=much", "awake is true or false, not much"},
  };
  for (const auto& [word, text] : cases) {
    zeph::ConfigApp config = configOf(kWhole);
    EXPECT_THAT(change(config, changesOf({word})).value_or(""), StartsWith(text));
  }
}

TEST(ConfigChange, keepsCommentsOfAText) {
  std::string trouble;
  const auto text =
      changeText(kWhole,
                 changesOf({"apiKey=\"new\"", "author=Anna", "access=ears", "parameters.city=Rome",
                            "parameters.lang=fr", "configInstance.kitchen.params.volume=6",
                            "configInstance.kitchen.awake=true", "configInstance.hall.uuid=u"}),
                 trouble);
  EXPECT_EQ(trouble, "");
  EXPECT_EQ(text.value_or(""),
            "# of the kitchen\n"
            "apiKey: \"\\\"new\\\"\"  # secret\n"
            "version: \"1\"\n"
            "name: \"clock\"\n"
            "deployment: \"home\"\n"
            "parameters { key: \"city\" value: \"Rome\" }\n"
            "configInstance {\n"
            "  # by the oven\n"
            "  name: \"kitchen\"\n"
            "  params { key: \"volume\" value: \"6\" }\n"
            "  awake: true\n"
            "}\n"
            "author: \"Anna\"\n"
            "access: \"ears\"\n"
            "parameters { key: \"lang\" value: \"fr\" }\n"
            "configInstance { name: \"hall\" uuid: \"u\" }\n");
}

TEST(ConfigChange, changesLists) {
  std::string trouble;
  const auto text = changeText(
      "\naccess: [\"a\", \"b\"] access: \"c\"\n"
      "parameters: [{ key: \"a\" value: \"1\" }, { key: \"b\" value: \"2\" }]\n",
      changesOf({"parameters.b=3", "access=d"}), trouble);
  EXPECT_EQ(trouble, "");
  EXPECT_EQ(text.value_or(""),
            "\nparameters: [{ key: \"a\" value: \"1\" }, { key: \"b\" value: \"3\" }]\n"
            "access: \"d\"\n");
}

TEST(ConfigChange, leavesATextThatItCannotChange) {
  std::string trouble;
  EXPECT_FALSE(changeText("configInstance: [{ name: \"x\" }]",
                          changesOf({"configInstance.x.uuid=5"}), trouble));
  EXPECT_THAT(trouble, HasSubstr("cannot be changed"));
}

class ConfigVerb : public ::testing::Test {
 protected:
  ConfigVerb() { write("config.txt", kWhole); }

  void write(const std::string& name, const std::string& content) const {
    std::ofstream(folder_ / name, std::ios::binary) << content;
  }
  ProgramResult config(std::vector<std::string> words) const {
    words.insert(words.begin(), {MORVIK_DEV, "config"});
    return run(words);
  }

  test::TemporaryFolder folder_;
};

TEST_F(ConfigVerb, buildsAndShowsAndBuildsTheSame) {
  ProgramResult outcome = config({"build", folder_ / "config.txt"});
  EXPECT_EQ(outcome.status, 0) << outcome.output;
  const std::string bytes = contentOf(folder_ / "config.bin");
  EXPECT_EQ(bytes, configOf(kWhole).SerializeAsString());
  outcome = config({"show", folder_.path()});
  EXPECT_EQ(outcome.status, 0);
  write("again.txt", outcome.output);
  EXPECT_EQ(config({"build", folder_ / "again.txt", "--output=" + (folder_ / "b.bin")}).status, 0);
  EXPECT_EQ(contentOf(folder_ / "b.bin"), bytes);
}

TEST_F(ConfigVerb, tellsMistakesAsCheckDoesAndMakesNothing) {
  write("config.bin", "old");
  write("config.txt", "apiKey: \"k\"\nverson: \"1\"\n");
  const std::string file = folder_ / "config.txt";
  ProgramResult outcome = config({"build", file});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.output,
              StartsWith(file + ":2:7: ConfigApp has no field verson [config-field]\n"
                                "  Write version.\n"));
  outcome = config({"build", "--json", file});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.output, HasSubstr(R"("line":2,"column":7,"kind":"config-field")"));
  EXPECT_EQ(contentOf(folder_ / "config.bin"), "old");
}

TEST_F(ConfigVerb, setsFieldsOfBytesAndOfText) {
  config({"build", folder_ / "config.txt"});
  fs::permissions(folder_ / "config.bin", fs::perms::owner_read | fs::perms::owner_write);
  EXPECT_EQ(config({"set", folder_.path(), "author=Anna", "parameters.city=Rome"}).output, "");
  const auto read = readConfigBytes("config.bin", contentOf(folder_ / "config.bin"));
  EXPECT_EQ(read.config.author() + read.config.parameters(0).value(), "AnnaRome");
  EXPECT_EQ(fs::status(folder_ / "config.bin").permissions(),
            fs::perms::owner_read | fs::perms::owner_write);
  EXPECT_EQ(config({"set", folder_ / "config.txt", "version=2"}).status, 0);
  EXPECT_THAT(contentOf(folder_ / "config.txt"), HasSubstr("# by the oven"));
  EXPECT_THAT(contentOf(folder_ / "config.txt"), HasSubstr("version: \"2\""));
}

TEST_F(ConfigVerb, losesNothingWhenSomethingIsWrong) {
  write("config.bin", "\x0a\x05k");
  ProgramResult outcome = config({"set", folder_.path(), "author=Anna"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.output, HasSubstr("config.bin: is damaged at byte 1, in apiKey"));
  EXPECT_EQ(contentOf(folder_ / "config.bin"), "\x0a\x05k");
  outcome = config({"show", folder_.path()});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.output, HasSubstr("at byte 1, in apiKey"));
  outcome = config({"set", folder_ / "config.txt", "verson=2"});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(contentOf(folder_ / "config.txt"), kWhole);
}

TEST_F(ConfigVerb, refusesWhatMakesNoSense) {
  const std::string text = folder_ / "config.txt";
  for (const std::vector<std::string>& words : {std::vector<std::string>{},
                                                {"eat", text},
                                                {"build"},
                                                {"show", text, text},
                                                {"set", text},
                                                {"set", text, "author"},
                                                {"show", "--form=xml", text},
                                                {"show", "--output=a", text},
                                                {"build", folder_ / "nothing.txt"},
                                                {"build", text, "--output=" + text}}) {
    EXPECT_EQ(config(words).status, 2) << testing::PrintToString(words);
  }
  EXPECT_EQ(contentOf(text), kWhole);
}

}  // namespace
}  // namespace morvik::test
