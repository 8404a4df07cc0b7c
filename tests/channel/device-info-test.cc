// ping and morvik.info: arguments, log lines, requests and answers.
#include "channel/device-info.h"

#include "support/text-message.h"
#include "support/unit/log-texts.h"
#include "support/unit/script-test.h"

namespace morvik::test {
namespace {

using Lines = std::vector<std::string>;

class DeviceInfoTest : public ScriptTest {
 protected:
  DeviceInfoTest() { run("var f = function() {};"); }

  // What the application has sent, without its id.
  std::string sentText() {
    auto message = sent();
    if (!message) return "nothing";
    message->clear_id();
    return message->ShortDebugString();
  }

  void expectWrong(const std::string& function, std::initializer_list<const char*> wrong) {
    for (const bool interactive : {false, true}) {
      if (interactive) becomeInteractive();
      for (const char* arguments : wrong) {
        EXPECT_EQ(run(function + "(" + arguments + ")"), "throws: Wrong arguments") << arguments;
      }
    }
    EXPECT_EQ(run("try { " + function + "(1); } catch (e) { typeof e; }"), "string");
    EXPECT_THAT(log.texts(), ElementsAre());
    EXPECT_EQ(sentText(), "nothing");
  }

  zeph::ZephMsg asked(const std::string& function) {
    becomeInteractive("granted");
    EXPECT_EQ(run("morvik.info(" + function + ")"), "undefined");
    const auto request = sent();
    EXPECT_TRUE(request);
    return request.value_or(zeph::ZephMsg());
  }

