// The drawer of saved tags.
#include "page/tag-drawer.h"

#include <filesystem>
#include <fstream>

#include <nlohmann/json.hpp>

#include "support/file-content.h"
#include "support/matchers.h"
#include "support/temporary-folder.h"

namespace morvik::test {

using namespace devkit;
namespace {

class TagDrawerTest : public ::testing::Test {
 protected:
  Json tags() {
    Json tags = TagDrawer(folder_).tags(trouble_);
    return tags;
  }

  test::TemporaryFolder temporary_;
  std::string folder_ = temporary_ / "made/by/it";
  std::string trouble_;
};

TEST_F(TagDrawerTest, isEmptyAtFirst) {
  EXPECT_EQ(tags(), Json::array());
  EXPECT_EQ(trouble_, "");
}

TEST_F(TagDrawerTest, keepsWhatWasSavedLast) {
  const Json saved = Json::parse(R"([{"id":"04a1","name":"Löwe"}])");
  EXPECT_TRUE(TagDrawer(folder_).save(Json::parse(R"([{"id":"1"}])")).done);
  EXPECT_TRUE(TagDrawer(folder_).save(saved).done);
  EXPECT_EQ(tags(), saved);
}

TEST_F(TagDrawerTest, isForItsOwnerOnly) {
  EXPECT_TRUE(TagDrawer(folder_).save(Json::array()).done);
  using std::filesystem::perms;
  EXPECT_EQ(std::filesystem::status(folder_ + "/tags.json").permissions(),
            perms::owner_read | perms::owner_write);
  EXPECT_EQ(std::filesystem::status(folder_).permissions(), perms::owner_all);
}

TEST_F(TagDrawerTest, putsADamagedFileAsideAndSaysSo) {
  std::filesystem::create_directories(folder_);
  std::ofstream(folder_ + "/tags.json") << "[{\"id\":";
  EXPECT_EQ(tags(), Json::array());
  EXPECT_EQ(trouble_,
            "the saved tags cannot be read; they are kept as " + folder_ + "/tags.json.damaged");
  EXPECT_EQ(test::contentOf(folder_ + "/tags.json.damaged"), "[{\"id\":");
}

TEST_F(TagDrawerTest, tellsWhyItCannotSave) {
  std::ofstream(temporary_ / "made") << "a file where a folder must be";
  const Outcome outcome = TagDrawer(folder_).save(Json::array());
  EXPECT_FALSE(outcome.done);
  EXPECT_THAT(outcome.text, StartsWith("the tags are not saved: "));
  EXPECT_THAT(outcome.text, HasSubstr(folder_));
}

}  // namespace
}  // namespace morvik::test
