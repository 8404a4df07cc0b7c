// Saves of every kind are seen, once, and what nobody saved is not.
#include "run/folder-watch.h"

#include <fstream>

#include "loop.h"
#include "support/matchers.h"
#include "support/temporary-folder.h"

namespace morvik::test {

using namespace devkit;
namespace {

namespace fs = std::filesystem;
using Names = std::set<std::string>;

void write(const fs::path& path, const std::string& text) { std::ofstream(path) << text; }

using Doing = std::function<bool()>;

gboolean goOn(gpointer what) {
  return (*static_cast<Doing*>(what))() ? G_SOURCE_CONTINUE : G_SOURCE_REMOVE;
}

class FolderWatchTest : public ::testing::Test {
 protected:
  FolderWatchTest() {
    fs::create_directories(folder_ / "sounds");
    write(folder_ / "main.js", "log(1);");
    write(folder_ / "sounds" / "bell", "ding");
    write(place_.path() / "shared.js", "log(2);");
    fs::create_symlink("../shared.js", folder_ / "linked.js");
  }

  void watch() {
    std::string trouble;
    ASSERT_TRUE(watch_.start(trouble)) << trouble;
  }

  // What was saved, once saving has come to rest.
  Names nextChange() {
    EXPECT_TRUE(loop_.runUntil([this] { return !changes_.empty(); })) << "no change was told";
    if (changes_.empty()) return {};
    Names change = changes_.front();
    changes_.erase(changes_.begin());
    return change;
  }

  // Ten times in a second. Counts the `saves` that were made before a change was told. Says whether
  // a pause was long enough for a rest, or all of them too long for one change.
  bool saveTenTimes(int& saves) {
    using Clock = std::chrono::steady_clock;
    const auto first = Clock::now();
    auto last = first;
    bool rested = false;
    saves = 0;
    Doing saveAgain = [&] {
      rested = rested || Clock::now() - last >= kQuietAfterSave;
      write(folder_ / "main.js", "log(" + std::to_string(++saves) + ");");
      last = Clock::now();
      return saves < 10;
    };
    constexpr guint kPauseMs = 100;
    const GSourceOwned clock(g_timeout_source_new(kPauseMs));
    g_source_set_callback(clock.get(), goOn, &saveAgain, nullptr);
    g_source_attach(clock.get(), loop_.context());
    EXPECT_TRUE(loop_.runUntil([this, &saves] { return saves == 10 || !changes_.empty(); }));
    return rested || last - first >= kLongestChange;
  }

  // As editors do that never leave half a file behind.
  void saveByRename(const std::string& name, const std::string& text) {
    write(folder_ / (name + ".new"), text);
    fs::rename(folder_ / (name + ".new"), folder_ / name);
  }

