// Which file names a script may pass, and how names become paths.
#include "host/path-filter.h"

#include <gmock/gmock.h>

#include "host/launch-options.h"
#include "host/morvik-data.h"

namespace morvik::test {
namespace {

TEST(PathFilterTest, refusesWhatCouldLeadOutOrReadTheDescriptor) {
  const struct {
    const char* path;
    bool forbidden;
  } rows[] = {
      {"", false},
      {"main.js", false},
      {"lib/a-b_C9.js", false},
      {"/main.js", false},  // does no harm: a folder always comes in front
      {"//x", false},
      {".hidden", false},
      {"a/.hidden", false},
      {"a.b.c", false},
      {"./x", false},
      {"a/./b", false},
      {".", false},
      {"a.", false},
      {"..", true},
      {"../x", true},
      {"a/../b", true},
      {"a..b", true},
      {"...", true},
      {".x.", false},
      {"descriptor.xml", true},
      {"a/descriptor.xml", true},
      {"xdescriptor.xmlx", true},
      {"Descriptor.xml", false},
      {"descriptor.XML", false},
      {"descriptor_xml", false},
      {"a b", true},
      {" ", true},
      {"a\n", true},
      {"caf\xc3\xa9", true},
      {"\xe9", true},
      {"a\\b", true},
      {"%2e%2e", true},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.path);
    EXPECT_EQ(isForbiddenPath(row.path), row.forbidden);
  }
}

TEST(PathFilterTest, allowsLettersDigitsAndFourOtherBytes) {
  const std::string allowed = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-/.";
  for (int byte = 1; byte < 256; ++byte) {
    const char path[] = {'a', static_cast<char>(byte), 'a', '\0'};
    EXPECT_EQ(isForbiddenPath(path), allowed.find(path[1]) == std::string::npos) << byte;
  }
}

TEST(PathFilterTest, pathsAreFormedFromTheFolderTheNameAndTheFile) {
  const struct {
    const char* folder;
    const char* name;
    const char* file;
    const char* path;
  } rows[] = {
      {"/apps", "led", "main.js", "/apps/led/main.js"},
      {"", "led", "main.js", "/led/main.js"},
      {"/apps/", "led", "main.js", "/apps//led/main.js"},
      {"apps", "", "/x", "apps///x"},
      {"/a b", "c%s", "d e", "/a b/c%s/d e"},
  };
  for (const auto& row : rows) {
    LaunchOptions options;
    options.app_folder = row.folder;
    MorvikData instance;
    instance.options = &options;
    instance.appName = row.name;
    EXPECT_EQ(appPath(instance, row.file, kStartPathSize), row.path);
  }
}

TEST(PathFilterTest, aPathIsCutWithoutAWordToWhatFitsWithItsEndMark) {
  const std::string name(250, 'n');
  LaunchOptions options;
  options.app_folder = "/f";
  MorvikData instance;
  instance.options = &options;
  instance.appName = name;
  const std::string whole = "/f/" + name + "/0123456789";
  EXPECT_EQ(appPath(instance, "0123456789", kStartPathSize), whole.substr(0, 254));
  EXPECT_EQ(appPath(instance, "0123456789", 512), whole);
  EXPECT_EQ(appPath(instance, "0123456789", whole.size() + 1), whole);
  EXPECT_EQ(appPath(instance, "0123456789", whole.size()), whole.substr(0, whole.size() - 1));
}

}  // namespace
}  // namespace morvik::test
