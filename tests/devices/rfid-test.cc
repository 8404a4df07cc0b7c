// morvik.rfid: what a listener hears of a tag.
#include "support/unit/feature-test.h"
#include "support/unit/text-message.h"

namespace morvik::test {
namespace {

using testing::ElementsAre;

class RfidTest : public FeatureTest {
 protected:
  // What the listener logs of a tag with this one field beside its id.
  std::string heard(const std::string& field) {
    log.clear();
    deliver(zephMsg("rfidCallback { id: 't' " + field + " }"));
    return logged().empty() ? "nothing" : logged()[0];
  }
};

TEST_F(RfidTest, tellsWhatTheTagHolds) {
  const std::string first = "MESSAGE RFID: RfidMsgCallback";
  expectListens(
      "morvik.rfid.addListener",
      {
          {"rfidCallback { id: 'd0021a' }",
           {first, "MESSAGE RFID: RfidMsgCallback : d0021a",
            R"(MESSAGE JSLOG: object {"id":"d0021a"})"}},
          {"rfidCallback { id: 'x' content: 'abc' direction: IN app: 12 type: FLAT pict: 3 "
           "color: RED }",
           {first, "MESSAGE RFID: RfidMsgCallback : x",
            R"(MESSAGE JSLOG: object {"id":"x","direction":"IN","app":12,"type":"FLAT","pict":3,)"
            R"("color":"RED","content":"abc"})"}},
          {"rfidCallback { id: 'x' direction: OUT app: -1 pict: 0 content: '' }",
           {first, "MESSAGE RFID: RfidMsgCallback : x",
            R"(MESSAGE JSLOG: object {"id":"x","direction":"OUT","app":-1,"pict":0,"content":""})"}},
          {"rfidCallback {}",
           {first, "MESSAGE RFID: RfidMsgCallback : ", R"(MESSAGE JSLOG: object {"id":""})"}},
          {"buttonCallback { type: SIMPLE }", {}},
          {"response { code: OK }", {}},
      });
}

TEST_F(RfidTest, hearsUntilItsFunctionReturnsSomethingElseThanTrue) {
  expectStaysOnlyForTrue("morvik.rfid.addListener", "rfidCallback { id: 'x' }");
}

TEST_F(RfidTest, kindsAndColoursAreTheirNames) {
  const std::vector<std::pair<int, const char*>> types = {
      {0, "NONE_TYPE"}, {1, "FLAT"}, {2, "MINIVORT"}, {3, "VORTAS"}, {4, "DRESS"}, {5, "VOLUMZ"}};
  const std::vector<std::pair<int, const char*>> colors = {
      {0, "NONE_COL"},   {1, "RED"},         {2, "BLUE"},         {3, "GREEN"},
      {4, "YELLOW"},     {5, "PINK"},        {6, "BLACK"},        {7, "GREY"},
      {8, "ORANGE"},     {9, "PURPLE"},      {10, "WHITE"},       {11, "DARK_RED"},
      {12, "DARK_BLUE"}, {13, "DARK_GREEN"}, {14, "DARK_YELLOW"}, {16, "BROWN"}};
  run("morvik.rfid.addListener(tell)");
  for (const auto& [number, name] : types) {
    EXPECT_EQ(heard("type: " + std::to_string(number)),
              std::string(R"(object {"id":"t","type":")") + name + "\"}");
  }
  for (const auto& [number, name] : colors) {
    EXPECT_EQ(heard("color: " + std::to_string(number)),
              std::string(R"(object {"id":"t","color":")") + name + "\"}");
  }
}

TEST_F(RfidTest, valuesOutsideTheirEnumerationAreAbsent) {
  run("morvik.rfid.addListener(tell)");
  zeph::ZephMsg message = zephMsg("rfidCallback { id: 't' }");
  auto& unknown = *message.mutable_rfidcallback()->mutable_unknown_fields();
  unknown.AddVarint(3, 9);
  unknown.AddVarint(5, 6);
  unknown.AddVarint(7, 15);
  deliver(message);
  EXPECT_THAT(logged(), ElementsAre(R"(object {"id":"t"})"));
}

TEST_F(RfidTest, contentEndsAtItsFirstZeroByte) {
  run("morvik.rfid.addListener(tell)");
  EXPECT_EQ(heard(R"(content: 'ab\000cd')"), R"(object {"id":"t","content":"ab"})");
  EXPECT_EQ(heard(R"(content: '\000cd')"), R"(object {"id":"t","content":""})");
}

TEST_F(RfidTest, contentIsReadAsUtf8AndOtherBytesBecomeReplacements) {
  run("morvik.rfid.addListener(t => { log(escape(t.content)); return true; })");
  EXPECT_EQ(heard(R"(content: '\303\251')"), "%E9");
  EXPECT_EQ(heard(R"(content: '\377x')"), "%uFFFDx");
}

TEST_F(RfidTest, theTagDoesNotBelongToTheApplicationsContext) {
  run("Object.prototype.mark = 1;"
      "morvik.rfid.addListener(t => log(typeof t.mark + (t instanceof Object)))");
  EXPECT_EQ(heard(""), "undefinedfalse");
}

TEST_F(RfidTest, hasOneFunction) {
  EXPECT_EQ(run("Object.keys(morvik.rfid).join()"), "addListener");
}

}  // namespace
}  // namespace morvik::test
