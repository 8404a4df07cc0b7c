// cmake --install: the files of both components, the programs at work where they were put, and the
// units as systemd's own tools see them.
#include <algorithm>
#include <filesystem>
#include <vector>

#include "support/file-content.h"
#include "support/matchers.h"
#include "support/program.h"
#include "support/temporary-folder.h"

namespace morvik::test {
namespace {

namespace fs = std::filesystem;

constexpr char kSystemdAnalyze[] = "/usr/bin/systemd-analyze";

// Both components are installed below `root_`.
class Installed : public ::testing::Test {
 protected:
  Installed() {
    install("morvik");
    install("morvik-dev");
  }

  void install(const std::string& component) const {
    const ProgramResult result =
        run({"/usr/bin/env", "DESTDIR=" + root_.path().string(), CMAKE_PROGRAM, "--install",
             PROGRAMS, "--prefix", "/usr", "--component", component});
    EXPECT_EQ(result.status, 0) << result.output;
  }

  std::string at(const std::string& path) const { return root_.path().string() + path; }

  // All below a folder, as paths from the root on, without folders themselves.
  std::vector<std::string> filesIn(const std::string& folder) const {
    std::vector<std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(at(folder))) {
      if (entry.is_symlink() || !entry.is_directory())
        files.push_back("/" + fs::relative(entry.path(), root_.path()).string());
    }
    std::ranges::sort(files);
    return files;
  }

  // A program as a shell would find it there.
  ProgramResult runThere(const std::vector<std::string>& command) const {
    std::vector<std::string> words{"/usr/bin/env", "PATH=" + at("/usr/bin") + ":/usr/bin:/bin",
                                   "LD_LIBRARY_PATH=" V8_LIBRARY_FOLDER};
    words.insert(words.end(), command.begin(), command.end());
    return run(words);
  }

  TemporaryFolder root_;
};

TEST_F(Installed, thePartsAreWhereSystemsLookForThem) {
  for (const char* file : {"/usr/bin/morvikvm",
                           "/usr/bin/morvik-dev",
                           "/usr/libexec/morvik-dev/morvik-dev",
                           "/usr/libexec/morvik-dev/morvikvm-debug",
                           "/usr/libexec/morvik-dev/virtual-clock.so",
                           "/usr/lib/systemd/system/morvik.service",
                           "/usr/lib/systemd/system/morvik.socket",
                           "/usr/lib/systemd/system/morvik@.service",
                           "/usr/lib/systemd/system/morvik@.socket",
                           "/usr/lib/sysusers.d/morvik.conf",
                           "/usr/lib/tmpfiles.d/morvik.conf",
                           "/usr/share/man/man1/morvikvm.1.gz",
                           "/usr/share/man/man8/morvik.service.8.gz",
                           "/usr/share/man/man1/morvik-dev.1.gz",
                           "/usr/share/bash-completion/completions/morvik-dev",
                           "/usr/share/morvik-dev/types/morvik.d.ts",
                           "/usr/share/morvik-dev/apps/hello/main.js",
                           "/usr/share/doc/morvik/operations.md",
                           "/usr/share/doc/morvik/copyright",
                           "/usr/share/doc/morvik-dev/tutorial.md"}) {
    EXPECT_TRUE(fs::is_regular_file(at(file))) << file;
  }
}

TEST_F(Installed, thePackageOfADeviceHoldsNothingOfAuthors) {
  fs::remove_all(root_.path() / "usr");
  install("morvik");
  EXPECT_THAT(filesIn("/usr/bin"), ElementsAre("/usr/bin/morvikvm"));
  EXPECT_FALSE(fs::exists(at("/usr/libexec")));
  EXPECT_FALSE(fs::exists(at("/usr/share/morvik-dev")));
}

TEST_F(Installed, samplesComeWithoutWhatTheyWrote) {
  for (const std::string& file : filesIn("/usr/share/morvik-dev/apps"))
    EXPECT_THAT(file, Not(AnyOf(EndsWith(".txt"), EndsWith(".gitignore"))));
}

// A library that is found in the folder it was built with would be another one on a device.
TEST_F(Installed, programsLookForLibrariesInNoFolderOfTheirOwn) {
  for (const char* program :
       {"/usr/bin/morvikvm", "/usr/bin/morvik-dev", "/usr/libexec/morvik-dev/morvikvm-debug",
        "/usr/libexec/morvik-dev/virtual-clock.so"}) {
    const ProgramResult dynamic = run({"/usr/bin/readelf", "-d", at(program)});
    EXPECT_THAT(dynamic.output, HasSubstr("(NEEDED)")) << program;
    EXPECT_THAT(dynamic.output, Not(AnyOf(HasSubstr("(RPATH)"), HasSubstr("(RUNPATH)"))))
        << program;
  }
}

TEST_F(Installed, nothingTellsWhereItWasBuilt) {
  for (const char* folder : {"/usr/bin", "/usr/lib", "/usr/libexec", "/usr/share/man"}) {
    for (const std::string& file : filesIn(folder))
      EXPECT_EQ(contentOf(at(file)).find(SOURCE_DIR), std::string::npos) << file;
  }
}

TEST_F(Installed, theToolTellsTheVersion) {
  const ProgramResult result = runThere({"morvik-dev", "--version"});
  EXPECT_EQ(result.output, "morvik-dev " VERSION "\n");
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(run({"/bin/zcat", at("/usr/share/man/man1/morvik-dev.1.gz")}).output,
              HasSubstr("MorvikVM " VERSION));
}

// The test needs the host, the tool and the clock that lies beside it.
TEST_F(Installed, theToolTestsASampleOnTheInstalledHost) {
  const ProgramResult result =
      runThere({"morvik-dev", "test", at("/usr/share/morvik-dev/apps/hello")});
  EXPECT_EQ(result.status, 0) << result.output;
  EXPECT_THAT(result.output, HasSubstr("\nok 1 "));
}

class InstalledUnits : public Installed {
 protected:
  void SetUp() override {
    if (!fs::exists(kSystemdAnalyze)) GTEST_SKIP() << "systemd-analyze is not installed";
    // The units that ours stand beside.
    fs::copy("/lib/systemd/system", at("/usr/lib/systemd/system"),
             fs::copy_options::recursive | fs::copy_options::skip_existing |
                 fs::copy_options::copy_symlinks);
  }
};

TEST_F(InstalledUnits, areUnderstood) {
  for (const char* unit :
       {"morvik.service", "morvik.socket", "morvik@one.service", "morvik@one.socket"}) {
    const ProgramResult result =
        run({kSystemdAnalyze, "verify", "--man=no", "--recursive-errors=one",
             "--root=" + root_.path().string(), unit});
    EXPECT_EQ(result.status, 0) << unit;
    EXPECT_EQ(result.output, "") << unit;
  }
}

TEST_F(InstalledUnits, exposeLittle) {
  for (const char* unit : {"morvik.service", "morvik@.service"}) {
    const ProgramResult result =
        run({kSystemdAnalyze, "security", "--offline=yes", "--threshold=20", "--no-pager",
             at("/usr/lib/systemd/system/") + unit});
    EXPECT_EQ(result.status, 0) << result.output;
    EXPECT_THAT(result.output, HasSubstr("Overall exposure level"));
  }
}

}  // namespace
}  // namespace morvik::test
