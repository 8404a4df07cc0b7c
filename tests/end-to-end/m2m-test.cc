// morvik.m2m: whose object an event is.
#include "support/system/feature-test.h"

namespace morvik::test {
namespace {

class M2mTest : public FeatureTest {
 protected:
  M2mTest() : FeatureTest("m2m") {}
};

TEST_F(M2mTest, anEventIsNoObjectOfTheApplicationsOwn) {
  connect(
      "Object.prototype.mark = 1; morvik.m2m.addListener(function(call) {"
      " log([call instanceof Object, call.mark].join()); });",
      access());
  deliver("m2mCallback { type: INCOMING correspondant: 'bob' }");
  EXPECT_EQ(app.logged(), "false,");
}

}  // namespace
}  // namespace morvik::test
