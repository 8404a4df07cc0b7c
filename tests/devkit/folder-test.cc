// An application's folder before a launch: what is wrong with it, and how a launch line names it.
#include "run/folder.h"

#include <sys/stat.h>

#include <fstream>

#include "run/link-folder.h"
#include "support/matchers.h"
#include "support/temporary-folder.h"

namespace morvik::test {

using namespace devkit;
namespace {

namespace fs = std::filesystem;

constexpr char kDescriptor[] = "<descriptor><accesses/></descriptor>";

void write(const fs::path& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

class FolderTest : public ::testing::Test {
 protected:
  FolderTest() {
    fs::create_directory(folder_);
    write(folder_ / "main.js", "log('here');\n");
    write(folder_ / "descriptor.xml", kDescriptor);
  }

  std::vector<std::string> wordsOfCheck() const {
    std::vector<std::string> words;
    for (const FolderTrouble& trouble : checkFolder(folder_)) words.push_back(inWords(trouble));
    return words;
  }

  test::TemporaryFolder place_;
  fs::path folder_ = place_.path() / "app";
};

TEST_F(FolderTest, findsNothingInAGoodFolder) {
  EXPECT_THAT(checkFolder(folder_), IsEmpty());
  write(folder_ / "config.bin", "");
  EXPECT_THAT(checkFolder(folder_), IsEmpty());
}

TEST_F(FolderTest, tellsWhatIsNoFolder) {
  const auto nothing = checkFolder(folder_ / "nowhere");
  ASSERT_EQ(nothing.size(), 1U);
  EXPECT_EQ(inWords(nothing[0]), "there is no such folder");
  EXPECT_TRUE(refusesLaunch(nothing));
  EXPECT_EQ(inWords(checkFolder(folder_ / "main.js").at(0)), "this is no folder");
}

TEST_F(FolderTest, tellsEachFileThatIsMissing) {
  fs::remove(folder_ / "main.js");
  fs::remove(folder_ / "descriptor.xml");
  EXPECT_THAT(wordsOfCheck(),
              ElementsAre("main.js: is missing: it is the script that an application starts with",
                          "descriptor.xml: is missing: it lists what the application may use"));
}

TEST_F(FolderTest, tellsWhatCannotBeRead) {
  fs::remove(folder_ / "main.js");
  fs::create_directory(folder_ / "main.js");
  const auto troubles = checkFolder(folder_);
  ASSERT_EQ(troubles.size(), 1U);
  EXPECT_THAT(inWords(troubles[0]), HasSubstr("main.js: "));
  EXPECT_TRUE(refusesLaunch(troubles));
}

TEST_F(FolderTest, tellsThePlaceOfAnErrorInTheDescriptor) {
  write(folder_ / "descriptor.xml",
        "<descriptor>\n  <accesses>\n    <access>led</acess>\n</descriptor>\n");
  const auto troubles = checkFolder(folder_);
  ASSERT_EQ(troubles.size(), 1U);
  EXPECT_THAT(inWords(troubles[0]),
              MatchesRegex("descriptor.xml:[34]:[0-9]+: is not well-formed XML: .*"));
  EXPECT_TRUE(refusesLaunch(troubles));
}

TEST_F(FolderTest, tellsOfAnEmptyDescriptor) {
  write(folder_ / "descriptor.xml", "");
  EXPECT_THAT(wordsOfCheck(), ElementsAre(HasSubstr("descriptor.xml")));
}

TEST_F(FolderTest, tellsOfACompressedDescriptor) {
  write(folder_ / "descriptor.xml", "\x1f\x8b\x08 and so on");
  EXPECT_THAT(wordsOfCheck(), ElementsAre("descriptor.xml:1: is compressed with gzip, which "
                                          "MorvikVM does not unpack"));
  write(folder_ / "descriptor.xml",
        "\xfd"
        "7zXZ and so on");
  EXPECT_THAT(wordsOfCheck(), ElementsAre(HasSubstr("is compressed with xz")));
  EXPECT_TRUE(refusesLaunch(checkFolder(folder_)));
}

TEST_F(FolderTest, tellsTheLineFromWhichADescriptorIsTooLarge) {
  std::string descriptor = kDescriptor;
  descriptor.resize(kLargestDescriptor - 1, ' ');
  write(folder_ / "descriptor.xml", descriptor + '\n');
  EXPECT_THAT(checkFolder(folder_), IsEmpty());
  write(folder_ / "descriptor.xml", descriptor + "\n\n");
  EXPECT_THAT(wordsOfCheck(), ElementsAre("descriptor.xml:2: has 65537 bytes, and MorvikVM reads "
                                          "no descriptor of more than 65536"));
  EXPECT_TRUE(refusesLaunch(checkFolder(folder_)));
}

TEST_F(FolderTest, takesDamagedParametersForAWarning) {
  write(folder_ / "config.bin", "\x0a\x7f");
  const auto troubles = checkFolder(folder_);
  ASSERT_EQ(troubles.size(), 1U);
  EXPECT_THAT(inWords(troubles[0]), HasSubstr("config.bin: is damaged"));
  EXPECT_FALSE(refusesLaunch(troubles));
}

TEST_F(FolderTest, tellsTheLineOfAZeroByte) {
  write(folder_ / "main.js", std::string("log(1);\nlog(\0);\n", 16));
  const auto troubles = checkFolder(folder_);
  ASSERT_EQ(troubles.size(), 1U);
  EXPECT_THAT(inWords(troubles[0]), HasSubstr("main.js:2: holds a zero byte"));
  EXPECT_FALSE(refusesLaunch(troubles));
}

TEST_F(FolderTest, refusesAFileThatIsLargerThanItsMemory) {
  fs::resize_file(folder_ / "main.js", 10485761);
  EXPECT_THAT(wordsOfCheck(), ElementsAre(HasSubstr("main.js: has 10485761 bytes")));
  EXPECT_TRUE(refusesLaunch(checkFolder(folder_)));
}

TEST(LaunchName, hasNoBlanks) {
  EXPECT_EQ(launchName("hello"), "hello");
  EXPECT_EQ(launchName("my first\tapp\n"), "my-first-app-");
  EXPECT_EQ(launchName("h\u00e9llo"), "h\u00e9llo");
  EXPECT_EQ(launchName(""), "app");
}

TEST(LaunchName, isCutBetweenTwoCharacters) {
  EXPECT_EQ(launchName(std::string(100, 'a')), std::string(64, 'a'));
  EXPECT_EQ(launchName(std::string(63, 'a') + "\u00e9"), std::string(63, 'a'));
}

TEST_F(FolderTest, isLinkedUnderANameOfItsOwn) {
  std::string trouble;
  const auto links = LinkFolder::make(trouble);
  ASSERT_NE(links, nullptr) << trouble;
  const fs::path other = place_.path() / "other parent" / "app";
  fs::create_directories(other);
  EXPECT_EQ(links->link(folder_, trouble), "app");
  EXPECT_EQ(links->link(other / "", trouble), "app-2");
  EXPECT_EQ(links->link(other.parent_path(), trouble), "other-parent");
  EXPECT_TRUE(fs::equivalent(links->path() / "app-2", other));
  EXPECT_EQ(links->link(other / "nothing", trouble), std::nullopt);
  EXPECT_THAT(trouble, HasSubstr("No such file"));
}

class StaleLinksTest : public FolderTest {
 protected:
  // As it is left behind by one that was killed: nobody holds it.
  fs::path leave(const std::string& name) const {
    fs::path path = temporary_ / name;
    fs::remove_all(path);
    fs::create_directory(path);
    fs::create_directory_symlink(folder_, path / "app");
    return path;
  }
  static std::unique_ptr<LinkFolder> make() {
    std::string trouble;
    auto links = LinkFolder::make(trouble);
    EXPECT_NE(links, nullptr) << trouble;
    return links;
  }

  std::unique_ptr<LinkFolder> links_ = make();
  const fs::path temporary_ = links_->path().parent_path();
};

TEST_F(StaleLinksTest, areRemovedByTheNextOne) {
  const fs::path stale = leave("morvik-run-test01");
  make();
  EXPECT_FALSE(fs::exists(stale));
  EXPECT_TRUE(fs::exists(folder_ / "main.js"));
}

TEST_F(StaleLinksTest, areNotThoseOfOneThatLives) {
  std::string trouble;
  links_->link(folder_, trouble);
  make();
  EXPECT_TRUE(fs::exists(links_->path() / "app/main.js"));
}

TEST_F(StaleLinksTest, areNoFoldersThatHoldAnythingElse) {
  const fs::path kept = leave("morvik-run-test02");
  std::ofstream(kept / "notes") << "text";
  const fs::path other = leave("morvik-run-other-name");
  make();
  EXPECT_TRUE(fs::exists(kept / "app"));
  EXPECT_TRUE(fs::exists(other / "app"));
  fs::remove_all(kept);
  fs::remove_all(other);
}

TEST_F(StaleLinksTest, areNotALinkToSomething) {
  const fs::path link = temporary_ / "morvik-run-test04";
  fs::remove(link);
  fs::create_directory_symlink(folder_, link);
  make();
  EXPECT_TRUE(fs::is_symlink(link));
  EXPECT_TRUE(fs::exists(folder_ / "main.js"));
  fs::remove(link);
}

TEST_F(FolderTest, outlivesItsLink) {
  std::string trouble;
  auto links = LinkFolder::make(trouble);
  ASSERT_NE(links, nullptr) << trouble;
  const fs::path path = links->path();
  struct stat facts {};
  ASSERT_EQ(stat(path.c_str(), &facts), 0);
  EXPECT_EQ(facts.st_mode & 0777U, 0700U);
  links->link(folder_, trouble);
  links.reset();
  EXPECT_FALSE(fs::exists(path));
  EXPECT_TRUE(fs::exists(folder_ / "main.js"));
}

}  // namespace
}  // namespace morvik::test
