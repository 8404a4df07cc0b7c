// What a descriptor grants: each object wholly there or wholly absent.
#include "host/object-tree.h"

#include <algorithm>

#include "features/features.h"
#include "support/unit/script-test.h"

namespace morvik::test {
namespace {

class ObjectTreeTest : public ScriptTest {};

constexpr const char* kDevices = "Object.keys(morvik).join()";

TEST_F(ObjectTreeTest, aNameGrantsItsObjectAndNoOther) {
  for (const Feature& feature : features()) {
    SCOPED_TRACE(feature.name);
    EXPECT_EQ(inTree({feature.name}, kDevices), feature.name);
    EXPECT_EQ(inTree({feature.name}, "Object.keys(morvik." + feature.name + ").join()"),
              feature.functions);
    EXPECT_EQ(inTree({}, "typeof morvik." + feature.name), "undefined");
  }
}

// The web stands on the global object, not under morvik.
TEST_F(ObjectTreeTest, theWebStandsOnTheGlobalObject) {
  EXPECT_EQ(inTree({}, "Object.keys(social).join()"), "init");
  EXPECT_EQ(inTree({}, "typeof http"), "undefined");
  EXPECT_EQ(inTree({"http"}, "Object.keys(http).join()"), "get,post,get2,post2");
  EXPECT_EQ(inTree({"http", "social"}, kDevices), "");
}

TEST_F(ObjectTreeTest, otherNamesGrantNothing) {
  const char* const everything = "Object.keys(globalThis).sort().join() + Object.keys(morvik)";
  for (const char* name :
       {"LED", " led ", "morvik", "light", "twitter", "facebook", "soundcloud", "HTTP"}) {
    SCOPED_TRACE(name);
    EXPECT_EQ(inTree({name}, everything), "morvik,social");
  }
}

TEST_F(ObjectTreeTest, aNameGrantedTwiceChangesNothing) {
  EXPECT_EQ(inTree({"led", "led"}, kDevices), "led");
}

TEST_F(ObjectTreeTest, objectsAreAddedInTheOrderInWhichTheDescriptorIsAsked) {
  std::string all;
  for (const Feature& feature : features()) all += (all.empty() ? "" : ",") + feature.name;
  EXPECT_EQ(inTree(accessNames(), kDevices), all);
  std::vector<std::string> backwards = accessNames();
  std::ranges::reverse(backwards);
  EXPECT_EQ(inTree(backwards, kDevices), all);
}

TEST_F(ObjectTreeTest, aTouchOfWhatIsNotGrantedIsTheScriptsOwnError) {
  EXPECT_EQ(inTree({}, "try { morvik.led.light('red'); } catch (e) { e.name; }"), "TypeError");
}

}  // namespace
}  // namespace morvik::test
