// morvik.rfid: what a listener is told of a tag.
#include "support/system/feature-test.h"

namespace morvik::test {
namespace {

class RfidTest : public FeatureTest {
 protected:
  RfidTest() : FeatureTest("rfid") {}
};

Lines told(const std::string& id, const std::string& object) {
  return {"MESSAGE RFID: RfidMsgCallback", "MESSAGE RFID: RfidMsgCallback : " + id,
          "MESSAGE JSLOG: " + object};
}

HeardRow tagWith(const std::string& field, const std::string& property) {
  return {"rfidCallback { id: 't' " + field + " }",
          told("t", R"(object {"id":"t",)" + property + "}")};
}

TEST_F(RfidTest, isThereOnlyWithItsAccess) { expectFunctions("addListener"); }

TEST_F(RfidTest, addListenerTakesOneFunction) {
  expectRefuses(wrong({"addListener()", "addListener(1)", "addListener(f, f)"}));
}

TEST_F(RfidTest, listenersAreToldWhatTheTagHolds) {
  std::vector<HeardRow> rows{
      {"rfidCallback { id: 'd0021a' }", told("d0021a", R"(object {"id":"d0021a"})")},
      {"rfidCallback { id: 'x' content: 'abc' direction: IN app: 12 type: FLAT pict: 3 color: RED "
       "}",
       told("x", R"(object {"id":"x","direction":"IN","app":12,"type":"FLAT","pict":3,)"
                 R"("color":"RED","content":"abc"})")},
      {"buttonCallback { type: SIMPLE }", {}},
      tagWith("direction: OUT", R"("direction":"OUT")"),
      tagWith("app: -1", R"("app":-1)"),
      tagWith("pict: 0", R"("pict":0)"),
      tagWith("content: ''", R"("content":"")"),
      tagWith("content: 'ab\\000cd'", R"("content":"ab")")};
  for (const std::string type : {"NONE_TYPE", "FLAT", "MINIVORT", "VORTAS", "DRESS", "VOLUMZ"})
    rows.push_back(tagWith("type: " + type, R"("type":")" + type + '"'));
  for (const std::string color :
       {"NONE_COL", "RED", "BLUE", "GREEN", "YELLOW", "PINK", "BLACK", "GREY", "ORANGE", "PURPLE",
        "WHITE", "DARK_RED", "DARK_BLUE", "DARK_GREEN", "DARK_YELLOW", "BROWN"})
    rows.push_back(tagWith("color: " + color, R"("color":")" + color + '"'));
  expectHears(rows);
}

TEST_F(RfidTest, aValueOutsideItsEnumerationIsAbsent) {
  connect(withGlobals("morvik.rfid.addListener(tell);"), access());
  zeph::ZephMsg message = newMessage();
  message.mutable_rfidcallback()->set_id("t");
  message.mutable_rfidcallback()->mutable_unknown_fields()->AddVarint(
      zeph::RfidCallback::kColorFieldNumber, 15);
  device.send(message);
  EXPECT_EQ(app.logged(), R"(object {"id":"t"})");
}

TEST_F(RfidTest, listenersStayOnlyForTrue) { expectStaysOnlyForTrue("rfidCallback { id: 't' }"); }

TEST_F(RfidTest, aTagIsNoObjectOfTheApplicationsOwn) {
  connect(
      "Object.prototype.mark = 1; morvik.rfid.addListener(function(tag) {"
      " log([tag instanceof Object, tag.mark].join()); });",
      access());
  zeph::ZephMsg message = newMessage();
  message.mutable_rfidcallback()->set_id("t");
  device.send(message);
  EXPECT_EQ(app.logged(), "false,");
}

}  // namespace
}  // namespace morvik::test
