// morvik.rfid: numbers of kinds and colours, bytes of contents, and whose object a tag is.
#include "support/text-message.h"
#include "support/unit/feature-test.h"

namespace morvik::test {
namespace {

class RfidTest : public FeatureTest {
 protected:
  // What the listener logs of a tag with this one field beside its id.
  std::string heard(const std::string& field) {
    log.clear();
    deliver(zephMsg("rfidCallback { id: 't' " + field + " }"));
    return logged().empty() ? "nothing" : logged()[0];
  }
};

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

}  // namespace
}  // namespace morvik::test
