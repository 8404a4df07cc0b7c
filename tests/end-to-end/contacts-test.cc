// morvik.contact: what it asks for, and what a script gets for a contact.
#include "support/system/feature-test.h"

namespace morvik::test {
namespace {

class ContactsTest : public FeatureTest {
 protected:
  ContactsTest() : FeatureTest("contact") {}
};

Lines heard(const std::string& contacts) {
  return {"DEBUG getContactCallbackFunction", "MESSAGE JSLOG: object " + contacts};
}

AnsweredRow contacts(const std::string& wire, const std::string& json) {
  return {"get(tell)", "contactList { " + wire + " }", heard(json)};
}

TEST_F(ContactsTest, isThereOnlyWithItsAccess) { expectFunctions("get"); }

TEST_F(ContactsTest, getTakesOneFunction) {
  expectRefuses(wrong({"get()", "get(f, f)", "get(f, 1)", "get(5)", "get({})", "get('f')"}) +
                needMode({"get(f)"}));
}

TEST_F(ContactsTest, getAsksForAll) { expectSends({{"get(f)", "getcontactList { }"}}); }

TEST_F(ContactsTest, aContactHoldsWhatIsPresentInItsOrder) {
  expectAnswered({
      contacts("contacts { objects { idDB: 'o' } uuid: 'u' alias: 'a' lastname: 'l' "
               "firstname: 'f' }",
               R"([{"firstname":"f","lastname":"l","alias":"a","uuid":"u",)"
               R"("objects":[{"id":"o"}]}])"),
      contacts("contacts { uuid: 'u' }", R"([{"uuid":"u","objects":[]}])"),
      contacts("contacts { alias: 'b' } contacts { alias: 'a' }",
               R"([{"alias":"b","objects":[]},{"alias":"a","objects":[]}])"),
      contacts("contacts { alias: 'ab\\000cd' }", R"([{"alias":"ab","objects":[]}])"),
  });
}

TEST_F(ContactsTest, theFirstObjectDecidesWhetherAllHaveNames) {
  expectAnswered({
      contacts("contacts { objects { idDB: '1' name: 'n' } objects { idDB: '2' } }",
               R"([{"objects":[{"id":"1","name":"n"},{"id":"2","name":""}]}])"),
      contacts("contacts { objects { idDB: '1' } objects { idDB: '2' name: 'n' } }",
               R"([{"objects":[{"id":"1"},{"id":"2"}]}])"),
  });
}

TEST_F(ContactsTest, everyFirstAnswerIsHeard) {
  expectAnswered(
      {contacts("", "[]"),
       {"", "contactList { contacts { uuid: 'late' } }", {"DEBUG getContactCallbackFunction"}},
       {"get(tell)", "response { code: OK }", heard("[]")},
       {"get(tell)", "response { code: ERROR }", heard("[]")},
       {"get(tell)", "", heard("[]")}});
}

TEST_F(ContactsTest, theListIsNoObjectOfTheApplicationsOwn) {
  interactive(
      "morvik.contact.get(function(all) {"
      " log([Array.isArray(all), all instanceof Array, all[0] instanceof Object].join()); });",
      access());
  zeph::ZephMsg answer = replyTo(device.receive());
  answer.mutable_contactlist()->add_contacts();
  device.send(answer);
  EXPECT_EQ(app.logged(), "true,false,false");
}

}  // namespace
}  // namespace morvik::test
