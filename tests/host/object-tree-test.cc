// What a descriptor grants: each object wholly there or wholly absent.
#include "host/object-tree.h"

#include <algorithm>
#include <map>
#include <sstream>

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

// Objects whose promises are no rows, and why.
const std::map<std::string, std::string> kWithoutRows{
    {"http", "no device hears of it: web/http-client-test.cc and end-to-end/http-test.cc"}};

TEST_F(ObjectTreeTest, everyNameHasRowsOrAReasonToHaveNone) {
  std::vector<std::string> told;
  for (const Feature& feature : features()) told.push_back(feature.name);
  for (const auto& [name, reason] : kWithoutRows) told.push_back(name);
  EXPECT_THAT(gatedNames(), testing::UnorderedElementsAreArray(told));
}

// All calls in a feature's rows, one on each line.
std::string callsOf(const Feature& feature) {
  std::string calls;
  const auto add = [&calls](const auto& rows) {
    for (const auto& row : rows) calls += '\n' + row.call;
  };
  add(feature.sends);
  add(feature.refuses);
  add(feature.reads);
  add(feature.answers);
  return calls;
}

TEST_F(ObjectTreeTest, everyFunctionHasARow) {
  for (const Feature& feature : features()) {
    const std::string calls = callsOf(feature);
    std::istringstream functions(
        inTree({feature.name}, "Object.keys(morvik." + feature.name + ").join('\\n')"));
    for (std::string function; std::getline(functions, function);)
      EXPECT_THAT(calls, testing::HasSubstr('\n' + function + '(')) << feature.name;
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