  // The log of an answer, without the four lines that every answer has.
  Lines answered(const zeph::ZephMsg& request, const std::string& text) {
    log.clear();
    answer(request, zephMsg(text));
    const Lines all = levelled(log.lines());
    EXPECT_GE(all.size(), 4U);
    return {all.begin() + 4, all.end()};
  }
};

// ---- ping

const char* const kPings[] = {"ping", "morvik.ping"};

TEST_F(DeviceInfoTest, pingRefusesWrongArgumentsFirst) {
  for (const char* ping : kPings) {
    instance.interactiveID.reset();
    expectWrong(ping, {"1", "undefined", "'f'", "{}", "f, 1", "1, f", "f, f"});
  }
}

TEST_F(DeviceInfoTest, pingOutsideInteractiveModeSaysSo) {
  for (const std::string ping : kPings) {
    for (const char* arguments : {"()", "(f)"}) {
      EXPECT_EQ(run(ping + arguments), "throws: Must be in interactive mode");
    }
    EXPECT_EQ(run("try { " + ping + "(); } catch (e) { typeof e; }"), "string");
  }
  EXPECT_THAT(log.texts(), ElementsAre());
  EXPECT_EQ(sentText(), "nothing");
}

TEST_F(DeviceInfoTest, pingSendsAnEmptyPing) {
  becomeInteractive("granted");
  for (const std::string ping : kPings) {
    for (const char* arguments : {"()", "(f)"}) {
      log.clear();
      EXPECT_EQ(run(ping + arguments), "undefined");
      EXPECT_EQ(sentText(), "interactiveId: \"granted\" ping { }");
      ASSERT_EQ(log.lines().size(), 2U);
      EXPECT_EQ(log.lines()[0], (LogLine{G_LOG_LEVEL_MESSAGE, "PingFunction"}));
    }
  }
}

TEST_F(DeviceInfoTest, pingsFunctionHearsEveryCode) {
  becomeInteractive();
  run("ping(log)");
  const auto request = sent();
  ASSERT_TRUE(request);
  EXPECT_THAT(answered(*request, "response { code: OK }"),
              ElementsAre("DEBUG Event: PingFunction", "DEBUG calling response function",
                          "MESSAGE JSLOG: OK"));
  EXPECT_THAT(answered(*request, "event { code: TERMINATED }"),
              ElementsAre("DEBUG Event: PingFunction", "DEBUG calling event function",
                          "MESSAGE JSLOG: TERMINATED"));
}

TEST_F(DeviceInfoTest, nobodyWaitsForAPingWithoutAFunction) {
  becomeInteractive();
  run("ping()");
  respond(sent().value_or(zeph::ZephMsg()), zeph::OK);
  EXPECT_TRUE(log.has(G_LOG_LEVEL_WARNING, "NO CORRELATION FOUND"));
}

// ---- morvik.info

TEST_F(DeviceInfoTest, infoRefusesWrongArgumentsFirst) {
  expectWrong("morvik.info", {"", "1", "undefined", "'f'", "{}", "f, 1", "1, f", "f, f"});
}

TEST_F(DeviceInfoTest, infoOutsideInteractiveModeSaysSoBehindItsLogLine) {
  EXPECT_EQ(run("morvik.info(f)"), "throws: Must be in interactive mode");
  EXPECT_THAT(levelled(log.lines()), ElementsAre("MESSAGE ConfigMorvikGet"));
  EXPECT_EQ(run("try { morvik.info(f); } catch (e) { typeof e; }"), "string");
  EXPECT_EQ(sentText(), "nothing");
}

TEST_F(DeviceInfoTest, infoSendsAnEmptyQuery) {
  becomeInteractive("granted");
  EXPECT_EQ(run("morvik.info(f)"), "undefined");
  ASSERT_EQ(log.lines().size(), 2U);
  EXPECT_EQ(log.lines()[0], (LogLine{G_LOG_LEVEL_MESSAGE, "ConfigMorvikGet"}));
  EXPECT_EQ(sentText(), "interactiveId: \"granted\" morvikinfo_query { }");
}

TEST_F(DeviceInfoTest, theInformationReachesTheFunctionAsTexts) {
  const auto request = asked(
      "function(o) {"
      "  log(arguments.length + ' ' + (this === arguments.callee) + JSON.stringify(o)); }");
  EXPECT_THAT(answered(request,
                       "morvikinfo_response { infos { key: 'name' value: 'Bob' }"
                       " infos { key: 'number' value: '12' } }"),
              ElementsAre("MESSAGE InfoMorvikCallbackFunction",
                          "DEBUG InfoMorvikCallbackFunction has_morvikinfo size : 2",
                          "DEBUG morvikinfo key : name", "DEBUG morvikinfo value : Bob",
                          "DEBUG morvikinfo key : number", "DEBUG morvikinfo value : 12",
                          "MESSAGE JSLOG: 1 true{\"name\":\"Bob\",\"number\":\"12\"}"));
}

struct Infos {
  const char* infos;
  const char* object;
};

TEST_F(DeviceInfoTest, everyKeyIsAPropertyOfItsOwn) {
  const Infos rows[] = {
      {"", "{}"},
      {"infos { key: 'a' value: '' }", R"({"a":""})"},
      {"infos { key: '' value: 'empty' }", R"({"":"empty"})"},
      {"infos { key: 'a' value: '1' } infos { key: 'a' value: '2' }", R"({"a":"2"})"},
      {"infos { key: '0' value: 'zero' }", R"({"0":"zero"})"},
      {"infos { key: 'toString' value: 'x' }", R"({"toString":"x"})"},
      {"infos { key: '__proto__' value: 'x' }", R"({"__proto__":"x"})"},
      {"infos { key: 'a b' value: 'true' }", R"({"a b":"true"})"},
      {"infos { key: 'a' value: '\\303\\251' }", "{\"a\":\"\xe9\"}"},
      {"infos { key: 'a' value: '1' } infos { key: 'b' value: '2' }", R"({"a":"1","b":"2"})"},
  };
  for (const Infos& row : rows) {
    const auto request = asked("function(o) { log(JSON.stringify(o)); }");
    EXPECT_EQ(answered(request, "morvikinfo_response { " + std::string(row.infos) + " }").back(),
              std::string("MESSAGE JSLOG: ") + row.object);
  }
}

TEST_F(DeviceInfoTest, anAnswerWithoutInformationLeavesTheQueryOpen) {
  const auto request = asked("function() { log('called'); }");
  for (const char* text : {"", "response { code: OK }", "event { code: ERROR }"}) {
    EXPECT_THAT(answered(request, text),
                ElementsAre("MESSAGE InfoMorvikCallbackFunction",
                            "MESSAGE InfoMorvikCallbackFunction: has_morvikinfo_response false"));
  }
  EXPECT_EQ(answered(request, "morvikinfo_response { }").back(), "MESSAGE JSLOG: called");
}

TEST_F(DeviceInfoTest, aSecondAnswerReachesNoScript) {
  const auto request = asked("function() { log('called'); }");
  EXPECT_EQ(answered(request, "morvikinfo_response { }").back(), "MESSAGE JSLOG: called");
  EXPECT_THAT(answered(request, "morvikinfo_response { infos { key: 'a' value: 'b' } }"),
              ElementsAre("MESSAGE InfoMorvikCallbackFunction"));
}

TEST_F(DeviceInfoTest, severalQueriesMayBeOpen) {
  const auto first = asked("function() { log('first'); }");
  const auto second = asked("function() { log('second'); }");
  answer(second, zephMsg("morvikinfo_response { }"));
  answer(first, zephMsg("morvikinfo_response { }"));
  EXPECT_THAT(logged(), ElementsAre("second", "first"));
}

TEST_F(DeviceInfoTest, aFunctionThatThrowsIsReported) {
  const auto request = asked("function() { throw 'oops'; }");
  answer(request, zephMsg("morvikinfo_response { }"));
  EXPECT_THAT(log.texts(G_LOG_LEVEL_WARNING), testing::Contains("undefined:1: oops"));
}

}  // namespace
}  // namespace morvik::test
