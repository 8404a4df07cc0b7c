// script/machine and script/bootstrap on machines that are not as they should be, and what tests do
// there.
#include "support/machine.h"

#include <filesystem>
#include <fstream>

#include "support/matchers.h"
#include "support/program.h"
#include "support/temporary-folder.h"

namespace morvik::test {
namespace {

namespace fs = std::filesystem;

// As in an ordinary container.
std::vector<std::string> withoutMounts(std::vector<std::string> command) {
  command.insert(command.begin(), {"/usr/bin/setpriv", "--bounding-set=-sys_admin"});
  return command;
}

class OrdinaryContainer : public ::testing::Test {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "only root can give rights away for a test";
    if (const auto& lack = lackOfMountNamespaces()) GTEST_SKIP() << *lack;
  }
};

TEST_F(OrdinaryContainer, isToldFromTheStart) {
  const ProgramResult result = run(withoutMounts({SOURCE_DIR "/script/machine"}));
  EXPECT_EQ(result.status, 0) << result.output;
  EXPECT_THAT(result.output,
              HasSubstr("without mount namespaces the tests of the whole host are skipped"));
}

TEST_F(OrdinaryContainer, skipsTestsOfTheHostWithTheReason) {
  const ProgramResult result =
      run(withoutMounts({SYSTEM_TESTS, "--gtest_filter=LedTest.*:Samples/*hello"}));
  EXPECT_EQ(result.status, 0) << result.output;
  EXPECT_THAT(result.output, HasSubstr("gives no mount namespaces (Operation not permitted)"));
  EXPECT_THAT(result.output, HasSubstr("[  PASSED  ] 0 tests."));
}

TEST(Machine, countsSkippedTestsByTheirReasons) {
  TemporaryFolder folder;
  std::ofstream(folder / "log") << "/a.cc:1: Skipped\nno mounts\n\n[  SKIPPED ] A.b (0 ms)\n"
                                   "/c.cc:2: Skipped\nno mounts\n\n/d.cc:3: Skipped\nno browser\n";
  const ProgramResult result = run({SOURCE_DIR "/script/machine", "--skipped", folder / "log"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "machine: 2 skipped: no mounts\nmachine: 1 skipped: no browser\n");
}

TEST(Machine, saysWhenNoTestWasSkipped) {
  TemporaryFolder folder;
  std::ofstream(folder / "log") << "[       OK ] A.b (0 ms)\n";
  const ProgramResult result = run({SOURCE_DIR "/script/machine", "--skipped", folder / "log"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "machine: no test was skipped\n");
}

// A machine of which only the commands are there that script/bootstrap asks: nothing is installed,
// and the user is nobody special.
class BareMachine : public ::testing::Test {
 protected:
  BareMachine() {
    fs::create_directories(checkout_.path() / "script");
    fs::copy(SOURCE_DIR "/script/bootstrap", checkout_ / "script/bootstrap");
    fs::create_directory(commands());
    for (const char* tool : {"bash", "env", "dirname", "sed", "awk", "cat"})
      fs::create_symlink(fs::path("/usr/bin") / tool, commands() / tool);
    command("id", "echo 1000");
    command("dpkg-query", "exit 1");
    command("apt-cache", "exit 1");
    command("apt-get", R"(case "$*" in
      *--assume-no*) echo 'Need to get 137 MB of archives.'
                     echo 'After this operation, 571 MB of additional disk space will be used.' ;;
      *) echo "$*" >>"$0.asked" ;;
    esac)");
  }

  fs::path commands() const { return checkout_.path() / "commands"; }

  void command(const std::string& name, const std::string& script) const {
    std::ofstream(commands() / name) << "#!/usr/bin/bash\n" << script << '\n';
    fs::permissions(commands() / name, fs::perms::owner_all);
  }

  ProgramResult bootstrap(const std::string& option) const {
    return run(
        {"/usr/bin/env", "PATH=" + commands().string(), checkout_ / "script/bootstrap", option});
  }

  TemporaryFolder checkout_;
};

TEST_F(BareMachine, withoutRightsTellsTheOneCommandAndHowMuchItBrings) {
  const ProgramResult result = bootstrap("--for=demo");
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.output, HasSubstr("Need to get 137 MB of archives."));
  EXPECT_THAT(result.output, HasSubstr("After this operation, 571 MB"));
  EXPECT_THAT(result.output,
              ContainsRegex("\n  apt-get update && apt-get install --no-install-recommends g\\+\\+ "
                            "cmake .* libnode-dev\n$"));
}

TEST_F(BareMachine, theDemoNeedsNothingOfTheTests) {
  const std::string demo = bootstrap("--for=demo").output;
  const std::string tests = bootstrap("--for=tests").output;
  for (const char* package : {" clang-tidy ", " chromium ", " libgtest-dev ", " valgrind "}) {
    EXPECT_THAT(demo, Not(HasSubstr(package)));
    EXPECT_THAT(tests, HasSubstr(package));
  }
}

TEST_F(BareMachine, refusesAPurposeThatThereIsNot) {
  const ProgramResult result = bootstrap("--for=fun");
  EXPECT_EQ(result.status, 2);
  EXPECT_THAT(result.output, HasSubstr("--for=demo|tests"));
}

}  // namespace
}  // namespace morvik::test
