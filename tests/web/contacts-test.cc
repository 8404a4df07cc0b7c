// morvik.contact: arguments, the query, and what a contact becomes in script.
#include "support/unit/feature-test.h"

namespace morvik::test {
namespace {

using testing::ElementsAre;

class ContactsTest : public FeatureTest {
 protected:
  // `contacts` in text form and what a script gets for them.
  void expectHeard(const std::string& contacts, const std::string& json) {
    expectAnswered("morvik.contact.get(tell)",
                   {{"contactList {" + contacts + "}",
                     {"DEBUG getContactCallbackFunction", "MESSAGE JSLOG: object " + json}}});
  }
};

TEST_F(ContactsTest, sendsAnEmptyQuery) {
  expectSends({{"morvik.contact.get(f)", "getcontactList { }", {}}});
}

TEST_F(ContactsTest, refusesWhatIsNotExactlyOneFunction) {
  expectRefused({"morvik.contact.get()", "morvik.contact.get(5)", "morvik.contact.get({})",
                 "morvik.contact.get('f')", "morvik.contact.get(null)", "morvik.contact.get(f, f)",
                 "morvik.contact.get(f, 1)"});
}

TEST_F(ContactsTest, needsInteractiveMode) { expectNeedsInteractive({"morvik.contact.get(f)"}); }

TEST_F(ContactsTest, hasOneFunction) {
  EXPECT_EQ(run("Object.keys(morvik.contact).join()"), "get");
}

TEST_F(ContactsTest, aContactHoldsTheTextsThatArePresentInOrder) {
  const struct {
    const char* wire;
    const char* json;
  } rows[] = {
      {"contacts { objects { idDB: 'o' } uuid: 'u' alias: 'a' lastname: 'l' firstname: 'f' }",
       R"([{"firstname":"f","lastname":"l","alias":"a","uuid":"u","objects":[{"id":"o"}]}])"},
      {"contacts { uuid: 'u' }", R"([{"uuid":"u","objects":[]}])"},
      {"contacts { firstname: '' }", R"([{"firstname":"","objects":[]}])"},
      {"contacts { }", R"([{"objects":[]}])"},
      {"contacts { alias: 'b' } contacts { alias: 'a' } contacts { alias: 'c' }",
       R"([{"alias":"b","objects":[]},{"alias":"a","objects":[]},{"alias":"c","objects":[]}])"},
      {"contacts { alias: 'caf\303\251' }", "[{\"alias\":\"caf\xe9\",\"objects\":[]}]"},
      {"contacts { alias: 'before\\000behind' }", R"([{"alias":"before","objects":[]}])"},
      {"contacts { uuid: '\\000' }", R"([{"uuid":"","objects":[]}])"},
      {"", "[]"},
  };
  for (const auto& row : rows) expectHeard(row.wire, row.json);
}

TEST_F(ContactsTest, theFirstElementDecidesForAllWhetherObjectsHaveNames) {
  const struct {
    const char* wire;
    const char* json;
  } rows[] = {
      {"objects { idDB: '1' name: 'n' } objects { idDB: '2' }",
       R"({"id":"1","name":"n"},{"id":"2","name":""})"},
      {"objects { idDB: '1' } objects { idDB: '2' name: 'n' }", R"({"id":"1"},{"id":"2"})"},
      {"objects { idDB: '1' name: '' } objects { idDB: '2' name: 'n' }",
       R"({"id":"1","name":""},{"id":"2","name":"n"})"},
      {"objects { } objects { }", R"({"id":""},{"id":""})"},
      {"objects { idDB: 'a\\000b' name: 'c\\000d' }", R"({"id":"a","name":"c"})"},
  };
  for (const auto& row : rows) {
    expectHeard(std::string("contacts {") + row.wire + "}",
                std::string("[{\"objects\":[") + row.json + "]}]");
  }
}

TEST_F(ContactsTest, everyAnswerReachesTheScriptAlsoWithoutAList) {
  const Lines empty = {"DEBUG getContactCallbackFunction", "MESSAGE JSLOG: object []"};
  expectAnswered("morvik.contact.get(tell)", {{"", empty},
                                              {"contactList { }", empty},
                                              {"response { code: ERROR }", empty},
                                              {"response { code: OK } event { }", empty}});
}

TEST_F(ContactsTest, aSecondAnswerDoesNothing) {
  becomeInteractive();
  run("morvik.contact.get(tell)");
  const auto request = sent();
  ASSERT_TRUE(request);
  respond(*request, zeph::OK);
  respond(*request, zeph::OK);
  EXPECT_THAT(logged(), ElementsAre("object []"));
}

TEST_F(ContactsTest, queriesAreAnsweredEachOnItsOwn) {
  becomeInteractive();
  run("morvik.contact.get(() => log('first')); morvik.contact.get(() => log('second'))");
  const auto first = sent();
  const auto second = sent();
  ASSERT_TRUE(first && second);
  respond(*second, zeph::OK);
  respond(*first, zeph::OK);
  EXPECT_THAT(logged(), ElementsAre("second", "first"));
}

TEST_F(ContactsTest, nothingOfAnAnsweredQueryIsKept) {
  expectForgets("morvik.contact.get(kept)", "response { code: OK }");
}

TEST_F(ContactsTest, whatItHandsOverStandsOutsideTheApplicationsGlobals) {
  becomeInteractive();
  run("morvik.contact.get(all => log(Array.isArray(all) + ' ' + (all instanceof Array)))");
  respond(*sent(), zeph::OK);
  EXPECT_THAT(logged(), ElementsAre("true false"));
}

TEST_F(ContactsTest, aFunctionThatThrowsIsReported) {
  becomeInteractive();
  run("morvik.contact.get(() => { throw 'no friends'; })");
  respond(*sent(), zeph::OK);
  EXPECT_THAT(log.texts(G_LOG_LEVEL_WARNING), testing::Contains(testing::HasSubstr("no friends")));
}

}  // namespace
}  // namespace morvik::test
