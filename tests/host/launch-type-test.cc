// The launchType object in its three forms.
#include "host/launch-type.h"

#include "support/unit/script-test.h"

namespace morvik::test {
namespace {

class LaunchTypeTest : public ScriptTest {
 protected:
  // Makes the object for this text the script's launchType.
  void launch(const std::string& text) {
    const v8::Context::Scope entered(context());
    const auto shape = v8::ObjectTemplate::New(isolate());
    buildLaunchType(shape, text);
    const auto object = shape->NewInstance(context()).ToLocalChecked();
    setGlobal("launchType", object);
  }
};

// By tag and by name: all properties in their order.
TEST_F(LaunchTypeTest, ofATagOrANameHoldsTexts) {
  const auto tag = [](const char* fields) {
    return std::string(R"({"name":"RFID",)") + fields + "}";
  };
  const struct {
    const char* text;
    std::string object;
  } rows[] = {
      {"", R"({"name":""})"},
      {"button", R"({"name":"button"})"},
      {"button;a;b", R"({"name":"button;a;b"})"},
      {"rfid;1", R"({"name":"rfid;1"})"},
      {"RFI", R"({"name":"RFI"})"},
      {" RFID", R"({"name":" RFID"})"},
      {"AS", R"({"name":"AS"})"},
      {"asr;x", R"({"name":"asr;x"})"},
      {"RFID;1;led;t;p;red;d",
       tag(R"("id":"1","app":"led","type":"t","pict":"p","color":"red","data":"d")")},
      {"RFID;1;led", tag(R"("id":"1","app":"led","type":"","pict":"","color":"","data":"")")},
      {"RFID", tag(R"("id":"","app":"","type":"","pict":"","color":"","data":"")")},
      {"RFID;", tag(R"("id":"","app":"","type":"","pict":"","color":"","data":"")")},
      {"RFIDtag;1;led", tag(R"("id":"1","app":"led","type":"","pict":"","color":"","data":"")")},
      {"RFID;;;t;;;d", tag(R"("id":"","app":"","type":"t","pict":"","color":"","data":"d")")},
      {"RFID;1;2;3;4;5;6;7;8",
       tag(R"("id":"1","app":"2","type":"3","pict":"4","color":"5","data":"6")")},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    launch(row.text);
    EXPECT_EQ(run("JSON.stringify(launchType)"), row.object);
  }
}

TEST_F(LaunchTypeTest, ofAVoiceHoldsItsMeaning) {
  const struct {
    const char* text;
    const char* heard;
    const char* raw;
    const char* semantic;  // as JSON
  } rows[] = {
      {"ASR;hello;<a>1</a>", "hello", "<semantic><a>1</a></semantic>", R"({"a":"1"})"},
      {"ASR;hello;<a>1</a>;more", "hello", "<semantic><a>1</a></semantic>", R"({"a":"1"})"},
      {"ASR;hi;<a>1</a><b>2</b>", "hi", "<semantic><a>1</a><b>2</b></semantic>",
       R"({"a":"1","b":"2"})"},
      {"ASRx;hi;text", "hi", "<semantic>text</semantic>", R"("text")"},
      {"ASR;hi", "hi", "<semantic></semantic>", R"("")"},
      {"ASR", "", "<semantic></semantic>", R"("")"},
      {"ASR;;", "", "<semantic></semantic>", R"("")"},
      {"ASR;hi;<a>", "hi", "<semantic><a></semantic>", "undefined"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    launch(row.text);
    EXPECT_EQ(run("launchType.name"), "ASR");
    EXPECT_EQ(run("launchType.text"), row.heard);
    EXPECT_EQ(run("launchType.rawSemantic"), row.raw);
    EXPECT_EQ(run("JSON.stringify(launchType.semantic)"), row.semantic);
    EXPECT_EQ(run("launchType.confident === 50"), "true");
    EXPECT_EQ(run("Object.keys(launchType).sort().join()"),
              "confident,name,rawSemantic,semantic,text");
  }
}

TEST_F(LaunchTypeTest, theMeaningIsComputedOnEachRead) {
  launch("ASR;hello;<a>1</a>");
  EXPECT_TRUE(log.lines().empty());
  EXPECT_EQ(run("launchType.semantic === launchType.semantic"), "false");
  EXPECT_EQ(run("launchType.rawSemantic = '<semantic>new</semantic>'; launchType.semantic"), "new");
  EXPECT_EQ(run("launchType.rawSemantic = '<other>x</other>'; launchType.semantic"), "undefined");
  EXPECT_EQ(run("launchType.rawSemantic = undefined; launchType.semantic"), "undefined");
  EXPECT_EQ(run("launchType.rawSemantic = '<semantic>caf\xc3\xa9</semantic>'; launchType.semantic"),
            "caf\xc3\xa9");
}

TEST_F(LaunchTypeTest, assigningToTheMeaningDoesNothing) {
  launch("ASR;hello;kept");
  EXPECT_EQ(run("'use strict'; launchType.semantic = 1; launchType.semantic"), "kept");
}

TEST_F(LaunchTypeTest, anUnreadableMeaningThrowsToTheScript) {
  launch("ASR;hello;x");
  EXPECT_EQ(run("launchType.rawSemantic = {toString() { throw 'no text'; }}; launchType.semantic"),
            "throws: no text");
  EXPECT_EQ(run("Object.defineProperty(launchType, 'rawSemantic', {get() { throw 'no value'; }});"
                "launchType.semantic"),
            "throws: no value");
}

TEST_F(LaunchTypeTest, aScriptCanChangeAnyOtherProperty) {
  launch("RFID;1");
  EXPECT_EQ(run("launchType.id = 5; launchType.id"), "5");
}

}  // namespace
}  // namespace morvik::test
