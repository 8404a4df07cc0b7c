// Which file names a script may pass.
#include "host/path-filter.h"

#include <string>

#include "support/matchers.h"

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

}  // namespace
}  // namespace morvik::test
