// morvik.contact: whose object the list is.
#include "support/system/feature-test.h"

namespace morvik::test {
namespace {

class ContactsTest : public FeatureTest {
 protected:
  ContactsTest() : FeatureTest("contact") {}
};

TEST_F(ContactsTest, theListIsNoObjectOfTheApplicationsOwn) {
  interactive(
      "morvik.contact.get(function(all) {"
      " log([Array.isArray(all), all instanceof Array, all[0] instanceof Object].join()); });",
      access());
  answer(device.receive(), "contactList { contacts { } }");
  EXPECT_EQ(app.logged(), "true,false,false");
}

}  // namespace
}  // namespace morvik::test
