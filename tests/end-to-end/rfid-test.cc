// morvik.rfid: colours that nobody knows, and whose object a tag is.
#include "support/system/feature-test.h"

namespace morvik::test {
namespace {

class RfidTest : public FeatureTest {
 protected:
  RfidTest() : FeatureTest("rfid") {}
};

TEST_F(RfidTest, aValueOutsideItsEnumerationIsAbsent) {
  connect(withGlobals("morvik.rfid.addListener(tell);"), access());
  zeph::ZephMsg message = newMessage();
  message.mutable_rfidcallback()->set_id("t");
  message.mutable_rfidcallback()->mutable_unknown_fields()->AddVarint(
      zeph::RfidCallback::kColorFieldNumber, 15);
  device.send(message);
  EXPECT_EQ(app.logged(), R"(object {"id":"t"})");
}

TEST_F(RfidTest, aTagIsNoObjectOfTheApplicationsOwn) {
  connect(
      "Object.prototype.mark = 1; morvik.rfid.addListener(function(tag) {"
      " log([tag instanceof Object, tag.mark].join()); });",
      access());
  deliver("rfidCallback { id: 't' }");
  EXPECT_EQ(app.logged(), "false,");
}

}  // namespace
}  // namespace morvik::test