  Loop loop_;
  test::TemporaryFolder place_;
  fs::path folder_ = place_.path() / "my app";
  std::vector<Names> changes_;
  FolderWatch watch_{folder_, [this](const Names& files) { changes_.push_back(files); }};
};

TEST_F(FolderWatchTest, seesAFileThatIsWrittenInPlace) {
  watch();
  write(folder_ / "main.js", "log(2);");
  EXPECT_THAT(nextChange(), ElementsAre("main.js"));
}

TEST_F(FolderWatchTest, seesAFileThatIsRenamedIntoPlace) {
  watch();
  saveByRename("main.js", "log(2);");
  EXPECT_THAT(nextChange(), ElementsAre("main.js"));
}

TEST_F(FolderWatchTest, tellsTenSavesAsOne) {
  watch();
  for (int save = 0; save < 5; ++save) {
    write(folder_ / "main.js", "log(" + std::to_string(save) + ");");
    saveByRename("other.js", "log(" + std::to_string(save) + ");");
    loop_.runReady();
  }
  EXPECT_THAT(nextChange(), ElementsAre("main.js", "other.js"));
  write(folder_ / "last.js", "");
  EXPECT_THAT(nextChange(), ElementsAre("last.js"));
}

// A machine that stands still between two saves makes two changes of them, rightly: then the ten
// are saved again.
TEST_F(FolderWatchTest, tellsTenSavesOfOneSecondAsOne) {
  watch();
  int saves = 0;
  bool cameToRest = true;
  for (int tries = 0; cameToRest && tries < 5; ++tries) {
    changes_.clear();
    cameToRest = saveTenTimes(saves);
    EXPECT_TRUE(loop_.runUntil([this] { return !changes_.empty(); })) << "no change was told";
  }
  EXPECT_FALSE(cameToRest) << "the machine never had a second for it";
  EXPECT_EQ(saves, 10);
  EXPECT_THAT(changes_, ElementsAre(ElementsAre("main.js")));
}

TEST_F(FolderWatchTest, seesWhatIsBelow) {
  watch();
  write(folder_ / "sounds" / "bell", "dong");
  EXPECT_THAT(nextChange(), ElementsAre("sounds/bell"));
  fs::create_directories(folder_ / "new" / "newer");
  EXPECT_THAT(nextChange(), ElementsAre("new"));
  write(folder_ / "new" / "newer" / "file.js", "");
  EXPECT_THAT(nextChange(), ElementsAre("new/newer/file.js"));
}

TEST_F(FolderWatchTest, seesWhatALinkLeadsTo) {
  watch();
  write(place_.path() / "shared.js", "log(3);");
  EXPECT_THAT(nextChange(), ElementsAre("linked.js"));
  fs::create_hard_link(place_.path() / "shared.js", folder_ / "hard.js");
  EXPECT_THAT(nextChange(), ElementsAre("hard.js"));
}

TEST_F(FolderWatchTest, seesWhatGoesAway) {
  watch();
  fs::remove(folder_ / "main.js");
  EXPECT_THAT(nextChange(), ElementsAre("main.js"));
}

TEST_F(FolderWatchTest, staysWithAFolderThatIsReplaced) {
  watch();
  fs::rename(folder_, place_.path() / "old");
  fs::create_directory(folder_);
  write(folder_ / "main.js", "log(4);");
  EXPECT_THAT(nextChange(), IsSupersetOf({"."}));
  write(place_.path() / "old" / "main.js", "nobody looks here");
  write(folder_ / "other.js", "log(5);");
  EXPECT_THAT(nextChange(), ElementsAre("other.js"));
}

TEST_F(FolderWatchTest, leavesOutWhatEditorsKeepForThemselves) {
  watch();
  for (const char* name : {".main.js.swp", "main.js~", "4913", ".#main.js", "#main.js#", "core.123",
                           ".goutputstream-ABC", "main.js___jb_tmp___"}) {
    write(folder_ / name, "");
  }
  fs::create_directory(folder_ / ".git");
  write(folder_ / "main.js", "");
  EXPECT_THAT(nextChange(), ElementsAre("main.js"));
}

TEST_F(FolderWatchTest, leavesOutWhatTheApplicationMayHaveWritten) {
  write(folder_ / "main.js", "file . write('best.txt', '1');");
  watch();
  write(folder_ / "best.txt", "1");
  for (const char* name : {"other.js", "descriptor.xml", "config.bin"}) write(folder_ / name, "");
  EXPECT_THAT(nextChange(), ElementsAre("config.bin", "descriptor.xml", "other.js"));
}

TEST_F(FolderWatchTest, takesDataForASaveInAnApplicationThatWritesNone) {
  watch();
  write(folder_ / "phrases.txt", "hello");
  EXPECT_THAT(nextChange(), ElementsAre("phrases.txt"));
}

TEST_F(FolderWatchTest, saysThatThereIsNothingToWatch) {
  FolderWatch nowhere(place_.path() / "nowhere", [](const Names&) {});
  std::string trouble;
  EXPECT_FALSE(nowhere.start(trouble));
  EXPECT_EQ(trouble, "No such file or directory");
}

}  // namespace
}  // namespace morvik::test
