// morvik.contact: queries that overlap, and what is kept of one.
#include "support/unit/feature-test.h"

namespace morvik::test {
namespace {

class ContactsTest : public FeatureTest {};

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
