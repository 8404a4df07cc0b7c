// config.bin becomes params: its shape, what wins over what, and files that are not as they should
// be.
#include "host/parameters.h"

#include "host/app-files.h"
#include "support/text-message.h"
#include "support/unit/script-test.h"

namespace morvik::test {
namespace {

class ParametersTest : public ScriptTest {
 protected:
  // `params` from a file with these bytes, as JSON.
  std::string paramsOf(const std::string& bytes) {
    files.write("config.bin", bytes);
    return load();
  }
  std::string load() {
    const v8::Context::Scope entered(context());
    const auto params = loadParameters(files.path("config.bin"));
    setGlobal("params", params);
    return run("JSON.stringify(params)");
  }
  static std::string serialised(const std::string& text) {
    return messageFrom<zeph::ConfigApp>(text).SerializePartialAsString();
  }

  AppFiles files;
};

TEST_F(ParametersTest, haveOnePropertyForEachInstanceAndOneForTheApplication) {
  const struct {
    const char* config;
    const char* params;
  } rows[] = {
      {"", "{}"},
      {"name: 'n' author: 'a' access: 'led'", "{}"},  // the rest is not read
      {"configInstance { name: 'home' }", R"({"home":{}})"},
      {"configInstance { name: 'home' rfid: 'r' awake: true }", R"({"home":{}})"},
      {"configInstance { name: 'home' params { key: 'a' value: '1' } params { key: 'b' value: '' } "
       "accessToken: 't' uuid: 'u' }",
       R"({"home":{"a":"1","b":"","accessToken":"t","uuid":"u"}})"},
      {"configInstance { name: 'x' } configInstance { name: 'a' }", R"({"x":{},"a":{}})"},
      {"configInstance { name: 'x' params { key: 'a' value: '1' } } configInstance { name: 'x' "
       "uuid: 'u' }",
       R"({"x":{"uuid":"u"}})"},
      {"configInstance { name: 'x' params { key: 'a' value: '1' } params { key: 'a' value: '2' } }",
       R"({"x":{"a":"2"}})"},
      // Token and id win over keys of their names.
      {"configInstance { name: 'x' params { key: 'uuid' value: 'k' } uuid: 'u' }",
       R"({"x":{"uuid":"u"}})"},
      {"configInstance { name: 'x' params { key: 'accessToken' value: 'k' } accessToken: 't' }",
       R"({"x":{"accessToken":"t"}})"},
      {"configInstance { name: 'x' params { key: 'uuid' value: 'k' } }", R"({"x":{"uuid":"k"}})"},
      {"configInstance { name: 'x' uuid: '' }", R"({"x":{"uuid":""}})"},
      {"parameters { key: 'city' value: 'Lyon' } parameters { key: 'zip' value: '69' }",
       R"({"descriptor":{"city":"Lyon","zip":"69"}})"},
      // The application's own win over an instance of that name.
      {"configInstance { name: 'descriptor' uuid: 'u' } parameters { key: 'k' value: 'v' }",
       R"({"descriptor":{"k":"v"}})"},
      {"configInstance { name: 'descriptor' uuid: 'u' }", R"({"descriptor":{"uuid":"u"}})"},
      {"configInstance { name: '' }", R"({"":{}})"},
      {"configInstance { name: '__proto__' params { key: '__proto__' value: 'v' } }",
       R"({"__proto__":{"__proto__":"v"}})"},
      {"configInstance { name: '7' params { key: '0' value: 'v' } }", R"({"7":{"0":"v"}})"},
      {"configInstance { name: 'caf\xc3\xa9' }", "{\"caf\xc3\xa9\":{}}"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.config);
    EXPECT_EQ(paramsOf(serialised(row.config)), row.params);
  }
}

TEST_F(ParametersTest, areLoggedWhileTheyAreMade) {
  const struct {
    const char* config;
    std::vector<std::string> texts;
  } rows[] = {
      {"configInstance { name: 'home' params { key: 'a' value: '1' } }",
       {"create parameters", "parameters size : 0", "create parameters done"}},
      {"parameters { key: 'city' value: 'Lyon' } parameters { key: 'zip' value: '' }",
       {"create parameters", "parameters size : 2", "create parameters key : city",
        "create parameters value : Lyon", "create parameters key : zip",
        "create parameters value : ", "create parameters done"}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.config);
    log.clear();
    paramsOf(serialised(row.config));
    EXPECT_THAT(log.texts(G_LOG_LEVEL_DEBUG), ElementsAreArray(row.texts));
    EXPECT_EQ(log.lines().size(), row.texts.size());
  }
}

TEST_F(ParametersTest, areAnEmptyObjectWhenThereIsNoFile) {
  EXPECT_EQ(load(), "{}");
  EXPECT_THAT(log.lines(), ElementsAre(LogLine{G_LOG_LEVEL_WARNING,
                                               "no params loaded: No such file or directory"}));
}

TEST_F(ParametersTest, areAnEmptyObjectWhenTheFileCannotBeOpened) {
  files.writeUnopenable("config.bin");
  EXPECT_EQ(load(), "{}");
  EXPECT_THAT(log.lines(), ElementsAre(LogLine{G_LOG_LEVEL_WARNING, "No such device or address"}));
}

TEST_F(ParametersTest, ofADirectoryAreEmpty) {
  std::filesystem::create_directory(files.path("config.bin"));
  EXPECT_EQ(load(), "{}");
  EXPECT_THAT(log.texts(),
              ElementsAre("create parameters", "parameters size : 0", "create parameters done"));
}

TEST_F(ParametersTest, ofADamagedFileAreWhatTheParserGot) {
  const std::string whole = serialised(
      "parameters { key: 'k' value: 'v' } configInstance { name: 'a' } configInstance { name: 'b' "
      "}");
  const struct {
    std::string bytes;
    const char* params;
  } rows[] = {
      {whole, R"({"a":{},"b":{},"descriptor":{"k":"v"}})"},
      {whole + "\xff", R"({"a":{},"b":{},"descriptor":{"k":"v"}})"},
      {"\xff\xff\xff", "{}"},
      {"no message at all", "{}"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.params);
    EXPECT_EQ(paramsOf(row.bytes), row.params);
  }
}

// Every cut, so that none of them brings the parser or the steps behind it down, or has the
// parser's library write about it.
TEST_F(ParametersTest, ofAFileThatIsCutAnywhereAreAnObject) {
  const std::string whole = serialised(
      "parameters { key: 'k' value: 'v' } configInstance { name: 'a' params { key: 'x' value: 'y' "
      "} "
      "uuid: 'u' }");
  testing::internal::CaptureStderr();
  for (std::size_t length = 0; length < whole.size(); ++length) {
    EXPECT_THAT(paramsOf(whole.substr(0, length)), testing::StartsWith("{")) << length;
    EXPECT_EQ(log.texts().back(), "create parameters done");
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

}  // namespace
}  // namespace morvik::test
