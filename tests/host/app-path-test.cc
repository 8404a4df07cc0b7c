// How names become paths in an application's folder.
#include "host/app-path.h"

#include <gtest/gtest.h>

#include "host/launch-options.h"
#include "host/morvik-data.h"

namespace morvik::test {
namespace {

TEST(AppPathTest, pathsAreFormedFromTheFolderTheNameAndTheFile) {
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

TEST(AppPathTest, aPathIsCutWithoutAWordToWhatFitsWithItsEndMark) {
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
